#include "stream/RecordDecoder.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>
#include <random>
#include <set>

#include "Cases.h"
#include "HostData.h"
#include "Streams.h"
#include "geo/NotAvailable.h"
#include "stream/Names.h"

namespace {

using velagnss::DecodedFrame;
using velagnss::Depth;
using velagnss::Frame;
using velagnss::RecordDecoder;
using velagnss::WeekSource;

Frame FrameOf(std::string_view bytes, C_RawDataMessage::eProtocols protocol, unsigned int message) {
  return {reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned short>(bytes.size()), protocol,
          message, 0};
}

// Hands every frame of the sample session to `take`.
template <class Take>
void ReadSession(const Take& take) {
  const std::string session = ReadHostFile("samples/session.bin");
  velagnss::FrameReader reader;
  reader.Feed(reinterpret_cast<const unsigned char*>(session.data()), session.size());
  reader.Finish();
  while (const Frame* frame = reader.NextFrame()) take(*frame);
}

template <class... T>
std::string NameOf(const std::variant<T...>& record) {
  constexpr const char* kNames[] = {
      "",         "text",    "body",       "payload", "GGA",     "GNS",       "ZDA",          "GLL",
      "GSV",      "GSA",     "RMC",        "VTG",     "kepler",  "pva",       "209",          "ATTSTAT",
      "GBS",      "HPR",     "BLV",        "FVI",     "RTKSTAT", "VCT",       "INTLT",        "TEMPERATURE",
      "ARN",      "RD1",     "other",      "GST",     "GBS",     "GRS",       "HDT",          "THS",
      "HDG",      "ROT",     "DTM",        "TXT",     "VHW",     "DBT",       "DPT",          "MTW",
      "MWV",      "VLW",     "RMB",        "XTE",     "APB",     "BWC",       "WPL",          "rtcm",
      "station",  "antenna", "parameters", "message", "biases",  "residuals", "observations", "rtcm kepler",
      "rtcm pva", "ssr"};
  static_assert(std::size(kNames) == sizeof...(T));
  return kNames[record.index()];
}

std::set<std::string> Blocks(std::initializer_list<int> numbers) {
  std::set<std::string> names;
  for (const int number : numbers) names.insert("BIN" + std::to_string(number));
  return names;
}

// Record, depth and result, and the messages of the session that have them.
const std::map<std::string, std::set<std::string>> kOfSession = {
    {"rtcm raw", {"RTCM4072"}},
    {"station full 0", {"RTCM1005", "RTCM1006"}},
    {"observations full 0", {"RTCM1077", "RTCM1087", "RTCM1097", "RTCM1127"}},
    {"rtcm kepler full 0", {"RTCM1019", "RTCM1042", "RTCM1046"}},
    {"rtcm pva full 0", {"RTCM1020"}},
    {"biases full 0", {"RTCM1230"}},
    {"GGA full 0", {"GGA"}},
    {"GLL full 0", {"GLL"}},
    {"GNS full 0", {"GNS"}},
    {"GSA full 0", {"GSA"}},
    {"GSV full 0", {"GSV"}},
    {"RMC full 0", {"RMC"}},
    {"VTG full 0", {"VTG"}},
    {"ZDA full 0", {"ZDA"}},
    {"ATTSTAT partial 0", {"ATTSTAT"}},
    {"GBS full 0", {"GBS"}},
    {"HPR full 0", {"HPR"}},
    {"BLV full 0", {"BLV"}},
    {"FVI full 0", {"FVI"}},
    {"RTKSTAT partial 0", {"RTKSTAT"}},
    {"VCT full 0", {"VCT"}},
    {"INTLT full 0", {"INTLT"}},
    {"TEMPERATURE full 0", {"TEMPERATURE"}},
    {"ARN full 0", {"ARN_ROUTER"}},
    {"RD1 full 0", {"RD1"}},
    {"kepler full 0", Blocks({25, 95})},
    {"pva full 0", Blocks({65, 93})},
    {"209 partial 0", Blocks({209})},
    {"body raw 0", Blocks({1, 2, 3, 5, 16, 34, 35, 36, 44, 45, 66, 76, 94, 122, 180})},
    {"body raw 5", Blocks({6, 19, 39, 49, 59, 61, 62, 69, 71, 80, 89, 96, 97, 98, 99, 100, 101, 102, 103, 104})},
    {"payload raw", {"JROX", "RAW"}},
    {"text raw", {"JI", "JGEO", "JQUERY", "JSITERECORD"}},
    {"other partial 0", {"ALM", "HDM", "HEV", "RMA", "RRE"}},
    {"APB full 0", {"APB"}},
    {"BWC full 0", {"BWC"}},
    {"DTM full 0", {"DTM"}},
    {"GRS full 0", {"GRS"}},
    {"GST full 0", {"GST"}},
    {"HDG full 0", {"HDG"}},
    {"HDT full 0", {"HDT"}},
    {"RMB full 0", {"RMB"}},
    {"ROT full 0", {"ROT"}},
    {"XTE full 0", {"XTE"}},
    {"text raw 4", {"HPR"}},  // one is sent without a checksum
};
TEST(RecordDecoder, GivesEachMessageItsRecord) {
  constexpr const char* kDepths[] = {"none", "raw", "partial", "full"};
  std::map<std::string, std::set<std::string>> found;
  RecordDecoder decoder;
  ReadSession([&](const Frame& frame) {
    const DecodedFrame& decoded = decoder.Decode(frame);
    const std::string result = decoded.result ? " " + std::to_string(*decoded.result) : "";
    const std::string name(velagnss::MessageName(frame.protocol, frame.message).Text());
    found[NameOf(decoded.record) + " " + kDepths[static_cast<int>(decoded.depth)] + result].insert(name);
  });
  EXPECT_EQ(found, kOfSession);
}

// Nothing but a frame of the session is needed to begin from: any bytes under any name have an answer.
TEST(RecordDecoder, HasAnAnswerToAnyBytes) {
  std::vector<std::string> frames;
  ReadSession([&frames](const Frame& frame) { frames.emplace_back(frame.data, frame.data + frame.length); });
  std::mt19937 engine(3);
  const auto random = [&engine] { return static_cast<unsigned int>(engine()); };
  RecordDecoder decoder;
  for (int round = 0; round < 20000; ++round) {
    std::string bytes = frames[random() % frames.size()];
    if (random() % 2 != 0) bytes.resize(random() % (bytes.size() + 1));
    for (unsigned int i = random() % 3; i > 0 && !bytes.empty(); --i)
      bytes[random() % bytes.size()] = static_cast<char>(random());
    ExactCopy copy(bytes);
    const DecodedFrame& decoded =
        decoder.Decode({copy.Data(), copy.Size(), C_RawDataMessage::eProtocols{random() % 14U}, random() % 128U, 0});
    const bool isGood = decoded.result.value_or(0) == 0 || decoded.isWeekUnresolved;
    const bool isRaw = decoded.record.index() <= 3 || std::holds_alternative<velagnss::Rtcm3Payload>(decoded.record);
    ASSERT_EQ(decoded.depth >= Depth::Partial, isGood && !isRaw);
    ASSERT_EQ(decoded.depth == Depth::None, decoded.record.index() == 0);
    ASSERT_FALSE(isGood && decoded.hasDataError);
  }
  EXPECT_EQ(decoder.Decode({}).result, 1);
}

const std::string kZda = Sentence("GPZDA,120000.00,18,05,2024,00,00");

const Frame kZdaFrame = FrameOf(kZda, C_RawDataMessage::eNMEA0183, C_RawDataMessage::eNmeaZDA);

// The first frame of a binary message in the sample session.
std::string FirstBlock(unsigned int number) {
  std::string bytes;
  ReadSession([&](const Frame& frame) {
    if (bytes.empty() && frame.protocol == C_RawDataMessage::eVelaBIN && frame.message == number)
      bytes.assign(frame.data, frame.data + frame.length);
  });
  return bytes;
}

struct S_WeekCase {
  const char* name;
  std::optional<C_GnssTime> seed;
  bool hasDate;  // the stream carries one before the ephemeris: 2024-05-18
  WeekSource source;
  unsigned int week;          // of the transmission; the session's is 2314
  unsigned int firstDay = 0;  // MJD that the caller assumes
};
const S_WeekCase kWeeks[] = {
    {"NoTime", std::nullopt, false, WeekSource::None, 2314 % 1024},
    {"DateOfTheStream", std::nullopt, true, WeekSource::Stream, 2314},
    {"Seed", C_GnssTime(2300, 0.0, ALGO::GNSS_GPS), false, WeekSource::Seed, 2314},
    {"SeedGoesFirst", C_GnssTime(1300, 0.0, ALGO::GNSS_GPS), true, WeekSource::Seed, 1290},
    {"SeedOfAnotherScale", C_GnssTime(1300, 0.0, ALGO::GNSS_GLONASS), true, WeekSource::Stream, 2314},
    {"SeedAfterTheDate", C_GnssTime(), true, WeekSource::Stream, 2314},
    {"AssumedDay", std::nullopt, false, WeekSource::Seed, 2314, 60448},
    {"WrongDay", std::nullopt, false, WeekSource::Seed, 1290, 53341},
    {"DateGoesBeforeTheDay", std::nullopt, true, WeekSource::Stream, 2314, 53341},
    {"SeedGoesBeforeTheDay", C_GnssTime(1300, 0.0, ALGO::GNSS_GPS), true, WeekSource::Seed, 1290, 60448},
    {"DayBeyondTheCalendar", std::nullopt, false, WeekSource::None, 2314 % 1024, 1},
    {"SeedOfNothing", C_GnssTime(0, 0.0, ALGO::GNSS_GPS), false, WeekSource::None, 2314 % 1024},
};
TEST_ROWS(WeekOfAnEphemeris, ComesFromSeedOrStream, kWeeks, row) {
  const std::string gps = FirstBlock(95), sbas = FirstBlock(93), glonass = FirstBlock(65);
  RecordDecoder decoder;
  if (row.seed) decoder.SeedTime(*row.seed);
  if (row.firstDay != 0) decoder.AssumeFirstDay(row.firstDay);
  for (int stream = 0; stream < 2; ++stream) {  // a restart forgets the dates, not the seed
    if (row.hasDate) decoder.Decode(kZdaFrame);
    const DecodedFrame& decoded = decoder.Decode(FrameOf(gps, C_RawDataMessage::eVelaBIN, 95));
    EXPECT_EQ(decoded.week, row.source);
    EXPECT_EQ(decoded.isWeekUnresolved, row.source == WeekSource::None);
    EXPECT_FALSE(decoded.hasDataError);
    EXPECT_EQ(decoded.depth, Depth::Full);
    EXPECT_EQ(std::get<S_IFKeplerEphRec>(decoded.record).TxWeek, row.week);
    EXPECT_EQ(decoder.Decode(FrameOf(sbas, C_RawDataMessage::eVelaBIN, 93)).week, row.source);
    EXPECT_FALSE(decoded.hasDataError);
    EXPECT_EQ(decoder.Decode(FrameOf(glonass, C_RawDataMessage::eVelaBIN, 65)).week, WeekSource::Stream);
    decoder.Restart();
  }
  decoder.Reset();
  EXPECT_EQ(decoder.Decode(FrameOf(gps, C_RawDataMessage::eVelaBIN, 95)).week, WeekSource::None);
}

TEST(RecordDecoder, KnowsGlonassChannels) {
  const std::string glonass = FirstBlock(65);
  RecordDecoder decoder;
  const unsigned char slot =
      std::get<S_IFPvaEphRec>(decoder.Decode(FrameOf(glonass, C_RawDataMessage::eVelaBIN, 65)).record).SvId;
  EXPECT_NE(decoder.GlonassChannel(slot), NA_CHANNEL);
  decoder.Restart();
  EXPECT_EQ(decoder.GlonassChannel(slot), NA_CHANNEL);
  EXPECT_TRUE(decoder.SetGlonassChannel(slot, -7));
  EXPECT_FALSE(decoder.SetGlonassChannel(25, -7));
  EXPECT_EQ(decoder.GlonassChannel(slot), -7);
}

struct S_VariationCase {
  const char* name;
  const char* body;
  unsigned char direction;
};
const S_VariationCase kVariations[] = {
    {"East", "GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191124,020.3,E", 'E'},
    {"West", "GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191124,020.3,W,A,V", 'W'},
    {"Empty", "GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191124,,,A", 0},
    {"Other", "GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191124,020.3,X,A", 0},
    {"Missing", "GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191124", 0},
};
TEST_ROWS(MagneticVariation, KeepsItsLetter, kVariations, row) {
  const std::string sentence = Sentence(row.body);
  RecordDecoder decoder;
  const DecodedFrame& decoded =
      decoder.Decode(FrameOf(sentence, C_RawDataMessage::eNMEA0183, C_RawDataMessage::eNmeaRMC));
  const auto& rmc = std::get<S_RMC_Data>(decoded.record);
  EXPECT_EQ(rmc.variationDirection, row.direction);
  EXPECT_NEAR(rmc.longitude, -123.18533, 1e-5);  // an empty direction does not take it away
}

// 7-of-8 packing: the low 7 bits of each byte, low bits first; an odd payload is filled up to a whole word.
TEST(RecordDecoder, UnpacksPayloads) {
  const std::string good = "$JROX," + Packed("abc") + "\r\n";
  RecordDecoder decoder;
  const auto payload =
      std::get<velagnss::PackedPayload>(decoder.Decode(FrameOf(good, C_RawDataMessage::eJROX, 0xFFFFFFFF)).record);
  EXPECT_EQ(payload.text, "$JROX,");
  EXPECT_EQ(std::string(payload.bytes, payload.bytes + payload.length), std::string("abc\0", 4));
  const std::string highByteInText = "$PKVN,RAW,\x81,4," + Packed("abcd") + "\r\n";
  EXPECT_EQ(std::get<velagnss::PackedPayload>(
                decoder.Decode(FrameOf(highByteInText, C_RawDataMessage::ePKVN, VelaPKVN_Messages::ePkvnRAW)).record)
                .length,
            4);
}

// The digits beyond hundredths, and a first day, count on after a restart; only a reset forgets the day.
TEST(RecordDecoder, KeepsWhatItIsToldUntilAReset) {
  const std::string gll = Sentence("GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A");
  const Frame frame = FrameOf(gll, C_RawDataMessage::eNMEA0183, C_RawDataMessage::eNmeaGLL);
  RecordDecoder decoder;
  EXPECT_DOUBLE_EQ(std::get<S_GLL_Data>(decoder.Decode(frame).record).timeOfDay, 58349.48);
  EXPECT_EQ(decoder.Clock().UtcOfTimeOfDay(58349).mjd, std::nullopt);
  decoder.KeepTimeDigits(velagnss::TimeDigits::All);
  decoder.AssumeFirstDay(60448);
  for (int stream = 0; stream < 2; ++stream, decoder.Restart()) {
    EXPECT_DOUBLE_EQ(std::get<S_GLL_Data>(decoder.Decode(frame).record).timeOfDay, 58349.487);
    EXPECT_EQ(decoder.Clock().UtcOf(decoder.Clock().Seconds()).mjd, 60448);
  }
  decoder.Reset();
  decoder.Decode(frame);
  EXPECT_FALSE(decoder.Clock().KnowsDate());
}

}  // namespace
