// Broadcast ephemerides as a RINEX navigation file, 3.05 or 4.00.
#ifndef VELAGNSS_APPS_NAV_CONVERTER_H
#define VELAGNSS_APPS_NAV_CONVERTER_H

#include <memory>

#include "apps/velagnss/pipeline/TextConsumer.h"
#include "apps/velagnss/rinex/RinexOptions.h"

namespace Host {

// Takes the ephemerides of the binary protocol (messages 95, 25, 65 and 93) and of RTCM 3 (1019, 1020, 1041, 1042,
// 1044, 1045, 1046 and 63) and writes them at the end, in the order of their reference times and each only once,
// however it came. Values that an ephemeris carries in fractions of its own units are exact to the 13 digits of a
// field.
//
// Ephemerides whose week or date is not known, those that the decoder refuses, and satellites that have no number in
// RINEX are left out, each with its reason reported. Without a single ephemeris nothing is written.
std::unique_ptr<C_TextConsumer> MakeNavConverter(const S_RinexOptions& options);

}  // namespace Host

#endif  // VELAGNSS_APPS_NAV_CONVERTER_H
