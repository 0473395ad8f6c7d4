// Where the fixes of a stream are, and how they scatter.
#ifndef VELAGNSS_APPS_POSITION_SUMMARY_H
#define VELAGNSS_APPS_POSITION_SUMMARY_H

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "framing/RawDataMessage.h"
#include "geo/Vector3.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace Host {

inline constexpr double kNotKnown = std::numeric_limits<double>::quiet_NaN();

// The fixes around their mean. Not finite where there is no such number: the mean of fixes all around the Earth may be
// its centre.
struct S_PositionSummary {
  std::uint64_t fixes;
  double latitude;   // rad, of the mean position
  double longitude;  // rad
  double height;     // m, of the mean position above the ellipsoid; NaN when a fix had no geoid separation
  double altitude;   // m, mean altitude above sea level as sent
  double spreadNorth = kNotKnown;  // m, standard deviation: root mean square of the distances from the mean
  double spreadEast = kNotKnown;   // m
  double spreadUp = kNotKnown;     // m
  double radius50 = kNotKnown;     // m, the smallest horizontal circle around the mean with half of the fixes in it
  double radius95 = kNotKnown;     // m, the same with 95 % of them
};

// A fix is a GGA of quality 1 to 5 or a GNS with a satellite mode (A, D, P, R, F), with latitude, longitude and
// altitude; dead reckoning, manual input and simulation are none. Several sentences of one time of day are one fix, the
// first.
//
// Everything is added up in Earth-centred coordinates and turned into the local frame of the mean at the end: neither
// the date line nor a pole is a special place. Mean and spread take one pass and no memory. For the radii the fixes are
// kept; when there are 131,072 every second one is dropped, and from then on only every second (fourth, ...) kept: the
// radii are exact up to that number and those of at least 65,536 evenly chosen fixes beyond.
class C_PositionSummary {
 public:
  // What a sentence, decoded with result 0, tells of the position.
  void Note(C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& record);

  // A fix: latitude and longitude in degrees, m above the sea, m from the ellipsoid to the sea (or NA_DOUBLE).
  void Add(double latitude, double longitude, double altitude, double separation);

  // Nothing without fixes.
  std::optional<S_PositionSummary> Summary() const;

 private:
  static constexpr std::size_t kMaxKept = std::size_t{1} << 17;

  bool IsNewEpoch(double timeOfDay);
  void Keep(const C_Vector3& position);
  void SetRadii(S_PositionSummary& summary) const;

  std::optional<double> m_timeOfDay;  // of the last fix
  std::uint64_t m_count = 0;
  C_Vector3 m_mean;                    // ECEF, m
  std::array<double, 6> m_products{};  // sums of the products of deviations from the mean: xx yy zz xy xz yz
  double m_meanAltitude = 0;           // m
  bool m_hasHeight = true;             // all fixes so far had a geoid separation
  std::vector<C_Vector3> m_kept;       // every `m_stride`th fix, from the first
  std::uint64_t m_stride = 1;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_POSITION_SUMMARY_H
