#include "apps/velagnss/rinex/NavRecord.h"

#include <algorithm>
#include <cmath>

#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/text/Units.h"
#include "geo/GnssTables.h"
#include "geo/NotAvailable.h"

namespace Host {
namespace {

using namespace VelaBIN_Messages;
using Kepler = S_IFKeplerEphRec;
using Pva = S_IFPvaEphRec;

constexpr double kMoscowOffset = 3 * 3600;  // s: GLONASS time is UTC(SU) + 3 h (GLONASS ICD, 3.3.3)

// One number of a record; without a value its place is left blank, which means that it is not known.
template <class Record>
using t_Field = std::optional<double> (*)(const Record& record);

template <auto Member, class Record>
std::optional<double> Number(const Record& record) {
  return static_cast<double>(record.*Member);
}

template <auto Member, class Record>
std::optional<double> Negative(const Record& record) {
  return -(record.*Member);
}

template <auto Member, class Record>
std::optional<double> Kilo(const Record& record) {
  return record.*Member / 1000;
}

// The nominal values of the indices 1, 3 and 5 are rounded to 2.8, 5.7 and 11.3 m (IS-GPS-200, 20.3.3.3.1.3). RINEX has
// 32767 where there is no prediction.
double AccuracyOf(double metres) {
  constexpr double kNoPrediction = 32767;
  return metres > kNoPrediction ? kNoPrediction : std::round(metres * 10) / 10;
}

std::optional<double> KeplerAccuracy(const Kepler& record) { return AccuracyOf(record.Ura); }

// The lowest value of the field means that there is none (IS-QZSS-PNT).
std::optional<double> GroupDelay(const Kepler& record) {
  constexpr double kNotAvailable = -128 * 0x1p-31;
  if (record.System == ALGO::GNSS_QZSS && record.Tgd == kNotAvailable) return std::nullopt;
  return record.Tgd;
}

std::optional<double> Channel(const Pva& record) {
  if (record.FreqChannel == NA_CHANNEL) return std::nullopt;
  return record.FreqChannel;
}

// Bits 8-7 M, 6 P4, 5 P3, 4 P2, 3-2 P1, 1-0 P.
std::optional<double> StatusFlags(const Pva& record) {
  return record.M << 7 | record.P4 << 6 | record.P3 << 5 | record.P2 << 4 | record.P1 << 2 | record.P;
}

// Bit 2 is ln of string 3; bits 1 and 0 are the health in the almanac, which the message does not carry.
std::optional<double> HealthFlags(const Pva& record) { return record.Ln << 2; }

// The message carries an index like that of GPS (RTCA DO-229, message type 9).
constexpr unsigned char kNoSbasAccuracy = 15;
unsigned char SbasAccuracyIndex(const Pva& record) {
  return static_cast<unsigned char>(std::min<unsigned int>(record.Ft, kNoSbasAccuracy));
}
std::optional<double> SbasAccuracy(const Pva& record) {
  return AccuracyOf(ALGO::UraIndexToMetres(SbasAccuracyIndex(record)));
}

// Bits 3 to 0 are the health of message type 17. Without that message they are all set, and so is bit 4. Bit 5: no
// accuracy.
std::optional<double> SbasHealth(const Pva& record) {
  return 0b01'1111 | (SbasAccuracyIndex(record) == kNoSbasAccuracy ? 0b10'0000 : 0);
}

// The place of the transmission time, which is kept apart from the contents: repetitions differ in nothing else.
template <class Record>
std::optional<double> Sent(const Record&) {
  return std::nullopt;
}

// The numbers in the order of RINEX 3.05, appendix A: three after the epoch, then lines of four.
// clang-format off
constexpr t_Field<Kepler> kKeplerFields[] = {  // tables "GPS/QZSS navigation message record"
    &Number<&Kepler::Af0>,       &Number<&Kepler::Af1>,       &Number<&Kepler::Af2>,
    &Number<&Kepler::Iode>,      &Number<&Kepler::Crs>,       &Number<&Kepler::DeltaN>,    &Number<&Kepler::M0>,
    &Number<&Kepler::Cuc>,       &Number<&Kepler::Ecc>,       &Number<&Kepler::Cus>,       &Number<&Kepler::SqrtA>,
    &Number<&Kepler::Toe>,       &Number<&Kepler::Cic>,       &Number<&Kepler::Omega0>,    &Number<&Kepler::Cis>,
    &Number<&Kepler::I0>,        &Number<&Kepler::Crc>,       &Number<&Kepler::Omega>,     &Number<&Kepler::OmegaDot>,
    &Number<&Kepler::IDot>,      &Number<&Kepler::CodeOnL2>,  &Number<&Kepler::ToeWeek>,   &Number<&Kepler::L2PDataFlag>,
    &KeplerAccuracy,             &Number<&Kepler::SvHealth>,  &GroupDelay,                 &Number<&Kepler::Iodc>,
    &Sent<Kepler>,               &Number<&Kepler::FitInterval>,  // GPS: hours, QZSS: the flag
};
constexpr t_Field<Pva> kGlonassFields[] = {
    &Negative<&Pva::TauN>,       &Number<&Pva::GammaN>,       &Sent<Pva>,
    &Kilo<&Pva::PosX>,           &Kilo<&Pva::VelX>,           &Kilo<&Pva::AccX>,           &Number<&Pva::Health>,
    &Kilo<&Pva::PosY>,           &Kilo<&Pva::VelY>,           &Kilo<&Pva::AccY>,           &Channel,
    &Kilo<&Pva::PosZ>,           &Kilo<&Pva::VelZ>,           &Kilo<&Pva::AccZ>,           &Number<&Pva::En>,
    &StatusFlags,                &Number<&Pva::DeltaTauN>,    &Number<&Pva::Ft>,           &HealthFlags,
};
constexpr t_Field<Pva> kSbasFields[] = {
    &Number<&Pva::TauN>,         &Number<&Pva::GammaN>,       &Sent<Pva>,
    &Kilo<&Pva::PosX>,           &Kilo<&Pva::VelX>,           &Kilo<&Pva::AccX>,           &SbasHealth,
    &Kilo<&Pva::PosY>,           &Kilo<&Pva::VelY>,           &Kilo<&Pva::AccY>,           &SbasAccuracy,
    &Kilo<&Pva::PosZ>,           &Kilo<&Pva::VelZ>,           &Kilo<&Pva::AccZ>,           &Number<&Pva::Iod>,
};
// clang-format on
constexpr std::size_t kKeplerSent = kFieldsBesideEpoch + 6 * kFieldsPerLine;  // the first of the seventh line
constexpr std::size_t kPvaSent = 2;                                           // the third after the epoch

template <class Record, std::size_t N>
std::vector<std::optional<double>> ValuesOf(const Record& record, const t_Field<Record> (&fields)[N]) {
  std::vector<std::optional<double>> values(N);
  for (std::size_t i = 0; i < N; ++i) values[i] = fields[i](record);
  return values;
}

// The transmission time counts from the start of the week of the ephemeris; it may be negative or beyond its end.
S_NavRecord KeplerRecord(std::size_t system, const velagnss::Record& decoded) {
  const auto& record = std::get<Kepler>(decoded);
  const double epoch = RinexSeconds(record.TocWeek, record.Toc);
  const double transmission = RinexSeconds(record.TxWeek, record.TxTime) - RinexSeconds(record.ToeWeek, 0);
  return {epoch, system, record.SvId, ValuesOf(record, kKeplerFields), transmission};
}

// Only the time of day of the frame is broadcast. Its day is the one nearest to the reference time, also around
// midnight in Moscow, where `FrameTime` may be a day or two off.
S_NavRecord GlonassRecord(std::size_t system, const velagnss::Record& decoded) {
  const auto& record = std::get<Pva>(decoded);
  const double epoch = RinexSeconds(record.RefWeek, record.RefTime) - kMoscowOffset;
  const double frame = epoch + std::remainder(record.FrameTime - record.RefTime, kSecondsPerDay);
  return {epoch, system, record.SvId, ValuesOf(record, kGlonassFields), frame - WeekStart(frame)};
}

S_NavRecord SbasRecord(std::size_t system, const velagnss::Record& decoded) {
  const auto& record = std::get<Pva>(decoded);
  const double epoch = RinexSeconds(record.RefWeek, record.RefTime);
  const double transmission = RinexSeconds(record.FrameWeek, record.FrameTime) - WeekStart(epoch);
  return {epoch, system, record.SvId, ValuesOf(record, kSbasFields), transmission};
}

// clang-format off
constexpr S_NavSystem kSystems[kNumNavSystems] = {
    {"gps",      'G',  "G: GPS",           eBin95,    0,  kKeplerSent,  &KeplerRecord},
    {"glonass",  'R',  "R: GLONASS",       eBin65,    0,  kPvaSent,     &GlonassRecord},
    {"qzss",     'J',  "J: QZSS",          eBin25,  192,  kKeplerSent,  &KeplerRecord},
    {"sbas",     'S',  "S: SBAS Payload",  eBin93,  100,  kPvaSent,     &SbasRecord},
};
// clang-format on

template <class Value>
std::size_t FindSystem(Value S_NavSystem::*column, const Value& value) {
  std::size_t row = 0;
  while (row < kNumNavSystems && kSystems[row].*column != value) ++row;
  return row;
}

}  // namespace

std::span<const S_NavSystem, kNumNavSystems> NavSystems() { return kSystems; }

std::size_t NavSystemNamed(std::string_view name) { return FindSystem(&S_NavSystem::name, name); }

std::size_t NavSystemOf(const velagnss::Frame& frame) {
  if (frame.protocol != C_RawDataMessage::eVelaBIN) return kNumNavSystems;
  return FindSystem(&S_NavSystem::message, frame.message);
}

}  // namespace Host
