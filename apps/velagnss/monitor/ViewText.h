// Values of the monitor as short text for people. All of it is ASCII.
#ifndef VELAGNSS_APPS_VIEW_TEXT_H
#define VELAGNSS_APPS_VIEW_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/monitor/Grid.h"
#include "apps/velagnss/monitor/SourceView.h"

namespace Host {

// "-" for a number that is not known.
std::string DecimalText(double value, int decimals);

// "0.4 s", "12 s", "5 min", "3 h", "2 d".
std::string AgeText(double seconds);

// "812 B", "1.2 kB", "34 MB": decimal units.
std::string SizeText(double bytes);

// "52.1234567 N 4.1234567 E": centimeters.
std::string PlaceText(double latitude, double longitude);

// "3.0", "0.25".
std::string RateText(double perSecond);

// "RTK, 3D"; "no position".
std::string FixText(const S_Fix& fix);
eStyle StyleOf(const S_Fix& fix);

// "GPS".
std::string_view SystemTitle(ALGO::eGNSSSystem system);

// As RINEX names it: "G05", "J02"; "?05" for an unknown system.
std::string SatelliteName(const S_EpochSatellite& satellite);

// The strongest of its signals, dB-Hz; a marker when none is known.
double StrongestOf(const S_EpochSatellite& satellite);

// Which part of a bar a signal fills.
double ShareOf(double cn0);
inline constexpr std::string_view kBarScale = "10 to 55 dB-Hz";

// The state of a source in words.
std::string_view StateText(eSourceState state);
eStyle StyleOf(eSourceState state);

// The beginning of `text` that fits into `width` columns. Parts are separated by two blanks: none is cut in two,
// because a number without its end would be a wrong one. A first part that does not fit ends with ">".
std::string FittingParts(std::string_view text, int width);

// The end of a name that fits, after "...".
std::string FittingName(std::string_view name, int width);

// The beginning of any other text that fits; ">" at the end if that is not all of it.
std::string FittingText(std::string_view text, int width);

// "2024-05-18 23:59:07", or the time of day alone.
std::string ClockText(const C_TimeText& time, bool hasDate);

// Lines of at most `width` columns, broken at blanks where there are some.
std::vector<std::string_view> Wrapped(std::string_view text, int width);

}  // namespace Host

#endif  // VELAGNSS_APPS_VIEW_TEXT_H
