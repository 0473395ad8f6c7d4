// The delay of a signal by the neutral atmosphere.
#ifndef VELAGNSS_POSITIONING_TROPOSPHERE_H
#define VELAGNSS_POSITIONING_TROPOSPHERE_H

#include "velagnss_export.h"

namespace velagnss {

// Delay in m, from latitude (rad), height (m above the ellipsoid, taken as above the sea) and elevation (rad, above
// about 4 degrees).
//
// Zenith delay: Saastamoinen (Atmospheric correction for the troposphere and stratosphere in radio ranging of
// satellites, 1972), with pressure, temperature and humidity of the ICAO standard atmosphere and 50 % relative humidity
// at sea level. Mapping: Black and Eisner (Journal of Geophysical Research 89, 1984). Heights from -1 to 11 km; others
// are taken as the nearest of these. Without weather data the delay is accurate to a few centimeters at the zenith.
VELAGNSS_API double TroposphericDelay(double latitude, double height, double elevation);

}  // namespace velagnss

#endif  // VELAGNSS_POSITIONING_TROPOSPHERE_H
