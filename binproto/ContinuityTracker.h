// History of the observations of each satellite, from which breaks of lock are found.
//
// Internal. Observation messages are not decoded yet, so nothing is written into the history: it has its memory,
// because the decoder must not allocate once it is constructed, and it can be cleared.
#ifndef VELAGNSS_BINPROTO_CONTINUITY_TRACKER_H
#define VELAGNSS_BINPROTO_CONTINUITY_TRACKER_H

#include <algorithm>
#include <vector>

class C_SatelliteList;

namespace velagnss::binproto {

class C_ContinuityTracker {
 public:
  // Allocates everything it will ever need. The list is not owned and may be null.
  C_ContinuityTracker(const C_SatelliteList* satellites, unsigned short slots)
      : m_satellites(satellites), m_history(slots) {}

  // Forgets the history; list and slots stay.
  void Reset() { std::fill(m_history.begin(), m_history.end(), S_History{}); }

  const C_SatelliteList* Satellites() const { return m_satellites; }

 private:
  // Of one slot.
  struct S_History {
    double lastTime = 0;         // s
    unsigned int lockCount = 0;  // as last received
  };

  const C_SatelliteList* m_satellites;
  std::vector<S_History> m_history;
};

}  // namespace velagnss::binproto

#endif  // VELAGNSS_BINPROTO_CONTINUITY_TRACKER_H
