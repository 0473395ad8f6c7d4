#include "apps/velagnss/monitor/ViewText.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/Utf8.h"

namespace Host {
namespace {

// A unit and how many of the unit before it make one.
struct S_Unit {
  std::string_view name;
  double factor;
};
constexpr S_Unit kTimes[] = {{"s", 1}, {"min", 60}, {"h", 60}, {"d", 24}};
constexpr S_Unit kSizes[] = {{"B", 1}, {"kB", 1000}, {"MB", 1000}, {"GB", 1000}, {"TB", 1000}};

// In the largest unit of which there is at least one.
template <std::size_t N>
std::string UnitText(double value, const S_Unit (&units)[N], bool hasDecimal) {
  std::size_t unit = 0;
  while (unit + 1 < N && std::round(value) >= units[unit + 1].factor) value /= units[++unit].factor;
  constexpr double kFewDigits = 10;
  return fmt::format("{:.{}f} {}", value, hasDecimal && value < kFewDigits ? 1 : 0, units[unit].name);
}

// Latitude or longitude with a letter for its sign.
std::string AngleText(double degrees, std::string_view letters) {
  constexpr double kHalfDigit = 5e-8;
  return fmt::format("{:.7f} {}", std::abs(degrees), letters[degrees < -kHalfDigit ? 1 : 0]);
}

struct S_SystemName {
  std::string_view title;
  char letter;
  unsigned int offset;  // what RINEX takes off a PRN
};
constexpr S_SystemName kSystems[] = {{"GPS", 'G', 0},    {"GLONASS", 'R', 0}, {"BeiDou", 'C', 0}, {"Galileo", 'E', 0},
                                     {"SBAS", 'S', 100}, {"QZSS", 'J', 192},  {"NavIC", 'I', 0}};

struct S_StateRow {
  std::string_view text;
  eStyle style;
};
constexpr std::array<S_StateRow, kNumSourceStates> kStates = {{{"waiting", eStyle::Dim},
                                                               {"receiving", eStyle::Good},
                                                               {"no frames", eStyle::Bad},
                                                               {"silent", eStyle::Warning},
                                                               {"lost", eStyle::Bad},
                                                               {"failed", eStyle::Bad},
                                                               {"ended", eStyle::Normal}}};

// Bytes of the first `width` characters.
std::size_t SizeOf(std::string_view text, int width) {
  std::size_t size = 0;
  for (; width > 0 && size < text.size(); --width)
    size += std::max<std::size_t>(FirstCharacter(text.substr(size)).size, 1);
  return size;
}

}  // namespace

std::string DecimalText(double value, int decimals) {
  return IsKnown(value) ? fmt::format("{:.{}f}", value, decimals) : "-";
}

std::string RateText(double perSecond) {
  constexpr double kManyDigits = 9.995;
  return DecimalText(perSecond, perSecond < kManyDigits ? 2 : 1);
}

std::string AgeText(double seconds) { return IsKnown(seconds) ? UnitText(seconds, kTimes, true) : "-"; }
std::string SizeText(double bytes) { return IsKnown(bytes) ? UnitText(bytes, kSizes, bytes >= 1000) : "-"; }

std::string PlaceText(double latitude, double longitude) {
  if (!IsKnown(latitude) || !IsKnown(longitude)) return "-";
  return AngleText(latitude, "NS") + " " + AngleText(longitude, "EW");
}

// GSA and the sentence of the position may differ; each is given.
std::string FixText(const S_Fix& fix) {
  if (!fix.hasPosition) return fix.type >= '2' && fix.type <= '3' ? "fix without position" : "no position";
  const std::string_view name = ModeName(fix.kind);
  std::string text(name.empty() ? "position" : name);
  if (text.starts_with("rtk")) text.replace(0, 3, "RTK");
  if (fix.type == '2') text += ", 2D";
  if (fix.type == '3') text += ", 3D";
  return text;
}

eStyle StyleOf(const S_Fix& fix) {
  if (!fix.hasPosition) return eStyle::Bad;
  return fix.type == '2' || fix.kind == eNmeaModeEstimated ? eStyle::Warning : eStyle::Good;
}

std::string_view SystemTitle(ALGO::eGNSSSystem system) {
  return system < std::size(kSystems) ? kSystems[system].title : "Unknown system";
}

std::string SatelliteName(const S_EpochSatellite& satellite) {
  if (satellite.system >= std::size(kSystems)) return fmt::format("?{:02}", satellite.number);
  const S_SystemName& row = kSystems[satellite.system];
  const unsigned int offset = satellite.number > row.offset ? row.offset : 0;
  return fmt::format("{}{:02}", row.letter, satellite.number - offset);
}

double StrongestOf(const S_EpochSatellite& satellite) {
  double strongest = NA_DOUBLE;  // below any value
  for (const S_EpochSignal& signal : satellite.signals)
    if (IsKnown(signal.cn0)) strongest = std::max(strongest, signal.cn0);
  return strongest;
}

double ShareOf(double cn0) {
  constexpr double kLeast = 10;  // dB-Hz: nothing is tracked below
  constexpr double kMost = 55;
  return IsKnown(cn0) ? std::clamp((cn0 - kLeast) / (kMost - kLeast), 0.0, 1.0) : 0;
}

std::string_view StateText(eSourceState state) { return kStates[static_cast<std::size_t>(state)].text; }
eStyle StyleOf(eSourceState state) { return kStates[static_cast<std::size_t>(state)].style; }

std::string FittingParts(std::string_view text, int width) {
  if (WidthOf(text) <= width) return std::string(text);
  constexpr std::string_view kSeparator = "  ";
  const std::size_t end = text.rfind(kSeparator, SizeOf(text, width));
  if (end != std::string_view::npos && end > 0) return std::string(text.substr(0, end));
  return FittingText(text, width);
}

std::string FittingText(std::string_view text, int width) {
  if (WidthOf(text) <= width) return std::string(text);
  return width > 0 ? std::string(text.substr(0, SizeOf(text, width - 1))) + '>' : "";
}

std::string ClockText(const C_TimeText& time, bool hasDate) {
  constexpr std::size_t kDate = 10;
  std::string text(time.Text());
  const std::size_t middle = text.find('T');
  if (middle == kDate && hasDate) text[middle] = ' ';
  if (middle == kDate && !hasDate) text.erase(0, kDate + 1);
  return text.substr(0, text.find_first_of(".Z"));
}

std::string FittingName(std::string_view name, int width) {
  constexpr std::string_view kMissing = "...";
  const int all = WidthOf(name);
  if (all <= width) return std::string(name);
  const int kept = width - static_cast<int>(kMissing.size());
  if (kept <= 0) return std::string(name.substr(0, SizeOf(name, width)));
  return std::string(kMissing).append(name.substr(SizeOf(name, all - kept)));
}

std::vector<std::string_view> Wrapped(std::string_view text, int width) {
  std::vector<std::string_view> lines;
  while (width > 0 && !text.empty()) {
    std::size_t size = SizeOf(text, width);
    const std::size_t blank = size < text.size() ? text.rfind(' ', size) : std::string_view::npos;
    if (blank != std::string_view::npos && blank > 0) size = blank;
    lines.push_back(text.substr(0, size));
    text.remove_prefix(size);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  }
  return lines;
}

}  // namespace Host
