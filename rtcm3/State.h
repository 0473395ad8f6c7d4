// What a decoder keeps from message to message, and the second step of decoding, which uses it.
//
// Internal. The first step is that of `Reading.h`.
#ifndef VELAGNSS_RTCM3_STATE_H
#define VELAGNSS_RTCM3_STATE_H

#include <algorithm>
#include <iterator>

#include "records/ResultCodes.h"
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

// Each completes a record that has been read, as far as it depends on earlier messages, and notes what later ones
// depend on. Results are eResultOk and, for ephemerides, eResultNoSeed.
template <class Record>
using t_Follow = unsigned int(State& state, Record& record);
t_Follow<Rtcm3SystemParameters> Follow;
t_Follow<Rtcm3Message> Follow;
t_Follow<Rtcm3Residuals> Follow;
t_Follow<Rtcm3Observations> Follow;
t_Follow<Rtcm3KeplerEphemeris> Follow;
t_Follow<Rtcm3PvaEphemeris> Follow;
t_Follow<Rtcm3Ssr> Follow;

// All others are complete.
template <class Record>
unsigned int Follow(State&, Record&) {
  return eResultOk;
}

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_STATE_H
