// Where a receiver was: its track, its height, its speed.
#ifndef VELAGNSS_APPS_PLACE_REPORT_H
#define VELAGNSS_APPS_PLACE_REPORT_H

#include <cstdint>

#include "apps/velagnss/account/PositionSummary.h"
#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/report/Moment.h"
#include "apps/velagnss/report/Series.h"
#include "apps/velagnss/report/ThinnedLine.h"

namespace Host {

// In a plane that begins at the first position.
struct S_PlacePoint : S_LinePoint {
  double latitude;   // degrees
  double longitude;  // degrees
  double height;     // m above the ellipsoid, or above the sea where the separation is not known; 0 without an altitude
};

// The positions of epochs, with all kinds of fixes.
class C_PlaceReport {
 public:
  using t_Track = C_ThinnedLine<S_PlacePoint, 4000>;

  void Add(const S_Epoch& epoch, const S_Moment& moment);

  std::uint64_t Positions() const { return m_positions; }
  const t_Track& Track() const { return m_track; }
  const C_PositionSummary& Summary() const { return m_summary; }

  // Heights above the ellipsoid if all altitudes came with their separation, else altitudes.
  bool HasHeights() const { return m_heights == m_altitudes; }
  const C_Series& Height() const { return HasHeights() ? m_height : m_altitude; }  // m
  const C_Series& Speed() const { return m_speed; }                                // m/s

 private:
  void AddPoint(const S_Position& position, const S_Moment& moment);

  std::uint64_t m_positions = 0;
  t_Track m_track;
  bool m_isBroken = true;        // the next point begins a piece
  double m_seconds = NA_DOUBLE;  // of the last point
  double m_latitude = 0;         // degrees, of the first position
  double m_longitude = 0;        // degrees
  C_PositionSummary m_summary;
  C_Series m_height;
  C_Series m_altitude;
  std::uint64_t m_heights = 0;
  std::uint64_t m_altitudes = 0;
  C_Series m_speed;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_PLACE_REPORT_H
