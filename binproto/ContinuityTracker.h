// Per-satellite history of observations, by which breaks of lock are found.
#ifndef VELAGNSS_BINPROTO_CONTINUITY_TRACKER_H
#define VELAGNSS_BINPROTO_CONTINUITY_TRACKER_H

#include <algorithm>
#include <vector>

class C_SatelliteList;

// Has place for its slots and can be cleared. Nothing is written into it as long as observation messages are not
// decoded.
class C_ContinuityTracker {
 public:
  // Allocates all there will be. The list is not owned and may be null.
  C_ContinuityTracker(const C_SatelliteList* satellites, unsigned short slots)
      : m_satellites(satellites), m_history(slots) {}

  void Reset() { std::fill(m_history.begin(), m_history.end(), S_History{}); }

  const C_SatelliteList* Satellites() const { return m_satellites; }

 private:
  struct S_History {
    double lastTime = 0;         // s
    unsigned int lockCount = 0;  // as last received
  };

  const C_SatelliteList* m_satellites;
  std::vector<S_History> m_history;
};

#endif  // VELAGNSS_BINPROTO_CONTINUITY_TRACKER_H
