// Multiple signal messages, MSM1 to MSM7 of seven systems: 1071 to 1077 ... 1131 to 1137.
//
// All have one layout: a head with masks of satellites, signals and cells, then columns, first those with a value for
// each satellite, then those with a value for each cell. The last digit of the message number selects the columns, the
// other digits the system.
#include <array>
#include <bit>
#include <span>

#include "rtcm3/Fields.h"
#include "rtcm3/Observations.h"
#include "rtcm3/Reading.h"

namespace velagnss::rtcm3 {
namespace {

using O = Rtcm3Observations;

constexpr unsigned int kMaxCells = O::kMaxSignals;

// What is sent of a satellite.
struct MsmSatellite {
  double whole = NA_DOUBLE;  // ms
  double rest = NA_DOUBLE;   // ms
  double rate = NA_DOUBLE;   // m/s
  unsigned char extended = NA_U8;
};
// What is sent of a cell, a signal of a satellite.
struct MsmCell {
  double range = NA_DOUBLE;     // ms, to be added to the rough range, like the phase range
  double phase = NA_DOUBLE;     // ms
  double rate = NA_DOUBLE;      // 0.0001 m/s, to be added to the rough rate
  double strength = NA_DOUBLE;  // dB-Hz
  unsigned int lock = 0;
  unsigned char half = 0;
};
using S = MsmSatellite;
using C = MsmCell;

void Sent(O& o, std::int64_t raw, double) { o.time.sent = static_cast<std::uint32_t>(raw); }
void DayOfWeek(O& o, std::int64_t raw, double) { o.time.dayOfWeek = static_cast<unsigned char>(raw); }

// clang-format off
// The columns, by the names of their fields.
constexpr Field<S> kWhole    = {397,  8, kUnsigned, {},             StoreUnless<&S::whole, 255>};
constexpr Field<S> kExtended = {419,  4, kUnsigned, {},             Store<&S::extended>};  // other systems: no number
constexpr Field<S> kRest     = {398, 10, kUnsigned, Times(0x1p-10), Store<&S::rest>};
constexpr Field<S> kRate     = {399, 14, kSigned,   {},             StoreUnless<&S::rate, -8192>};

constexpr Field<C> kRange     = {400, 15, kSigned,   Times(0x1p-24), StoreUnless<&C::range, -16384>};
constexpr Field<C> kPhase     = {401, 22, kSigned,   Times(0x1p-29), StoreUnless<&C::phase, -2097152>};
constexpr Field<C> kLock      = {402,  4, kUnsigned, {},             Store<&C::lock>};
constexpr Field<C> kStrength  = {403,  6, kUnsigned, {},             StoreUnless<&C::strength, 0>};
constexpr Field<C> kFineRate  = {404, 15, kSigned,   {},             StoreUnless<&C::rate, -16384>};
constexpr Field<C> kRangeHigh = {405, 20, kSigned,   Times(0x1p-29), StoreUnless<&C::range, -524288>};
constexpr Field<C> kPhaseHigh = {406, 24, kSigned,   Times(0x1p-31), StoreUnless<&C::phase, -8388608>};
constexpr Field<C> kLockHigh  = {407, 10, kUnsigned, {},             Store<&C::lock>};
constexpr Field<C> kStrengthHigh = {408, 10, kUnsigned, Times(0x1p-4), StoreUnless<&C::strength, 0>};
constexpr Field<C> kHalf      = {420,  1, kUnsigned, {},             Store<&C::half>};

// A column is read by a function of its own, so that the compiler knows the field inside the loop.
template <class Row>
struct Column {
  unsigned int bits = 0;
  void (*read)(BitReader& reader, unsigned int count, Row* rows) = nullptr;
};
template <const auto& F, class Row>
void ReadColumn(BitReader& reader, unsigned int count, Row* rows) {
  for (unsigned int i = 0; i < count; ++i) ReadField(F, reader, rows[i]);
}
template <const Field<S>& F>
constexpr Column<S> kSat = {F.bits, &ReadColumn<F, S>};
template <const Field<C>& F>
constexpr Column<C> kCell = {F.bits, &ReadColumn<F, C>};

// One of the seven kinds: its columns, up to the first that is empty.
struct MsmKind {
  std::array<Column<S>, 5> satellite;
  std::array<Column<C>, 7> cell;
  bool hasWholeRange;
  t_LockTime lockTime;  // null: no lock and no half-cycle flag
};
constexpr MsmKind kKinds[] = {
    {{kSat<kRest>},
     {kCell<kRange>}, false, nullptr},
    {{kSat<kRest>},
     {kCell<kPhase>, kCell<kLock>, kCell<kHalf>}, false, &LockTimeOfMsm},
    {{kSat<kRest>},
     {kCell<kRange>, kCell<kPhase>, kCell<kLock>, kCell<kHalf>}, false, &LockTimeOfMsm},
    {{kSat<kWhole>, kSat<kRest>},
     {kCell<kRange>, kCell<kPhase>, kCell<kLock>, kCell<kHalf>, kCell<kStrength>}, true, &LockTimeOfMsm},
    {{kSat<kWhole>, kSat<kExtended>, kSat<kRest>, kSat<kRate>},
     {kCell<kRange>, kCell<kPhase>, kCell<kLock>, kCell<kHalf>, kCell<kStrength>, kCell<kFineRate>},
     true, &LockTimeOfMsm},
    {{kSat<kWhole>, kSat<kRest>},
     {kCell<kRangeHigh>, kCell<kPhaseHigh>, kCell<kLockHigh>, kCell<kHalf>, kCell<kStrengthHigh>},
     true, &LockTimeOfMsmHigh},
    {{kSat<kWhole>, kSat<kExtended>, kSat<kRest>, kSat<kRate>},
     {kCell<kRangeHigh>, kCell<kPhaseHigh>, kCell<kLockHigh>, kCell<kHalf>, kCell<kStrengthHigh>,
      kCell<kFineRate>}, true, &LockTimeOfMsmHigh},
};

template <class Columns>
constexpr unsigned int BitsOfColumns(const Columns& columns) {
  unsigned int bits = 0;
  for (const auto& column : columns) bits += column.bits;
  return bits;
}
static_assert(BitsOfColumns(kKinds[4].satellite) == 36 && BitsOfColumns(kKinds[4].cell) == 63);
static_assert(BitsOfColumns(kKinds[5].satellite) == 18 && BitsOfColumns(kKinds[5].cell) == 65);
static_assert(BitsOfColumns(kKinds[6].satellite) == 36 && BitsOfColumns(kKinds[6].cell) == 80);

// Times of the systems.
constexpr Field<O> kStation[]      = {{  3, 12, kUnsigned, {}, Store<&O::station>}};
constexpr Field<O> kTimeOfWeek[]   = {{  4, 30, kUnsigned, {}, Sent}};  // DF248, DF427, DF428 and DF546 are alike
constexpr Field<O> kGlonassTime[]  = {{416,  3, kUnsigned, {}, DayOfWeek},
                                      { 34, 27, kUnsigned, {}, Sent}};
constexpr Field<O> kHead[] = {
    {393,  1, kUnsigned, {}, Store<&O::isMoreToCome>},
    {409,  3, kUnsigned, {}, Store<&O::stationIssue>},
    {  0,  7, kReserved},
    {411,  2, kUnsigned, {}, Store<&O::clockSteering>},
    {412,  2, kUnsigned, {}, Store<&O::externalClock>},
    {417,  1, kUnsigned, {}, Store<&O::isSmoothed>},
    {418,  3, kUnsigned, {}, Store<&O::smoothingInterval>},
};

// The seven systems, by the tens of the message number from 107 on.
struct MsmSystem {
  ALGO::eGNSSSystem system;
  unsigned char satelliteOffset;  // from the position in the mask, from 1, to the number
  TimeField timeField;
  std::uint32_t period;           // ms, after which the time repeats
};
constexpr MsmSystem kMsmSystems[] = {
    {ALGO::GNSS_GPS,       0, TimeField::GpsWeek,    kWeek},
    {ALGO::GNSS_GLONASS,   0, TimeField::GlonassDay, kDay},
    {ALGO::GNSS_GALILEO,   0, TimeField::GpsWeek,    kWeek},
    {ALGO::GNSS_SBAS,    119, TimeField::GpsWeek,    kWeek},
    {ALGO::GNSS_QZSS,    192, TimeField::GpsWeek,    kWeek},
    {ALGO::GNSS_BEIDOU,    0, TimeField::BeidouWeek, kWeek},
    {kNavic,               0, TimeField::GpsWeek,    kWeek},
};
// clang-format on

const MsmSystem& SystemOf(unsigned int number) {
  constexpr unsigned int kFirst = 1070;
  return kMsmSystems[(number - kFirst) / 10];
}
const MsmKind& KindOf(unsigned int number) { return kKinds[number % 10 - 1]; }

// Positions of the bits that are set; the highest bit is position 1.
struct Positions {
  unsigned int count = 0;
  std::array<unsigned char, 64> of;

  Positions(std::uint64_t mask, unsigned int width) : count(static_cast<unsigned int>(std::popcount(mask))) {
    for (unsigned int i = 0; i < count; ++i, mask &= mask - 1)
      of[count - 1 - i] = static_cast<unsigned char>(width - static_cast<unsigned int>(std::countr_zero(mask)));
  }
};

template <class Columns, class Row>
void ReadColumns(const Columns& columns, unsigned int count, BitReader& reader, Row* rows) {
  for (const auto& column : columns)
    if (column.read != nullptr) column.read(reader, count, rows);
}

// Extended information of GLONASS has the channel plus 7; 14 is reserved, 15 means unknown.
constexpr unsigned int kLastChannel = 13;
bool LacksChannel(const Rtcm3Satellite& satellite) {
  return satellite.system == ALGO::GNSS_GLONASS && satellite.extended > kLastChannel;
}

// Until the carrier of a signal is known, its phase is in milliseconds, which are cycles at 1 kHz, and in place of the
// Doppler there is the rate of the range in units of the fine rate. Products of rates and frequencies are exact, as
// they have less than 53 bits.
void SetCarrier(double kilohertz, Rtcm3Signal& out) {
  constexpr double kLightSpeed = 299'792'458.0 * 10;  // units of the fine rate, times Hz in a kHz
  if (kilohertz == 0) {
    out.data.CarrierPhase = out.data.Measurement3 = NA_DOUBLE;
    return;
  }
  out.frequency = kilohertz * 1000;
  if (!IsNotAvailable(out.data.CarrierPhase)) out.data.CarrierPhase *= kilohertz;
  if (!IsNotAvailable(out.data.Measurement3))
    out.data.Measurement3 = -(out.data.Measurement3 * kilohertz) / kLightSpeed;
}

class MsmEpoch {
 public:
  MsmEpoch(const MsmSystem& system, const MsmKind& kind, O& out) : m_system(system), m_kind(kind), m_out(out) {}

  unsigned int Read(BitReader& reader);

 private:
  void AddSatellite(const S& sent, unsigned int number, Rtcm3Satellite& out);
  void AddSignal(const C& sent, unsigned int satellite, unsigned int number, Rtcm3Signal& out);

  const MsmSystem& m_system;
  const MsmKind& m_kind;
  O& m_out;
};

// Sums of milliseconds are exact, as they are binary fractions of at most 40 bits; only the final product is rounded.
// Milliseconds times kHz are cycles.
void PutTogether(const C& sent, const Rtcm3Satellite& satellite, Rtcm3Signal& out) {
  constexpr double kRatesInOne = 10000;  // units of the fine rate in 1 m/s
  if (!IsNotAvailable(satellite.roughRange)) {
    if (!IsNotAvailable(sent.range)) out.data.Pseudorange = MetersOf(satellite.roughRange + sent.range);
    if (!IsNotAvailable(sent.phase)) {
      out.data.CarrierPhase = satellite.roughRange + sent.phase;
      out.phaseRange = MetersOf(out.data.CarrierPhase);
    }
  }
  if (IsNotAvailable(satellite.roughRate) || IsNotAvailable(sent.rate)) return;
  out.data.Measurement3 = satellite.roughRate * kRatesInOne + sent.rate;
  out.rangeRate = out.data.Measurement3 / kRatesInOne;
}

// The two masks of satellites and signals are followed by one of the cells, satellite by satellite.
unsigned int ReadMasks(BitReader& reader, std::uint64_t& satelliteMask, std::uint64_t& signalMask,
                       std::uint64_t& cellMask) {
  constexpr unsigned int kSatelliteBits = 64, kPiece = 32;
  if (reader.BitsLeft() < kSatelliteBits + kMsmSignals) return eResultPastEnd;
  satelliteMask = reader.Read(kPiece) << kPiece;
  satelliteMask |= reader.Read(kPiece);
  signalMask = reader.Read(kMsmSignals);
  const auto cells = static_cast<unsigned int>(std::popcount(satelliteMask) * std::popcount(signalMask));
  if (cells > kMaxCells) return eResultOutOfRange;
  if (reader.BitsLeft() < cells) return eResultPastEnd;
  cellMask = 0;
  for (unsigned int left = cells; left > 0;) {
    const unsigned int bits = std::min(left, kPiece);
    cellMask = cellMask << bits | reader.Read(bits);
    left -= bits;
  }
  return eResultOk;
}

unsigned int MsmEpoch::Read(BitReader& reader) {
  std::uint64_t satelliteMask, signalMask, cellMask;
  const unsigned int result = ReadMasks(reader, satelliteMask, signalMask, cellMask);
  if (result != eResultOk) return result;
  const Positions satellites(satelliteMask, 64);
  const Positions signals(signalMask, kMsmSignals);
  const auto numCells = static_cast<unsigned int>(std::popcount(cellMask));
  if (reader.BitsLeft() < satellites.count * BitsOfColumns(m_kind.satellite) + numCells * BitsOfColumns(m_kind.cell))
    return eResultPastEnd;
  std::array<S, O::kMaxSatellites> satellite;
  std::array<C, kMaxCells> cell;
  ReadColumns(m_kind.satellite, satellites.count, reader, satellite.data());
  ReadColumns(m_kind.cell, numCells, reader, cell.data());

  m_out.numSatellites = static_cast<unsigned char>(satellites.count);
  m_out.numSignals = static_cast<unsigned char>(numCells);
  for (unsigned int i = 0; i < satellites.count; ++i) AddSatellite(satellite[i], satellites.of[i], m_out.satellites[i]);
  const Positions present(cellMask, satellites.count * signals.count);
  for (unsigned int i = 0; i < numCells; ++i) {
    const unsigned int place = present.of[i] - 1U;
    AddSignal(cell[i], place / signals.count, signals.of[place % signals.count], m_out.signals[i]);
  }
  return eResultOk;
}

void MsmEpoch::AddSatellite(const S& sent, unsigned int number, Rtcm3Satellite& out) {
  out.system = m_system.system;
  out.number = static_cast<unsigned char>(number);
  out.svId = static_cast<unsigned char>(number + m_system.satelliteOffset);
  out.extended = sent.extended;
  if (!m_kind.hasWholeRange) out.roughRange = sent.rest;
  if (m_kind.hasWholeRange && !IsNotAvailable(sent.whole)) out.roughRange = sent.whole + sent.rest;
  out.roughRate = sent.rate;
  if (m_system.system == ALGO::GNSS_GLONASS && !LacksChannel(out))
    out.channel = static_cast<signed char>(sent.extended - 7);
}

void MsmEpoch::AddSignal(const C& sent, unsigned int satelliteIndex, unsigned int number, Rtcm3Signal& out) {
  const Rtcm3Satellite& satellite = m_out.satellites[satelliteIndex];
  const Signal& signal = MsmSignal(m_system.system, number);
  BeginSignal(signal, satelliteIndex, out);
  out.number = static_cast<unsigned char>(number);
  out.data.SignalStrength = sent.strength;
  PutTogether(sent, satellite, out);
  if (!LacksChannel(satellite)) SetCarrier(KilohertzOf(signal, satellite.channel), out);
  if (m_kind.lockTime == nullptr) return;
  out.halfCycle = sent.half;
  out.data.LockCount = sent.lock;
}

// What the message does not say of channels is known from other messages.
void FollowChannels(GlonassChannels& channels, O& out) {
  for (Rtcm3Satellite& satellite : std::span(out.satellites, out.numSatellites))
    if (LacksChannel(satellite))
      satellite.channel = channels.Of(satellite.number);
    else
      channels.Set(satellite.number, satellite.channel);
  for (Rtcm3Signal& signal : std::span(out.signals, out.numSignals)) {
    const Rtcm3Satellite& satellite = out.satellites[signal.satellite];
    if (LacksChannel(satellite))
      SetCarrier(KilohertzOf(MsmSignal(satellite.system, signal.number), satellite.channel), signal);
  }
}

}  // namespace

unsigned int ReadMsm(BitReader& reader, unsigned int number, O& out) {
  const MsmSystem& system = SystemOf(number);
  const MsmKind& kind = KindOf(number);
  out.system = system.system;
  out.msm = static_cast<unsigned char>(number % 10);
  if (!kind.hasWholeRange) out.rangeModulus = kMetersPerMs;
  const bool isRead = ReadFields<kStation>(reader, out) &&
                      (system.timeField == TimeField::GlonassDay ? ReadFields<kGlonassTime>(reader, out)
                                                                 : ReadFields<kTimeOfWeek>(reader, out)) &&
                      ReadFields<kHead>(reader, out);
  if (!isRead) return eResultPastEnd;
  return MsmEpoch(system, kind, out).Read(reader);
}

void FollowMsm(State& state, O& out) {
  const MsmSystem& system = SystemOf(out.message);
  const MsmKind& kind = KindOf(out.message);
  NoteEpoch(state, system.timeField, out.time);
  if (system.system == ALGO::GNSS_GLONASS) FollowChannels(state.channels, out);
  if (kind.lockTime == nullptr || out.time.sent >= system.period) return;
  for (Rtcm3Signal& signal : std::span(out.signals, out.numSignals)) {
    const unsigned int satellite = out.satellites[signal.satellite].number;
    NoteLock(state, {system.system, satellite - 1, signal.number - 1U, out.station, out.time.sent, system.period},
             kind.lockTime(signal.data.LockCount), signal);
  }
}

}  // namespace velagnss::rtcm3
