// The NMEA 0183 mode indicators by name: how a position was found.
#ifndef VELAGNSS_APPS_MODE_NAMES_H
#define VELAGNSS_APPS_MODE_NAMES_H

#include <iterator>
#include <string_view>

#include "textproto/NMEA_Records.h"

namespace Host {

inline constexpr std::string_view kModeNames[] = {  // by eNmeaModeIndicator
    "not valid", "autonomous", "differential", "precise",   "rtk", "rtk float",
    "estimated", "manual",     "simulator",    "not valid", ""};

// Empty when the sentence says nothing about it.
constexpr std::string_view ModeName(eNmeaModeIndicator mode) {
  return mode < std::size(kModeNames) ? kModeNames[mode] : std::string_view();
}

}  // namespace Host

#endif  // VELAGNSS_APPS_MODE_NAMES_H
