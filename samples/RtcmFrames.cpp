#include "samples/Ephemerides.h"
#include "samples/Frames.h"

namespace {

constexpr int kStationId = 42;

// Antenna reference point near the track's start, earth-centred, 0.1 mm.
constexpr std::int64_t kAntenna[] = {39806906432, 8684520, 49668549230};
constexpr int kAntennaHeight = 15000;  // 0.1 mm

using K = S_KeplerNumbers;
using G = S_GlonassNumbers;

// clang-format off
// Message 1019.
const std::vector<S_BitField<K>> kGpsFields = {
    {12, nullptr, 0, 1019},  // message number
    { 6, &K::satellite},
    {10, &K::week},
    { 4, &K::ura},
    { 2, &K::codeOnL2},
    {14, &K::iDot},
    { 8, &K::iode},
    {16, &K::toc},
    { 8, &K::af2},
    {16, &K::af1},
    {22, &K::af0},
    {10, &K::iodc},
    {16, &K::crs},
    {16, &K::deltaN},
    {32, &K::m0},
    {16, &K::cuc},
    {32, &K::eccentricity},
    {16, &K::cus},
    {32, &K::sqrtA},
    {16, &K::toe},
    {16, &K::cic},
    {32, &K::omega0},
    {16, &K::cis},
    {32, &K::i0},
    {16, &K::crc},
    {32, &K::omega},
    {24, &K::omegaDot},
    { 8, &K::tgd},
    { 6, &K::health},
    { 1, &K::l2Flag},
    { 1, &K::fitFlag},
};

// Message 1020 up to the coordinates; what follows them is in PutGlonassTail.
const std::vector<S_BitField<G>> kGlonassHead = {
    {12, nullptr, 0, 1020},  // message number
    { 6, &G::slot},
    { 5, &G::channel, 0, 7},
    { 2, nullptr, 0, 3},     // almanac: healthy, and known to be so
    { 2, &G::p1},
    {12, &G::tk},
    { 1, &G::bn, 2},         // its top bit alone
    { 1, &G::p2},
    { 7, &G::tb},
};
// clang-format on

void PutGlonassTail(C_BitString& bits, const S_GlonassNumbers& numbers) {
  bits.Put(numbers.p3, 1);
  bits.PutSignMagnitude(numbers.gammaN, 11);
  bits.Put(numbers.p, 2);
  bits.Put(numbers.ln, 1);
  bits.PutSignMagnitude(numbers.tauN, 22);
  bits.PutSignMagnitude(numbers.deltaTauN, 5);
  bits.Put(numbers.en, 5);
  bits.Put(numbers.p4, 1);
  bits.Put(numbers.ft, 4);
  bits.Put(numbers.nt, 11);
  bits.Put(numbers.m, 2);
  bits.Put(1, 1);  // the fields from here to the reserved bits are valid
  bits.Put(numbers.na, 11);
  bits.PutSignMagnitude(numbers.tauC, 32);
  bits.Put(numbers.n4, 5);
  bits.PutSignMagnitude(numbers.tauGps, 22);
  bits.Put(numbers.ln, 1);
  bits.Put(0, 7);
}

std::int64_t GpsEpoch(const S_Moment& now) { return std::int64_t{now.gpsSecond} * 1000; }

std::int64_t BeidouEpoch(const S_Moment& now) { return (std::int64_t{now.gpsSecond} + 604800 - 14) % 604800 * 1000; }

// Day of week in the top three bits, which are 0 as it is Sunday in Moscow throughout; time of day there below.
std::int64_t GlonassEpoch(const S_Moment& now) { return (now.secondOfDay + 3 * 3600) % 86400 * std::int64_t{1000}; }

// Which satellites and signals one MSM 7 holds, by their numbers in the masks, and its epoch in ms.
struct S_Msm {
  int number;
  std::vector<int> satellites;
  std::vector<int> signals;
  std::int64_t (*epoch)(const S_Moment& now);
};

const std::vector<S_Msm> kMsms = {
    {1077, {4, 5, 7, 12, 13, 15, 20, 25, 29}, {2, 23}, &GpsEpoch},
    {1087, {3, 4, 5, 13, 14, 24}, {2, 9}, &GlonassEpoch},
    {1097, {3, 5, 9, 31}, {2, 15}, &GpsEpoch},
    {1127, {11, 14, 19, 21, 22, 26, 33, 35}, {2, 14}, &BeidouEpoch},
};

void PutMask(C_BitString& bits, int width, const std::vector<int>& numbers) {
  const std::size_t first = bits.Size();
  bits.Put(0, width);
  for (const int number : numbers) bits.SetBit(first + static_cast<std::size_t>(number) - 1, true);
}

// Header as RTCM 10403 has it, all cells present; what the cells hold is made up.
S_Frame MsmFrame(const S_Msm& msm, bool isLast, S_Context& context) {
  const auto satellites = static_cast<int>(msm.satellites.size());
  const int cells = satellites * static_cast<int>(msm.signals.size());
  C_BitString bits;
  bits.Put(msm.number, 12);
  bits.Put(kStationId, 12);
  bits.Put(msm.epoch(context.now), 30);
  bits.Put(isLast ? 0 : 1, 1);         // more messages of this epoch follow
  bits.Put(0, 3 + 7 + 2 + 2 + 1 + 3);  // issue, reserved, steering, clock, smoothing
  PutMask(bits, 64, msm.satellites);
  PutMask(bits, 32, msm.signals);
  bits.Put(-1, cells);
  const int bodyBits = satellites * (8 + 4 + 10 + 14) + cells * (20 + 24 + 10 + 1 + 10 + 15);
  for (int done = 0; done < bodyBits; ++done) bits.Put(context.random.Next(), 1);
  return RtcmFrame(bits.Bytes());
}

}  // namespace

S_Frame RtcmFrame(std::string_view payload) {
  Require(payload.size() >= 2 && payload.size() < 1024, "length of an RTCM payload");
  C_BitString head;
  head.Put(0xD3, 8);
  head.Put(static_cast<std::int64_t>(payload.size()), 6 + 10);
  const std::string body = head.Bytes() + std::string(payload);
  const std::uint32_t sum = Crc24(body);
  const std::string bytes = body + static_cast<char>(sum >> 16) + static_cast<char>(sum >> 8) + static_cast<char>(sum);
  const std::uint32_t number = static_cast<std::uint32_t>(static_cast<unsigned char>(payload[0]) << 4 |
                                                          static_cast<unsigned char>(payload[1]) >> 4);
  return {eRtcm, number, std::to_string(number), bytes, "", ""};
}

S_Frame MakeStation(S_Context& context) {
  const bool hasHeight = context.round % 2 != 0;
  C_BitString bits;
  bits.Put(hasHeight ? 1006 : 1005, 12);
  bits.Put(kStationId, 12);
  bits.Put(0, 6);       // year of the reference frame
  bits.Put(0b1110, 4);  // GPS, GLONASS, Galileo; a physical station
  bits.Put(kAntenna[0], 38);
  bits.Put(0b10, 2);  // one oscillator; reserved
  bits.Put(kAntenna[1], 38);
  bits.Put(0, 2);  // quarter cycles
  bits.Put(kAntenna[2], 38);
  if (hasHeight) bits.Put(kAntennaHeight, 16);
  return RtcmFrame(bits.Bytes());
}

S_Frame MakeGpsEphemeris(S_Context& context) {
  C_BitString bits;
  PutFields(bits, kGpsFields, KeplerNumbersOf(kGpsSatellites[context.round % std::size(kGpsSatellites)], context.now));
  return RtcmFrame(bits.Bytes());
}

S_Frame MakeGlonassEphemeris(S_Context& context) {
  const S_GlonassNumbers numbers = GlonassNumbersOf(context.round, context.now);
  C_BitString bits;
  PutFields(bits, kGlonassHead, numbers);
  for (int axis = 0; axis < 3; ++axis) {
    bits.PutSignMagnitude(numbers.velocity[axis], 24);
    bits.PutSignMagnitude(numbers.position[axis], 27);
    bits.PutSignMagnitude(numbers.acceleration[axis], 5);
  }
  PutGlonassTail(bits, numbers);
  return RtcmFrame(bits.Bytes());
}

std::vector<S_Frame> MakeMsmSet(S_Context& context) {
  std::vector<S_Frame> frames;
  for (const S_Msm& msm : kMsms) frames.push_back(MsmFrame(msm, &msm == &kMsms.back(), context));
  return frames;
}

S_Frame MakeCodePhaseBias(S_Context&) {
  C_BitString bits;
  bits.Put(1230, 12);
  bits.Put(kStationId, 12);
  bits.Put(0b1000, 4);  // biases are corrected; reserved
  bits.Put(0b1111, 4);  // a bias for each of the four signals, in 0.02 m
  for (const int bias : {-12, 7, 31, -5}) bits.Put(bias, 16);
  return RtcmFrame(bits.Bytes());
}

S_Frame MakeProprietaryRtcm(S_Context& context) {
  C_BitString bits;
  bits.Put(4072, 12);
  bits.Put(context.round % 2, 12);
  return RtcmFrame(bits.Bytes() + context.random.Bytes(60 + context.random.Below(80)));
}
