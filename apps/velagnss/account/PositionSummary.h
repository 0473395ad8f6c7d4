// The mean position of the fixes of a stream, and how they scatter.
#ifndef VELAGNSS_APPS_POSITION_SUMMARY_H
#define VELAGNSS_APPS_POSITION_SUMMARY_H

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "apps/velagnss/account/EvenSample.h"
#include "geo/Vector3.h"
#include "stream/Record.h"

namespace Host {

inline constexpr double kNotKnown = std::numeric_limits<double>::quiet_NaN();

// The fixes around their mean. Values that do not exist are not finite: the mean of fixes from all around the Earth may
// be its center.
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

// Why a stream has no fix. A later one says more: a position that lacks only its altitude outweighs one that is no fix.
enum class eNoPosition : unsigned char { NoPosition, NoFix, NoAltitude };

// A fix is a GGA of quality 1 to 5 or a GNS with a satellite mode (A, D, P, R, F) that has latitude, longitude and
// altitude; dead reckoning, manual input and simulation do not count. Of several sentences with one time of day only
// the first counts.
//
// Sums are taken in Earth-centered coordinates and rotated into the local frame of the mean at the end, so that neither
// the date line nor a pole is special. Mean and spread take one pass and no memory. The radii need the fixes
// themselves: of 131,072 every second one is dropped, and from then on only every second (fourth, ...) is kept. The
// radii are exact up to that number, and beyond it those of at least 65,536 evenly chosen fixes.
class C_PositionSummary {
 public:
  // Takes a GGA or GNS. Positions of GLL and RMC are not used, because they have no altitude; other records are
  // ignored.
  void Note(const velagnss::Record& record);

  // A fix: latitude and longitude in degrees, m above the sea, m from the ellipsoid to the sea (or NA_DOUBLE).
  void Add(double latitude, double longitude, double altitude, double separation);

  // Nothing without fixes.
  std::optional<S_PositionSummary> Summary() const;

  // ECEF, m: the mean, and the fixes that the radii are made of.
  const C_Vector3& Mean() const { return m_mean; }
  const std::vector<C_Vector3>& SomeFixes() const { return m_kept.Kept(); }

  // Why there is no fix, if there is none.
  eNoPosition Reason() const { return m_reason; }

 private:
  template <class Sentence>
  void NoteReason(const Sentence& sentence);
  bool IsNewEpoch(double timeOfDay);
  void SetRadii(S_PositionSummary& summary) const;

  eNoPosition m_reason = eNoPosition::NoPosition;
  std::optional<double> m_timeOfDay;  // of the last fix
  std::uint64_t m_count = 0;
  C_Vector3 m_mean;                    // ECEF, m
  std::array<double, 6> m_products{};  // sums of the products of deviations from the mean: xx yy zz xy xz yz
  double m_meanAltitude = 0;           // m
  bool m_hasHeight = true;             // all fixes so far had a geoid separation
  C_EvenSample<C_Vector3> m_kept;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_POSITION_SUMMARY_H
