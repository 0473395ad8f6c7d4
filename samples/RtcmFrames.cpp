#include "samples/Ephemerides.h"
#include "samples/Frames.h"
#include "samples/Sky.h"

namespace {

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

// Message 1046, I/NAV.
const std::vector<S_BitField<K>> kGalileoFields = {
    {12, nullptr, 0, 1046},  // message number
    { 6, &K::satellite},
    {12, &K::week},
    {10, &K::iodc},
    { 8, nullptr, 0, 107},   // accuracy: 3.12 m
    {14, &K::iDot},
    {14, &K::toc},
    { 6, &K::af2},
    {21, &K::af1, -3},       // 2^-46 s/s
    {31, &K::af0, -3},       // 2^-34 s
    {16, &K::crs},
    {16, &K::deltaN},
    {32, &K::m0},
    {16, &K::cuc},
    {32, &K::eccentricity},
    {16, &K::cus},
    {32, &K::sqrtA},
    {14, &K::toe},
    {16, &K::cic},
    {32, &K::omega0},
    {16, &K::cis},
    {32, &K::i0},
    {16, &K::crc},
    {32, &K::omega},
    {24, &K::omegaDot},
    {10, &K::tgd, -1},       // 2^-32 s: E5a
    {10, &K::tgd, -1},       // E5b
    { 8, nullptr},           // both signals are healthy, their data valid; reserved
};

// Message 1042.
const std::vector<S_BitField<K>> kBeidouFields = {
    {12, nullptr, 0, 1042},  // message number
    { 6, &K::satellite},
    {13, &K::week},
    { 4, &K::ura},
    {14, &K::iDot},
    { 5, nullptr, 0, 1},     // age of the data: less than two hours
    {17, &K::toc},
    {11, &K::af2},
    {22, &K::af1, -7},       // 2^-50 s/s
    {24, &K::af0, -2},       // 2^-33 s
    { 5, nullptr, 0, 1},
    {18, &K::crs, -1},       // 2^-6 m
    {16, &K::deltaN},
    {32, &K::m0},
    {18, &K::cuc, -2},       // 2^-31 rad
    {32, &K::eccentricity},
    {18, &K::cus, -2},
    {32, &K::sqrtA},
    {17, &K::toe},
    {18, &K::cic, -2},
    {32, &K::omega0},
    {18, &K::cis, -2},
    {32, &K::i0},
    {18, &K::crc, -1},
    {32, &K::omega},
    {24, &K::omegaDot},
    {10, &K::tgd},           // of B1I
    {10, nullptr},           // of B2I, which is not observed
    { 1, nullptr},           // healthy
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

S_Frame KeplerEphemeris(eSystem system, const std::vector<S_BitField<K>>& fields, S_Context& context) {
  C_BitString bits;
  PutFields(bits, fields, KeplerNumbersOf(SatelliteOfRound(system, context.round), context.now));
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

S_Frame MakeGpsEphemeris(S_Context& context) { return KeplerEphemeris(eGps, kGpsFields, context); }

S_Frame MakeGalileoEphemeris(S_Context& context) { return KeplerEphemeris(eGalileo, kGalileoFields, context); }

S_Frame MakeBeidouEphemeris(S_Context& context) { return KeplerEphemeris(eBeidou, kBeidouFields, context); }

S_Frame MakeGlonassEphemeris(S_Context& context) {
  const S_GlonassNumbers numbers = GlonassNumbersOf(SatelliteOfRound(eGlonass, context.round), context.now);
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
