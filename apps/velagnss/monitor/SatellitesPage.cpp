// Every signal of every satellite, by system, and where the satellites are.
#include <fmt/core.h>

#include <algorithm>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"

namespace Host {
namespace {

// A line of the list: a heading, or a signal.
struct S_Line {
  std::string heading;  // empty for a signal
  const S_EpochSatellite* satellite = nullptr;
  const S_EpochSignal* signal = nullptr;  // null for a satellite of which none is known
  bool isFirst = false;                   // of the satellite
};
using t_Lines = std::vector<S_Line>;

// Columns of a line: "G05* 45 120 L1 C/A  44.5 " and a bar.
constexpr int kElevation = 5;
constexpr int kAzimuth = 8;
constexpr int kSignal = 12;
constexpr int kCn0End = 26;
constexpr int kBar = 27;
constexpr int kLeastLine = 36;  // with a bar of some columns
constexpr int kMostLine = 60;

void AddSignals(t_Lines& lines, const S_EpochSatellite& satellite) {
  if (satellite.signals.empty()) lines.push_back({"", &satellite, nullptr, true});
  for (const S_EpochSignal& signal : satellite.signals)
    lines.push_back({"", &satellite, &signal, &signal == &satellite.signals.front()});
}

void AddLines(t_Lines& lines, const t_SatelliteList& satellites) {
  for (auto begin = satellites.begin(); begin != satellites.end();) {
    const auto end =
        std::find_if(begin, satellites.end(), [begin](const auto& s) { return s.system != begin->system; });
    const t_SatelliteList ofSystem(begin, end);
    std::string heading = fmt::format("{}: {}", SystemTitle(begin->system), ofSystem.size());
    if (const auto used = UsedOf(ofSystem)) heading += fmt::format(", {} used", *used);
    lines.push_back({heading, &*begin});
    for (; begin != end; ++begin) AddSignals(lines, *begin);
  }
}

// The list is part of the view, and outlives the lines.
void AddSky(t_Lines& lines, const std::optional<S_Aged<t_Sky>>& sky, std::string heading) {
  if (!sky) heading += "  no observations";
  if (sky && sky->isStale) heading += fmt::format("  {} ago", AgeText(sky->age));
  if (!heading.empty()) lines.push_back({heading});
  if (sky) AddLines(lines, *sky->value);
}

// As many of the parts as there is room for will be shown.
std::string StationHeading(const S_StationView& station) {
  std::string heading = fmt::format("Station {}", station.number);
  if (!IsNotAvailable(station.latitude))
    heading += fmt::format("  {}  {:.3f} m", PlaceText(station.latitude, station.longitude), station.height);
  for (const std::string& name : {station.receiver, station.antenna})
    if (!name.empty()) heading += "  " + name;
  return heading;
}

t_Lines LinesOf(const S_SourceView& view) {
  t_Lines lines;
  const bool needsHeading = view.sky && (view.sky->isStale || !view.stations.empty());
  if (view.sky) AddSky(lines, view.sky, needsHeading ? "Receiver" : "");
  for (const S_StationView& station : view.stations)
    if (!station.isReceiver) AddSky(lines, station.sky, StationHeading(station));
  return lines;
}

std::string SignalName(const S_EpochSignal& signal) {
  if (!signal.name.empty()) return signal.name;
  return signal.code.empty() ? "-" : signal.code;
}

template <class Angle>
std::string DegreesText(Angle degrees) {
  return IsNotAvailable(degrees) ? "-" : fmt::format("{}", degrees);
}

void PutLine(const C_Pane& pane, int row, const S_Line& line) {
  if (!line.heading.empty()) {
    pane.Put(row, 0, FittingParts(line.heading, pane.Columns()),
             line.satellite == nullptr ? eStyle::Title : StyleOf(line.satellite->system));
    return;
  }
  const S_EpochSatellite& satellite = *line.satellite;
  if (line.isFirst) {
    const int end = pane.Put(row, 0, SatelliteName(satellite), StyleOf(satellite.system));
    if (satellite.isUsed.value_or(false)) pane.Put(row, end, "*", eStyle::Good);
    pane.PutRight(row, kElevation + 2, DegreesText(satellite.elevation));
    pane.PutRight(row, kAzimuth + 3, DegreesText(satellite.azimuth));
  }
  if (line.signal == nullptr) return;
  pane.Part(row, kSignal, 1, kCn0End - kSignal - 5).Put(0, 0, SignalName(*line.signal));
  pane.PutRight(row, kCn0End, DecimalText(line.signal->cn0, 1));
  pane.BarRight(row, kBar, pane.Columns() - kBar - 1, ShareOf(line.signal->cn0), StyleOf(satellite.system));
}

void PutTitles(const C_Pane& pane) {
  pane.Put(0, 0, "SV", eStyle::Title);
  pane.PutRight(0, kElevation + 2, "El", eStyle::Title);
  pane.PutRight(0, kAzimuth + 3, "Az", eStyle::Title);
  pane.Put(0, kSignal, "Signal", eStyle::Title);
  pane.PutRight(0, kCn0End, "C/N0", eStyle::Title);
  pane.Put(0, kBar, "10 to 55", eStyle::Title);
}

// Downwards, then in the next column.
int DrawLines(const C_Pane& pane, const t_Lines& lines, int scroll) {
  const int columns = std::clamp(pane.Columns() / kLeastLine, 1, 8);
  const int width = std::min(pane.Columns() / columns, kMostLine);
  const int rows = pane.Rows() - 1;
  if (rows <= 0) return 0;
  const S_ListPart part(lines.size(), rows * columns, scroll);
  for (int i = 0; i < columns; ++i) {
    const C_Pane column = pane.Part(0, i * width, pane.Rows(), width - 1);
    const int first = i * rows;
    if (part.At(first) < lines.size()) PutTitles(column);
    for (int row = 0; row < rows && part.At(first + row) < lines.size(); ++row)
      PutLine(column, 1 + row, lines[part.At(first + row)]);
  }
  return part.most;
}

// Columns of the sky plot at the right; 0 where there is no room for one.
int SkyColumns(const C_Pane& pane) {
  constexpr int kLeastColumns = 100;
  constexpr int kLeastSky = 14;  // rows
  if (pane.Columns() < kLeastColumns || pane.Rows() < kLeastSky) return 0;
  return std::min(pane.Columns() * 2 / 5, 2 * pane.Rows());
}

}  // namespace

int DrawSatellites(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state) {
  const t_Lines lines = LinesOf(view);
  if (lines.empty()) PutNothing(pane, kNoSatellites);
  const S_Aged<t_Sky>* const sky = FirstSky(view);
  const int plot = sky != nullptr && HasSky(*sky->value) ? SkyColumns(pane) : 0;
  if (plot > 0) DrawSky(pane.RightOf(pane.Columns() - plot), *sky->value);
  return DrawLines(pane.LeftOf(pane.Columns() - plot - (plot > 0 ? 1 : 0)), lines, state.scroll);
}

}  // namespace Host
