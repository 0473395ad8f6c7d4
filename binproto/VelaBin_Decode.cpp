// The decoder object: construction, known times and channels, dispatch, and the messages that are handed out as
// received.
#include "binproto/VelaBin_Decode.h"

#include <cstdlib>
#include <cstring>

#include "binproto/DecoderState.h"
#include "binproto/MessageContents.h"
#include "binproto/MessageReader.h"
#include "binproto/MessageTable.h"
#include "geo/NotAvailable.h"
#include "geo/WeekCarry.h"
#include "records/ResultCodes.h"

using namespace VelaBIN_Messages;
using namespace velagnss::binproto;

namespace {

constexpr unsigned short kDefaultSlots = 64;
constexpr double kGpsMinusBeidou = 14.0;            // s; the leap seconds from 1980 to 2006, when BeiDou time started
constexpr unsigned short kBeidouFirstWeek = 1356;   // GPS week in which BeiDou weeks start (BDS-SIS-ICD, 3.3)
constexpr unsigned short kGalileoFirstWeek = 1024;  // GPS week in which Galileo weeks start (Galileo OS SIS ICD, 5.1.2)
constexpr int kRollOver = 1 << 10;                  // GPS sends ten bits of its week (IS-GPS-200, 20.3.3.3.1.1)

constexpr signed char kLowestChannel = -7;  // GLONASS ICD, 3.3.1.1
constexpr signed char kHighestChannel = 6;

// What the seed of a system is before anybody has set it.
C_GnssTime UnsetTime() {
  C_GnssTime time;
  time.Set(0, 0.0, ALGO::GNSS_UNKNOWN);
  return time;
}

// A time moved by `seconds`, normalized, with the label of another system. C_GnssTime's own normalization is not used:
// it carries 32767 weeks at most, and a host may seed any double.
C_GnssTime Shifted(const C_GnssTime& time, double seconds, ALGO::eGNSSSystem system) {
  C_GnssTime shifted;
  shifted.Set(time.m_week, time.m_secOfWeek + seconds, system);
  velagnss::geo::CarryWeeks(shifted.m_week, shifted.m_secOfWeek);
  return shifted;
}

// The GPS week from which a system counts its own weeks.
constexpr int FirstWeekOf(ALGO::eGNSSSystem system) {
  if (system == ALGO::GNSS_BEIDOU) return kBeidouFirstWeek;
  if (system == ALGO::GNSS_GALILEO) return kGalileoFirstWeek;
  return 0;
}

// Messages that are handed out as received. The record is copied with its padding, because hosts compare records byte
// by byte. `out` is touched on success only.
template <class Record>
unsigned int TakeRaw(const unsigned char* frame, unsigned short length, unsigned short number, Record& stored,
                     Record& out) {
  const unsigned int result = ReadMessage(frame, length, number, stored);
  if (result == eResultOk) std::memcpy(&out, &stored, sizeof out);
  return result;
}

// Observation messages: the body is stored, but the record that is handed out has no satellites.
template <class Record>
unsigned int TakeObservations(const unsigned char* frame, unsigned short length, unsigned short number, Record& stored,
                              S_VelaBIN_Obs& out) {
  const unsigned int result = ReadMessage(frame, length, number, stored);
  if (result != eResultOk) return result;
  std::memset(&out, 0, sizeof out);
  out.Header = stored.Header;
  out.Trailer = stored.Trailer;
  return eResultOk;
}

}  // namespace

const double C_VelaBin_Decode::mdHalfWeekSec = ALGO::kSecondsPerWeek / 2;

C_VelaBin_Decode::C_VelaBin_Decode(const C_SatelliteList* list) : C_VelaBin_Decode(list, kDefaultSlots) {}

C_VelaBin_Decode::C_VelaBin_Decode(const C_SatelliteList* list, const unsigned short& slots)
    : m_state(std::make_unique<S_DecoderState>(list, slots)) {
  Reset();
}

// Here, because in the header the state is an incomplete type.
C_VelaBin_Decode::~C_VelaBin_Decode() = default;

void C_VelaBin_Decode::Reset() {
  m_state->tracker.Reset();
  m_state->received.fill(0);
  for (const S_MessageRow& row : kMessages) row.preset(m_state->stored);
  m_state->seeds.fill(UnsetTime());
  m_state->glonassChannels.fill(NA_CHANNEL);
  m_state->lastResult = eResultOk;
}

void C_VelaBin_Decode::SeedTime(unsigned short week, double seconds, ALGO::eGNSSSystem system) {
  C_GnssTime time;
  time.Set(week, seconds, system);
  SeedTime(time);
}

void C_VelaBin_Decode::SeedTime(const C_GnssTime& time) {
  using namespace ALGO;
  if (time.m_week == 0 && time.m_secOfWeek == 0.0) return;
  if (time.m_system >= kSystems) return;
  const C_GnssTime seed = time;  // a copy: `time` may be one of our own slots
  auto& seeds = m_state->seeds;
  seeds[seed.m_system] = Shifted(seed, 0.0, seed.m_system);
  // GPS is set first in either case: the others follow from it.
  if (seed.m_system == GNSS_BEIDOU) seeds[GNSS_GPS] = Shifted(seed, kGpsMinusBeidou, GNSS_GPS);
  if (seed.m_system == GNSS_GALILEO) seeds[GNSS_GPS] = Shifted(seeds[GNSS_GALILEO], 0.0, GNSS_GPS);
  if (seed.m_system == GNSS_GPS || seed.m_system == GNSS_GALILEO)
    seeds[GNSS_BEIDOU] = Shifted(seeds[GNSS_GPS], -kGpsMinusBeidou, GNSS_BEIDOU);
  if (seed.m_system == GNSS_GPS || seed.m_system == GNSS_BEIDOU)
    seeds[GNSS_GALILEO] = Shifted(seeds[GNSS_GPS], 0.0, GNSS_GALILEO);
}

const C_GnssTime& C_VelaBin_Decode::GetSeedTime(ALGO::eGNSSSystem system) const {
  static const C_GnssTime kUnset = UnsetTime();
  return system < kSystems ? m_state->seeds[system] : kUnset;
}

bool C_VelaBin_Decode::ResolveWeek(ALGO::eGNSSSystem system, unsigned short& week) const {
  const C_GnssTime& seed = GetSeedTime(system);
  if (seed.m_system >= kSystems) return false;
  // Both weeks on the system's own scale, on which the roll-overs happen. A week at or before the first one is taken to
  // be on that scale already.
  const int firstWeek = FirstWeekOf(seed.m_system);
  int seedWeek = seed.m_week;
  if (seedWeek > firstWeek) seedWeek -= firstWeek;
  int broadcast = week;
  if (broadcast > firstWeek) broadcast -= firstWeek;
  // The broadcast week in the seed's period of 1024 weeks, or in the next one over if that is nearer.
  int candidate = broadcast % kRollOver + seedWeek / kRollOver * kRollOver;
  if (std::abs(candidate - seedWeek) > kRollOver / 2) candidate += candidate < seedWeek ? kRollOver : -kRollOver;
  week = static_cast<unsigned short>(candidate + firstWeek);
  return true;
}

bool C_VelaBin_Decode::SetGlonassSvChannelId(unsigned char slot, signed char channel) {
  if (slot < 1 || slot > kGlonassSlots) return false;
  if ((channel < kLowestChannel || channel > kHighestChannel) && channel != NA_CHANNEL) return false;
  m_state->glonassChannels[slot] = channel;
  return true;
}

signed char C_VelaBin_Decode::GetGlonassSvChannelId(unsigned char slot) const {
  return slot <= kGlonassSlots ? m_state->glonassChannels[slot] : NA_CHANNEL;  // nothing is ever stored for slot 0
}

// The one place that counts: messages that are decoded one by one are not.
unsigned int C_VelaBin_Decode::Decode(unsigned char* frame, const unsigned short& length, unsigned short& msgNumber,
                                      U_VelaBIN_EcdDcdData& out) {
  std::memset(&out, 0, sizeof out);  // the whole union: what an earlier message left in other members must not show
  const unsigned int result = ValidateAndDispatch(frame, length, msgNumber, out);
  if (result == eResultOk) ++m_state->received[msgNumber];
  return Remember(result);
}

unsigned int C_VelaBin_Decode::ValidateAndDispatch(unsigned char* frame, unsigned short length,
                                                   unsigned short& msgNumber, U_VelaBIN_EcdDcdData& out) {
  unsigned short frameLength = 0;
  unsigned short position = 0;
  const unsigned int result = ValidateFrame(frame, length, msgNumber, frameLength, position);
  if (result != eResultOk) return result;
  if (length != frameLength) return eResultTooLong;  // what follows the frame would be lost without a word
  const S_MessageRow* const row = kRowOfNumber[msgNumber];
  if (row == nullptr) return eResultUnknownMessage;
  return row->decode(*this, frame, length, out);
}

unsigned int C_VelaBin_Decode::Remember(unsigned int result) {
  m_state->lastResult = result;
  return result;
}

unsigned int C_VelaBin_Decode::GetLastResult() const { return m_state->lastResult; }

unsigned int C_VelaBin_Decode::GetReceivedMsgCount(eMessageTypes type) const {
  return type <= kMaxMessageNumber ? m_state->received[type] : 0;
}

eContents velagnss::binproto::ContentsOf(unsigned int messageNumber) {
  const bool isSupported = messageNumber <= kMaxMessageNumber && kRowOfNumber[messageNumber] != nullptr;
  return isSupported ? kRowOfNumber[messageNumber]->contents : eContents::eUnsupported;
}

bool C_VelaBin_Decode::IsAnObservationMsg(eMessageTypes type) {
  return type == eBin16 || type == eBin36 || type == eBin66 || type == eBin76;
}

// ---- messages that are not decoded ---------------------------------------------------------------------------------
//
// Each has an operation of its own, because its record is a type of its own; the public header lists them.

unsigned int C_VelaBin_Decode::Decode_Bin1(unsigned char* frame, const unsigned short& length, S_BinMsg1& out) {
  return Remember(TakeRaw(frame, length, eBin1, m_state->stored.bin1, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin2(unsigned char* frame, const unsigned short& length, S_BinMsg2& out) {
  return Remember(TakeRaw(frame, length, eBin2, m_state->stored.bin2, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin3(unsigned char* frame, const unsigned short& length, S_BinMsg3& out) {
  return Remember(TakeRaw(frame, length, eBin3, m_state->stored.bin3, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin5(unsigned char* frame, const unsigned short& length, S_BinMsg5& out) {
  return Remember(TakeRaw(frame, length, eBin5, m_state->stored.bin5, out));
}

// The one raw message with a conversion that hosts may call: stored and output are two types of one layout.
unsigned int C_VelaBin_Decode::Decode_Bin34(unsigned char* frame, const unsigned short& length, S_IntBinMsg34& out) {
  const unsigned int result = ReadMessage(frame, length, eBin34, m_state->stored.bin34);
  if (result == eResultOk) Bin34ToInterpretedRec(m_state->stored.bin34, out);
  return Remember(result);
}

void C_VelaBin_Decode::Bin34ToInterpretedRec(const S_RawBinMsg34& raw, S_IntBinMsg34& out) {
  static_assert(sizeof raw == sizeof out);
  std::memcpy(&out, &raw, sizeof out);
}

unsigned int C_VelaBin_Decode::Decode_Bin44(unsigned char* frame, const unsigned short& length, S_BinMsg44& out) {
  return Remember(TakeRaw(frame, length, eBin44, m_state->stored.bin44, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin94(unsigned char* frame, const unsigned short& length, S_BinMsg94& out) {
  return Remember(TakeRaw(frame, length, eBin94, m_state->stored.bin94, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin122(unsigned char* frame, const unsigned short& length, S_BinMsg122& out) {
  return Remember(TakeRaw(frame, length, eBin122, m_state->stored.bin122, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin180(unsigned char* frame, const unsigned short& length, S_BinMsg180& out) {
  return Remember(TakeRaw(frame, length, eBin180, m_state->stored.bin180, out));
}

// Its fields lie in the record as they do on the wire, so that copying it is reading it.
unsigned int C_VelaBin_Decode::Decode_Bin209(unsigned char* frame, const unsigned short& length, S_BinMsg209& out) {
  return Remember(TakeRaw(frame, length, eBin209, m_state->stored.bin209, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin16(unsigned char* frame, const unsigned short& length, S_VelaBIN_Obs& out) {
  return Remember(TakeObservations(frame, length, eBin16, m_state->stored.bin16, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin36(unsigned char* frame, const unsigned short& length, S_VelaBIN_Obs& out) {
  return Remember(TakeObservations(frame, length, eBin36, m_state->stored.bin36, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin66(unsigned char* frame, const unsigned short& length, S_VelaBIN_Obs& out) {
  return Remember(TakeObservations(frame, length, eBin66, m_state->stored.bin66, out));
}

unsigned int C_VelaBin_Decode::Decode_Bin76(unsigned char* frame, const unsigned short& length, S_VelaBIN_Obs& out) {
  return Remember(TakeObservations(frame, length, eBin76, m_state->stored.bin76, out));
}
