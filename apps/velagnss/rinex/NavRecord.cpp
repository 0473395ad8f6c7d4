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
using Kepler = velagnss::Rtcm3KeplerEphemeris;
using Pva = velagnss::Rtcm3PvaEphemeris;
using K = S_IFKeplerEphRec;
using P = S_IFPvaEphRec;

constexpr double kMoscowOffset = 3 * 3600;  // s: GLONASS time is UTC(SU) + 3 h (GLONASS ICD, 3.3.3)
constexpr int kFirstBeidouWeek = 1356;      // GPS week in which BeiDou time began (BDS-SIS-ICD, 3.3)

// One number of a record; without a value its place is left blank, which means that it is not known.
template <class Record>
using t_Field = double (*)(const Record& record);

template <class Value>
double Known(Value value) {
  return IsNotAvailable(value) ? kNoNumber : static_cast<double>(value);
}

// A member of the ephemeris, as it is or in other units.
template <auto Member, int Sign = 1, int Unit = 1, class Record>
double Number(const Record& record) {
  const double value = Known(record.ephemeris.*Member);
  return value == kNoNumber ? value : Sign * value / Unit;
}
template <auto Member>
constexpr auto Kep = &Number<Member, 1, 1, Kepler>;
template <auto Member, int Sign = 1, int Unit = 1>
constexpr auto Pv = &Number<Member, Sign, Unit, Pva>;
template <auto Member>
constexpr auto Kilo = &Number<Member, 1, 1000, Pva>;

template <int Value, class Record>
double Always(const Record&) {
  return Value;
}
double Blank(const Kepler&) { return kNoNumber; }

// The nominal values of the indices 1, 3 and 5 are rounded to 2.8, 5.7 and 11.3 m (IS-GPS-200, 20.3.3.3.1.3). The index
// 15, "no prediction", has a number of its own.
double AccuracyOf(double meters, double noPrediction) {
  constexpr double kGreatest = 4096;
  return meters > kGreatest ? noPrediction : std::round(meters * 10) / 10;
}
double KeplerAccuracy(const Kepler& record) { return AccuracyOf(record.ephemeris.Ura, 8192); }

// Signal-in-space accuracy of Galileo; -1 for "no prediction".
double Sisa(const Kepler& record) {
  constexpr double kGreatest = 6;  // m, index 125
  const double meters = record.ephemeris.Ura;
  return meters > kGreatest ? -1 : meters;
}

// The lowest value of the field means that there is none (IS-QZSS-PNT).
double QzssGroupDelay(const Kepler& record) {
  constexpr double kNotAvailable = -128 * 0x1p-31;
  const double delay = Known(record.ephemeris.Tgd);
  return delay == kNotAvailable ? kNoNumber : delay;
}

double BeidouWeek(const Kepler& record) { return record.ephemeris.ToeWeek - kFirstBeidouWeek; }
double DataSource(const Kepler& record) { return Known(record.dataSource); }
double SecondGroupDelay(const Kepler& record) { return Known(record.groupDelay2); }
double GalileoE5bDelay(const Kepler& record) {  // F/NAV has none, and RINEX 0 there
  return IsNotAvailable(record.groupDelay2) ? 0 : record.groupDelay2;
}

// Bits 8-7 M, 6 P4, 5 P3, 4 P2, 3-2 P1, 1-0 P.
double StatusFlags(const Pva& record) {
  const P& e = record.ephemeris;
  return e.M << 7 | e.P4 << 6 | e.P3 << 5 | e.P2 << 4 | e.P1 << 2 | e.P;
}

// Bit 2 is ln of string 3; bits 1 and 0 are the health in the almanac.
double HealthFlags(const Pva& record) { return record.ephemeris.Ln << 2; }

// The message carries an index like that of GPS (RTCA DO-229, message type 9).
constexpr unsigned char kNoSbasAccuracy = 15;
unsigned char SbasAccuracyIndex(const Pva& record) {
  return static_cast<unsigned char>(std::min<unsigned int>(record.ephemeris.Ft, kNoSbasAccuracy));
}
double SbasAccuracy(const Pva& record) { return AccuracyOf(ALGO::UraIndexToMetres(SbasAccuracyIndex(record)), 32767); }

// Bits 3 to 0 are the health of message type 17. Without that message they are all set, and so is bit 4. Bit 5: no
// accuracy.
double SbasHealth(const Pva& record) {
  return 0b01'1111 | (SbasAccuracyIndex(record) == kNoSbasAccuracy ? 0b10'0000 : 0);
}

// The place of the transmission time, which is kept apart from the contents: repetitions differ in nothing else.
template <class Record>
double Sent(const Record&) {
  return kNoNumber;
}

// The numbers in the order of RINEX 3.05, appendix A: three after the epoch, then lines of four.
// clang-format off
constexpr t_Field<Kepler> kOrbitFields[] = {  // the same for all systems
    Kep<&K::Af0>,       Kep<&K::Af1>,       Kep<&K::Af2>,
    Kep<&K::Iode>,      Kep<&K::Crs>,       Kep<&K::DeltaN>,    Kep<&K::M0>,
    Kep<&K::Cuc>,       Kep<&K::Ecc>,       Kep<&K::Cus>,       Kep<&K::SqrtA>,
    Kep<&K::Toe>,       Kep<&K::Cic>,       Kep<&K::Omega0>,    Kep<&K::Cis>,
    Kep<&K::I0>,        Kep<&K::Crc>,       Kep<&K::Omega>,     Kep<&K::OmegaDot>,
    Kep<&K::IDot>,
};
constexpr std::size_t kNumOrbitFields = std::size(kOrbitFields);
constexpr t_Field<Kepler> kGpsFields[] = {
                        Kep<&K::CodeOnL2>,  Kep<&K::ToeWeek>,   Kep<&K::L2PDataFlag>,
    &KeplerAccuracy,    Kep<&K::SvHealth>,  Kep<&K::Tgd>,       Kep<&K::Iodc>,
    &Sent<Kepler>,      Kep<&K::FitInterval>,  // h
};
constexpr t_Field<Kepler> kQzssFields[] = {
                        &Always<2, Kepler>, Kep<&K::ToeWeek>,   &Always<1, Kepler>,
    &KeplerAccuracy,    Kep<&K::SvHealth>,  &QzssGroupDelay,    Kep<&K::Iodc>,
    &Sent<Kepler>,      Kep<&K::FitInterval>,  // the flag
};
constexpr t_Field<Kepler> kGalileoFields[] = {
                        &DataSource,        Kep<&K::ToeWeek>,   &Blank,
    &Sisa,              Kep<&K::SvHealth>,  Kep<&K::Tgd>,       &GalileoE5bDelay,
    &Sent<Kepler>,
};
constexpr t_Field<Kepler> kBeidouFields[] = {
                        &Blank,             &BeidouWeek,        &Blank,
    &KeplerAccuracy,    Kep<&K::SvHealth>,  Kep<&K::Tgd>,       &SecondGroupDelay,
    &Sent<Kepler>,      Kep<&K::Iodc>,
};
constexpr t_Field<Kepler> kNavicFields[] = {
                        &Blank,             Kep<&K::ToeWeek>,   &Blank,
    &KeplerAccuracy,    Kep<&K::SvHealth>,  Kep<&K::Tgd>,       &Blank,
    &Sent<Kepler>,
};
constexpr t_Field<Pva> kGlonassFields[] = {
    Pv<&P::TauN, -1>,   Pv<&P::GammaN>,     &Sent<Pva>,
    Kilo<&P::PosX>,     Kilo<&P::VelX>,     Kilo<&P::AccX>,     Pv<&P::Health>,
    Kilo<&P::PosY>,     Kilo<&P::VelY>,     Kilo<&P::AccY>,     Pv<&P::FreqChannel>,
    Kilo<&P::PosZ>,     Kilo<&P::VelZ>,     Kilo<&P::AccZ>,     Pv<&P::En>,
    &StatusFlags,       Pv<&P::DeltaTauN>,  Pv<&P::Ft>,         &HealthFlags,
};
constexpr t_Field<Pva> kSbasFields[] = {
    Pv<&P::TauN>,       Pv<&P::GammaN>,     &Sent<Pva>,
    Kilo<&P::PosX>,     Kilo<&P::VelX>,     Kilo<&P::AccX>,     &SbasHealth,
    Kilo<&P::PosY>,     Kilo<&P::VelY>,     Kilo<&P::AccY>,     &SbasAccuracy,
    Kilo<&P::PosZ>,     Kilo<&P::VelZ>,     Kilo<&P::AccZ>,     Pv<&P::Iod>,
};
// clang-format on
constexpr std::size_t kKeplerSent = kFieldsBesideEpoch + 6 * kFieldsPerLine;  // the first of the seventh line
constexpr std::size_t kPvaSent = 2;                                           // the third after the epoch
constexpr std::size_t kHealthFlags = std::size(kGlonassFields) - 1;
constexpr std::size_t kDataSource = kNumOrbitFields;  // of Galileo

// The rows of kSystems.
enum eNavSystem : unsigned char { eGps, eGlonass, eGalileo, eBeidou, eQzss, eNavic, eSbas };

template <std::size_t N>
constexpr std::size_t Keplers(const t_Field<Kepler> (&)[N]) {
  return kNumOrbitFields + N;
}

// clang-format off
constexpr S_NavSystem kSystems[kNumNavSystems] = {
    {"gps",      'G',  ALGO::GNSS_GPS,      "G: GPS",             0,  Keplers(kGpsFields),        kKeplerSent,  false},
    {"glonass",  'R',  ALGO::GNSS_GLONASS,  "R: GLONASS",         0,  std::size(kGlonassFields),  kPvaSent,     false},
    {"galileo",  'E',  ALGO::GNSS_GALILEO,  "E: Galileo",         0,  Keplers(kGalileoFields),    kKeplerSent,  true},
    {"beidou",   'C',  ALGO::GNSS_BEIDOU,   "C: BDS",             0,  Keplers(kBeidouFields),     kKeplerSent,  true},
    {"qzss",     'J',  ALGO::GNSS_QZSS,     "J: QZSS",          192,  Keplers(kQzssFields),       kKeplerSent,  false},
    {"navic",    'I',  velagnss::kNavic,    "I: NavIC/IRNSS",     0,  Keplers(kNavicFields),      kKeplerSent,  true},
    {"sbas",     'S',  ALGO::GNSS_SBAS,     "S: SBAS Payload",  100,  std::size(kSbasFields),     kPvaSent,     false},
};
constexpr std::span<const t_Field<Kepler>> kTails[kNumNavSystems] = {  // after kOrbitFields
    kGpsFields, {}, kGalileoFields, kBeidouFields, kQzssFields, kNavicFields, {}};

struct S_NavMessage {
  C_RawDataMessage::eProtocols protocol;
  unsigned int message;
  eNavSystem system;
};
constexpr S_NavMessage kMessages[] = {
    {C_RawDataMessage::eVelaBIN, eBin95, eGps},      {C_RawDataMessage::eVelaBIN, eBin65, eGlonass},
    {C_RawDataMessage::eVelaBIN, eBin25, eQzss},     {C_RawDataMessage::eVelaBIN, eBin93, eSbas},
    {C_RawDataMessage::eRTCM3_x, 1019, eGps},        {C_RawDataMessage::eRTCM3_x, 1020, eGlonass},
    {C_RawDataMessage::eRTCM3_x, 1045, eGalileo},    {C_RawDataMessage::eRTCM3_x, 1046, eGalileo},
    {C_RawDataMessage::eRTCM3_x, 1042, eBeidou},     {C_RawDataMessage::eRTCM3_x, 63, eBeidou},
    {C_RawDataMessage::eRTCM3_x, 1044, eQzss},       {C_RawDataMessage::eRTCM3_x, 1041, eNavic},
};
// clang-format on

template <class Record>
void Fill(const Record& record, std::span<const t_Field<Record>> fields, std::size_t from, S_NavRecord& nav) {
  for (const t_Field<Record> field : fields) nav.values[from++] = field(record);
}

// The transmission time counts from the start of the week of the ephemeris; it may be negative or beyond its end.
void FillFrom(const Kepler& record, S_NavRecord& nav) {
  const K& e = record.ephemeris;
  nav.epoch = RinexSeconds(e.TocWeek, e.Toc);
  nav.satellite = e.SvId;
  Fill<Kepler>(record, kOrbitFields, 0, nav);
  Fill<Kepler>(record, kTails[nav.system], kNumOrbitFields, nav);
  if (!IsNotAvailable(e.TxTime)) nav.transmission = RinexSeconds(e.TxWeek, e.TxTime) - RinexSeconds(e.ToeWeek, 0);
}

// Only the time of day of the frame is broadcast. Its day is the one nearest to the reference time, also around
// midnight in Moscow, where `FrameTime` may be a day or two off.
void FillGlonass(const Pva& record, S_NavRecord& nav) {
  constexpr unsigned int kIsKnown = 1 << 1;
  const P& e = record.ephemeris;
  nav.epoch = RinexSeconds(e.RefWeek, e.RefTime) - kMoscowOffset;
  const double frame = nav.epoch + std::remainder(e.FrameTime - e.RefTime, kSecondsPerDay);
  nav.transmission = frame - WeekStart(frame);
  if (!IsNotAvailable(record.almanacHealth)) nav.almanacHealth = kIsKnown | record.almanacHealth;
  Fill<Pva>(record, kGlonassFields, 0, nav);
}

void FillSbas(const Pva& record, S_NavRecord& nav) {
  const P& e = record.ephemeris;
  nav.epoch = RinexSeconds(e.RefWeek, e.RefTime);
  nav.transmission = RinexSeconds(e.FrameWeek, e.FrameTime) - WeekStart(nav.epoch);
  Fill<Pva>(record, kSbasFields, 0, nav);
}

void FillFrom(const Pva& record, S_NavRecord& nav) {
  nav.satellite = record.ephemeris.SvId;
  nav.system == eGlonass ? FillGlonass(record, nav) : FillSbas(record, nav);
}

// What a binary block has of the record of RTCM 3.
void FillFrom(const K& record, S_NavRecord& nav) {
  Kepler whole;
  whole.ephemeris = record;
  FillFrom(whole, nav);
}
void FillFrom(const P& record, S_NavRecord& nav) {
  Pva whole;
  whole.ephemeris = record;
  FillFrom(whole, nav);
}

template <class Record>
concept IsEphemeris = requires(const Record& record, S_NavRecord& nav) {
  FillFrom(record, nav);
};

std::string_view BeidouMessage(int satellite) {  // BDS-SIS-ICD, table 4-1: geostationary satellites send D2
  return satellite <= 5 || satellite >= 59 ? "D2" : "D1";
}

template <class Value>
std::size_t FindSystem(Value S_NavSystem::*column, const Value& value) {
  std::size_t row = 0;
  while (row < kNumNavSystems && kSystems[row].*column != value) ++row;
  return row;
}

}  // namespace

void Complete(S_NavRecord& record, const S_NavRecord& other) {
  for (const auto member : {&S_NavRecord::transmission, &S_NavRecord::almanacHealth})
    if (record.*member == kNoNumber) record.*member = other.*member;
}

std::span<const S_NavSystem, kNumNavSystems> NavSystems() { return kSystems; }

std::size_t NavSystemNamed(std::string_view name) { return FindSystem(&S_NavSystem::name, name); }
std::size_t NavSystemOf(ALGO::eGNSSSystem gnss) { return FindSystem(&S_NavSystem::gnss, gnss); }
std::size_t NavSystemWith(char letter) { return FindSystem(&S_NavSystem::letter, letter); }

std::size_t NavSystemOf(const velagnss::Frame& frame) {
  for (const S_NavMessage& row : kMessages)
    if (row.protocol == frame.protocol && row.message == frame.message) return row.system;
  return kNumNavSystems;
}

S_NavRecord NavRecordOf(std::size_t system, const velagnss::Record& ephemeris) {
  S_NavRecord nav;
  nav.system = system;
  std::visit(
      [&nav](const auto& record) {
        if constexpr (IsEphemeris<std::decay_t<decltype(record)>>) FillFrom(record, nav);
      },
      ephemeris);
  nav.satellite -= kSystems[system].satelliteOffset;
  return nav;
}

// Of an unknown transmission time RINEX has a number to say so; a blank would leave whole lines empty.
double PrintedValue(const S_NavRecord& record, std::size_t index) {
  constexpr double kSentUnknown = 0.9999E9;
  constexpr double kDelayUnknown = 0.999999999999E9;
  const double value = record.values[index];
  if (index == kSystems[record.system].transmission)
    return record.transmission == kNoNumber ? kSentUnknown : record.transmission;
  if (record.system != eGlonass) return value;
  if (index == kHealthFlags && record.almanacHealth != kNoNumber) return value + record.almanacHealth;
  constexpr std::size_t kDelay = std::size(kGlonassFields) - 3;
  return index == kDelay && value == kNoNumber ? kDelayUnknown : value;
}

std::string_view NavMessageName(const S_NavRecord& record) {
  constexpr unsigned int kFromE5a = 1 << 1;
  switch (record.system) {
    case eGlonass:
      return "FDMA";
    case eGalileo:
      return (static_cast<unsigned int>(record.values[kDataSource]) & kFromE5a) != 0 ? "FNAV" : "INAV";
    case eBeidou:
      return BeidouMessage(record.satellite);
    case eSbas:
      return "SBAS";
    default:
      return "LNAV";
  }
}

}  // namespace Host
