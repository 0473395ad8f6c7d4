#include "apps/velagnss/report/PlaceReport.h"

#include <cmath>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr double kLongestPause = 600;  // s
constexpr double kMetersPerSecondPerKnot = 1852.0 / 3600;

}  // namespace

void C_PlaceReport::Add(const S_Epoch& epoch, const S_Moment& moment) {
  if (!epoch.hasPosition) return;
  if (!epoch.position) return void(m_isBroken = true);
  const S_Position& position = *epoch.position;
  ++m_positions;
  AddPoint(position, moment);
  if (IsKnown(position.speedKnots)) m_speed.Add(moment.bin, position.speedKnots * kMetersPerSecondPerKnot);
  if (!IsKnown(position.altitude)) return;
  ++m_altitudes;
  m_altitude.Add(moment.bin, position.altitude);
  if (!IsKnown(position.geoidSeparation)) return;
  ++m_heights;
  m_height.Add(moment.bin, position.altitude + position.geoidSeparation);
}

// Degrees are good enough to choose points by; those that are kept have their coordinates.
void C_PlaceReport::AddPoint(const S_Position& position, const S_Moment& moment) {
  const double altitude = IsKnown(position.altitude) ? position.altitude : 0;
  m_summary.Add(position.latitude, position.longitude, altitude, position.geoidSeparation);
  if (m_positions == 1) {
    m_latitude = position.latitude;
    m_longitude = position.longitude;
  }
  const double pause = moment.seconds - m_seconds;
  const bool startsPiece = m_isBroken || pause < 0 || pause > kLongestPause;
  const double east = std::remainder(position.longitude - m_longitude, 360) * std::cos(m_latitude * kRadiansPerDegree);
  const double height = altitude + (IsKnown(position.geoidSeparation) ? position.geoidSeparation : 0);
  m_track.Add({{moment.seconds, east, position.latitude - m_latitude, 0, startsPiece},
               position.latitude,
               position.longitude,
               height});
  m_isBroken = false;
  m_seconds = moment.seconds;
}

}  // namespace Host
