// What a person wants at a glance: where, when, how good, and whether data comes.
#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// A value as it is shown.
struct S_Shown {
  std::string text;
  double age = kNoAge;
  bool isStale = false;
  eStyle style = eStyle::Normal;
};

constexpr double kKmPerHourOfKnot = 1.852;

template <class Value>
S_Shown Shown(const std::optional<S_Aged<Value>>& aged, std::string text, eStyle style = eStyle::Normal) {
  return {std::move(text), aged->age, aged->isStale, style};
}

// "P 1.2  H 0.7", without those that are not known.
struct S_Part {
  std::string_view label;
  double value;
};
std::string PartsText(std::initializer_list<S_Part> parts, int decimals) {
  std::string text;
  for (const S_Part& part : parts)
    if (IsKnown(part.value))
      text += fmt::format("{}{} {:.{}f}", text.empty() ? "" : "  ", part.label, part.value, decimals);
  return text.empty() ? "-" : text;
}

using t_Shown = std::optional<S_Shown>;

t_Shown TimeOf(const S_SourceView& view) {
  if (!view.time) return S_Shown{"-"};
  return Shown(view.time, ClockText(view.time->value, true) + " UTC");
}

t_Shown PlaceOf(const S_SourceView& view) {
  if (!view.position) return view.stations.empty() ? t_Shown(S_Shown{"-"}) : std::nullopt;
  return Shown(view.position, PlaceText(view.position->value.latitude, view.position->value.longitude));
}

t_Shown AltitudeOf(const S_SourceView& view) {
  if (!view.position || !IsKnown(view.position->value.altitude)) return std::nullopt;
  const S_Position& position = view.position->value;
  std::string text = fmt::format("{:.3f} m above sea level", position.altitude);
  if (IsKnown(position.geoidSeparation)) text += fmt::format("  geoid {:+.1f} m", position.geoidSeparation);
  return Shown(view.position, text);
}

t_Shown FixOf(const S_SourceView& view) {
  if (!view.fix) return std::nullopt;
  return Shown(view.fix, FixText(view.fix->value), StyleOf(view.fix->value));
}

t_Shown CountsOf(const S_SourceView& view) {
  if (!view.counts) return std::nullopt;
  const S_SatelliteCounts& counts = view.counts->value;
  std::string text;
  if (counts.used) text = fmt::format("{} used", *counts.used);
  if (counts.inView) text += fmt::format("{}{} in view", text.empty() ? "" : ", ", *counts.inView);
  return Shown(view.counts, text);
}

t_Shown DopsOf(const S_SourceView& view) {
  if (!view.dops) return std::nullopt;
  const S_Dops& dops = view.dops->value;
  return Shown(view.dops, PartsText({{"P", dops.pdop}, {"H", dops.hdop}, {"V", dops.vdop}}, 1));
}

t_Shown AccuracyOf(const S_SourceView& view) {
  if (!view.accuracy) return std::nullopt;
  const velagnss::GstRecord& gst = view.accuracy->value;
  constexpr int kMillimeters = 3;
  const std::string text = PartsText(
      {{"N", gst.latitudeDeviation}, {"E", gst.longitudeDeviation}, {"U", gst.altitudeDeviation}}, kMillimeters);
  return Shown(view.accuracy, text + " m");
}

t_Shown MotionOf(const S_SourceView& view) {
  if (!view.motion) return std::nullopt;
  const S_Motion& motion = view.motion->value;
  std::string text = fmt::format("{:.1f} km/h", motion.speedKnots * kKmPerHourOfKnot);
  if (IsKnown(motion.courseTrue)) text += fmt::format("  course {:.1f} deg", motion.courseTrue);
  return Shown(view.motion, text);
}

// The one heard last, and how many others there are.
t_Shown StationOf(const S_SourceView& view) {
  if (view.stations.empty()) return std::nullopt;
  constexpr double kNever = 1e9;  // s
  const auto age = [](const S_StationView& s) { return s.sky && IsKnown(s.sky->age) ? s.sky->age : kNever; };
  const auto station = std::min_element(view.stations.begin(), view.stations.end(),
                                        [&](const auto& a, const auto& b) { return age(a) < age(b); });
  S_Shown shown{fmt::format("{}", station->number)};
  if (IsKnown(station->latitude)) shown.text += "  " + PlaceText(station->latitude, station->longitude);
  if (IsKnown(station->height)) shown.text += fmt::format("  {:.3f} m", station->height);
  if (view.stations.size() > 1) shown.text = fmt::format("{} and {} more", station->number, view.stations.size() - 1);
  if (!station->sky) return shown;
  shown.age = station->sky->age;
  shown.isStale = station->sky->isStale;
  return shown;
}

S_Shown LinkText(const S_LinkView& link, eStyle style) {
  std::string text = fmt::format("{} for {}", link.state, AgeText(link.age));
  if (link.lost > 0) text += fmt::format("  lost {}", Counted(link.lost, "time"));
  if (link.failures > 0) text += fmt::format("  {} in a row", Counted(link.failures, "failure"));
  if (!link.text.empty()) text += "  " + link.text;
  return {text, kNoAge, false, style};
}

// Near the top while it is down, among the last otherwise.
bool IsUp(const S_LinkView& link) { return link.state.empty() || link.state == "connected"; }
t_Shown LostLinkOf(const S_SourceView& view) {
  return IsUp(view.link) ? std::nullopt : t_Shown(LinkText(view.link, eStyle::Bad));
}
t_Shown LinkOf(const S_SourceView& view) {
  const bool isShown = IsUp(view.link) && !view.link.state.empty();
  return isShown ? t_Shown(LinkText(view.link, eStyle::Good)) : std::nullopt;
}

t_Shown StreamOf(const S_SourceView& view) {
  if (view.state == eSourceState::Silent || view.state == eSourceState::Lost)
    return S_Shown{fmt::format("nothing for {}", AgeText(view.silence)), kNoAge, false, eStyle::Warning};
  if (view.state == eSourceState::NoFrames)
    return S_Shown{"no frames: wrong speed or protocol?", kNoAge, false, eStyle::Bad};
  std::string text = SizeText(view.bytesPerSecond) + "/s";
  if (!IsKnown(view.bytesPerSecond)) text = SizeText(static_cast<double>(view.bytes));
  if (IsKnown(view.framesPerSecond)) text += fmt::format("  {:.1f} frames/s", view.framesPerSecond);
  return S_Shown{text};
}

t_Shown FramesOf(const S_SourceView& view) {
  std::string text = fmt::format("{} good  {} bad", view.framesGood, view.framesBad);
  if (view.bytesSkipped > 0) text += fmt::format("  {} skipped", SizeText(static_cast<double>(view.bytesSkipped)));
  if (view.contentFaults > 0) text += fmt::format("  {} with wrong contents", view.contentFaults);
  const bool isFlawed = view.framesBad + view.contentFaults > 0;
  return S_Shown{text, kNoAge, false, isFlawed ? eStyle::Warning : eStyle::Normal};
}

// In the order of what matters: the first of them fit into the smallest terminal.
struct S_Field {
  std::string_view label;
  t_Shown (*show)(const S_SourceView& view);  // nothing: the stream has no such thing
};
constexpr S_Field kFields[] = {{"Link", &LostLinkOf}, {"Time", &TimeOf},         {"Position", &PlaceOf},
                               {"Fix", &FixOf},       {"Satellites", &CountsOf}, {"Altitude", &AltitudeOf},
                               {"Stream", &StreamOf}, {"Frames", &FramesOf},     {"Accuracy", &AccuracyOf},
                               {"DOP", &DopsOf},      {"Station", &StationOf},   {"Motion", &MotionOf},
                               {"Link", &LinkOf}};
constexpr int kLabelWidth = 12;  // "2.0 min ago "

// The age of an old value is after it, or in place of its label where there is not enough room.
void PutField(const C_Pane& pane, int row, std::string_view label, const S_Shown& shown) {
  const int width = pane.Columns() - kLabelWidth;
  const std::string text = FittingParts(shown.text, width);
  const std::string age = shown.isStale ? AgeText(shown.age) + " ago" : "";
  const bool fits = WidthOf(text) + 2 + WidthOf(age) <= width;
  pane.Put(row, 0, shown.isStale && !fits ? age : label, eStyle::Title);
  const int end = pane.Put(row, kLabelWidth, text, shown.isStale ? eStyle::Dim : shown.style);
  if (shown.isStale && fits) pane.Put(row, end + 2, age, eStyle::Warning);
}

// Gives back the rows used. A wide pane has two columns of fields.
int DrawFields(const C_Pane& pane, const S_SourceView& view) {
  constexpr int kTwoColumns = 80;
  std::vector<std::pair<std::string_view, S_Shown>> fields;
  for (const S_Field& field : kFields)
    if (t_Shown shown = field.show(view)) fields.emplace_back(field.label, std::move(*shown));
  const auto count = static_cast<int>(fields.size());
  const int rows = pane.Columns() < kTwoColumns ? count : (count + 1) / 2;
  const int left = pane.Columns() < kTwoColumns ? pane.Columns() + 1 : pane.Columns() / 2;
  for (int i = 0; i < count; ++i) {
    const auto& [label, shown] = fields[static_cast<std::size_t>(i)];
    PutField(i < rows ? pane.LeftOf(left - 1) : pane.RightOf(left), i % rows, label, shown);
  }
  return std::min(rows, pane.Rows());
}

// A sky plot at the right of the chart where there is room for both.
void DrawChart(const C_Pane& pane, const S_SourceView& view) {
  constexpr int kLeastSky = 13;  // rows
  constexpr int kColumns = 4;    // of a satellite in the chart
  const S_Aged<t_Sky>* const sky = FirstSky(view);
  std::string title = fmt::format("C/N0 from {}", kBarScale);
  if (sky != nullptr && UsedOf(*sky->value)) title += ", * used";
  if (sky != nullptr && sky->isStale) title += fmt::format(", {} ago", AgeText(sky->age));
  pane.Rule(0, title);
  const C_Pane inside = pane.Below(1);
  if (sky == nullptr) return PutNothing(inside, kNoSatellites);
  const int plot = 2 * inside.Rows() + 4;
  const bool hasPlot = inside.Rows() >= kLeastSky && HasSky(*sky->value) &&
                       static_cast<int>(sky->value->size()) * kColumns + plot < inside.Columns();
  if (hasPlot) DrawSky(inside.RightOf(inside.Columns() - plot), *sky->value);
  DrawSatelliteChart(hasPlot ? inside.LeftOf(inside.Columns() - plot) : inside, *sky->value);
}

// One above the other in a narrow terminal, or only the first.
void DrawLists(const C_Pane& pane, const S_SourceView& view) {
  constexpr int kSideBySide = 76;
  constexpr int kBoth = 8;  // rows
  if (pane.Columns() >= kSideBySide) {
    const int left = pane.Columns() / 2;
    DrawProtocolList(pane.LeftOf(left - 1), view);
    DrawFaultList(pane.RightOf(left), view, 0);
  } else {
    const int upper = pane.Rows() >= kBoth ? pane.Rows() / 2 : pane.Rows();
    DrawProtocolList(pane.Above(upper), view);
    if (upper < pane.Rows()) DrawFaultList(pane.Below(upper), view, 0);
  }
}

}  // namespace

const S_Aged<t_Sky>* FirstSky(const S_SourceView& view) {
  if (view.sky) return &*view.sky;
  const auto observed =
      std::find_if(view.stations.begin(), view.stations.end(), [](const auto& s) { return s.sky.has_value(); });
  return observed == view.stations.end() ? nullptr : &*observed->sky;
}

std::optional<std::size_t> UsedOf(const t_SatelliteList& satellites) {
  std::optional<std::size_t> used;
  for (const S_EpochSatellite& satellite : satellites)
    if (satellite.isUsed) used = used.value_or(0) + (*satellite.isUsed ? 1 : 0);
  return used;
}

// The values first, then the chart, and lists in the rows that are left.
int DrawOverview(const C_Pane& pane, const S_SourceView& view, const S_ScreenState&) {
  constexpr int kLeastLists = 4;
  constexpr int kMostChart = 18;
  const C_Pane rest = pane.Below(DrawFields(pane, view));
  int chart = std::min({rest.Rows() - kLeastLists, rest.Rows() / 2 + 2, kMostChart});
  if (chart <= kLeastChartRows) chart = rest.Rows() > kLeastChartRows ? rest.Rows() : 0;
  if (chart > 0) DrawChart(rest.Above(chart), view);
  if (rest.Rows() - chart >= kLeastLists) DrawLists(rest.Below(chart), view);
  return 0;
}

}  // namespace Host
