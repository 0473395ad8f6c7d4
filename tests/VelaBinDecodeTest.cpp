#include "binproto/VelaBin_Decode.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>

#include "binproto/MessageContents.h"
#include "records/ResultCodes.h"
#include "tests/BinaryFrames.h"
#include "tests/Cases.h"

namespace {

using namespace VelaBIN_Messages;
using velagnss::binproto::eContents;

// --- frames --------------------------------------------------------------------------------------------------------

struct S_FrameCase {
  const char* name;
  std::string bytes;
  unsigned int result;
  unsigned short number, frameLength, position;  // 0xEEEE: not written
};

constexpr unsigned short kKept = 0xEEEE;

std::string Without(std::string frame, std::size_t last) { return frame.substr(0, frame.size() - last); }
std::string With(std::string frame, std::size_t at, char byte) { return frame.replace(at, 1, 1, byte); }

const S_FrameCase kFrames[] = {
    {"NoData", BinFrame(4, ""), eResultOk, 4, 10, 8},
    {"BytesBehindTheFrame", BinFrame(209, "ab") + "\r\n", eResultOk, 209, 12, 8},
    {"NineBytes", Without(BinFrame(1, ""), 1), eResultTooShort, kKept, kKept, kKept},
    {"FirstSyncByte", With(BinFrame(1, ""), 0, '#'), eResultBadSync, kKept, kKept, 1},
    {"FourthSyncByte", With(BinFrame(1, ""), 3, 'M'), eResultBadSync, kKept, kKept, 4},
    {"NumberAbove209", BinFrame(210, "x"), eResultUnknownMessage, 210, 11, 8},
    {"NumberBeforeLength", With(BinFrame(210, "x"), 7, '\xFF'), eResultUnknownMessage, 210, 0xFF0B, 8},
    {"LengthWraps", With(With(BinFrame(1, ""), 6, '\xFA'), 7, '\xFF'), eResultBadSync, 1, 4, 8},
    {"LengthWrapsToZero", With(With(BinFrame(1, ""), 6, '\xF6'), 7, '\xFF'), eResultBadSync, 1, 0, 8},
    {"LongestBeforeTheWrap", With(With(BinFrame(1, ""), 6, '\xF5'), 7, '\xFF'), eResultTooShort, 1, 65535, 8},
    {"OneByteShort", Without(BinFrame(1, "abc"), 1), eResultTooShort, 1, 13, 8},
    {"Longest", BinFrame(1, std::string(2037, 'U')), eResultOk, 1, 2047, 8},
    {"TooLong", BinFrame(1, std::string(2038, 'U')), eResultTooLong, 1, 2048, 8},
    {"SumWrapsAt65536", BinFrame(1, std::string(258, '\xFF')), eResultOk, 1, 268, 8},
    {"SumLowByte", With(BinFrame(1, "abc"), 11, 'z'), eResultChecksum, 1, 13, 8},
    {"SumHighByte", With(BinFrame(1, "abc"), 12, 'z'), eResultChecksum, 1, 13, 8},
};

TEST_ROWS(VelaBinFrame, Validates, kFrames, row) {
  ExactCopy frame(row.bytes);
  unsigned short number = kKept, frameLength = kKept, position = kKept;
  EXPECT_EQ(C_VelaBin_Decode::ValidateFrame(frame.Data(), frame.Size(), number, frameLength, position), row.result);
  EXPECT_EQ(number, row.number);
  EXPECT_EQ(frameLength, row.frameLength);
  EXPECT_EQ(position, row.position);
}

TEST(VelaBinReaders, StopAtTheEndOfTheBuffer) {
  const unsigned char bytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 0x89, 0xAB};
  const unsigned short whole = 10, nine = 9;
  const auto read = [&](const unsigned char* frame, const unsigned short& length, unsigned short position) {
    unsigned short short16 = kKept, after = position;
    unsigned int long32 = kKept;
    const unsigned int result = C_VelaBin_Decode::Decode_Bin_U16(frame, length, after, short16);
    EXPECT_EQ(after, position + (result == eResultOk ? 2 : 0));
    const unsigned int result32 = C_VelaBin_Decode::Decode_Bin_U32(frame, length, position, long32);
    return LittleEndian(result, 1) + LittleEndian(short16, 2) + LittleEndian(result32, 1) + LittleEndian(long32, 4);
  };
  EXPECT_EQ(read(bytes, whole, 1), std::string("\0\1\2\0\1\2\3\4", 8));
  EXPECT_EQ(read(bytes, whole, 6), std::string("\0\x06\x07\0\x06\x07\x89\xAB", 8));
  EXPECT_EQ(read(bytes, whole, 8), std::string("\0\x89\xAB\x09\0\0\0\0", 8));
  EXPECT_EQ(read(bytes, whole, 9), std::string("\x09\0\0\x09\0\0\0\0", 8));
  EXPECT_EQ(read(bytes, whole, 65535), std::string("\x09\0\0\x09\0\0\0\0", 8));
  EXPECT_EQ(read(bytes, nine, 0), std::string("\3\0\0\3\0\0\0\0", 8));
  EXPECT_EQ(read(nullptr, whole, 0), std::string("\1\0\0\1\0\0\0\0", 8));
}

TEST(VelaBinReaders, HeaderAndTrailer) {
  const unsigned char bytes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  const unsigned short whole = 10, nine = 9;
  S_MsgHeader header;
  S_MsgTrailer trailer;
  unsigned short position = 4;
  EXPECT_EQ(C_VelaBin_Decode::Decode_Bin_Header(bytes, whole, position, header), eResultOk);
  EXPECT_EQ(header.BlockId, 0x0605);
  EXPECT_EQ(header.DataLength, 0x0807);
  EXPECT_EQ(C_VelaBin_Decode::Decode_Bin_Trailer(bytes, whole, position, trailer), eResultOk);
  EXPECT_EQ(trailer.Checksum, 0x0A09);
  EXPECT_EQ(trailer.Terminator, 0x0A0D);
  EXPECT_EQ(position, 12) << "over a terminator that is not there";
  EXPECT_EQ(C_VelaBin_Decode::Decode_Bin_Trailer(bytes, whole, position, trailer), eResultPastEnd);
  EXPECT_EQ(trailer.Checksum, 0);
  EXPECT_EQ(trailer.Terminator, 0x0A0D);
  for (const auto& [frame, length, result] : {std::tuple(bytes, nine, eResultBadSync), {nullptr, whole, eResultNull}}) {
    EXPECT_EQ(C_VelaBin_Decode::Decode_Bin_Header(frame, length, position, header), result);
    EXPECT_EQ(header.BlockId, 0xFFFF);
    EXPECT_EQ(header.DataLength, 0);
    EXPECT_EQ(C_VelaBin_Decode::Decode_Bin_Trailer(frame, length, position, trailer), result);
  }
}

// --- messages ------------------------------------------------------------------------------------------------------

using U = U_VelaBIN_EcdDcdData;
using D = C_VelaBin_Decode;

template <auto Operation, auto Member>
unsigned int Direct(D& decoder, unsigned char* frame, unsigned short length, U& out) {
  return (decoder.*Operation)(frame, length, out.*Member);
}

unsigned int DirectGps(D& decoder, unsigned char* frame, unsigned short length, U& out) {
  return decoder.Decode_Bin95(frame, length, out.keplerEph, false);
}

struct S_MessageCase {
  const char* name;
  unsigned short number;
  std::size_t bodyLength;
  std::string_view bodyStart;  // what makes an otherwise patterned body acceptable: satellite and channel
  unsigned int (*direct)(D& decoder, unsigned char* frame, unsigned short length, U& out);
  eContents contents;
  bool isRaw = contents == eContents::eRawBody;  // the record is header, body and trailer
};

// clang-format off
const S_MessageCase kMessages[] = {
    {"Bin1",     1,  52, "",         &Direct<&D::Decode_Bin1, &U::bin1>,        eContents::eRawBody},
    {"Bin2",     2,  16, "",         &Direct<&D::Decode_Bin2, &U::bin2>,        eContents::eRawBody},
    {"Bin3",     3, 116, "",         &Direct<&D::Decode_Bin3, &U::bin3>,        eContents::eRawBody},
    {"Bin5",     5,  72, "",         &Direct<&D::Decode_Bin5, &U::bin5>,        eContents::eRawBody},
    {"Bin16",   16, 312, "",         &Direct<&D::Decode_Bin16, &U::obs>,        eContents::eHeaderOnly},
    {"Bin25",   25, 128, {"\xC1", 2}, &Direct<&D::Decode_Bin25, &U::keplerEph>, eContents::eFull},
    {"Bin34",   34,  32, "",         &Direct<&D::Decode_Bin34, &U::bin34>,      eContents::eRawBody},
    {"Bin35",   35, 128, "",         &Direct<&D::Decode_Bin35, &U::keplerEph>,  eContents::eSatelliteOnly},
    {"Bin36",   36, 336, "",         &Direct<&D::Decode_Bin36, &U::obs>,        eContents::eHeaderOnly},
    {"Bin44",   44,  56, "",         &Direct<&D::Decode_Bin44, &U::bin44>,      eContents::eRawBody},
    {"Bin45",   45, 128, "",         &Direct<&D::Decode_Bin45, &U::keplerEph>,  eContents::eSatelliteOnly},
    {"Bin65",   65,  68, "\x18\x0E", &Direct<&D::Decode_Bin65, &U::pvaEph>,     eContents::eFull},
    {"Bin66",   66, 352, "",         &Direct<&D::Decode_Bin66, &U::obs>,        eContents::eHeaderOnly},
    {"Bin76",   76, 448, "",         &Direct<&D::Decode_Bin76, &U::obs>,        eContents::eHeaderOnly},
    {"Bin93",   93,  56, "",         &Direct<&D::Decode_Bin93, &U::pvaEph>,     eContents::eFull},
    {"Bin94",   94,  96, "",         &Direct<&D::Decode_Bin94, &U::bin94>,      eContents::eRawBody},
    {"Bin95",   95, 128, {"\x40", 2}, &DirectGps,                               eContents::eFull},
    {"Bin122", 122,  80, "",         &Direct<&D::Decode_Bin122, &U::bin122>,    eContents::eRawBody},
    {"Bin180", 180, 232, "",         &Direct<&D::Decode_Bin180, &U::bin180>,    eContents::eRawBody},
    {"Bin209", 209, 332, "",         &Direct<&D::Decode_Bin209, &U::bin209>,    eContents::eFieldsBySize},
};
// clang-format on

std::string Body(const S_MessageCase& message) {
  std::string body;
  for (std::size_t i = 0; i < message.bodyLength; ++i) body += static_cast<char>(37 * i + message.number);
  return body.replace(0, message.bodyStart.size(), message.bodyStart);
}

std::unique_ptr<D> SeededDecoder() {
  auto decoder = std::make_unique<D>(nullptr);
  decoder->SeedTime(2300, 345600.0, ALGO::GNSS_GPS);
  return decoder;
}

std::string Bytes(const U& record) { return std::string(reinterpret_cast<const char*>(&record), sizeof record); }

struct S_Outcome {
  unsigned int result;
  unsigned short number;
  std::string record;
  bool operator==(const S_Outcome&) const = default;
};

S_Outcome Decode(D& decoder, std::string_view bytes) {
  ExactCopy block("$" + std::string(bytes));  // at an odd address
  auto out = std::make_unique<U>();
  std::memset(out.get(), 0xAA, sizeof *out);
  S_Outcome outcome{0, kKept, ""};
  const auto length = static_cast<unsigned short>(bytes.size());
  outcome.result = decoder.Decode(block.Data() + 1, length, outcome.number, *out);
  outcome.record = Bytes(*out);
  EXPECT_EQ(decoder.GetLastResult(), outcome.result);
  return outcome;
}

class VelaBinMessage : public testing::TestWithParam<S_MessageCase> {
 protected:
  const S_MessageCase& message = GetParam();
  const std::string body = Body(message);
  const std::string frame = BinFrame(message.number, body);
  const std::unique_ptr<D> decoder = SeededDecoder();
};

TEST_P(VelaBinMessage, IsDecodedAndCounted) {
  const auto count = [&] { return decoder->GetReceivedMsgCount(static_cast<eMessageTypes>(message.number)); };
  EXPECT_EQ(velagnss::binproto::ContentsOf(message.number), message.contents);
  for (unsigned int i = 1; i <= 3; ++i) {
    const S_Outcome outcome = Decode(*decoder, frame);
    EXPECT_EQ(outcome.result, eResultOk);
    EXPECT_EQ(outcome.number, message.number);
    EXPECT_EQ(count(), i);
    if (message.isRaw) {
      const std::string record = frame.substr(4) + "\r\n";  // on the wire and in memory
      EXPECT_EQ(outcome.record.substr(0, record.size()), record);
      EXPECT_EQ(outcome.record.find_first_not_of('\0', record.size()), std::string::npos);
    }
    if (message.contents == eContents::eHeaderOnly) {
      std::string record(outcome.record.size(), '\0');  // no satellites, nothing else
      record.replace(0, 4, frame, 4, 4);
      record.replace(offsetof(S_VelaBIN_Obs, Trailer), 4, frame.substr(frame.size() - 2) + "\r\n");
      EXPECT_TRUE(outcome.record == record);
    }
  }
  decoder->Reset();
  EXPECT_EQ(count(), 0U);
}

TEST_P(VelaBinMessage, CutShortAnywhereIsRefusedAndLeavesTheNextOneAlone) {
  const S_Outcome good = Decode(*decoder, frame);
  for (std::size_t length = 0; length < body.size(); ++length) {
    ASSERT_EQ(Decode(*decoder, BinFrame(message.number, body.substr(0, length))).result, eResultPastEnd) << length;
    ASSERT_EQ(Decode(*decoder, frame.substr(0, length + 10)).result, eResultTooShort) << length;
    ASSERT_EQ(Decode(*decoder, frame), good) << length;
  }
}

TEST_P(VelaBinMessage, CalledDirectlyStopsAtTheEndOfTheBuffer) {
  auto out = std::make_unique<U>();
  std::memset(out.get(), 0xAA, sizeof *out);
  const std::string untouched = Bytes(*out);
  for (std::size_t length = 0; length <= frame.size(); ++length) {
    ExactCopy cut(frame.substr(0, length));
    const unsigned int expected = length < 10 ? eResultBadSync : length < frame.size() ? eResultPastEnd : eResultOk;
    ASSERT_EQ(message.direct(*decoder, cut.Data(), cut.Size(), *out), expected) << length;
    ASSERT_EQ(decoder->GetLastResult(), expected);
    ASSERT_EQ(Bytes(*out) == untouched, expected != eResultOk) << length;
  }
  EXPECT_EQ(message.direct(*decoder, nullptr, 10, *out), eResultNull);
  ExactCopy other(BinFrame(message.number + 1U, body));
  EXPECT_EQ(message.direct(*decoder, other.Data(), other.Size(), *out), eResultWrongMessage);
  ExactCopy unchecked(With(With(frame, 0, 'x'), frame.size() - 1, '\x7E'));
  EXPECT_EQ(message.direct(*decoder, unchecked.Data(), unchecked.Size(), *out), eResultOk) << "no look at sync and sum";
}

TEST_P(VelaBinMessage, LongerThanItsLayoutIsAcceptedAndEndsItsRecordBehindTheBody) {
  const S_Outcome outcome = Decode(*decoder, BinFrame(message.number, body + "\x34\x12\x01"));
  EXPECT_EQ(outcome.result, eResultOk);
  if (!message.isRaw) return;
  EXPECT_EQ(outcome.record.substr(4 + body.size(), 4), "\x34\x12\r\n");
}

INSTANTIATE_TEST_SUITE_P(Numbers, VelaBinMessage, testing::ValuesIn(kMessages), CaseName<S_MessageCase>);

TEST(VelaBinDecode, RefusesWhatIsNoMessage) {
  const auto decoder = SeededDecoder();
  U out;
  const unsigned short ten = 10;
  unsigned short number = 0;
  EXPECT_EQ(decoder->Decode(nullptr, ten, number, out), eResultNull);
  EXPECT_EQ(Decode(*decoder, BinFrame(1, std::string(52, 'x')) + "\r\n").result, eResultTooLong);
  for (unsigned int other = 0; other <= 256; ++other) {
    bool supported = false;
    for (const S_MessageCase& message : kMessages) supported |= message.number == other;
    const S_Outcome outcome = Decode(*decoder, BinFrame(other, ""));
    EXPECT_EQ(velagnss::binproto::ContentsOf(other) != eContents::eUnsupported, supported);
    EXPECT_EQ(outcome.result, supported ? eResultPastEnd : eResultUnknownMessage) << other;
    EXPECT_EQ(outcome.record.find_first_not_of('\0'), std::string::npos) << other;
    EXPECT_EQ(decoder->GetReceivedMsgCount(static_cast<eMessageTypes>(other)), 0U);
    EXPECT_EQ(D::IsAnObservationMsg(static_cast<eMessageTypes>(other)),
              other == 16 || other == 36 || other == 66 || other == 76);
  }
}

TEST(VelaBinDecode, NamesTheSatelliteOfWordsThatAreNotDecoded) {
  D decoder(nullptr);  // not seeded: no week is asked for
  for (const auto& [number, system] : {std::pair(35, 2), {45, 3}}) {
    S_IFKeplerEphRec expected, record;
    SetEmpty_IFEphRec(expected);
    expected.System = expected.TimeSystem = static_cast<std::uint8_t>(system);
    expected.SvId = 0x2C;
    expected.Spare = 0;
    ExactCopy frame(BinFrame(number, "\x2C\x01" + std::string(126, '\xFF')));
    EXPECT_EQ(number == 35 ? decoder.Decode_Bin35(frame.Data(), frame.Size(), record)
                           : decoder.Decode_Bin45(frame.Data(), frame.Size(), record),
              eResultOk);
    EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0) << number;
  }
}

TEST(VelaBinDecode, FieldsOfMessage209) {
  std::string body = LittleEndian(0x3FF8000000000000, 8) + LittleEndian(2300, 2) + "ab";  // 1.5
  body += std::string(8 * 39, '\0') + LittleEndian(1039, 2) + "\x27\x8B" + LittleEndian(39000000, 4);
  D decoder(nullptr);
  S_BinMsg209 record;
  ExactCopy frame(BinFrame(209, body));
  ASSERT_EQ(decoder.Decode_Bin209(frame.Data(), frame.Size(), record), eResultOk);
  const auto& last = record.Entry[39];
  EXPECT_EQ(std::tuple(record.Time, record.Week, record.Spare[1]), std::tuple(1.5, 2300, 'b'));
  EXPECT_EQ(std::tuple(last.A, last.B, last.C, last.D), std::tuple(1039, 39, 139, 39000000U));
}

// --- seeds and weeks -----------------------------------------------------------------------------------------------

struct S_Seed {
  unsigned short week;
  double seconds;
  unsigned int system;
};

constexpr S_Seed kUnset = {0, 0, 7};

struct S_SeedCase {
  const char* name;
  S_Seed given;
  S_Seed gps, beidou, galileo;
};

// clang-format off
const S_SeedCase kSeeds[] = {
    {"Nothing",            {0, 0, 0},              kUnset,                kUnset,                kUnset},
    {"WeekZero",           {0, 20, 0},             {0, 20, 0},            {0, 6, 2},             {0, 20, 3}},
    {"SecondsZero",        {2300, 0, 0},           {2300, 0, 0},          {2299, 604786, 2},     {2300, 0, 3}},
    {"GpsBeforeTheWeek",   {2000, -10, 0},         {1999, 604790, 0},     {1999, 604776, 2},     {1999, 604790, 3}},
    {"GpsBehindTheWeek",   {2000, 604813, 0},      {2001, 13, 0},         {2000, 604799, 2},     {2001, 13, 3}},
    {"BeidouEndOfWeek",    {2000, 604786, 2},      {2001, 0, 0},          {2000, 604786, 2},     {2001, 0, 3}},
    {"BeidouNotNormalised",{2000, 604813, 2},      {2001, 27, 0},         {2001, 13, 2},         {2001, 27, 3}},
    {"GalileoStart",       {2000, 13.5, 3},        {2000, 13.5, 0},       {1999, 604799.5, 2},   {2000, 13.5, 3}},
    {"GlonassAlone",       {2000, 700000, 1},      kUnset,                kUnset,                kUnset},
    {"NormalisesToNothing",{65535, 604800, 0},     {0, 0, 0},             {65535, 604786, 2},    {0, 0, 3}},
    {"AllWeeksCarried",    {0, 604800.0 * 40000, 0}, {40000, 0, 0},       {39999, 604786, 2},    {40000, 0, 3}},
    {"InfiniteSeconds",    {2000, HUGE_VAL, 0},    {2000, HUGE_VAL, 0},   {2000, HUGE_VAL, 2},   {2000, HUGE_VAL, 3}},
    {"NoSlot",             {2000, 5, 7},           kUnset,                kUnset,                kUnset},
    {"NoSystem",           {2000, 5, 0xFFFFFFFF},  kUnset,                kUnset,                kUnset},
};
// clang-format on

void ExpectSeed(const D& decoder, unsigned int system, const S_Seed& expected) {
  const C_GnssTime& seed = decoder.GetSeedTime(static_cast<ALGO::eGNSSSystem>(system));
  EXPECT_EQ(seed.m_week, expected.week) << "system " << system;
  EXPECT_EQ(seed.m_secOfWeek, expected.seconds) << "system " << system;
  EXPECT_EQ(seed.m_system, expected.system) << "system " << system;
}

TEST_ROWS(VelaBinSeed, SetsTheOtherSystems, kSeeds, row) {
  const S_Seed& given = row.given;
  const auto system = static_cast<ALGO::eGNSSSystem>(given.system);
  D byValues(nullptr), byTime(nullptr);
  byValues.SeedTime(given.week, given.seconds, system);
  C_GnssTime time;
  time.Set(given.week, given.seconds, system);
  byTime.SeedTime(time);
  for (D* decoder : {&byValues, &byTime}) {
    ExpectSeed(*decoder, 0, row.gps);
    ExpectSeed(*decoder, 2, row.beidou);
    ExpectSeed(*decoder, 3, row.galileo);
    ExpectSeed(*decoder, 5, kUnset);
    ExpectSeed(*decoder, 7, kUnset);
    ExpectSeed(*decoder, 0xFFFFFFFF, kUnset);
    decoder->Reset();
    for (unsigned int slot = 0; slot < 7; ++slot) ExpectSeed(*decoder, slot, kUnset);
  }
}

TEST(VelaBinSeed, SystemsOfTheirOwnSetOnlyThemselves) {
  for (const unsigned int system : {1U, 4U, 5U, 6U}) {
    D decoder(nullptr);
    decoder.SeedTime(2000, 700000, static_cast<ALGO::eGNSSSystem>(system));
    for (unsigned int slot = 0; slot < 7; ++slot)
      ExpectSeed(decoder, slot, slot == system ? S_Seed{2001, 95200, system} : kUnset);
  }
}

// The rule by search: of all weeks that agree with the broadcast one modulo 1024 the nearest to the seed; of two
// equally near ones that of the seed's own period. BeiDou and Galileo weeks are counted from their own first week.
int NearestWeek(int seedWeek, int broadcast, int firstWeek) {
  if (seedWeek > firstWeek) seedWeek -= firstWeek;
  if (broadcast > firstWeek) broadcast -= firstWeek;
  for (int distance = 0;; ++distance)
    for (const int week : {seedWeek - distance, seedWeek + distance})
      if ((week - broadcast) % 1024 == 0 && (distance < 512 || (week >= 0 && week / 1024 == seedWeek / 1024)))
        return week + firstWeek;
}

TEST(VelaBinWeek, ResolvesAsTheSearchDoes) {
  for (const auto& [system, firstWeek] : {std::pair(0, 0), {2, 1356}, {3, 1024}, {1, 0}, {5, 0}})
    for (const int seedWeek : {1, 511, 512, 513, 1023, 1024, 1356, 1357, 1868, 2047, 2048, 2300, 2380, 40000, 65535}) {
      D decoder(nullptr);
      decoder.SeedTime(static_cast<unsigned short>(seedWeek), 302400, static_cast<ALGO::eGNSSSystem>(system));
      // Every week once by its residue and all weeks around the places where a rule changes.
      for (int broadcast = 0; broadcast < 65536; broadcast += broadcast < 4096 || broadcast > 64000 ? 1 : 511) {
        auto week = static_cast<unsigned short>(broadcast);
        ASSERT_TRUE(decoder.ResolveWeek(static_cast<ALGO::eGNSSSystem>(system), week));
        ASSERT_EQ(week, static_cast<unsigned short>(NearestWeek(seedWeek, broadcast, firstWeek)))
            << "system " << system << " seed " << seedWeek << " broadcast " << broadcast;
      }
    }
}

TEST(VelaBinWeek, IsLeftAloneWithoutASeed) {
  D decoder(nullptr);
  decoder.SeedTime(2300, 0, ALGO::GNSS_GLONASS);
  for (const unsigned int system : {0U, 2U, 3U, 4U, 5U, 6U, 7U, 0xFFFFFFFFU}) {
    unsigned short week = 252;
    EXPECT_FALSE(decoder.ResolveWeek(static_cast<ALGO::eGNSSSystem>(system), week)) << system;
    EXPECT_EQ(week, 252);
  }
}

// --- GLONASS channels ----------------------------------------------------------------------------------------------

TEST(VelaBinChannels, AcceptSlotsAndChannelsThatExist) {
  C_SatelliteList list;
  const unsigned short slots = 0;
  D decoder(&list, slots);
  for (int slot = 0; slot < 256; ++slot)
    for (int channel = -128; channel < 128; ++channel) {
      const auto slotByte = static_cast<unsigned char>(slot);
      const signed char before = decoder.GetGlonassSvChannelId(slotByte);
      const bool accepted = slot >= 1 && slot <= 24 && (channel == -128 || (channel >= -7 && channel <= 6));
      ASSERT_EQ(decoder.SetGlonassSvChannelId(slotByte, static_cast<signed char>(channel)), accepted);
      ASSERT_EQ(decoder.GetGlonassSvChannelId(slotByte), accepted ? channel : before) << slot;
    }
  decoder.Reset();
  EXPECT_EQ(decoder.GetGlonassSvChannelId(24), -128);
}

}  // namespace
