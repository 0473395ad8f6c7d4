// Ephemerides of GLONASS and SBAS satellites: messages 65 and 93.
#include <cmath>

#include "binproto/DecoderState.h"
#include "binproto/MessageReader.h"
#include "binproto/VelaBin_Decode.h"
#include "framing/BitLayout.h"
#include "geo/NotAvailable.h"
#include "geo/WeekCarry.h"
#include "records/ResultCodes.h"

using namespace VelaBIN_Messages;
using namespace velagnss::binproto;

namespace {

using R = S_IFPvaEphRec;
using velagnss::S_BitField;
using velagnss::Store;
using velagnss::Tiles;
using enum velagnss::eBits;

constexpr auto eSigned = eSignMagnitude;  // GLONASS ICD, table 4.5

constexpr unsigned char kFirstBit = 1;  // of a GLONASS string; sent last
constexpr unsigned char kLastBit = 85;
constexpr unsigned char kWidestField = 32;  // that the public bit readers deliver
constexpr int kChannelBias = 8;             // the receiver sends channels plus 8
constexpr double kTbSeconds = 900;          // the index tb counts quarters of an hour
constexpr double kKilometer = 1000;         // m; GLONASS sends kilometers

// The index tk: hours in its bits 7 to 11, minutes in 1 to 6, half minutes in bit 0. The record gets seconds of the
// day; they become seconds of the week once the reference time is known.
void StoreFrameTime(R& record, double value) {
  const auto tk = static_cast<unsigned int>(value);
  record.FrameTime = (tk >> 7 & 31) * 3600 + (tk >> 1 & 63) * 60 + (tk & 1) * 30;
}

// The word Bn: the highest of its three bits says that the satellite is unhealthy, the others have no meaning for
// users.
void StoreBn(R& record, double value) {
  record.BnBits = static_cast<std::uint8_t>(value);
  record.Bn = record.Health = record.BnBits >> 2;
}

// Strings 1 to 5, the immediate data: GLONASS ICD, table 4.5 and figure 4.3. Bits are counted as there: 85 is sent
// first.
// clang-format off
constexpr S_BitField<R> kString1[] = {
    { 1,  8, ePast},                                              // check bits
    { 9, 27, eSigned,   0x1p-11 * kKilometer, Store<&R::PosX>},   // km to m
    {36,  5, eSigned,   0x1p-30 * kKilometer, Store<&R::AccX>},   // km/s^2 to m/s^2
    {41, 24, eSigned,   0x1p-20 * kKilometer, Store<&R::VelX>},   // km/s to m/s
    {65, 12, eUnsigned, 1,                    StoreFrameTime},    // tk
    {77,  2, eUnsigned, 1,                    Store<&R::P1>},
    {79,  7, ePast},                                              // reserved 2, string number 4, idle 1
};
constexpr S_BitField<R> kString2[] = {
    { 1,  8, ePast},                                              // check bits
    { 9, 27, eSigned,   0x1p-11 * kKilometer, Store<&R::PosY>},
    {36,  5, eSigned,   0x1p-30 * kKilometer, Store<&R::AccY>},
    {41, 24, eSigned,   0x1p-20 * kKilometer, Store<&R::VelY>},
    {65,  5, ePast},                                              // reserved
    {70,  7, eUnsigned, 1,                    Store<&R::Tb, &R::Iod>},
    {77,  1, eUnsigned, 1,                    Store<&R::P2>},
    {78,  3, eUnsigned, 1,                    StoreBn},
    {81,  5, ePast},                                              // string number 4, idle 1
};
constexpr S_BitField<R> kString3[] = {
    { 1,  8, ePast},                                              // check bits
    { 9, 27, eSigned,   0x1p-11 * kKilometer, Store<&R::PosZ>},
    {36,  5, eSigned,   0x1p-30 * kKilometer, Store<&R::AccZ>},
    {41, 24, eSigned,   0x1p-20 * kKilometer, Store<&R::VelZ>},
    {65,  1, eUnsigned, 1,                    Store<&R::Ln>},
    {66,  2, eUnsigned, 1,                    Store<&R::P>},
    {68,  1, ePast},                                              // reserved
    {69, 11, eSigned,   0x1p-40,              Store<&R::GammaN>},
    {80,  1, eUnsigned, 1,                    Store<&R::P3>},
    {81,  5, ePast},                                              // string number 4, idle 1
};
constexpr S_BitField<R> kString4[] = {
    { 1,  8, ePast},                                              // check bits
    { 9,  2, eUnsigned, 1,                    Store<&R::M>},
    {11,  5, eUnsigned, 1,                    Store<&R::N>},
    {16, 11, eUnsigned, 1,                    Store<&R::Nt>},     // days
    {27,  3, ePast},                                              // reserved
    {30,  4, eUnsigned, 1,                    Store<&R::Ft>},
    {34,  1, eUnsigned, 1,                    Store<&R::P4>},
    {35, 14, ePast},                                              // reserved
    {49,  5, eUnsigned, 1,                    Store<&R::En>},     // days
    {54,  5, eSigned,   0x1p-30,              Store<&R::DeltaTauN>},  // s
    {59, 22, eSigned,   0x1p-30,              Store<&R::TauN>},   // s
    {81,  5, ePast},                                              // string number 4, idle 1
};
constexpr S_BitField<R> kString5[] = {
    { 1,  9, ePast},                                              // check bits, ln once more
    {10, 22, eSigned,   0x1p-30,              Store<&R::TauGps>},  // s
    {32,  5, eUnsigned, 1,                    Store<&R::N4>},     // four years
    {37,  1, ePast},                                              // reserved
    {38, 32, eSigned,   0x1p-31,              Store<&R::TauC>},   // s
    {70, 16, ePast},                                              // day of the almanac 11, string number 4, idle 1
};
// clang-format on
static_assert(Tiles(kString1, kFirstBit, kLastBit + 1, kWidestField), "string 1: a gap or an overlap");
static_assert(Tiles(kString2, kFirstBit, kLastBit + 1, kWidestField), "string 2: a gap or an overlap");
static_assert(Tiles(kString3, kFirstBit, kLastBit + 1, kWidestField), "string 3: a gap or an overlap");
static_assert(Tiles(kString4, kFirstBit, kLastBit + 1, kWidestField), "string 4: a gap or an overlap");
static_assert(Tiles(kString5, kFirstBit, kLastBit + 1, kWidestField), "string 5: a gap or an overlap");

// Reads the bits of a field of one string.
class C_StringReader {
 public:
  explicit C_StringReader(const S_GLONavString& string) : m_string(string) {}

  unsigned long long operator()(unsigned int first, unsigned int count) const {
    return C_VelaBin_Decode::DecodeGloStringBits(m_string, static_cast<unsigned char>(first),
                                                 static_cast<unsigned char>(count));
  }

 private:
  const S_GLONavString& m_string;
};

// The frame starts at `tk` seconds of a day: the day of the reference time, or the one before or after it when the two
// times of day are more than half a day apart. Which one follows from comparing the time of day with the reference time
// of week. Known oddity, kept: from Monday on that is never the day after.
void ResolveFrameTime(R& record, double tb, double tk) {
  constexpr auto kDay = static_cast<unsigned int>(ALGO::kSecondsPerDay);
  const auto reference = static_cast<unsigned int>(record.RefTime + 0.0001);  // a whole second may be a hair too small
  const double candidate = reference - reference % kDay + tk;
  record.FrameWeek = record.RefWeek;
  record.FrameTime = candidate;
  if (std::fabs(tb - tk) <= ALGO::kSecondsPerDay / 2) return;
  record.FrameTime += tk > record.RefTime ? ALGO::kSecondsPerDay : -ALGO::kSecondsPerDay;
  velagnss::geo::CarryWeeks(record.FrameWeek, record.FrameTime);
}

// Position, velocity and acceleration of an SBAS satellite, and what one unit of each is worth: the scale factors of
// message type 9 (RTCA DO-229). They are not powers of two, so each is the double nearest to its decimal.
struct S_ScaledRow {
  std::int32_t S_BinMsg93::*sent;
  double lsb;
  double R::*target;
};
// clang-format off
constexpr S_ScaledRow kSbasFields[] = {
    {&S_BinMsg93::X,  0.08,      &R::PosX},  // m
    {&S_BinMsg93::Y,  0.08,      &R::PosY},
    {&S_BinMsg93::Z,  0.4,       &R::PosZ},
    {&S_BinMsg93::Vx, 0.000625,  &R::VelX},  // m/s
    {&S_BinMsg93::Vy, 0.000625,  &R::VelY},
    {&S_BinMsg93::Vz, 0.004,     &R::VelZ},
    {&S_BinMsg93::Ax, 0.0000125, &R::AccX},  // m/s^2
    {&S_BinMsg93::Ay, 0.0000125, &R::AccY},
    {&S_BinMsg93::Az, 0.0000625, &R::AccZ},
};
// clang-format on

}  // namespace

unsigned int C_VelaBin_Decode::DecodeGloStringBits(const S_GLONavString& string, unsigned char firstBit,
                                                   unsigned char count) {
  if (firstBit < kFirstBit || firstBit > kLastBit || count < 1 || count > 32) return 0;
  // The word that holds the first bit, the one with the bits above it, and the first bit's place in the former. The
  // last word holds its bits eleven places higher than the others do (`S_GLONavString`).
  const unsigned int word = firstBit >= 54 ? 0 : firstBit >= 22 ? 1 : 2;
  const unsigned int shift = firstBit - (firstBit >= 54 ? 54 : firstBit >= 22 ? 22 : -10);
  const unsigned long long above = word > 0 ? string.Word[word - 1] : 0;
  const unsigned long long bits = (above << 32 | string.Word[word]) >> shift;
  return static_cast<unsigned int>(bits & ((1ULL << count) - 1));
}

// Strings are numbered from 1, as in the interface document.
unsigned int C_VelaBin_Decode::GloNavStrBitsToU32(const S_GLONavString* strings, unsigned char stringNo,
                                                  unsigned char firstBit, unsigned char count) {
  if (strings == nullptr || stringNo < 1 || stringNo > 5) return 0;
  return DecodeGloStringBits(strings[stringNo - 1], firstBit, count);
}

// 0 also for what is refused: its count may be too large to shift by.
int C_VelaBin_Decode::GloNavStrBitsToS32(const S_GLONavString* strings, unsigned char stringNo, unsigned char firstBit,
                                         unsigned char count) {
  const unsigned int value = GloNavStrBitsToU32(strings, stringNo, firstBit, count);
  return value == 0 ? 0 : static_cast<int>(velagnss::NumberOf(value, count, eSigned));
}

void C_VelaBin_Decode::ResolveGstTb(unsigned short N4, unsigned short NT, double tb, C_GnssTime& out) {
  // Days before the years of an interval; the first one is a leap year. Known oddity, kept:
  // NT is compared as a signed number, so that one above 32767 is taken for a day of the first year.
  const auto day = static_cast<short>(NT);
  const int yearOfInterval = day > 1096 ? 4 : day > 731 ? 3 : day > 366 ? 2 : 1;
  constexpr int kDaysBefore[] = {0, 366, 731, 1096};
  const int dayOfYear = NT - kDaysBefore[yearOfInterval - 1];
  const int year = static_cast<unsigned short>(yearOfInterval + 4 * N4 + 1991);
  // Days since 6 January 1980: leap days, the day of the year, years of 365 days.
  const auto days = static_cast<unsigned int>((year - 1981) / 4 + dayOfYear - 5 + (year - 1980) * 365);
  out.Set(static_cast<unsigned short>(days / 7), tb + (days % 7) * ALGO::kSecondsPerDay, ALGO::GNSS_GLONASS);
  velagnss::geo::CarryWeeks(out.m_week, out.m_secOfWeek);
}

unsigned int C_VelaBin_Decode::Decode_Bin65(unsigned char* frame, const unsigned short& length, S_IFPvaEphRec& out) {
  const unsigned int result = ReadMessage(frame, length, eBin65, m_state->stored.bin65);
  if (result != eResultOk) return Remember(result);
  return Remember(Bin65ToIFPvaEphRec(m_state->stored.bin65, out) ? eResultOk : eResultWrongMessage);
}

bool C_VelaBin_Decode::Bin65ToIFPvaEphRec(const S_BinMsg65& message, S_IFPvaEphRec& out) {
  SetEmpty_IFEphRec(out);
  if (message.Header.BlockId != eBin65) return false;
  const auto channel = static_cast<signed char>(message.Channel - kChannelBias);  // 136 wraps to -128, "unknown"
  out.System = ALGO::GNSS_GLONASS;
  out.SvId = message.Slot;
  out.Spare = 0;
  out.FreqChannel = channel;
  out.TimeSystem = ALGO::GNSS_GLONASS;
  if (!SetGlonassSvChannelId(message.Slot, channel)) return false;

  ApplyLayout(kString1, C_StringReader(message.Strings[0]), out);
  ApplyLayout(kString2, C_StringReader(message.Strings[1]), out);
  ApplyLayout(kString3, C_StringReader(message.Strings[2]), out);
  ApplyLayout(kString4, C_StringReader(message.Strings[3]), out);
  ApplyLayout(kString5, C_StringReader(message.Strings[4]), out);
  out.Valid = 1;  // the strings have been read; whether the satellite is healthy is another question

  // The record's times so far are indices and a time of day: now the date is known, they become times of a week.
  const double tb = out.Tb * kTbSeconds;
  C_GnssTime reference;
  ResolveGstTb(out.N4, out.Nt, tb, reference);
  out.RefWeek = reference.m_week;
  out.RefTime = reference.m_secOfWeek;
  ResolveFrameTime(out, tb, out.FrameTime);
  return true;
}

unsigned int C_VelaBin_Decode::Decode_Bin93(unsigned char* frame, const unsigned short& length, S_IFPvaEphRec& out) {
  const unsigned int result = ReadMessage(frame, length, eBin93, m_state->stored.bin93);
  if (result != eResultOk) return Remember(result);
  return Remember(Bin93ToIFPvaEphRec(m_state->stored.bin93, out) ? eResultOk : eResultWrongMessage);
}

bool C_VelaBin_Decode::Bin93ToIFPvaEphRec(const S_BinMsg93& message, S_IFPvaEphRec& out) const {
  SetEmpty_IFEphRec(out);
  if (message.Header.BlockId != eBin93) return false;
  out.System = ALGO::GNSS_SBAS;
  out.SvId = static_cast<std::uint8_t>(message.Prn);
  out.Spare = 0;
  out.TimeSystem = ALGO::GNSS_GPS;
  out.Health = out.Bn = 0;
  out.Tb = out.Iod = message.Value8;
  out.Ft = message.Value10;
  // The integers are scaled directly: each is exact as a double, so that the product alone rounds.
  for (const S_ScaledRow& row : kSbasFields) out.*row.target = message.*row.sent * row.lsb;
  out.TauN = message.AGf0 * 0x1p-31;
  out.GammaN = message.AGf1 * 0x1p-40;

  // The reference time is sent with its week, the time of the message without: it is within half a week of the former.
  out.RefWeek = message.Week;
  out.RefTime = message.T0;
  if (!ResolveWeek(ALGO::GNSS_GPS, out.RefWeek)) return false;
  out.FrameWeek = out.RefWeek;
  out.FrameTime = message.TimeOfWeek;
  if (std::fabs(out.RefTime - out.FrameTime) > mdHalfWeekSec)
    out.FrameWeek = static_cast<std::uint16_t>(out.RefWeek + (message.TimeOfWeek <= mdHalfWeekSec ? 1 : -1));
  return true;
}
