// Corrections of orbits, clocks and codes: 1057 to 1068, 1240 to 1245, 1258 to 1263.
//
// Each of the four systems has six messages, in the same order. They differ between systems only in the fields for
// time, satellite and issue of data.
#include "records/ResultCodes.h"
#include "rtcm3/Fields.h"
#include "rtcm3/Reading.h"
#include "rtcm3/Signals.h"
#include "rtcm3/State.h"

namespace velagnss::rtcm3 {
namespace {

using R = Rtcm3Ssr;
using S = Rtcm3Ssr::Satellite;

struct CodeBias {
  unsigned char number = 0;
  double bias = 0;
};

constexpr unsigned short kUpdateIntervals[] = {1,   2,   5,   10,  15,   30,   60,   120,
                                               240, 300, 600, 900, 1800, 3600, 7200, 10800};  // s, by their code

void Sent(R& r, std::int64_t raw, double) { r.time.sent = static_cast<std::uint32_t>(raw); }
void UpdateInterval(R& r, std::int64_t raw, double) {
  r.updateCode = static_cast<unsigned char>(raw);
  r.updateInterval = kUpdateIntervals[raw];
}

// Accuracy of a class and a value of three bits each: 3^class (1 + value / 4) - 1 mm.
void Accuracy(S& s, std::int64_t raw, double) {
  constexpr unsigned int kUndefined = 0, kUnbounded = 63;
  constexpr double kPowersOf3[] = {1, 3, 9, 27, 81, 243, 729, 2187};
  s.accuracyIndex = static_cast<unsigned char>(raw);
  if (s.accuracyIndex == kUndefined || s.accuracyIndex == kUnbounded) return;
  const double quarterMm = kPowersOf3[raw >> 3] * static_cast<double>(4 + (raw & 7)) - 4;
  s.accuracy = quarterMm / 4000;
}

// In units of 8 s.
void ToeModulo(S& s, std::int64_t raw, double) { s.toe = static_cast<unsigned short>(8 * raw); }

// clang-format off
constexpr Field<R> kWeekTime[] = {{385, 20, kUnsigned, {}, Sent}};  // DF458 and DF465 are alike
constexpr Field<R> kDayTime[] =  {{386, 17, kUnsigned, {}, Sent}};  // GLONASS
constexpr Field<R> kUpdate[] = {
    {391,  4, kUnsigned, {}, UpdateInterval},
    {388,  1, kUnsigned, {}, Store<&R::isMoreToCome>},
};
constexpr Field<R> kDatum[] =  {{375,  1, kUnsigned, {}, Store<&R::isRegional>}};  // of orbits only
constexpr Field<R> kSource[] = {
    {413,  4, kUnsigned, {}, Store<&R::issue>},
    {414, 16, kUnsigned, {}, Store<&R::provider>},
    {415,  4, kUnsigned, {}, Store<&R::solution>},
    {387,  6, kUnsigned, {}, Store<&R::numSatellites>},
};

constexpr Field<S> kSatellite6[] = {{ 68,  6, kUnsigned, {},       Store<&S::svId>}};  // DF252 and DF488 are alike
constexpr Field<S> kSatellite5[] = {{384,  5, kUnsigned, {},       Store<&S::svId>}};
constexpr Field<S> kIssue8[] =     {{ 71,  8, kUnsigned, {},       Store<&S::issue>}};  // DF392 is alike
constexpr Field<S> kIssue10[] =    {{459, 10, kUnsigned, {},       Store<&S::issue>}};
constexpr Field<S> kToeAndIssue[] = {
    {470, 10, kUnsigned, {},       ToeModulo},
    {471,  8, kUnsigned, {},       Store<&S::issue>},
};
constexpr Field<S> kOrbit[] = {
    {365, 22, kSigned, Per(10000),  Store<&S::radial>},          // 0.1 mm
    {366, 20, kSigned, Per(2500),   Store<&S::alongTrack>},      // 0.4 mm
    {367, 20, kSigned, Per(2500),   Store<&S::crossTrack>},
    {368, 21, kSigned, Per(1e6),    Store<&S::radialRate>},      // 0.001 mm/s
    {369, 19, kSigned, Per(250000), Store<&S::alongTrackRate>},  // 0.004 mm/s
    {370, 19, kSigned, Per(250000), Store<&S::crossTrackRate>},
};
constexpr Field<S> kClock[] = {
    {376, 22, kSigned, Per(10000),  Store<&S::clock>},
    {377, 21, kSigned, Per(1e6),    Store<&S::clockRate>},
    {378, 27, kSigned, Per(5e7),    Store<&S::clockAcceleration>},  // 0.00002 mm/s^2
};
constexpr Field<S> kNumBiases[] =     {{379,  5, kUnsigned, {},         Store<&S::numBiases>}};
constexpr Field<CodeBias> kBias[] = {
    {380,  5, kUnsigned, {},       Store<&CodeBias::number>},  // DF381, DF382 and DF467 are alike
    {383, 14, kSigned,   Per(100), Store<&CodeBias::bias>},    // 0.01 m
};
constexpr Field<S> kAccuracy[] =      {{389,  6, kUnsigned, {},         Accuracy}};
constexpr Field<S> kHighRateClock[] = {{390, 22, kSigned,   Per(10000), Store<&S::highRateClock>}};

struct SsrSystem {
  unsigned short first;  // message number
  ALGO::eGNSSSystem system;
  TimeField timeField;
  bool (*readTime)(BitReader&, R&);
  bool (*readSatellite)(BitReader&, S&);
  bool (*readIssue)(BitReader&, S&);
};
constexpr SsrSystem kSsrSystems[] = {  // descending
    {1258, ALGO::GNSS_BEIDOU,  TimeField::BeidouWeek,
     ReadFields<kWeekTime, R>, ReadFields<kSatellite6, S>, ReadFields<kToeAndIssue, S>},
    {1240, ALGO::GNSS_GALILEO, TimeField::GpsWeek,
     ReadFields<kWeekTime, R>, ReadFields<kSatellite6, S>, ReadFields<kIssue10, S>},
    {1063, ALGO::GNSS_GLONASS, TimeField::GlonassDay,
     ReadFields<kDayTime, R>,  ReadFields<kSatellite5, S>, ReadFields<kIssue8, S>},
    {1057, ALGO::GNSS_GPS,     TimeField::GpsWeek,
     ReadFields<kWeekTime, R>, ReadFields<kSatellite6, S>, ReadFields<kIssue8, S>},
};
// clang-format on

const SsrSystem& SystemOf(unsigned int number) {
  return *std::find_if(std::begin(kSsrSystems), std::end(kSsrSystems),
                       [number](const SsrSystem& system) { return system.first <= number; });
}

// A message and where its biases go.
struct SsrMessage {
  const SsrSystem& system;
  R& out;
};

bool ReadOrbit(SsrMessage& m, BitReader& reader, S& s) {
  return m.system.readIssue(reader, s) && ReadFields<kOrbit>(reader, s);
}
bool ReadClock(SsrMessage&, BitReader& reader, S& s) { return ReadFields<kClock>(reader, s); }
bool ReadOrbitAndClock(SsrMessage& m, BitReader& reader, S& s) {
  return ReadOrbit(m, reader, s) && ReadClock(m, reader, s);
}
bool ReadAccuracy(SsrMessage&, BitReader& reader, S& s) { return ReadFields<kAccuracy>(reader, s); }
bool ReadHighRateClock(SsrMessage&, BitReader& reader, S& s) { return ReadFields<kHighRateClock>(reader, s); }

bool ReadBiases(SsrMessage& m, BitReader& reader, S& s) {
  if (!ReadFields<kNumBiases>(reader, s)) return false;
  if (reader.BitsLeft() < s.numBiases * BitsOf<kBias>()) return false;  // so there are places for all
  s.firstBias = m.out.numBiases;
  for (unsigned int i = 0; i < s.numBiases; ++i) {
    CodeBias sent;
    if (!ReadFields<kBias>(reader, sent)) return false;
    R::Bias& bias = m.out.biases[m.out.numBiases++];
    const std::string_view code = SsrCode(m.system.system, sent.number);
    bias.number = sent.number;
    std::copy(code.begin(), code.end(), bias.code);
    bias.bias = sent.bias;
  }
  return true;
}
static_assert(R::kMaxBiases * BitsOf<kBias>() >= 8 * kMaxPayload - 12 - BitsOf<kDayTime>());

// The six messages of a system.
struct SsrKind {
  bool hasDatum;
  bool (*read)(SsrMessage& message, BitReader& reader, S& satellite);
};
constexpr SsrKind kSsrKinds[] = {{true, &ReadOrbit},         {false, &ReadClock},    {false, &ReadBiases},
                                 {true, &ReadOrbitAndClock}, {false, &ReadAccuracy}, {false, &ReadHighRateClock}};

bool ReadHead(const SsrSystem& system, const SsrKind& kind, BitReader& reader, R& out) {
  return system.readTime(reader, out) && ReadFields<kUpdate>(reader, out) &&
         (!kind.hasDatum || ReadFields<kDatum>(reader, out)) && ReadFields<kSource>(reader, out);
}

// Streams of about 2010 use a draft of 1059 and 1060 with a shorter head. Read with the final layout, they leave data
// after the last field, where at most seven bits or zeros are expected.
bool IsRestEmpty(BitReader reader) {
  constexpr unsigned int kByte = 8;
  bool isEmpty = true;
  if (reader.BitsLeft() < kByte) return true;
  while (const unsigned int left = std::min(reader.BitsLeft(), kByte)) isEmpty = reader.Read(left) == 0 && isEmpty;
  return isEmpty;
}

}  // namespace

unsigned int ReadSsr(BitReader& reader, unsigned int number, Rtcm3Ssr& out) {
  const SsrSystem& system = SystemOf(number);
  const SsrKind& kind = kSsrKinds[number - system.first];
  out.system = system.system;
  if (!ReadHead(system, kind, reader, out)) return eResultPastEnd;
  SsrMessage message{system, out};
  for (unsigned int i = 0; i < out.numSatellites; ++i) {  // 6 bits: at most as many as there are places
    S& satellite = out.satellites[i];
    if (!system.readSatellite(reader, satellite) || !kind.read(message, reader, satellite)) return eResultPastEnd;
  }
  return IsRestEmpty(reader) ? eResultOk : eResultBadField;
}

unsigned int Follow(State& state, Rtcm3Ssr& out) {
  const auto time =
      state.clock.Resolve(SystemOf(out.message).timeField, out.time.sent * static_cast<std::uint32_t>(kSecond), NA_U8);
  if (time) state.clock.Describe(*time, out.time);
  return eResultOk;
}

}  // namespace velagnss::rtcm3
