#include "apps/velagnss/account/PointReportTable.h"

#include <fmt/core.h>

#include <cmath>

#include "apps/velagnss/account/PointNames.h"
#include "apps/velagnss/account/TableLine.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/Units.h"
#include "stream/Names.h"

namespace Host {
namespace {

std::string Place(double latitude, double longitude, double height) {
  return fmt::format("{} {} deg, {} m", NumberText(latitude * kDegreesPerRadian, 8),
                     NumberText(longitude * kDegreesPerRadian, 8), NumberText(height, 3));
}

struct S_FailureRow {
  velagnss::PointResult result;
  std::string_view text;
};
constexpr S_FailureRow kFailures[] = {
    {velagnss::PointResult::TooFew, "too few satellites with range and ephemeris"},
    {velagnss::PointResult::PoorGeometry, "poor geometry"},
    {velagnss::PointResult::Contradictory, "contradictory ranges"},
    {velagnss::PointResult::Diverged, "no solution found"},
};

void AppendFailures(std::string& table, const C_PointReport& report) {
  for (const S_FailureRow& row : kFailures)
    if (const std::uint64_t epochs = report.EpochsOf(row.result); epochs > 0)
      Line(table, "  no position    {}: {}", Counted(epochs, "epoch"), row.text);
}

void AppendErrors(std::string& table, const C_PointReport& report) {
  if (report.Station()) {
    const S_PointStation& station = *report.Station();
    Line(table, "  station        {}, {}", Place(station.latitude, station.longitude, station.height),
         fmt::format("number {}", station.number));
  }
  const std::optional<S_PointErrors> errors = report.Errors();
  if (!errors) return Line(table, "  error          not known: the stream has no station coordinates");
  Line(table, "  mean error     {} m north, {} m east, {} m up", NumberText(errors->north, 2),
       NumberText(errors->east, 2), NumberText(errors->up, 2));
  Line(table, "  horizontal     50 % of errors within {} m, 95 % within {} m", NumberText(errors->horizontal50, 2),
       NumberText(errors->horizontal95, 2));
  Line(table, "  vertical       50 % of errors within {} m, 95 % within {} m", NumberText(errors->vertical50, 2),
       NumberText(errors->vertical95, 2));
}

void AppendSystems(std::string& table, const C_PointReport& report) {
  Line(table, "\n  {:<10}{:>8}{:>12}{:>18}{:>14}", "system", "epochs", "satellites", "two frequencies", "residuals m");
  for (const auto& [system, used] : report.Systems())
    Line(table, "  {:<10}{:>8}{:>12}{:>18}{:>14}", velagnss::SystemName(static_cast<ALGO::eGNSSSystem>(system)),
         used.epochs, NumberText(used.SatellitesPerEpoch(), 1), used.ionosphereFree,
         NumberText(used.residuals.Root(), 2));
}

void AppendSatellites(std::string& table, const C_PointReport& report) {
  Line(table, "\n  {:<10}{:>8}{:>12}{:>10}{:>8}{:>14}  {}", "satellite", "azimuth", "elevation", "epochs", "used",
       "residuals m", "not used");
  for (const auto& [key, satellite] : report.Satellites())
    Line(table, "  {:<10}{:>8}{:>12}{:>10}{:>8}{:>14}  {}", PointSatelliteName(key.first, key.second),
         NumberText(satellite.azimuth * kDegreesPerRadian, 1), NumberText(satellite.elevation * kDegreesPerRadian, 1),
         satellite.epochs, satellite.Used(), NumberText(satellite.residuals.Root(), 2), WhyUnused(satellite));
}

}  // namespace

std::string PointTable(const C_PointReport& report, bool isLong) {
  std::string table;
  Line(table, "\n  positions      {} of {}", report.EpochsOf(velagnss::PointResult::Ok),
       Counted(report.Epochs(), "epoch"));
  AppendFailures(table, report);
  if (report.OtherStations() > 0)
    Line(table, "  left out       {} of other stations", Counted(report.OtherStations(), "epoch"));
  if (const std::optional<S_PositionSummary> mean = report.Positions()) {
    Line(table, "  mean position  {}", Place(mean->latitude, mean->longitude, mean->height));
    Line(table, "  spread         {} m north, {} m east, {} m up", NumberText(mean->spreadNorth, 2),
         NumberText(mean->spreadEast, 2), NumberText(mean->spreadUp, 2));
    AppendErrors(table, report);
    Line(table, "  residuals      {} m, HDOP {}, VDOP {}", NumberText(report.ResidualRms(), 2),
         NumberText(report.Hdop(), 2), NumberText(report.Vdop(), 2));
    AppendSystems(table, report);
  }
  if (isLong && !report.Satellites().empty()) AppendSatellites(table, report);
  return table;
}

}  // namespace Host
