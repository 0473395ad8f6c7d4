// What a decoder keeps from message to message, and the operations that decode a message.
//
// Internal.
#ifndef VELAGNSS_RTCM3_STATE_H
#define VELAGNSS_RTCM3_STATE_H

#include <algorithm>
#include <iterator>

#include "rtcm3/BitReader.h"
#include "rtcm3/EpochClock.h"
#include "rtcm3/LockTimes.h"
#include "rtcm3/Rtcm3Records.h"

namespace velagnss::rtcm3 {

// Frequency channels of the GLONASS slots, 1 to 24.
class GlonassChannels {
 public:
  // Channels up to 6 are in use; those up to 13 were before 2005, and messages can carry them.
  static bool IsChannel(int channel) { return channel >= -7 && channel <= 13; }

  GlonassChannels() { Clear(); }
  void Clear() { std::fill(std::begin(m_channels), std::end(m_channels), NA_CHANNEL); }
  signed char Of(unsigned int slot) const { return slot <= kSlots ? m_channels[slot] : NA_CHANNEL; }

  // False for anything else.
  bool Set(unsigned int slot, signed char channel) {
    if (slot < 1 || slot > kSlots || (!IsChannel(channel) && channel != NA_CHANNEL)) return false;
    m_channels[slot] = channel;
    return true;
  }

 private:
  static constexpr unsigned int kSlots = 24;

  signed char m_channels[kSlots + 1];  // nothing is ever stored for slot 0
};

struct State {
  EpochClock clock;
  GlonassChannels channels;
  LockHistory locks;

  // Forgets everything; no memory is released.
  void Clear() {
    clock = {};
    channels.Clear();
    locks.Clear();
  }
};

// Each decodes the payload of message `number`, one of its own, into its kind of record. Results are
// codes of records/ResultCodes.h. After a failure the state is unchanged and the record may be partly filled.
using t_DecodeMessage = unsigned int(State& state, BitReader& reader, unsigned int number, Rtcm3Record& record);
t_DecodeMessage DecodeStation, DecodeAntenna, DecodeSystemParameters, DecodeText, DecodeGlonassBiases, DecodeResiduals;
t_DecodeMessage DecodeKeplerEphemeris, DecodeGlonassEphemeris;
t_DecodeMessage DecodeLegacyObservations, DecodeMsm, DecodeSsr;

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_STATE_H
