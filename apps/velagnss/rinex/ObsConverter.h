// Observations of RTCM 3 as a RINEX 3.05 observation file.
#ifndef VELAGNSS_APPS_OBS_CONVERTER_H
#define VELAGNSS_APPS_OBS_CONVERTER_H

#include <memory>

#include "apps/velagnss/pipeline/TextConsumer.h"
#include "apps/velagnss/rinex/RinexOptions.h"

namespace Host {

// Takes the observations of one reference station (1001 to 1004, 1009 to 1012, MSM1 to MSM7) and what it says about
// itself. The header needs to know all of them, so they wait in a temporary file, and everything is written at the end.
std::unique_ptr<C_TextConsumer> MakeObsConverter(const S_RinexOptions& options);

}  // namespace Host

#endif  // VELAGNSS_APPS_OBS_CONVERTER_H
