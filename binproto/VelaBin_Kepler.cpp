// Ephemerides of GPS and QZSS satellites: messages 95 and 25, and their undecoded relatives 35 and 45.
#include <cmath>

#include "binproto/DecoderState.h"
#include "binproto/MessageReader.h"
#include "binproto/VelaBin_Decode.h"
#include "framing/BitLayout.h"
#include "geo/Angle.h"
#include "geo/GnssTables.h"
#include "records/ResultCodes.h"

using namespace VelaBIN_Messages;
using namespace velagnss::binproto;

namespace {

using R = S_IFKeplerEphRec;
using velagnss::Add;
using velagnss::S_BitField;
using velagnss::Store;
using velagnss::Tiles;
using enum velagnss::eBits;

constexpr auto eSigned = eTwosComplement;  // IS-GPS-200, tables 20-I and 20-III
constexpr double kPi = velagnss::geo::kRadiansPerSemicircle;

constexpr unsigned int kDataBits = 24;  // of a word of 30; six bits of parity follow
constexpr unsigned int kSubframeBits = 10 * kDataBits;

// Position of bit `bit` of word `word`, both counted from 1 as in the document, in a subframe without its parity. There
// a field that is sent as 8 bits of one word and 24 of the next is in one piece.
constexpr unsigned short At(unsigned int word, unsigned int bit) {
  return static_cast<unsigned short>((word - 1) * kDataBits + bit - 1);
}

// Four bits are sent, meters are stored.
void StoreUra(R& record, double index) { record.Ura = ALGO::UraIndexToMetres(static_cast<unsigned char>(index)); }

// clang-format off
constexpr S_BitField<R> kSubframe1[] = {  // clock, IS-GPS-200, figure 20-1 sheet 1 and table 20-I
    {At( 1,  1), 24, ePast},                                        // telemetry word
    {At( 2,  1), 17, eUnsigned, 6,        Store<&R::TxTime>},       // handover word: time of week count, s
    {At( 2, 18),  7, ePast},                                        // flags 2, subframe 3, 2 that settle parity
    {At( 3,  1), 10, eUnsigned, 1,        Store<&R::TxWeek>},       // modulo 1024
    {At( 3, 11),  2, eUnsigned, 1,        Store<&R::CodeOnL2>},
    {At( 3, 13),  4, eUnsigned, 1,        StoreUra},                // index of the user range accuracy
    {At( 3, 17),  6, eUnsigned, 1,        Store<&R::SvHealth, &R::Health>},
    {At( 3, 23),  2, eUnsigned, 0x1p8,    Add<&R::Iodc>},           // high bits
    {At( 4,  1),  1, eUnsigned, 1,        Store<&R::L2PDataFlag>},
    {At( 4,  2), 87, ePast},                                        // reserved: 23, 24, 24, 16
    {At( 7, 17),  8, eSigned,   0x1p-31,  Store<&R::Tgd>},          // s
    {At( 8,  1),  8, eUnsigned, 1,        Add<&R::Iodc>},           // low bits
    {At( 8,  9), 16, eUnsigned, 0x1p4,    Store<&R::Toc>},          // s of week
    {At( 9,  1),  8, eSigned,   0x1p-55,  Store<&R::Af2>},          // s/s^2
    {At( 9,  9), 16, eSigned,   0x1p-43,  Store<&R::Af1>},          // s/s
    {At(10,  1), 22, eSigned,   0x1p-31,  Store<&R::Af0>},          // s
    {At(10, 23),  2, ePast},                                        // settle parity
};
constexpr S_BitField<R> kSubframe2[] = {  // orbit, IS-GPS-200, figure 20-1 sheet 2 and table 20-III
    {At( 1,  1), 48, ePast},                                        // telemetry and handover word
    {At( 3,  1),  8, eUnsigned, 1,             Store<&R::Iode2, &R::Iode>},
    {At( 3,  9), 16, eSigned,   0x1p-5,        Store<&R::Crs>},     // m
    {At( 4,  1), 16, eSigned,   0x1p-43 * kPi, Store<&R::DeltaN>},  // semicircles/s to rad/s
    {At( 4, 17), 32, eSigned,   0x1p-31 * kPi, Store<&R::M0>},      // semicircles to rad
    {At( 6,  1), 16, eSigned,   0x1p-29,       Store<&R::Cuc>},     // rad
    {At( 6, 17), 32, eUnsigned, 0x1p-33,       Store<&R::Ecc>},
    {At( 8,  1), 16, eSigned,   0x1p-29,       Store<&R::Cus>},     // rad
    {At( 8, 17), 32, eUnsigned, 0x1p-19,       Store<&R::SqrtA>},   // sqrt(m)
    {At(10,  1), 16, eUnsigned, 0x1p4,         Store<&R::Toe>},     // s of week
    {At(10, 17),  1, eUnsigned, 1,             Store<&R::FitInterval>},  // flag; hours are made of it for GPS
    {At(10, 18),  7, ePast},                                        // age of data offset 5, 2 that settle parity
};
constexpr S_BitField<R> kSubframe3[] = {  // orbit, IS-GPS-200, figure 20-1 sheet 3 and table 20-III
    {At( 1,  1), 48, ePast},                                        // telemetry and handover word
    {At( 3,  1), 16, eSigned,   0x1p-29,       Store<&R::Cic>},     // rad
    {At( 3, 17), 32, eSigned,   0x1p-31 * kPi, Store<&R::Omega0>},  // semicircles to rad
    {At( 5,  1), 16, eSigned,   0x1p-29,       Store<&R::Cis>},     // rad
    {At( 5, 17), 32, eSigned,   0x1p-31 * kPi, Store<&R::I0>},      // semicircles to rad
    {At( 7,  1), 16, eSigned,   0x1p-5,        Store<&R::Crc>},     // m
    {At( 7, 17), 32, eSigned,   0x1p-31 * kPi, Store<&R::Omega>},   // semicircles to rad
    {At( 9,  1), 24, eSigned,   0x1p-43 * kPi, Store<&R::OmegaDot>},  // semicircles/s to rad/s
    {At(10,  1),  8, ePast},                                        // issue of data, ephemeris, repeated
    {At(10,  9), 14, eSigned,   0x1p-43 * kPi, Store<&R::IDot>},    // semicircles/s to rad/s
    {At(10, 23),  2, ePast},                                        // settle parity
};
// clang-format on
static_assert(Tiles(kSubframe1, 0, kSubframeBits), "subframe 1: a gap or an overlap");
static_assert(Tiles(kSubframe2, 0, kSubframeBits), "subframe 2: a gap or an overlap");
static_assert(Tiles(kSubframe3, 0, kSubframeBits), "subframe 3: a gap or an overlap");

// The 24 data bits of a word, which is in the low 30 bits, its parity last.
constexpr unsigned long long DataBits(std::uint32_t word) { return word >> 6 & 0xFFFFFF; }

// True when no field that is read reaches into a third word: the reader looks at two.
template <std::size_t N>
consteval bool FitsTwoWords(const S_BitField<R> (&layout)[N]) {
  for (const S_BitField<R>& field : layout)
    if (field.kind != ePast && field.first % kDataBits + field.count > 2 * kDataBits) return false;
  return true;
}
static_assert(FitsTwoWords(kSubframe1) && FitsTwoWords(kSubframe2) && FitsTwoWords(kSubframe3));

// Reads the bits of a field of a subframe.
class C_SubframeReader {
 public:
  explicit C_SubframeReader(const std::uint32_t (&words)[10]) : m_words(words) {}

  unsigned long long operator()(unsigned int first, unsigned int count) const {
    const unsigned int word = first / kDataBits;
    const unsigned long long next = word + 1 < 10 ? DataBits(m_words[word + 1]) : 0;
    const unsigned long long pair = DataBits(m_words[word]) << kDataBits | next;
    const unsigned int after = 2 * kDataBits - first % kDataBits - count;  // bits of the pair that follow the field
    return pair >> after & ((1ULL << count) - 1);
  }

 private:
  const std::uint32_t (&m_words)[10];
};

// What a record holds even when nothing else of its message is decoded.
void NameSatellite(S_IFKeplerEphRec& record, unsigned short prn, ALGO::eGNSSSystem system) {
  SetEmpty_IFEphRec(record);
  record.System = static_cast<std::uint8_t>(system);
  record.SvId = static_cast<std::uint8_t>(prn);
  record.Spare = 0;
}

// Satellite numbers of GPS and of QZSS (IS-QZSS-PNT: 193 to 202 L1 C/A, 183 to 192 L1S, 203 to 211 others).
// Tested on all 16 bits, because the record keeps only the low eight.
bool IsSatelliteNumber(unsigned short prn, bool qzss) {
  return qzss ? prn >= 183 && prn <= 211 : prn >= 1 && prn <= 64;
}

// The week of a reference time that was sent in week `txWeek`. Times are sent without their week, and one that seems
// further than half a week from the transmission belongs to the week before or after it.
std::uint16_t WeekOf(double reference, double txTime, std::uint16_t txWeek) {
  if (!(std::fabs(txTime - reference) > C_VelaBin_Decode::mdHalfWeekSec)) return txWeek;
  return static_cast<std::uint16_t>(txWeek + (reference > C_VelaBin_Decode::mdHalfWeekSec ? -1 : 1));
}

}  // namespace

unsigned int C_VelaBin_Decode::Decode_Bin25(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out) {
  return Decode_Bin95(frame, length, out, true);
}

unsigned int C_VelaBin_Decode::Decode_Bin95(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out,
                                            bool qzss) {
  // One layout, but each system keeps its own last message.
  S_BinMsg95& stored = qzss ? m_state->stored.bin25 : m_state->stored.bin95;
  const unsigned int result = ReadMessage(frame, length, qzss ? eBin25 : eBin95, stored);
  return Remember(result == eResultOk ? Bin95ToIFEphRec(stored, out, qzss) : result);
}

unsigned int C_VelaBin_Decode::Decode_Bin35(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out) {
  const unsigned int result = ReadMessage(frame, length, eBin35, m_state->stored.bin35);
  return Remember(result == eResultOk ? Bin35ToIFEphRec(m_state->stored.bin35, out) : result);
}

unsigned int C_VelaBin_Decode::Decode_Bin45(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out) {
  const unsigned int result = ReadMessage(frame, length, eBin45, m_state->stored.bin45);
  return Remember(result == eResultOk ? Bin45ToIFEphRec(m_state->stored.bin45, out) : result);
}

unsigned int C_VelaBin_Decode::Bin95ToIFEphRec(const S_BinMsg95& message, S_IFKeplerEphRec& out, bool qzss) const {
  NameSatellite(out, message.Prn, qzss ? ALGO::GNSS_QZSS : ALGO::GNSS_GPS);
  if (!IsSatelliteNumber(message.Prn, qzss)) return eResultOutOfRange;
  out.TimeSystem = ALGO::GNSS_GPS;  // QZSS time is on the scale of GPS time
  ApplyLayout(kSubframe1, C_SubframeReader(message.Subframe1), out);
  ApplyLayout(kSubframe2, C_SubframeReader(message.Subframe2), out);
  ApplyLayout(kSubframe3, C_SubframeReader(message.Subframe3), out);
  if (!qzss) {  // QZSS has another table of hours, so that its flag is handed out as it was sent
    const auto flag = static_cast<unsigned char>(out.FitInterval);
    out.FitInterval = ALGO::FitIntervalFromIodc(flag, static_cast<unsigned short>(out.Iodc));
  }
  return KepEph_ResolveWeeksAndEOW(out);
}

// Without a seed as well: no week is read that would have to be completed.
unsigned int C_VelaBin_Decode::Bin35ToIFEphRec(const S_BinMsg95& message, S_IFKeplerEphRec& out) const {
  NameSatellite(out, message.Prn, ALGO::GNSS_BEIDOU);
  out.TimeSystem = ALGO::GNSS_BEIDOU;
  return eResultOk;
}

unsigned int C_VelaBin_Decode::Bin45ToIFEphRec(const S_BinMsg95& message, S_IFKeplerEphRec& out) const {
  NameSatellite(out, message.Prn, ALGO::GNSS_GALILEO);
  out.TimeSystem = ALGO::GNSS_GALILEO;
  return eResultOk;
}

unsigned int C_VelaBin_Decode::KepEph_ResolveWeeksAndEOW(S_IFKeplerEphRec& record) const {
  // On the broadcast scale first: for GPS and QZSS the week before week 0 is week 65535, which completes to the
  // right week as well, because 65536 is a multiple of 1024.
  record.ToeWeek = WeekOf(record.Toe, record.TxTime, record.TxWeek);
  record.TocWeek = WeekOf(record.Toc, record.TxTime, record.TxWeek);
  const auto system = static_cast<ALGO::eGNSSSystem>(record.TimeSystem);
  for (std::uint16_t* const week : {&record.TxWeek, &record.TocWeek, &record.ToeWeek})
    if (!ResolveWeek(system, *week)) return eResultNoSeed;  // for the first week or for none: all use one seed
  return eResultOk;
}
