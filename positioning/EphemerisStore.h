// The broadcast ephemerides of a stream, and from them the state of any satellite.
//
//   velagnss::EphemerisStore store;
//   store.Note(ephemeris);                                            // as they come, of any protocol
//   velagnss::SatelliteOrbit orbit;
//   if (store.Find(ALGO::GNSS_GPS, 5, time, 18, orbit) == velagnss::OrbitResult::Ok) Use(orbit.state);
#ifndef VELAGNSS_POSITIONING_EPHEMERIS_STORE_H
#define VELAGNSS_POSITIONING_EPHEMERIS_STORE_H

#include <memory>

#include "geo/GnssTime.h"
#include "positioning/SatelliteOrbit.h"
#include "records/InterfaceRecords.h"
#include "rtcm3/Rtcm3Records.h"
#include "velagnss_export.h"

namespace velagnss {

// A state and where it comes from.
struct SatelliteOrbit {
  SatelliteState state;                          // at the time asked for
  const Rtcm3KeplerEphemeris* kepler = nullptr;  // for `GroupDelay`; null for GLONASS and SBAS; valid until the next
                                                 // ephemeris is noted
};

// Keeps the last four different ephemerides of each satellite, so that it also serves times shortly before the present:
// for observations that waited for an ephemeris. Allocates memory in its constructor only and throws nothing later.
//
// Weeks. An ephemeris may come before any date is known, and so may the time that is asked for. Then the difference of
// the two is taken to be less than half a week (half a day where GLONASS lacks the day).
class VELAGNSS_API EphemerisStore {
 public:
  EphemerisStore();
  ~EphemerisStore();
  EphemerisStore(const EphemerisStore&) = delete;
  EphemerisStore& operator=(const EphemerisStore&) = delete;

  // Takes an ephemeris. `isWeekKnown`: its weeks were resolved, result `eResultOk`. One with a satellite number outside
  // the range of its system, or without a reference time, is ignored. One with the same reference time and issue of
  // data as an earlier one replaces it.
  void Note(const Rtcm3KeplerEphemeris& ephemeris, bool isWeekKnown = true);
  void Note(const S_IFKeplerEphRec& ephemeris, bool isWeekKnown = true);
  void Note(const S_IFPvaEphRec& ephemeris, bool isWeekKnown = true);

  // The state of a satellite at a GPS time, by the ephemeris whose reference time is nearest. A week of NA_U16 means
  // that only the seconds are known. `leapSeconds` (GPS time - UTC) matters for GLONASS only. `orbit` is set if the
  // result is `Ok` or `Unhealthy`. For a time that is not available or not finite the answer is `Missing`.
  OrbitResult Find(ALGO::eGNSSSystem system, unsigned char svId, const C_GnssTime& time, unsigned char leapSeconds,
                   SatelliteOrbit& orbit) const;

  // Forgets all ephemerides.
  void Clear();

 private:
  class VELAGNSS_NO_EXPORT Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace velagnss

#endif  // VELAGNSS_POSITIONING_EPHEMERIS_STORE_H
