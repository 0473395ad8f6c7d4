// Ephemerides: 1019 GPS, 1020 GLONASS, 1041 NavIC, 1042 and 63 BeiDou, 1044 QZSS, 1045 and 1046 Galileo.
//
// The fields are those of the broadcast messages: IS-GPS-200, GLONASS ICD, NavIC ICD, BDS-SIS-ICD, IS-QZSS-PNT, Galileo
// OS SIS ICD. Angles are sent in semicircles.
#include <cmath>
#include <numbers>

#include "geo/GnssTables.h"
#include "records/ResultCodes.h"
#include "rtcm3/Fields.h"
#include "rtcm3/Reading.h"
#include "rtcm3/State.h"

namespace velagnss::rtcm3 {
namespace {

constexpr double kPi = std::numbers::pi;

// A message, and values that only its decoding needs.
struct KeplerMessage {
  Rtcm3KeplerEphemeris& out;
  S_IFKeplerEphRec& eph;
  unsigned char satellite = 0;
};
using M = KeplerMessage;
using K = S_IFKeplerEphRec;
using E = Rtcm3KeplerEphemeris;

// Into members of the ephemeris, and of the record around it.
template <auto... Members>
void Eph(M& m, std::int64_t raw, double value) {
  (Assign(m.eph.*Members, raw, value), ...);
}
template <auto... Members>
void Out(M& m, std::int64_t raw, double value) {
  (Assign(m.out.*Members, raw, value), ...);
}
void Ura(M& m, std::int64_t raw, double) {
  m.out.accuracyIndex = static_cast<unsigned char>(raw);
  m.eph.Ura = ALGO::UraIndexToMetres(m.out.accuracyIndex);
}
void Sisa(M& m, std::int64_t raw, double) {
  m.out.accuracyIndex = static_cast<unsigned char>(raw);
  m.eph.Ura = ALGO::SisaIndexToMetres(m.out.accuracyIndex);
}
// IS-QZSS-PNT: the lowest value means "not available".
void QzssGroupDelay(M& m, std::int64_t raw, double value) {
  if (raw != -128) m.eph.Tgd = value;
}
// Part of a health word that was preset to 0.
template <unsigned int Shift>
void HealthBits(M& m, std::int64_t raw, double) {
  m.eph.Health |= static_cast<std::uint32_t>(raw) << Shift;
  m.eph.SvHealth = m.eph.Health;
}

// clang-format off
constexpr Field<M> kGps[] = {  // 1019
    {  9,  6, kUnsigned, {},                   Store<&M::satellite>},
    { 76, 10, kUnsigned, {},                   Out<&E::weekSent>},       // modulo 1024
    { 77,  4, kUnsigned, {},                   Ura},
    { 78,  2, kUnsigned, {},                   Eph<&K::CodeOnL2>},
    { 79, 14, kSigned,   Times(0x1p-43 * kPi), Eph<&K::IDot>},           // rad/s
    { 71,  8, kUnsigned, {},                   Eph<&K::Iode, &K::Iode2>},
    { 81, 16, kUnsigned, Times(16),            Eph<&K::Toc>},            // s
    { 82,  8, kSigned,   Times(0x1p-55),       Eph<&K::Af2>},
    { 83, 16, kSigned,   Times(0x1p-43),       Eph<&K::Af1>},
    { 84, 22, kSigned,   Times(0x1p-31),       Eph<&K::Af0>},
    { 85, 10, kUnsigned, {},                   Eph<&K::Iodc>},
    { 86, 16, kSigned,   Times(0x1p-5),        Eph<&K::Crs>},            // m
    { 87, 16, kSigned,   Times(0x1p-43 * kPi), Eph<&K::DeltaN>},         // rad/s
    { 88, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::M0>},             // rad
    { 89, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cuc>},            // rad
    { 90, 32, kUnsigned, Times(0x1p-33),       Eph<&K::Ecc>},
    { 91, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cus>},
    { 92, 32, kUnsigned, Times(0x1p-19),       Eph<&K::SqrtA>},          // sqrt(m)
    { 93, 16, kUnsigned, Times(16),            Eph<&K::Toe>},            // s
    { 94, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cic>},
    { 95, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega0>},
    { 96, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cis>},
    { 97, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::I0>},
    { 98, 16, kSigned,   Times(0x1p-5),        Eph<&K::Crc>},
    { 99, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega>},
    {100, 24, kSigned,   Times(0x1p-43 * kPi), Eph<&K::OmegaDot>},
    {101,  8, kSigned,   Times(0x1p-31),       Eph<&K::Tgd>},
    {102,  6, kUnsigned, {},                   Eph<&K::SvHealth, &K::Health>},
    {103,  1, kUnsigned, {},                   Eph<&K::L2PDataFlag>},
    {137,  1, kUnsigned, {},                   Out<&E::fitFlag>},
};
constexpr Field<M> kQzss[] = {  // 1044
    {429,  4, kUnsigned, {},                   Store<&M::satellite>},
    {430, 16, kUnsigned, Times(16),            Eph<&K::Toc>},
    {431,  8, kSigned,   Times(0x1p-55),       Eph<&K::Af2>},
    {432, 16, kSigned,   Times(0x1p-43),       Eph<&K::Af1>},
    {433, 22, kSigned,   Times(0x1p-31),       Eph<&K::Af0>},
    {434,  8, kUnsigned, {},                   Eph<&K::Iode, &K::Iode2>},
    {435, 16, kSigned,   Times(0x1p-5),        Eph<&K::Crs>},
    {436, 16, kSigned,   Times(0x1p-43 * kPi), Eph<&K::DeltaN>},
    {437, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::M0>},
    {438, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cuc>},
    {439, 32, kUnsigned, Times(0x1p-33),       Eph<&K::Ecc>},
    {440, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cus>},
    {441, 32, kUnsigned, Times(0x1p-19),       Eph<&K::SqrtA>},
    {442, 16, kUnsigned, Times(16),            Eph<&K::Toe>},
    {443, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cic>},
    {444, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega0>},
    {445, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cis>},
    {446, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::I0>},
    {447, 16, kSigned,   Times(0x1p-5),        Eph<&K::Crc>},
    {448, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega>},
    {449, 24, kSigned,   Times(0x1p-43 * kPi), Eph<&K::OmegaDot>},
    {450, 14, kSigned,   Times(0x1p-43 * kPi), Eph<&K::IDot>},
    {451,  2, kUnsigned, {},                   Eph<&K::CodeOnL2>},
    {452, 10, kUnsigned, {},                   Out<&E::weekSent>},       // modulo 1024
    {453,  4, kUnsigned, {},                   Ura},
    {454,  6, kUnsigned, {},                   Eph<&K::SvHealth, &K::Health>},
    {455,  8, kSigned,   Times(0x1p-31),       QzssGroupDelay},
    {456, 10, kUnsigned, {},                   Eph<&K::Iodc>},
    {457,  1, kUnsigned, {},                   Out<&E::fitFlag>},
};
constexpr Field<M> kNavicFields[] = {  // 1041
    {516,  6, kUnsigned, {},                   Store<&M::satellite>},
    {517, 10, kUnsigned, {},                   Out<&E::weekSent>},       // modulo 1024
    {518, 22, kSigned,   Times(0x1p-31),       Eph<&K::Af0>},
    {519, 16, kSigned,   Times(0x1p-43),       Eph<&K::Af1>},
    {520,  8, kSigned,   Times(0x1p-55),       Eph<&K::Af2>},
    {521,  4, kUnsigned, {},                   Ura},
    {522, 16, kUnsigned, Times(16),            Eph<&K::Toc>},
    {523,  8, kSigned,   Times(0x1p-31),       Eph<&K::Tgd>},
    {524, 22, kSigned,   Times(0x1p-41 * kPi), Eph<&K::DeltaN>},
    {525,  8, kUnsigned, {},                   Eph<&K::Iode, &K::Iode2>},
    {526, 10, kReserved},
    {527,  1, kUnsigned, {},                   HealthBits<1>},           // L5
    {528,  1, kUnsigned, {},                   HealthBits<0>},           // S band
    {529, 15, kSigned,   Times(0x1p-28),       Eph<&K::Cuc>},
    {530, 15, kSigned,   Times(0x1p-28),       Eph<&K::Cus>},
    {531, 15, kSigned,   Times(0x1p-28),       Eph<&K::Cic>},
    {532, 15, kSigned,   Times(0x1p-28),       Eph<&K::Cis>},
    {533, 15, kSigned,   Times(0x1p-4),        Eph<&K::Crc>},
    {534, 15, kSigned,   Times(0x1p-4),        Eph<&K::Crs>},
    {535, 14, kSigned,   Times(0x1p-43 * kPi), Eph<&K::IDot>},
    {536, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::M0>},
    {537, 16, kUnsigned, Times(16),            Eph<&K::Toe>},
    {538, 32, kUnsigned, Times(0x1p-33),       Eph<&K::Ecc>},
    {539, 32, kUnsigned, Times(0x1p-19),       Eph<&K::SqrtA>},
    {540, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega0>},
    {541, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega>},
    {542, 22, kSigned,   Times(0x1p-41 * kPi), Eph<&K::OmegaDot>},
    {543, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::I0>},
    {544,  2, kReserved},
    {545,  2, kReserved},
};
constexpr Field<M> kBeidou[] = {  // 1042, 63
    {488,  6, kUnsigned, {},                   Store<&M::satellite>},
    {489, 13, kUnsigned, {},                   Out<&E::weekSent>},       // of BeiDou time
    {490,  4, kUnsigned, {},                   Ura},
    {491, 14, kSigned,   Times(0x1p-43 * kPi), Eph<&K::IDot>},
    {492,  5, kUnsigned, {},                   Eph<&K::Iode, &K::Iode2>},
    {493, 17, kUnsigned, Times(8),             Eph<&K::Toc>},
    {494, 11, kSigned,   Times(0x1p-66),       Eph<&K::Af2>},
    {495, 22, kSigned,   Times(0x1p-50),       Eph<&K::Af1>},
    {496, 24, kSigned,   Times(0x1p-33),       Eph<&K::Af0>},
    {497,  5, kUnsigned, {},                   Eph<&K::Iodc>},
    {498, 18, kSigned,   Times(0x1p-6),        Eph<&K::Crs>},
    {499, 16, kSigned,   Times(0x1p-43 * kPi), Eph<&K::DeltaN>},
    {500, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::M0>},
    {501, 18, kSigned,   Times(0x1p-31),       Eph<&K::Cuc>},
    {502, 32, kUnsigned, Times(0x1p-33),       Eph<&K::Ecc>},
    {503, 18, kSigned,   Times(0x1p-31),       Eph<&K::Cus>},
    {504, 32, kUnsigned, Times(0x1p-19),       Eph<&K::SqrtA>},
    {505, 17, kUnsigned, Times(8),             Eph<&K::Toe>},
    {506, 18, kSigned,   Times(0x1p-31),       Eph<&K::Cic>},
    {507, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega0>},
    {508, 18, kSigned,   Times(0x1p-31),       Eph<&K::Cis>},
    {509, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::I0>},
    {510, 18, kSigned,   Times(0x1p-6),        Eph<&K::Crc>},
    {511, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega>},
    {512, 24, kSigned,   Times(0x1p-43 * kPi), Eph<&K::OmegaDot>},
    {513, 10, kSigned,   Per(1e10),            Eph<&K::Tgd>},            // 0.1 ns: B1I
    {514, 10, kSigned,   Per(1e10),            Out<&E::groupDelay2>},    // B2I
    {515,  1, kUnsigned, {},                   Eph<&K::SvHealth, &K::Health>},
};
// 1045 and 1046 differ in the accuracy index, whose signals are others, and from the group delays on.
constexpr Field<M> kGalileo[] = {
    {252,  6, kUnsigned, {},                   Store<&M::satellite>},
    {289, 12, kUnsigned, {},                   Out<&E::weekSent>},       // of Galileo time
    {290, 10, kUnsigned, {},                   Eph<&K::Iode, &K::Iode2>},
    {291,  8, kUnsigned, {},                   Sisa},                    // 1046: DF286
    {292, 14, kSigned,   Times(0x1p-43 * kPi), Eph<&K::IDot>},
    {293, 14, kUnsigned, Times(60),            Eph<&K::Toc>},
    {294,  6, kSigned,   Times(0x1p-59),       Eph<&K::Af2>},
    {295, 21, kSigned,   Times(0x1p-46),       Eph<&K::Af1>},
    {296, 31, kSigned,   Times(0x1p-34),       Eph<&K::Af0>},
    {297, 16, kSigned,   Times(0x1p-5),        Eph<&K::Crs>},
    {298, 16, kSigned,   Times(0x1p-43 * kPi), Eph<&K::DeltaN>},
    {299, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::M0>},
    {300, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cuc>},
    {301, 32, kUnsigned, Times(0x1p-33),       Eph<&K::Ecc>},
    {302, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cus>},
    {303, 32, kUnsigned, Times(0x1p-19),       Eph<&K::SqrtA>},
    {304, 14, kUnsigned, Times(60),            Eph<&K::Toe>},
    {305, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cic>},
    {306, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega0>},
    {307, 16, kSigned,   Times(0x1p-29),       Eph<&K::Cis>},
    {308, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::I0>},
    {309, 16, kSigned,   Times(0x1p-5),        Eph<&K::Crc>},
    {310, 32, kSigned,   Times(0x1p-31 * kPi), Eph<&K::Omega>},
    {311, 24, kSigned,   Times(0x1p-43 * kPi), Eph<&K::OmegaDot>},
    {312, 10, kSigned,   Times(0x1p-32),       Eph<&K::Tgd>},            // E1/E5a
};
// Health bits are arranged as in RINEX 3.
constexpr Field<M> kGalileoFnav[] = {
    {314,  2, kUnsigned, {},                   HealthBits<4>},           // E5a
    {315,  1, kUnsigned, {},                   HealthBits<3>},
    {  0,  7, kReserved},
};
constexpr Field<M> kGalileoInav[] = {
    {313, 10, kSigned,   Times(0x1p-32),       Out<&E::groupDelay2>},    // E1/E5b
    {316,  2, kUnsigned, {},                   HealthBits<7>},           // E5b
    {317,  1, kUnsigned, {},                   HealthBits<6>},
    {287,  2, kUnsigned, {},                   HealthBits<1>},           // E1-B
    {288,  1, kUnsigned, {},                   HealthBits<0>},
    {  0,  2, kReserved},
};

// What distinguishes the messages apart from their fields.
struct KeplerSystem {
  unsigned short message;
  ALGO::eGNSSSystem system;
  ALGO::eGNSSSystem timeSystem;
  unsigned short satelliteOffset;  // from the field to the number
  int firstWeek;                   // GPS week in which the system's own count starts
  int weekPeriod;
  bool composesHealth;             // of several fields
  bool (*read)(BitReader& reader, M& message);
};
constexpr KeplerSystem kKepler[] = {
    {1019, ALGO::GNSS_GPS,     ALGO::GNSS_GPS,       0,    0, 1024, false, ReadFields<kGps, M>},
    {1041, kNavic,             kNavic,               0, 1024, 1024, true,  ReadFields<kNavicFields, M>},
    {1042, ALGO::GNSS_BEIDOU,  ALGO::GNSS_BEIDOU,    0, 1356, 8192, false, ReadFields<kBeidou, M>},
    {  63, ALGO::GNSS_BEIDOU,  ALGO::GNSS_BEIDOU,    0, 1356, 8192, false, ReadFields<kBeidou, M>},
    {1044, ALGO::GNSS_QZSS,    ALGO::GNSS_GPS,     192,    0, 1024, false, ReadFields<kQzss, M>},
    {1045, ALGO::GNSS_GALILEO, ALGO::GNSS_GALILEO,   0, 1024, 4096, true,
     [](BitReader& reader, M& m) { return ReadFields<kGalileo>(reader, m) && ReadFields<kGalileoFnav>(reader, m); }},
    {1046, ALGO::GNSS_GALILEO, ALGO::GNSS_GALILEO,   0, 1024, 4096, true,
     [](BitReader& reader, M& m) { return ReadFields<kGalileo>(reader, m) && ReadFields<kGalileoInav>(reader, m); }},
};
// clang-format on

constexpr int kRollOver = 1024;  // a longer period than this cannot be mistaken within the life of its system
constexpr unsigned short kFnav = 1 << 1 | 1 << 8;           // RINEX: from E5a; clock of E5a/E1
constexpr unsigned short kInav = 1 << 0 | 1 << 2 | 1 << 9;  // RINEX: from E1-B and E5b; clock of E5b/E1

const KeplerSystem& SystemOf(unsigned int number) {
  return *std::find_if(std::begin(kKepler), std::end(kKepler),
                       [number](const KeplerSystem& row) { return row.message == number; });
}

void Empty(Rtcm3KeplerEphemeris& out) {
  SetEmpty_IFEphRec(out.ephemeris);
  out.ephemeris.Spare = 0;
  out.ephemeris.TxTime = NA_DOUBLE;
  out.ephemeris.CodeOnL2 = out.ephemeris.L2PDataFlag = NA_U16;
  out.ephemeris.Iodc = NA_U32;
}

// The week of a reference time that was sent in `week`. Shortly before the turn of a week satellites already refer to
// the next week, and shortly after it still to the last one; the known time decides.
int WeekOfReference(const EpochClock& clock, int week, double reference) {
  constexpr std::int64_t kEdge = kDay / 4;   // how far a reference time reaches into another week
  constexpr std::int64_t kApart = kDay / 2;  // of the reference time from a time of its use
  const auto now = clock.Now();
  const auto seconds = static_cast<std::int64_t>(reference) * kSecond;
  const auto isUsed = [&](int candidate) { return std::abs(candidate * kWeek + seconds - *now) <= kApart; };
  if (!now || isUsed(week)) return week;
  if (seconds < kEdge && isUsed(week + 1)) return week + 1;
  if (seconds > kWeek - kEdge && isUsed(week - 1)) return week - 1;
  return week;
}

// Clock and orbit refer to times less than half a week apart.
int WeekOfClock(int toeWeek, double toe, double toc) {
  constexpr double kHalfWeek = 302400.0;  // s
  if (!(std::fabs(toe - toc) > kHalfWeek)) return toeWeek;
  return toeWeek + (toc > kHalfWeek ? -1 : 1);
}

unsigned int ResolveWeeks(EpochClock& clock, const KeplerSystem& row, Rtcm3KeplerEphemeris& out) {
  K& eph = out.ephemeris;
  const bool isOwnDate = row.weekPeriod > kRollOver;  // better than one that is only assumed
  const auto nearest =
      isOwnDate && clock.IsAssumed() ? std::nullopt : clock.ResolveWeek(out.weekSent + row.firstWeek, row.weekPeriod);
  const bool isKnown = nearest || isOwnDate;
  const int week = nearest.value_or(isKnown ? out.weekSent + row.firstWeek : out.weekSent);
  const int toeWeek = isKnown ? WeekOfReference(clock, week, eph.Toe) : week;
  eph.TxWeek = static_cast<std::uint16_t>(week);
  eph.ToeWeek = static_cast<std::uint16_t>(toeWeek);
  eph.TocWeek = static_cast<std::uint16_t>(WeekOfClock(toeWeek, eph.Toe, eph.Toc));
  if (!isKnown) return eResultNoSeed;
  if (isOwnDate && eph.SvHealth == 0)
    clock.NoteReference(toeWeek * kWeek + static_cast<std::int64_t>(eph.Toe) * kSecond);
  return eResultOk;
}

void SetFitInterval(const KeplerSystem& row, Rtcm3KeplerEphemeris& out) {
  K& eph = out.ephemeris;
  if (row.system == ALGO::GNSS_GPS)
    eph.FitInterval = ALGO::FitIntervalFromIodc(out.fitFlag, static_cast<unsigned short>(eph.Iodc));
  if (row.system == ALGO::GNSS_QZSS) eph.FitInterval = out.fitFlag;  // its table of hours is another one
}

// --- GLONASS --------------------------------------------------------------------------------------------------------

constexpr double kKilometer = 1000;
constexpr std::int64_t kQuarterHour = 900 * kSecond;  // unit of tb

struct GlonassMessage {
  Rtcm3PvaEphemeris& out;
  S_IFPvaEphRec& eph;
  unsigned char slot = 0;
  unsigned char channel = 0;
  unsigned char almanacHealth = 0;
  unsigned char isAlmanacHealthKnown = 0;
};
using G = GlonassMessage;
using P = S_IFPvaEphRec;
using V = Rtcm3PvaEphemeris;

template <auto... Members>
void Pva(G& m, std::int64_t raw, double value) {
  (Assign(m.eph.*Members, raw, value), ...);
}
template <auto... Members>
void PvaOut(G& m, std::int64_t raw, double value) {
  (Assign(m.out.*Members, raw, value), ...);
}
// Fields of string 5 are valid only if the flag that precedes them is set.
template <auto Member>
void PvaIfMore(G& m, std::int64_t raw, double value) {
  if (m.out.hasMore == 1) Assign(m.eph.*Member, raw, value);
}
template <auto Member>
void PvaOutIfMore(G& m, std::int64_t raw, double value) {
  if (m.out.hasMore == 1) Assign(m.out.*Member, raw, value);
}
void HighBitOfBn(G& m, std::int64_t raw, double) {
  m.eph.Bn = m.eph.Health = static_cast<std::uint32_t>(raw);
  m.eph.BnBits = static_cast<std::uint8_t>(raw << 2);
}

// clang-format off
constexpr Field<G> kGlonass[] = {  // 1020; GLONASS ICD, tables 4.5 and 4.6
    { 38,  6, kUnsigned,      {},                          Store<&G::slot>},
    { 40,  5, kUnsigned,      {},                          Store<&G::channel>},
    {104,  1, kUnsigned,      {},                          Store<&G::almanacHealth>},
    {105,  1, kUnsigned,      {},                          Store<&G::isAlmanacHealthKnown>},
    {106,  2, kUnsigned,      {},                          Pva<&P::P1>},
    {107, 12, kUnsigned,      {},                          PvaOut<&V::frameTimeSent>},
    {108,  1, kUnsigned,      {},                          HighBitOfBn},
    {109,  1, kUnsigned,      {},                          Pva<&P::P2>},
    {110,  7, kUnsigned,      {},                          Pva<&P::Tb, &P::Iod>},
    {111, 24, kSignMagnitude, Times(0x1p-20 * kKilometer), Pva<&P::VelX>},  // km/s to m/s
    {112, 27, kSignMagnitude, Times(0x1p-11 * kKilometer), Pva<&P::PosX>},  // km to m
    {113,  5, kSignMagnitude, Times(0x1p-30 * kKilometer), Pva<&P::AccX>},  // km/s^2 to m/s^2
    {114, 24, kSignMagnitude, Times(0x1p-20 * kKilometer), Pva<&P::VelY>},
    {115, 27, kSignMagnitude, Times(0x1p-11 * kKilometer), Pva<&P::PosY>},
    {116,  5, kSignMagnitude, Times(0x1p-30 * kKilometer), Pva<&P::AccY>},
    {117, 24, kSignMagnitude, Times(0x1p-20 * kKilometer), Pva<&P::VelZ>},
    {118, 27, kSignMagnitude, Times(0x1p-11 * kKilometer), Pva<&P::PosZ>},
    {119,  5, kSignMagnitude, Times(0x1p-30 * kKilometer), Pva<&P::AccZ>},
    {120,  1, kUnsigned,      {},                          Pva<&P::P3>},
    {121, 11, kSignMagnitude, Times(0x1p-40),              Pva<&P::GammaN>},
    {122,  2, kUnsigned,      {},                          Pva<&P::P>},
    {123,  1, kUnsigned,      {},                          Pva<&P::Ln>},
    {124, 22, kSignMagnitude, Times(0x1p-30),              Pva<&P::TauN>},       // s
    {125,  5, kSignMagnitude, Times(0x1p-30),              Pva<&P::DeltaTauN>},  // s
    {126,  5, kUnsigned,      {},                          Pva<&P::En>},         // days
    {127,  1, kUnsigned,      {},                          Pva<&P::P4>},
    {128,  4, kUnsigned,      {},                          Pva<&P::Ft>},
    {129, 11, kUnsigned,      {},                          Pva<&P::Nt>},         // days
    {130,  2, kUnsigned,      {},                          Pva<&P::M>},
    {131,  1, kUnsigned,      {},                          PvaOut<&V::hasMore>},
    {132, 11, kUnsigned,      {},                          PvaOutIfMore<&V::dayOfTauC>},
    {133, 32, kSignMagnitude, Times(0x1p-31),              PvaIfMore<&P::TauC>},    // s
    {134,  5, kUnsigned,      {},                          PvaIfMore<&P::N4>},      // four years
    {135, 22, kSignMagnitude, Times(0x1p-30),              PvaIfMore<&P::TauGps>},  // s
    {136,  1, kUnsigned,      {},                          PvaOutIfMore<&V::healthOfString5>},
    {  0,  7, kReserved},
};
// clang-format on

// The reference time in GLONASS time, weeks counted as for GPS. The date is sent as a day within an interval of four
// years; missing parts of it are taken from the known time.
std::optional<std::int64_t> ReferenceTime(const EpochClock& clock, const P& eph) {
  constexpr std::int64_t kInterval = 4 * 365 + 1;  // days; 2000 was a leap year
  constexpr std::int64_t kMjdOf1992 = 48622;       // 1 January
  constexpr std::int64_t kDaysTo1992 = kMjdOf1992 - ALGO::kMjdOfGpsEpoch;
  const std::int64_t timeOfDay = eph.Tb * kQuarterHour;
  const bool hasDay = eph.Nt >= 1 && eph.Nt <= kInterval;
  const std::int64_t inInterval = (kDaysTo1992 + eph.Nt - 1) * kDay + timeOfDay;
  if (hasDay && eph.N4 != 0) return inInterval + eph.N4 * kInterval * kDay;
  const auto now = clock.Now();
  if (!now) return std::nullopt;
  const std::int64_t glonassNow = clock.GpsToGlonass(*now);
  return hasDay ? Nearest(glonassNow, inInterval, kInterval * kDay) : Nearest(glonassNow, timeOfDay, kDay);
}

std::int64_t TimeOfFrame(unsigned int tk) {
  return ((tk >> 7) * 3600LL + (tk >> 1 & 63) * 60LL + (tk & 1) * 30LL) * kSecond;
}

void SetWeekAndTime(std::int64_t time, std::uint16_t& week, double& seconds) {
  week = static_cast<std::uint16_t>(time / kWeek);
  seconds = SecondsOf(time % kWeek);
}

void SetTimes(std::optional<std::int64_t> reference, Rtcm3PvaEphemeris& out) {
  P& eph = out.ephemeris;
  const std::int64_t frame = TimeOfFrame(out.frameTimeSent);
  if (!reference) {  // the day is unknown
    eph.RefTime = SecondsOf(eph.Tb * kQuarterHour);
    eph.FrameTime = SecondsOf(frame);
    return;
  }
  SetWeekAndTime(*reference, eph.RefWeek, eph.RefTime);
  SetWeekAndTime(Nearest(*reference, frame, kDay), eph.FrameWeek, eph.FrameTime);
}

}  // namespace

unsigned int ReadKeplerEphemeris(BitReader& reader, unsigned int number, Rtcm3KeplerEphemeris& out) {
  const KeplerSystem& row = SystemOf(number);
  Empty(out);
  if (row.composesHealth) out.ephemeris.Health = 0;
  KeplerMessage message{out, out.ephemeris};
  if (!row.read(reader, message)) return eResultPastEnd;
  if (message.satellite == 0) return eResultOutOfRange;
  out.ephemeris.System = static_cast<std::uint8_t>(row.system);
  out.ephemeris.TimeSystem = static_cast<std::uint8_t>(row.timeSystem);
  out.ephemeris.SvId = static_cast<std::uint8_t>(message.satellite + row.satelliteOffset);
  if (row.system == ALGO::GNSS_GALILEO) out.dataSource = number == 1045 ? kFnav : kInav;
  SetFitInterval(row, out);
  return eResultOk;
}

unsigned int Follow(State& state, Rtcm3KeplerEphemeris& out) {
  return ResolveWeeks(state.clock, SystemOf(out.message), out);
}

unsigned int ReadGlonassEphemeris(BitReader& reader, unsigned int, Rtcm3PvaEphemeris& out) {
  P& eph = out.ephemeris;
  SetEmpty_IFEphRec(eph);
  GlonassMessage message{out, eph};
  if (!ReadFields<kGlonass>(reader, message)) return eResultPastEnd;
  if (message.slot == 0) return eResultOutOfRange;
  eph.System = eph.TimeSystem = ALGO::GNSS_GLONASS;
  eph.SvId = message.slot;
  eph.Spare = 0;
  eph.Valid = 1;
  if (message.isAlmanacHealthKnown != 0) out.almanacHealth = message.almanacHealth;
  const int channel = message.channel - 7;
  if (GlonassChannels::IsChannel(channel)) eph.FreqChannel = static_cast<signed char>(channel);
  return eResultOk;
}

unsigned int Follow(State& state, Rtcm3PvaEphemeris& out) {
  const P& eph = out.ephemeris;
  if (GlonassChannels::IsChannel(eph.FreqChannel)) state.channels.Set(eph.SvId, eph.FreqChannel);
  const auto reference = ReferenceTime(state.clock, eph);
  SetTimes(reference, out);
  return reference ? eResultOk : eResultNoSeed;
}

}  // namespace velagnss::rtcm3
