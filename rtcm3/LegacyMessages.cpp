// Observations of GPS and GLONASS on two carriers: 1001 to 1004, 1009 to 1012.
#include <span>

#include "rtcm3/Fields.h"
#include "rtcm3/Observations.h"
#include "rtcm3/Reading.h"

namespace velagnss::rtcm3 {
namespace {

using O = Rtcm3Observations;

// A satellite as sent. Phases and the second pseudorange are differences to the first pseudorange.
struct LegacySatellite {
  unsigned char number = 0;
  unsigned char channel = 0;
  unsigned char code[2] = {};
  unsigned char lock[2] = {};
  unsigned char strength[2] = {};  // 0: not available
  std::int32_t range = 0;
  std::int32_t rangeDifference = 0;  // of the second signal
  std::int32_t phaseDifference[2] = {};
  std::int32_t wholeRange = 0;  // units that the range is modulo of
};
using L = LegacySatellite;

constexpr std::int32_t kNoRangeDifference = -8192;
constexpr std::int32_t kNoPhaseDifference = -524288;

template <auto Member, unsigned int Index>
void Of(L& satellite, std::int64_t raw, double) {
  auto& member = (satellite.*Member)[Index];
  member = static_cast<std::remove_reference_t<decltype(member)>>(raw);
}
void Sent(O& o, std::int64_t raw, double) { o.time.sent = static_cast<std::uint32_t>(raw); }

// clang-format off
constexpr Field<O> kGpsHead[] = {
    {  3, 12, kUnsigned, {}, Store<&O::station>},
    {  4, 30, kUnsigned, {}, Sent},
    {  5,  1, kUnsigned, {}, Store<&O::isMoreToCome>},
    {  6,  5, kUnsigned, {}, Store<&O::numSatellites>},
    {  7,  1, kUnsigned, {}, Store<&O::isSmoothed>},
    {  8,  3, kUnsigned, {}, Store<&O::smoothingInterval>},
};
constexpr Field<O> kGlonassHead[] = {
    {  3, 12, kUnsigned, {}, Store<&O::station>},
    { 34, 27, kUnsigned, {}, Sent},
    {  5,  1, kUnsigned, {}, Store<&O::isMoreToCome>},
    { 35,  5, kUnsigned, {}, Store<&O::numSatellites>},
    { 36,  1, kUnsigned, {}, Store<&O::isSmoothed>},
    { 37,  3, kUnsigned, {}, Store<&O::smoothingInterval>},
};

// A satellite has up to four parts: first signal, its whole range and strength, second signal, strength of the second.
constexpr Field<L> kGpsFirst[] = {
    {  9,  6, kUnsigned, {}, Store<&L::number>},
    { 10,  1, kUnsigned, {}, Of<&L::code, 0>},
    { 11, 24, kUnsigned, {}, Store<&L::range>},
    { 12, 20, kSigned,   {}, Of<&L::phaseDifference, 0>},
    { 13,  7, kUnsigned, {}, Of<&L::lock, 0>},
};
constexpr Field<L> kGpsWhole[] = {
    { 14,  8, kUnsigned, {}, Store<&L::wholeRange>},
    { 15,  8, kUnsigned, {}, Of<&L::strength, 0>},
};
constexpr Field<L> kGlonassFirst[] = {
    { 38,  6, kUnsigned, {}, Store<&L::number>},
    { 39,  1, kUnsigned, {}, Of<&L::code, 0>},
    { 40,  5, kUnsigned, {}, Store<&L::channel>},
    { 41, 25, kUnsigned, {}, Store<&L::range>},
    { 42, 20, kSigned,   {}, Of<&L::phaseDifference, 0>},
    { 43,  7, kUnsigned, {}, Of<&L::lock, 0>},
};
constexpr Field<L> kGlonassWhole[] = {
    { 44,  7, kUnsigned, {}, Store<&L::wholeRange>},
    { 45,  8, kUnsigned, {}, Of<&L::strength, 0>},
};
constexpr Field<L> kSecondSignal[] = {  // DF046 to DF049 are alike
    { 16,  2, kUnsigned, {}, Of<&L::code, 1>},
    { 17, 14, kSigned,   {}, Store<&L::rangeDifference>},
    { 18, 20, kSigned,   {}, Of<&L::phaseDifference, 1>},
    { 19,  7, kUnsigned, {}, Of<&L::lock, 1>},
};
constexpr Field<L> kSecondStrength[] = {
    { 20,  8, kUnsigned, {}, Of<&L::strength, 1>},
};
static_assert(BitsOf<kGpsHead>() + 12 == 64 && BitsOf<kGlonassHead>() + 12 == 61);
constexpr unsigned int kSecondBits = BitsOf<kSecondSignal>() + BitsOf<kSecondStrength>();
static_assert(BitsOf<kGpsFirst>() + BitsOf<kGpsWhole>() + kSecondBits == 125);
static_assert(BitsOf<kGlonassFirst>() + BitsOf<kGlonassWhole>() + kSecondBits == 130);

struct LegacySystem {
  ALGO::eGNSSSystem system;
  TimeField timeField;
  std::uint32_t period;        // ms, after which the time repeats
  unsigned int lockGroup;
  std::int64_t unitMs;         // light-milliseconds that the range is modulo of
  bool (*readHead)(BitReader&, O&);
  bool (*readFirst)(BitReader&, L&);
  bool (*readWhole)(BitReader&, L&);
};
constexpr std::int64_t kMsMm = 299'792'458;  // a light-millisecond in mm
constexpr LegacySystem kGps = {
    ALGO::GNSS_GPS, TimeField::GpsWeek, kWeek, LockHistory::kLegacyGps, 1,
    ReadFields<kGpsHead, O>, ReadFields<kGpsFirst, L>, ReadFields<kGpsWhole, L>,
};
constexpr LegacySystem kGlonass = {
    ALGO::GNSS_GLONASS, TimeField::GlonassDay, kDay, LockHistory::kLegacyGlonass, 2,
    ReadFields<kGlonassHead, O>, ReadFields<kGlonassFirst, L>, ReadFields<kGlonassWhole, L>,
};
// clang-format on

// What 1001 to 1004 and 1009 to 1012 contain in addition to the first signal.
struct Contents {
  bool hasWhole;
  bool hasSecond;
};
constexpr Contents kContents[] = {{false, false}, {true, false}, {false, true}, {true, true}};

constexpr bool IsGps(unsigned int number) { return number <= 1004; }
const LegacySystem& SystemOf(unsigned int number) { return IsGps(number) ? kGps : kGlonass; }
const Contents& ContentsOf(unsigned int number) { return kContents[number - (IsGps(number) ? 1001 : 1009)]; }

[[nodiscard]] bool ReadSatellite(const LegacySystem& system, const Contents& contents, BitReader& reader, L& out) {
  if (!system.readFirst(reader, out)) return false;
  if (contents.hasWhole && !system.readWhole(reader, out)) return false;
  if (!contents.hasSecond) return true;
  return ReadFields<kSecondSignal>(reader, out) && (!contents.hasWhole || ReadFields<kSecondStrength>(reader, out));
}

// Cycles of a phase range given in halves of a millimeter: times frequency, divided by the speed of light. The product
// has more bits than a double, so whole cycles and the remainder are converted separately.
double CyclesOf(std::int64_t halfMm, double kilohertz) {
  constexpr std::int64_t kDivisor = 4 * kMsMm;
  const std::int64_t product = halfMm * static_cast<std::int64_t>(2 * kilohertz);
  const std::int64_t whole = product / kDivisor;
  return static_cast<double>(whole) + static_cast<double>(product - whole * kDivisor) / static_cast<double>(kDivisor);
}

void NameSatellite(const LegacySystem& system, const L& sent, Rtcm3Satellite& out) {
  constexpr unsigned int kFirstSbas = 40, kLastSbas = 58, kSbasOffset = 80;
  out.system = system.system;
  out.number = sent.number;
  out.svId = sent.number;
  if (system.system == ALGO::GNSS_GLONASS) {
    const int channel = sent.channel - 7;
    if (GlonassChannels::IsChannel(channel)) out.channel = static_cast<signed char>(channel);
    if (sent.number == 0) out.svId = NA_U8;  // the slot is not known
  } else if (sent.number >= kFirstSbas && sent.number <= kLastSbas) {
    out.system = ALGO::GNSS_SBAS;
    out.svId = static_cast<unsigned char>(sent.number + kSbasOffset);
  }
}

// A signal relative to the first pseudorange of its satellite.
struct Differences {
  std::int64_t rangeMm;
  bool hasRange;
  std::int32_t phase;  // halves of a millimeter
};

void PutTogether(std::int64_t firstMm, const Differences& difference, double kilohertz, Rtcm3Signal& out) {
  if (difference.hasRange) out.data.Pseudorange = static_cast<double>(firstMm + difference.rangeMm) / 1000;
  if (difference.phase == kNoPhaseDifference) return;
  const std::int64_t halfMm = 2 * firstMm + difference.phase;
  out.phaseRange = static_cast<double>(halfMm) / 2000;
  if (kilohertz != 0) out.data.CarrierPhase = CyclesOf(halfMm, kilohertz);
}

class LegacyEpoch {
 public:
  LegacyEpoch(const LegacySystem& system, const Contents& contents, O& out)
      : m_system(system), m_contents(contents), m_out(out) {}

  void Add(const L& sent, unsigned int index) {
    Rtcm3Satellite& satellite = m_out.satellites[index];
    NameSatellite(m_system, sent, satellite);
    if (m_contents.hasWhole) satellite.roughRange = static_cast<double>(sent.wholeRange * m_system.unitMs);
    for (unsigned int carrier = 0; carrier < (m_contents.hasSecond ? 2U : 1U); ++carrier)
      AddSignal(sent, carrier, index, m_out.signals[m_out.numSignals++]);
  }

 private:
  void AddSignal(const L& sent, unsigned int carrier, unsigned int index, Rtcm3Signal& out) {
    constexpr std::int64_t kRangeMm = 20;  // unit of ranges
    const Rtcm3Satellite& satellite = m_out.satellites[index];
    const Signal& signal = LegacySignal(satellite.system, carrier, sent.code[carrier]);
    const double kilohertz = KilohertzOf(signal, satellite.channel);
    BeginSignal(signal, index, out);
    if (kilohertz != 0) out.frequency = kilohertz * 1000;
    out.number = sent.code[carrier];
    out.data.LockCount = sent.lock[carrier];
    if (sent.strength[carrier] != 0) out.data.SignalStrength = sent.strength[carrier] / 4.0;  // dB-Hz
    const std::int64_t rangeMm = sent.range * kRangeMm;
    if (rangeMm < m_system.unitMs * kMsMm) {  // otherwise not available, like everything relative to it
      const bool isFirst = carrier == 0;
      const Differences differences = {isFirst ? 0 : sent.rangeDifference * kRangeMm,
                                       isFirst || sent.rangeDifference != kNoRangeDifference,
                                       sent.phaseDifference[carrier]};
      PutTogether(rangeMm + sent.wholeRange * m_system.unitMs * kMsMm, differences, kilohertz, out);
    }
  }

  const LegacySystem& m_system;
  const Contents& m_contents;
  O& m_out;
};

}  // namespace

unsigned int ReadLegacyObservations(BitReader& reader, unsigned int number, O& out) {
  const LegacySystem& system = SystemOf(number);
  const Contents& contents = ContentsOf(number);
  out.system = system.system;
  if (!system.readHead(reader, out)) return eResultPastEnd;
  if (!contents.hasWhole) out.rangeModulus = static_cast<double>(system.unitMs * kMsMm) / 1000;
  LegacySatellite sent[31];  // as many as 5 bits count
  for (unsigned int i = 0; i < out.numSatellites; ++i)
    if (!ReadSatellite(system, contents, reader, sent[i])) return eResultPastEnd;
  LegacyEpoch epoch(system, contents, out);
  for (unsigned int i = 0; i < out.numSatellites; ++i) epoch.Add(sent[i], i);
  return eResultOk;
}

void FollowLegacyObservations(State& state, O& out) {
  const LegacySystem& system = SystemOf(out.message);
  NoteEpoch(state, system.timeField, out.time);
  for (const Rtcm3Satellite& satellite : std::span(out.satellites, out.numSatellites))
    if (!IsNotAvailable(satellite.channel)) state.channels.Set(satellite.number, satellite.channel);
  if (out.time.sent >= system.period) return;
  const unsigned int carriers = ContentsOf(out.message).hasSecond ? 2 : 1;
  for (unsigned int i = 0; i < out.numSignals; ++i) {
    Rtcm3Signal& signal = out.signals[i];
    const Rtcm3Satellite& satellite = out.satellites[signal.satellite];
    if (IsNotAvailable(satellite.svId)) continue;
    NoteLock(state, {system.lockGroup, satellite.number, i % carriers, out.station, out.time.sent, system.period},
             LockTimeOfLegacy(signal.data.LockCount), signal);
  }
}

}  // namespace velagnss::rtcm3
