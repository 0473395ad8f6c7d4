#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// How a satellite is drawn, by the columns that there are for each.
struct S_Shape {
  int pitch;      // columns from one to the next
  int bar;        // of them, the bar
  int labelRows;  // of its name
  bool hasValue;
};
constexpr S_Shape kShapes[] = {{4, 3, 1, true}, {3, 2, 3, true}, {2, 1, 3, false}, {1, 1, 3, false}};

// The widest one with room for all, or the narrowest.
const S_Shape& ShapeFor(std::size_t count, int columns) {
  const auto fits = [&](const S_Shape& shape) { return static_cast<int>(count) * shape.pitch <= columns; };
  const auto* const shape = std::find_if(std::begin(kShapes), std::end(kShapes), fits);
  return shape == std::end(kShapes) ? kShapes[std::size(kShapes) - 1] : *shape;
}

// The name in one row, or downwards. At most three characters are shown: satellites have two digits.
void PutName(const C_Pane& pane, int row, int column, const S_Shape& shape, const S_EpochSatellite& satellite) {
  constexpr std::size_t kCharacters = 3;
  const std::string name = SatelliteName(satellite).substr(0, kCharacters);
  const eStyle style = StyleOf(satellite.system);
  if (shape.labelRows == 1) {
    pane.Put(row, column, name, style);
    return;
  }
  for (std::size_t i = 0; i < name.size(); ++i)
    pane.Put(row + static_cast<int>(i), column, std::string_view(name).substr(i, 1), style);
}

}  // namespace

// From the top: bars, values where there is room for them, names, marks of use.
void DrawSatelliteChart(const C_Pane& pane, const t_SatelliteList& satellites) {
  const S_Shape& shape = ShapeFor(satellites.size(), pane.Columns());
  const int markRow = pane.Rows() - 1;
  const int nameRow = markRow - shape.labelRows;
  const bool hasValue = shape.hasValue && nameRow > 2;
  const int height = hasValue ? nameRow - 1 : nameRow;
  int column = 0;
  for (const S_EpochSatellite& satellite : satellites) {
    if (column + shape.bar > pane.Columns()) break;
    const double cn0 = StrongestOf(satellite);
    pane.BarUp(height - 1, column, shape.bar, height, ShareOf(cn0), StyleOf(satellite.system));
    if (hasValue) pane.Put(nameRow - 1, column, IsKnown(cn0) ? fmt::format("{:.0f}", cn0) : "-");
    PutName(pane, nameRow, column, shape, satellite);
    if (satellite.isUsed.value_or(false)) pane.Put(markRow, column, "*", eStyle::Good);
    column += shape.pitch;
  }
}

}  // namespace Host
