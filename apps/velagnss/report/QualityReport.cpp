#include "apps/velagnss/report/QualityReport.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr std::size_t kUnknown = 1;  // a fix that does not say of what kind it is

std::size_t KindOf(const S_Epoch& epoch) {
  if (!epoch.position) return 0;
  const auto* const found = std::find(std::begin(kFixKinds), std::end(kFixKinds), ModeName(epoch.position->fix));
  return found == std::end(kFixKinds) ? kUnknown : static_cast<std::size_t>(found - std::begin(kFixKinds));
}

// The root mean square of the distance, from the deviations along two axes.
double Distance(double one, double other) {
  return IsKnown(one) && IsKnown(other) ? std::hypot(one, other) : NA_DOUBLE;
}

double HorizontalOf(const velagnss::GstRecord& accuracy) {
  const double distance = Distance(accuracy.latitudeDeviation, accuracy.longitudeDeviation);
  return IsKnown(distance) ? distance : Distance(accuracy.semiMajor, accuracy.semiMinor);
}

void AppendPeriods(std::vector<S_FixPeriod>& periods, std::size_t kind, const C_Series::S_Bins& bins) {
  bool isOpen = false;
  for (std::size_t i = 0; i < bins.ranges.size(); ++i) {
    const std::size_t bin = bins.first + i;
    const bool hasKind = bins.ranges[i].count > 0;
    if (hasKind && !isOpen) periods.push_back({bin, bin, kind});
    if (hasKind) periods.back().to = bin;
    isOpen = hasKind;
  }
}

}  // namespace

void C_QualityReport::Add(const S_Epoch& epoch, const S_Moment& moment) {
  if (epoch.hasPosition) {
    const std::size_t kind = KindOf(epoch);
    ++m_epochs[kind];
    m_kinds[kind].Add(moment.bin, 1);
  }
  if (epoch.fixType >= '1' && epoch.fixType <= '3') ++m_types[static_cast<std::size_t>(epoch.fixType - '1')];
  if (epoch.accuracy) {
    m_horizontal.Add(moment.bin, HorizontalOf(*epoch.accuracy));
    m_vertical.Add(moment.bin, epoch.accuracy->altitudeDeviation);
  }
  m_pdop.Add(moment.bin, epoch.pdop);
  m_hdop.Add(moment.bin, epoch.hdop);
  m_vdop.Add(moment.bin, epoch.vdop);
}

std::uint64_t C_QualityReport::FixesOfType(char type) const { return m_types[static_cast<std::size_t>(type - '1')]; }

std::vector<S_FixPeriod> C_QualityReport::Periods(const C_TimeBins& axis) const {
  std::vector<S_FixPeriod> periods;
  for (std::size_t kind = kKinds; kind-- > 0;) AppendPeriods(periods, kind, m_kinds[kind].On(axis));
  return periods;
}

}  // namespace Host
