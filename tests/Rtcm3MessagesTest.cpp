// Stations, texts, biases, corrections, residuals and messages that are not decoded; frames, cuts and excess of all.
#include <map>
#include <string>
#include <vector>

#include "tests/Cases.h"
#include "tests/Rtcm3Records.h"

namespace {

using namespace velagnss;

constexpr double kNone = NA_DOUBLE;
const C_GnssTime kSeed(2314, 345600.0, ALGO::GNSS_GPS);

std::string Bytes(std::initializer_list<int> bytes) { return {bytes.begin(), bytes.end()}; }

// --- Stations -------------------------------------------------------------------------------------------------------

// The frames that RTCM 10403 prints as examples.
const std::string kExample1005 = Bytes({0xD3, 0x00, 0x13, 0x3E, 0xD7, 0xD3, 0x02, 0x02, 0x98, 0x0E, 0xDE, 0xEF, 0x34,
                                        0xB4, 0xBD, 0x62, 0xAC, 0x09, 0x41, 0x98, 0x6F, 0x33, 0x36, 0x0B, 0x98});
const std::string kExample1029 =
    Bytes({0xD3, 0x00, 0x27, 0x40, 0x50, 0x17, 0x00, 0x84, 0x73, 0x6E, 0x15, 0x1E, 0x55, 0x54, 0x46,
           0x2D, 0x38, 0x20, 0xD0, 0xBF, 0xD1, 0x80, 0xD0, 0xBE, 0xD0, 0xB2, 0xD0, 0xB5, 0xD1, 0x80,
           0xD0, 0xBA, 0xD0, 0xB0, 0x20, 0x77, 0xC3, 0xB6, 0x72, 0x74, 0x65, 0x72, 0xED, 0xA3, 0x3B});

std::string PayloadOf(const std::string& frame) { return frame.substr(3, frame.size() - 6); }

TEST(Rtcm3Station, ExampleOf1005) {
  Rtcm3Decoder decoder;
  ExactCopy frame(kExample1005);
  const Rtcm3Decoded& decoded = decoder.Decode(frame.Data(), frame.Size());
  ASSERT_EQ(decoded.result, eResultOk);
  const auto& station = std::get<Rtcm3Station>(decoded.record);
  EXPECT_EQ(station.station, 2003);
  EXPECT_EQ((t_Values{station.x, station.y, station.z, station.antennaHeight}),
            (t_Values{1114104.5999, -4850729.7108, 3975521.4643, kNone}));
  EXPECT_EQ(station.servesGps, 1);
  EXPECT_EQ(station.servesGlonass, 0);
  EXPECT_EQ(station.servesGalileo, 0);
}

TEST(Rtcm3Station, EveryFieldOf1006And1032) {
  constexpr std::int64_t kLeast = -(1LL << 37);  // -13743895.3472 m
  Rtcm3Bits bits{{1006, 12}, {1, 12}, {63, 6}, {0, 1}, {0, 1}, {1, 1}, {1, 1}, {kLeast, 38}, {1, 1}, {1, 1}};
  auto station = Rtcm3Payloads().Get<Rtcm3Station>(bits.Put({{-1, 38}, {2, 2}, {1, 38}, {65535, 16}}));
  EXPECT_EQ(station.itrfYear, 63);
  EXPECT_EQ(station.servesGps + station.servesGlonass * 2 + station.servesGalileo * 4, 4);
  EXPECT_EQ(station.isComputed, 1);
  EXPECT_EQ(station.singleOscillator, 1);
  EXPECT_EQ(station.quarterCycle, 2);
  EXPECT_EQ((t_Values{station.x, station.y, station.z, station.antennaHeight}),
            (t_Values{-13743895.3472, -0.0001, 0.0001, 6.5535}));
  station =
      Rtcm3Payloads().Get<Rtcm3Station>(Rtcm3Bits{{1032, 12}, {1, 12}, {4095, 12}, {5, 6}, {1, 38}, {2, 38}, {-3, 38}});
  EXPECT_EQ(station.physicalStation, 4095);
  EXPECT_EQ(station.z, -0.0003);
  EXPECT_EQ(station.servesGps, NA_U8);
  station =
      Rtcm3Payloads().Get<Rtcm3Station>(Rtcm3Bits{{1032, 12}, {1, 12}, {2, 12}, {0, 6}, {0, 38}, {0, 38}, {0, 38}});
  EXPECT_EQ(station.x, kNone);
}

TEST(Rtcm3Station, Antennas) {
  const auto bits = [](unsigned int number, const std::vector<std::string>& texts) {
    Rtcm3Bits message{{number, 12}, {7, 12}};
    for (std::size_t i = 0; i < texts.size(); ++i) {
      message.Put(static_cast<std::int64_t>(texts[i].size()), 8).PutText(texts[i]);
      if (i == 0) message.Put(3, 8);
    }
    return message;
  };
  const std::string longest(255, '\xE9');  // more than the 31 characters that a descriptor may have
  auto antenna = Rtcm3Payloads().Get<Rtcm3Antenna>(bits(1007, {"NAME            DOME"}));
  EXPECT_EQ(antenna.antenna.View(), "NAME            DOME");
  EXPECT_EQ(antenna.setup, 3);
  antenna = Rtcm3Payloads().Get<Rtcm3Antenna>(bits(1008, {"", longest}));
  EXPECT_EQ(antenna.antenna.View(), "");
  EXPECT_EQ(antenna.antennaSerial.View(), longest);
  antenna = Rtcm3Payloads().Get<Rtcm3Antenna>(bits(1033, {longest, "A", "", "CD", longest}));
  EXPECT_EQ(antenna.antennaSerial.View(), "A");
  EXPECT_EQ(antenna.receiver.View(), "");
  EXPECT_EQ(antenna.firmware.View(), "CD");
  EXPECT_EQ(antenna.receiverSerial.View(), longest);
  EXPECT_EQ(Rtcm3Payloads().Result(bits(1008, {"NAME"})), eResultPastEnd);
}

TEST(Rtcm3Station, SystemParameters) {
  Rtcm3Bits bits{{1013, 12}, {1, 12}, {60448, 16}, {86400, 17}, {31, 5}, {255, 8}};
  for (int i = 0; i < 31; ++i) bits.Put({{1001 + i, 12}, {i % 2, 1}, {i, 16}});
  const auto out = Rtcm3Payloads().Get<Rtcm3SystemParameters>(bits);
  EXPECT_EQ(out.mjd, 60448);
  EXPECT_EQ(out.secondOfDay, 86400U);
  EXPECT_TRUE(IsNotAvailable(out.leapSeconds));
  ASSERT_EQ(out.numAnnouncements, 31);
  EXPECT_EQ(out.announcements[0].interval, kNone);
  EXPECT_EQ(out.announcements[30].message, 1031);
  EXPECT_FALSE(out.announcements[30].isRegular);
  EXPECT_EQ(out.announcements[29].interval, 2.9);
}

TEST(Rtcm3Station, Texts) {
  Rtcm3Payloads payloads;
  Rtcm3Decoded decoded = payloads.Decode(PayloadOf(kExample1029));
  const auto* text = std::get_if<Rtcm3Message>(&decoded.record);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text->station, 23);
  EXPECT_EQ(text->mjd, 132);
  EXPECT_EQ(text->secondOfDay, 59100U);
  EXPECT_EQ(text->numCharacters, 21);
  EXPECT_EQ(text->text.View(), "UTF-8 \u043f\u0440\u043e\u0432\u0435\u0440\u043a\u0430 w\u00f6rter");
  const auto cut = Rtcm3Payloads().Get<Rtcm3Message>(
      Rtcm3Bits{{1029, 12}, {1, 12}, {60448, 16}, {0, 17}, {3, 7}, {6, 8}}.PutText(std::string("a\xFF\0b\0\0", 6)));
  EXPECT_EQ(cut.text.View(), std::string("a\xFF\0b", 4));
}

struct S_BiasCase {
  const char* name;
  unsigned int mask;
  std::vector<int> sent;
  t_Values biases;  // L1 C/A, L1 P, L2 C/A, L2 P
};
const S_BiasCase kBiases[] = {
    {"None", 0b0000, {}, {kNone, kNone, kNone, kNone}},
    {"All", 0b1111, {-32768, 1, 0, 32767}, {-655.36, 0.02, 0, 655.34}},
    {"L1CaL2P", 0b1001, {953, -3597}, {19.06, kNone, kNone, -71.94}},
};

TEST_ROWS(Rtcm3Bias, FollowsTheMask, kBiases, row) {
  Rtcm3Bits bits{{1230, 12}, {1, 12}, {1, 1}, {7, 3}, {row.mask, 4}};
  for (const int bias : row.sent) bits.Put(bias, 16);
  const auto out = Rtcm3Payloads().Get<Rtcm3GlonassBiases>(bits);
  EXPECT_EQ(out.isAligned, 1);
  EXPECT_EQ((t_Values{out.l1Ca, out.l1P, out.l2Ca, out.l2P}), row.biases);
}

struct S_ResidualCase {
  const char* name;
  unsigned int number, timeBits;
  std::uint32_t time;
  ALGO::eGNSSSystem system;
  double seconds;
};
const S_ResidualCase kResiduals[] = {
    {"Gps", 1030, 20, 345601, ALGO::GNSS_GPS, 345601},
    {"Glonass", 1031, 17, 10800, ALGO::GNSS_GLONASS, 345618},
    {"Beidou", 1303, 20, 345601, ALGO::GNSS_BEIDOU, 345615},
};

TEST_ROWS(Rtcm3Residual, HasItsValues, kResiduals, row) {
  Rtcm3Bits bits{{row.number, 12}, {row.time, row.timeBits}, {9, 12}, {127, 7}, {31, 5}};
  for (int i = 1; i <= 31; ++i) bits.Put({{i, 6}, {255, 8}, {511, 9}, {63, 6}, {1023, 10}, {1021, 10}});
  const auto out = Rtcm3Payloads(kSeed).Get<Rtcm3Residuals>(bits);
  EXPECT_EQ(out.system, row.system);
  EXPECT_EQ(out.time.sent, row.time);
  EXPECT_EQ(out.time.seconds, row.seconds);
  EXPECT_EQ(out.station, 9);
  EXPECT_EQ(out.numReferences, 127);
  ASSERT_EQ(out.numSatellites, 31);
  const Rtcm3Residuals::Satellite& last = out.satellites[30];
  EXPECT_EQ(last.svId, 31);
  EXPECT_EQ((t_Values{last.constant, last.distance, last.height, last.ionoConstant, last.ionoDistance}),
            (t_Values{127.5, 5.11, 6.3, 511.5, 10.21}));
}

// --- Corrections ----------------------------------------------------------------------------------------------------

struct S_SsrSystem {
  const char* name;
  unsigned int first, timeBits, satelliteBits, toeBits, issueBits;
  ALGO::eGNSSSystem system;
  unsigned int biasNumber;
  const char* biasCode;
};
const S_SsrSystem kSsrSystems[] = {
    {"Gps", 1057, 20, 6, 0, 8, ALGO::GNSS_GPS, 8, "2L"},
    {"Glonass", 1063, 17, 5, 0, 8, ALGO::GNSS_GLONASS, 3, "2P"},
    {"Galileo", 1240, 20, 6, 0, 10, ALGO::GNSS_GALILEO, 7, "5X"},
    {"Beidou", 1258, 20, 6, 10, 8, ALGO::GNSS_BEIDOU, 14, "5X"},
};

enum SsrKind : unsigned char { kOrbit, kClock, kBias, kOrbitClock, kAccuracy, kHighRate };

Rtcm3Bits SsrMessage(const S_SsrSystem& system, SsrKind kind, int satellites) {
  Rtcm3Bits bits{{system.first + kind, 12}, {3600, system.timeBits}, {2, 4}, {1, 1}};
  if (kind == kOrbit || kind == kOrbitClock) bits.Put(1, 1);
  bits.Put({{13, 4}, {65534, 16}, {11, 4}, {satellites, 6}});
  for (int satellite = 1; satellite <= satellites; ++satellite) {
    bits.Put(satellite, system.satelliteBits);
    if (kind == kOrbit || kind == kOrbitClock) {
      bits.Put(150, system.toeBits).Put(77, system.issueBits);
      bits.Put({{-2097151, 22}, {-524287, 20}, {524286, 20}, {-1048575, 21}, {-262143, 19}, {262142, 19}});
    }
    if (kind == kClock || kind == kOrbitClock) bits.Put({{-2097150, 22}, {1048574, 21}, {-67108863, 27}});
    if (kind == kBias) bits.Put({{2, 5}, {system.biasNumber, 5}, {-8191, 14}, {31, 5}, {8190, 14}});
    if (kind == kAccuracy) bits.Put(satellite == 1 ? 0b011'010 : satellite == 2 ? 63 : 0, 6);
    if (kind == kHighRate) bits.Put(2097149, 22);
  }
  return bits;
}

TEST_ROWS(Rtcm3Ssr, HasItsValues, kSsrSystems, row) {
  for (const SsrKind kind : {kOrbit, kClock, kBias, kOrbitClock, kAccuracy, kHighRate}) {
    const auto out = Rtcm3Payloads().Get<velagnss::Rtcm3Ssr>(SsrMessage(row, kind, 3));
    EXPECT_EQ(out.system, row.system);
    EXPECT_EQ(out.time.sent, 3600U);
    EXPECT_EQ(out.updateInterval, 5);
    EXPECT_TRUE(out.isMoreToCome);
    EXPECT_EQ(out.issue, 13);
    EXPECT_EQ(out.provider, 65534);
    EXPECT_EQ(out.solution, 11);
    ASSERT_EQ(out.numSatellites, 3);
    const bool hasOrbit = kind == kOrbit || kind == kOrbitClock, hasClock = kind == kClock || kind == kOrbitClock;
    const auto If = [](bool has, double value) { return has ? value : kNone; };
    EXPECT_EQ(out.isRegional, hasOrbit ? 1 : NA_U8);
    const auto& second = out.satellites[1];
    EXPECT_EQ(second.svId, 2);
    EXPECT_EQ(second.issue, hasOrbit ? 77 : NA_U16);
    EXPECT_EQ(second.toe, hasOrbit && row.toeBits != 0 ? 1200 : NA_U16);
    EXPECT_EQ(
        (t_Values{second.radial, second.alongTrack, second.crossTrack, second.radialRate, second.alongTrackRate,
                  second.crossTrackRate}),
        (hasOrbit ? t_Values{-209.7151, -209.7148, 209.7144, -1.048575, -1.048572, 1.048568} : t_Values(6, kNone)));
    EXPECT_EQ((t_Values{second.clock, second.clockRate, second.clockAcceleration}),
              (hasClock ? t_Values{-209.715, 1.048574, -1.34217726} : t_Values(3, kNone)));
    EXPECT_EQ(second.highRateClock, If(kind == kHighRate, 209.7149));
    EXPECT_EQ(out.satellites[0].accuracy, If(kind == kAccuracy, 0.0395));  // 27 * 1.5 - 1 mm
    EXPECT_EQ(second.accuracy, kNone);
    EXPECT_EQ(second.accuracyIndex, kind == kAccuracy ? 63 : NA_U8);
    ASSERT_EQ(out.numBiases, kind == kBias ? 6 : 0);
    if (kind != kBias) continue;
    EXPECT_EQ(second.firstBias, 2);
    EXPECT_EQ(second.numBiases, 2);
    EXPECT_STREQ(out.biases[2].code, row.biasCode);
    EXPECT_EQ(out.biases[2].bias, -81.91);
    EXPECT_STREQ(out.biases[3].code, "");
    EXPECT_EQ(out.biases[3].number, 31);
    EXPECT_EQ(out.biases[3].bias, 81.9);
  }
}

TEST(Rtcm3Ssr, MostBiases) {
  // One satellite after the other, each with as many biases as 5 bits count, until the longest payload is full.
  Rtcm3Bits bits{{1065, 12}, {3600, 17}, {0, 5 + 4 + 16 + 4}, {14, 6}};
  for (int satellite = 0; satellite < 13; ++satellite) {
    bits.Put({{satellite, 5}, {31, 5}});
    for (int i = 0; i < 31; ++i) bits.Put({{i, 5}, {i, 14}});
  }
  bits.Put({{13, 5}, {17, 5}});
  for (int i = 0; i < 17; ++i) bits.Put({{i, 5}, {i, 14}});
  ASSERT_LE(bits.Size(), 8U * 1023);
  const auto out = Rtcm3Payloads().Get<velagnss::Rtcm3Ssr>(bits);
  EXPECT_EQ(out.numBiases, 13 * 31 + 17);
  EXPECT_EQ(out.biases[out.numBiases - 1].bias, 0.16);
}

TEST(Rtcm3Ssr, DraftsAreRefused) {
  Rtcm3Bits bits = SsrMessage(kSsrSystems[0], kAccuracy, 2);
  std::string payload = bits.Payload();
  Rtcm3Payloads payloads;
  EXPECT_EQ(payloads.Decode(payload + std::string(40, '\0')).result, eResultOk);
  EXPECT_EQ(payloads.Decode(payload + std::string(40, '\0') + '\x01').result, eResultBadField);
}

// --- All messages ---------------------------------------------------------------------------------------------------

// A payload of each message that is decoded, as long as its counts and masks make it; everything else is ones and zeros
// in turn.
std::map<unsigned int, std::string> AllMessages() {
  std::map<unsigned int, std::string> payloads;
  const auto add = [&payloads](Rtcm3Bits bits, unsigned int number, unsigned int size) {
    while (bits.Size() < size) bits.Put(bits.Size() % 2 != 0 ? 1 : 0, 1);
    payloads[number] = bits.Payload();
  };
  const std::pair<unsigned int, unsigned int> kFixed[] = {{63, 511},   {1005, 152}, {1006, 168}, {1019, 488},
                                                          {1020, 360}, {1032, 156}, {1041, 482}, {1042, 511},
                                                          {1044, 485}, {1045, 496}, {1046, 504}};
  for (const auto& [number, size] : kFixed) add({{number, 12}}, number, size);
  const unsigned int kBits[] = {58, 74, 101, 125, 64, 79, 107, 130};
  for (unsigned int i = 0; i < 4; ++i) {
    add({{1001 + i, 12}, {0, 12 + 30 + 1}, {31, 5}}, 1001 + i, 64 + 31 * kBits[i]);
    add({{1009 + i, 12}, {0, 12 + 27 + 1}, {31, 5}}, 1009 + i, 61 + 31 * kBits[4 + i]);
  }
  add({{1007, 12}, {1, 12}, {31, 8}}, 1007, 8 * 36);
  add(Rtcm3Bits{{1008, 12}, {1, 12}, {2, 8}}.PutText("ab").Put({{1, 8}, {31, 8}}), 1008, 8 * (8 + 31));
  add(Rtcm3Bits{{1033, 12}, {1, 12}, {0, 16}, {1, 8}}.PutText("a").Put({{0, 16}, {9, 8}}), 1033, 8 * 19);
  add({{1013, 12}, {0, 12 + 16 + 17}, {31, 5}}, 1013, 70 + 31 * 29);
  add({{1029, 12}, {0, 12 + 16 + 17 + 7}, {255, 8}}, 1029, 72 + 255 * 8);
  add({{1230, 12}, {0, 16}, {15, 4}}, 1230, 12 + 20 + 64);
  add({{1030, 12}, {0, 20 + 12 + 7}, {31, 5}}, 1030, 56 + 31 * 49);
  add({{1031, 12}, {0, 17 + 12 + 7}, {31, 5}}, 1031, 53 + 31 * 49);
  add({{1303, 12}, {0, 20 + 12 + 7}, {31, 5}}, 1303, 56 + 31 * 49);
  for (const S_SsrSystem& system : kSsrSystems)
    for (const SsrKind kind : {kOrbit, kClock, kBias, kOrbitClock, kAccuracy, kHighRate})
      payloads[system.first + kind] = SsrMessage(system, kind, system.satelliteBits == 5 ? 31 : 37).Payload();
  const unsigned int kMsmBits[][2] = {{10, 15}, {10, 27}, {10, 42}, {18, 48}, {36, 63}, {18, 65}, {36, 80}};
  for (unsigned int system = 107; system <= 113; ++system)
    for (unsigned int kind = 1; kind <= 7; ++kind)
      add(Rtcm3Bits{{10 * system + kind, 12}, {0, 12 + 30 + 19}, {0xFF, 64}, {0xFF, 32}}.Put(-1, 64),
          10 * system + kind, 233 + 8 * kMsmBits[kind - 1][0] + 64 * kMsmBits[kind - 1][1]);
  return payloads;
}

TEST(Rtcm3Payload, IsReadToItsEndAndNotBeyond) {
  const auto messages = AllMessages();
  EXPECT_EQ(messages.size(), 11U + 8 + 3 + 2 + 1 + 3 + 24 + 49);
  for (const auto& [number, payload] : messages) {
    Rtcm3Payloads payloads(kSeed);
    ASSERT_LE(payload.size(), 1023U);
    EXPECT_EQ(payloads.Decode(payload).result, eResultOk) << number;
    const std::size_t kind = payloads.Decode(payload).record.index();
    EXPECT_GT(kind, 1U) << number;
    // Every shorter payload lacks a field: the last bytes of these hold bits of one.
    for (std::size_t size = 0; size < payload.size(); ++size) {
      const Rtcm3Decoded& decoded = payloads.Decode(payload.substr(0, size));
      ASSERT_EQ(decoded.result, eResultPastEnd) << number << " cut after " << size;
      ASSERT_EQ(decoded.message, size < 2 ? 0 : number);
      ASSERT_TRUE(std::holds_alternative<Rtcm3Payload>(decoded.record));
    }
    // Longer ones are accepted, whatever follows; corrections want zeros.
    const std::string longest = payload + std::string(1023 - payload.size(), '\0');
    EXPECT_EQ(payloads.Decode(longest).result, eResultOk) << number;
    EXPECT_EQ(payloads.Decode(longest).record.index(), kind) << number;
  }
}

TEST(Rtcm3Payload, IsHandedOutIfNotDecoded) {
  for (const unsigned int number : {0U, 1U, 999U, 1014U, 1070U, 1078U, 1140U, 1246U, 1264U, 4072U, 4095U}) {
    Rtcm3Payloads payloads;
    ExactCopy frame(RtcmFrame(Rtcm3Bits{{number, 12}, {0xABC, 12}}.Payload()));
    const Rtcm3Decoded& decoded = payloads.decoder.Decode(frame.Data(), frame.Size());
    EXPECT_EQ(decoded.result, eResultOk);
    EXPECT_EQ(decoded.message, number);
    const auto& payload = std::get<velagnss::Rtcm3Payload>(decoded.record);
    EXPECT_EQ(payload.data, frame.Data() + 3);
    EXPECT_EQ(payload.size, 3U);
  }
}

struct S_FrameCase {
  const char* name;
  std::string frame;
  unsigned int result;
};
std::string Changed(std::size_t at, int by) {
  std::string frame = kExample1005;
  frame[at] = static_cast<char>(frame[at] ^ by);
  return frame;
}
const S_FrameCase kFrames[] = {
    {"Good", kExample1005, eResultOk},
    {"Empty", "", eResultTooShort},
    {"NoPayload", RtcmFrame(""), eResultPastEnd},
    {"OneByte", RtcmFrame("\x3E"), eResultPastEnd},
    {"Cut", kExample1005.substr(0, kExample1005.size() - 1), eResultTooShort},
    {"ByteMore", kExample1005 + 'x', eResultTooLong},
    {"Preamble", Changed(0, 1), eResultBadSync},
    {"ReservedBit", Changed(1, 4), eResultBadSync},
    {"Contents", Changed(9, 1), eResultChecksum},
    {"Checksum", Changed(24, 0x80), eResultChecksum},
};

TEST_ROWS(Rtcm3Frames, AreChecked, kFrames, row) {
  Rtcm3Decoder decoder;
  ExactCopy good(kExample1005);
  decoder.Decode(good.Data(), good.Size());  // leaves nothing for the next one
  ExactCopy frame(row.frame);
  const Rtcm3Decoded& decoded = decoder.Decode(frame.Data(), row.frame.size());
  EXPECT_EQ(decoded.result, row.result);
  if (row.result == eResultOk || row.result == eResultPastEnd) return;
  EXPECT_TRUE(std::holds_alternative<std::monostate>(decoded.record));
  EXPECT_EQ(decoded.message, 0);
  EXPECT_EQ(decoder.Decode(nullptr, 0).result, eResultNull);
}

}  // namespace
