// RTCM 3 beside the other protocols of a stream: what RecordDecoder and StreamClock make of it.
#include <gmock/gmock.h>

#include <cmath>

#include "Cases.h"
#include "HostData.h"
#include "Rtcm3Bits.h"
#include "Streams.h"
#include "geo/NotAvailable.h"
#include "stream/RecordDecoder.h"

namespace {

using namespace velagnss;

using Bits = Rtcm3Bits;

const Bits kStation = Bits{{1005, 12}, {42, 12}, {0, 128}};
const Bits kEphemeris = Bits{{1019, 12}, {4, 6}, {2314 % 1024, 10}, {0, 460}};
const Bits kDate = Bits{{1013, 12}, {42, 12}, {60448, 16}, {43200, 17}, {0, 5}, {18, 8}};
const Bits kUnknown = Bits{{4072, 12}, {0x1234, 20}};

// MSM4 of GLONASS with one signal of a slot, on Saturday at 15:00:00 of GLONASS time.
Bits GlonassMsm4(unsigned int slot) {
  return Bits{{1084, 12}, {42, 12}, {6, 3}, {54000000, 27}, {0, 19}}
      .Put(1, slot)
      .Put(0, 64 - slot)
      .Put(1, 2)
      .Put(0, 30)
      .Put(1, 1)
      .Put({{70, 8}, {0, 10}, {0, 15}, {0, 22}, {0, 4}, {0, 1}, {40, 6}});
}

class Stream {
 public:
  const DecodedFrame& Rtcm(const Bits& bits) { return Give(RtcmFrame(bits.Payload()), C_RawDataMessage::eRTCM3_x, 0); }
  const DecodedFrame& Give(const std::string& bytes, C_RawDataMessage::eProtocols protocol, unsigned int message) {
    m_bytes = bytes;
    return decoder.Decode({reinterpret_cast<const unsigned char*>(m_bytes.data()),
                           static_cast<unsigned short>(m_bytes.size()), protocol, message, 0});
  }
  const DecodedFrame& Zda() {
    return Give(Sentence("GPZDA,120000.00,18,05,2024,00,00"), C_RawDataMessage::eNMEA0183, C_RawDataMessage::eNmeaZDA);
  }
  const DecodedFrame& Gll(const std::string& time) {
    return Give(Sentence("GPGLL,3403.47,N,11711.80,W," + time + ",A"), C_RawDataMessage::eNMEA0183,
                C_RawDataMessage::eNmeaGLL);
  }
  // The first frame of a binary message in the sample session.
  const DecodedFrame& Block(unsigned int number) {
    const std::string session = ReadHostFile("samples/session.bin");
    FrameReader reader;
    reader.Feed(reinterpret_cast<const unsigned char*>(session.data()), session.size());
    while (const Frame* frame = reader.NextFrame())
      if (frame->protocol == C_RawDataMessage::eVelaBIN && frame->message == number)
        return Give({frame->data, frame->data + frame->length}, frame->protocol, number);
    return decoder.Decode({});
  }
  template <class Record>
  Record Get(const DecodedFrame& decoded) {
    const auto* const record = std::get_if<Record>(&decoded.record);
    EXPECT_NE(record, nullptr);
    return record != nullptr ? *record : Record{};
  }

  RecordDecoder decoder;

 private:
  std::string m_bytes;
};

struct S_FrameCase {
  const char* name;
  std::string frame;
  std::optional<unsigned int> result;
  Depth depth;
  bool hasDataError;
};
const S_FrameCase kFrames[] = {
    {"Station", RtcmFrame(kStation.Payload()), 0, Depth::Full, false},
    {"NotDecoded", RtcmFrame(kUnknown.Payload()), std::nullopt, Depth::Raw, false},
    {"WithoutDate", RtcmFrame(kEphemeris.Payload()), 22, Depth::Full, false},
    {"CutOff", RtcmFrame(kStation.Payload().substr(0, 18)), 9, Depth::Raw, true},
    {"WrongChecksum", RtcmFrame(kStation.Payload()).substr(0, 24) + "x", 4, Depth::None, true},
};
TEST_ROWS(Rtcm3Frame, HasItsResult, kFrames, row) {
  Stream stream;
  const DecodedFrame& decoded = stream.Give(row.frame, C_RawDataMessage::eRTCM3_x, 0);
  EXPECT_EQ(decoded.result, row.result);
  EXPECT_EQ(decoded.depth, row.depth);
  EXPECT_EQ(decoded.hasDataError, row.hasDataError);
  EXPECT_EQ(decoded.isWeekUnresolved, row.result == 22U);
  const auto* const payload = std::get_if<Rtcm3Payload>(&decoded.record);
  EXPECT_EQ(payload != nullptr ? payload->size : 0, row.depth == Depth::Raw ? row.frame.size() - 6 : 0);
}

// Each protocol's dates serve the others; a restart forgets them, but not the seed.
TEST(Rtcm3InAStream, SharesDates) {
  const auto week = [](Stream& stream) {
    const DecodedFrame& decoded = stream.Rtcm(kEphemeris);
    return std::pair(decoded.week, stream.Get<Rtcm3KeplerEphemeris>(decoded).ephemeris.TxWeek);
  };
  Stream stream;
  stream.Zda();
  EXPECT_EQ(week(stream), std::pair(WeekSource::Stream, std::uint16_t{2314}));
  stream.decoder.Restart();
  EXPECT_EQ(week(stream).first, WeekSource::None);
  EXPECT_EQ(stream.Block(95).week, WeekSource::None);
  stream.Rtcm(kDate);
  EXPECT_EQ(stream.Block(95).week, WeekSource::Stream);
  EXPECT_EQ(stream.Get<S_IFKeplerEphRec>(stream.Block(95)).TxWeek, 2314);
  stream.decoder.SeedTime(C_GnssTime(1300, 1.0, ALGO::GNSS_GPS));
  stream.decoder.Restart();
  stream.Rtcm(kDate);
  EXPECT_EQ(week(stream), std::pair(WeekSource::Seed, std::uint16_t{1290}));
  EXPECT_EQ(stream.Block(95).week, WeekSource::Seed);
  stream.decoder.Reset();
  EXPECT_EQ(week(stream).first, WeekSource::None);
}

// What the stream says of its date refutes the day that was assumed, and each date of the sentences is followed.
TEST(Rtcm3InAStream, FollowsTheDates) {
  Stream stream;
  const auto week = [&stream] {
    const Bits gps = Bits{{1002, 12}, {42, 12}, {43200000, 30}, {0, 1 + 5 + 4}};  // a Sunday at noon
    const velagnss::Rtcm3Time time = stream.Get<Rtcm3Observations>(stream.Rtcm(gps)).time;
    return std::pair(time.week, time.isWeekAssumed);
  };
  stream.decoder.AssumeFirstDay(53344);  // of week 1300
  EXPECT_EQ(week(), std::pair(std::uint16_t{1300}, true));
  EXPECT_FALSE(stream.decoder.Clock().FirstDate());
  EXPECT_EQ(stream.decoder.Clock().UtcOf(stream.decoder.Clock().Seconds()).mjd, 53344U);
  EXPECT_EQ(stream.Rtcm(kEphemeris).week, WeekSource::Seed);
  stream.Zda();  // of week 2314, a Saturday
  EXPECT_EQ(week(), std::pair(std::uint16_t{2315}, false));
  EXPECT_EQ(stream.Rtcm(kEphemeris).week, WeekSource::Stream);
  stream.Rtcm(Bits{{1013, 12}, {42, 12}, {60448 + 700, 16}, {43200, 17}, {0, 5}, {18, 8}});
  EXPECT_EQ(week().first, 2415);
  stream.Zda();
  EXPECT_EQ(week().first, 2415) << "a sentence does not refute a message of RTCM 3";
}

// The day of the week decides which Sunday is nearest.
TEST(Rtcm3InAStream, LeavesTheAssumedDay) {
  const Bits gps = Bits{{1002, 12}, {42, 12}, {43200000, 30}, {0, 1 + 5 + 4}};  // a Sunday at noon
  // Of a healthy BeiDou satellite, Monday, 3 June 2024, 12:00.
  const Bits beidou =
      Bits{{1042, 12}, {30, 6}, {2317 - 1356, 13}}.Put(0, 268).Put(129600 / 8, 17).Put(0, 511 - 12 - 6 - 13 - 268 - 17);
  constexpr unsigned int kThursday = 60467;  // 6 June 2024
  const auto week = [&gps](Stream& stream) { return stream.Get<Rtcm3Observations>(stream.Rtcm(gps)).time.week; };
  Stream stream;
  stream.decoder.AssumeFirstDay(kThursday);
  EXPECT_EQ(week(stream), 2318);
  Stream withEphemeris;
  withEphemeris.decoder.AssumeFirstDay(kThursday);
  withEphemeris.Rtcm(beidou);
  EXPECT_EQ(week(withEphemeris), 2317);
  Stream withSentences;
  withSentences.decoder.AssumeFirstDay(kThursday - 6);
  for (int day = 0; day < 7; ++day)
    for (const char* time : {"000001", "120000", "235959"}) withSentences.Gll(time);
  EXPECT_EQ(week(withSentences), 2318);
}

// MSM4 has phases in meters, but no channels.
TEST(Rtcm3InAStream, TakesChannelsFromTheBinaryProtocol) {
  Stream stream;
  const S_IFPvaEphRec ephemeris = stream.Get<S_IFPvaEphRec>(stream.Block(65));
  const auto signal = [&] {
    return stream.Get<Rtcm3Observations>(stream.Rtcm(GlonassMsm4(ephemeris.SvId))).signals[0];
  };
  EXPECT_EQ(signal().frequency, 1602e6 + 562.5e3 * ephemeris.FreqChannel);
  stream.decoder.Restart();
  EXPECT_EQ(signal().frequency, NA_DOUBLE);
  EXPECT_TRUE(stream.decoder.SetGlonassChannel(ephemeris.SvId, -7));
  EXPECT_EQ(signal().frequency, 1602e6 - 562.5e3 * 7);
}

Rtcm3Observations At(unsigned short week, double seconds) {
  Rtcm3Observations record;
  record.time.week = week;
  record.time.seconds = seconds;
  return record;
}

Rtcm3SystemParameters DateOf(unsigned short mjd, unsigned int secondOfDay) {
  Rtcm3SystemParameters record;
  record.mjd = mjd;
  record.secondOfDay = secondOfDay;
  return record;
}

// A rover's sentences and a base's messages around midnight of 18 May 2024, a Saturday. GPS week 2315 begins at
// 23:59:42 of UTC.
TEST(StreamClock, KeepsTheDayWhereSourcesInterleave) {
  StreamClock clock;
  const auto after = [&clock](const auto& record) {
    clock.Note(record);
    return clock.Seconds();
  };
  S_GGA_Data gga{};
  gga.timeOfDay = 0.5;
  Rtcm3Observations glonass;
  glonass.system = ALGO::GNSS_GLONASS;
  glonass.time.sent = 10802000;  // of a day that is not known; 3 h ahead of UTC
  EXPECT_EQ(after(At(2315, 17)), 86399);
  EXPECT_EQ(clock.UtcOf(clock.Seconds()).mjd, 60448);
  EXPECT_EQ(after(gga), 86400.5);
  EXPECT_NEAR(after(At(2315, 17.9)), 86399.9, 1e-9);
  EXPECT_EQ(after(gga), 86400.5);
  EXPECT_EQ(after(At(2300, 19)), 86401) << "a week completed by a rough seed";
  EXPECT_EQ(after(glonass), 86402);
  EXPECT_EQ(after(DateOf(60449, 1)), 86402) << "whole seconds";
  EXPECT_EQ(after(DateOf(60449, 60)), 86460);
  EXPECT_EQ(after(At(NA_U16, 86400 * 3 + 18)), 86400 * 4) << "three days without a message";
  EXPECT_EQ(after(Rtcm3Observations{}), 86400 * 4) << "no time";
}

TEST(StreamClock, DatesWhatCameBeforeTheDate) {
  StreamClock clock;
  clock.Note(At(NA_U16, 17));
  EXPECT_EQ(clock.Seconds(), 86399);
  EXPECT_FALSE(clock.KnowsDate());
  Rtcm3Message text;
  text.mjd = 60449;
  text.secondOfDay = 5;
  clock.Note(text);
  EXPECT_EQ(clock.Seconds(), 86405);
  EXPECT_EQ(clock.UtcOf(86399).mjd, 60448);
}

}  // namespace
