#include <algorithm>
#include <cctype>
#include <cmath>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"
#include "apps/velagnss/text/Units.h"

namespace Host {
namespace {

constexpr double kZenith = 90;  // degrees

// The plane of the plot: cells are about twice as high as wide.
class C_Sky {
 public:
  explicit C_Sky(const C_Pane& pane)
      : m_pane(pane),
        m_radius(std::min((pane.Rows() - 1) / 2.0, (pane.Columns() - 4) / 4.0)),
        m_row((pane.Rows() - 1) / 2.0),
        m_column((pane.Columns() - 1) / 2.0) {}

  // Text with its middle at a point of the sky, in degrees.
  void Put(double azimuth, double elevation, std::string_view text, eStyle style) const {
    const double distance = m_radius * (1 - std::clamp(elevation, 0.0, kZenith) / kZenith);
    const double angle = azimuth * kRadiansPerDegree;
    const auto row = static_cast<int>(std::lround(m_row - distance * std::cos(angle)));
    const auto column = static_cast<int>(std::lround(m_column + 2 * distance * std::sin(angle)));
    m_pane.Put(row, column - WidthOf(text) / 2, text, style);
  }

  void Circle(double elevation) const {
    constexpr int kStep = 2;  // degrees
    for (int azimuth = 0; azimuth < 360; azimuth += kStep) Put(azimuth, elevation, ".", eStyle::Dim);
  }

 private:
  const C_Pane& m_pane;
  double m_radius;  // rows
  double m_row;     // of the zenith
  double m_column;
};

bool IsPlaced(const S_EpochSatellite& satellite) {
  return !IsNotAvailable(satellite.elevation) && !IsNotAvailable(satellite.azimuth);
}

std::string InLowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

struct S_Direction {
  int azimuth;
  std::string_view name;
};
constexpr S_Direction kDirections[] = {{0, "N"}, {90, "E"}, {180, "S"}, {270, "W"}};

}  // namespace

bool HasSky(const t_SatelliteList& satellites) { return std::any_of(satellites.begin(), satellites.end(), &IsPlaced); }

void DrawSky(const C_Pane& pane, const t_SatelliteList& satellites) {
  const C_Sky sky(pane);
  for (const double elevation : {0.0, 30.0, 60.0}) sky.Circle(elevation);
  for (const S_Direction& direction : kDirections) sky.Put(direction.azimuth, 0, direction.name, eStyle::Title);
  for (const S_EpochSatellite& satellite : satellites) {
    if (!IsPlaced(satellite)) continue;
    const std::string name = SatelliteName(satellite);
    const bool isUnused = satellite.isUsed.has_value() && !*satellite.isUsed;
    sky.Put(satellite.azimuth, satellite.elevation, isUnused ? InLowerCase(name) : name, StyleOf(satellite.system));
  }
}

}  // namespace Host
