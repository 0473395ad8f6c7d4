#include "positioning/PointSolver.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "geo/Angle.h"
#include "geo/Geodesy.h"
#include "geo/Matrix.h"
#include "geo/NotAvailable.h"
#include "geo/PointCoordinate.h"
#include "positioning/Constants.h"
#include "positioning/Troposphere.h"

namespace velagnss {
namespace {

using namespace positioning;

constexpr double kMask = 10 * geo::kRadiansPerDegree;
constexpr double kCodeNoise = 0.3;                                  // m
constexpr double kIonosphereSpread = 4;                             // m, at the zenith
constexpr double kOrbitSpread[kSystems] = {1, 4, 1.5, 1, 4, 1, 2};  // m, by `ALGO::eGNSSSystem`
constexpr double kOutlier = 4;                                      // standard deviations
constexpr double kMaxPdop = 50;
constexpr double kSettled = 1e-4;  // m, of the last step
constexpr double kNear = 1000;     // m, of a step after which elevations are known well enough
constexpr unsigned int kMaxSteps = 20;
constexpr double kFarthest = 1e8;  // m, from the Earth's center

// The unknowns: three coordinates and a clock for each system that is used.
constexpr unsigned int kAxes = 3;
constexpr unsigned int kMaxUnknowns = kAxes + kSystems;

// A range of the equations, with its satellite.
struct Equation {
  SatelliteOrbit orbit;
  double range = 0;       // m, with the satellite's clock and group delays applied
  double noise = 0;       // factor of the combination
  double variance = 1;    // m^2
  double misfit = 0;      // m, measured - computed
  C_Vector3 toReceiver;   // unit vector
  bool isSingle = false;  // one frequency
};

double Square(double x) { return x * x; }

// Pseudorange without the group delay of its signal.
double Corrected(const PointRange& range, const SatelliteOrbit& orbit) {
  if (orbit.kepler == nullptr) return range.range;
  return range.range - kSpeedOfLight * GroupDelay(*orbit.kepler, range.code[0], range.frequency);
}

// From the time that the satellite's clock shows to the true one, less than a millisecond apart.
void CorrectTime(SatelliteState& state) {
  C_Vector3 way = state.velocity;
  way.Scale(-state.clockOffset);
  state.position += way;
  state.clockOffset -= state.clockDrift * state.clockOffset;
}

PointUse UseBy(OrbitResult result) {
  switch (result) {
    case OrbitResult::Ok:
      return PointUse::Used;
    case OrbitResult::Missing:
      return PointUse::NoEphemeris;
    case OrbitResult::Outdated:
      return PointUse::Outdated;
    case OrbitResult::Unhealthy:
      return PointUse::Unhealthy;
    case OrbitResult::Implausible:
      break;
  }
  return PointUse::Implausible;
}

bool Has(const PointRange& range) { return range.code[0] != '\0'; }
bool HasBoth(const PointRanges& ranges) { return Has(ranges.first) && Has(ranges.second); }

}  // namespace

class PointSolver::Impl {
 public:
  void Solve(const PointEpoch& epoch, const EphemerisStore& ephemerides);

  PointSolution m_solution;

 private:
  enum class Verdict : unsigned char { Consistent, Rejected, Contradictory };

  void FindStates(const PointEpoch& epoch, const EphemerisStore& ephemerides);
  void ChooseCombinations(const PointEpoch& epoch);
  void SetRanges(const PointEpoch& epoch);
  void Combine(const PointRanges& ranges, bool isSingle, Equation& equation) const;
  PointResult Locate();
  PointResult Approach(double limit, bool isRough);
  bool CountUsed();
  void Linearize(bool isRough);
  void Predict(std::size_t i, bool isRough);
  void Weigh(std::size_t i, double elevation, double height, double latitude);
  bool IsReached(double limit, double& step);
  void Accumulate(bool isWeighted);
  Verdict RejectWorst();
  double StandardDeviationLeft(std::size_t i) const;
  PointResult SetPrecision();
  void SetSatellites();
  template <class Visit>
  void ForUsed(const Visit& visit);

  const C_Vector3& Position() const { return m_solution.position; }

  std::array<Equation, PointEpochs::kMaxSatellites> m_equations;
  std::array<unsigned int, kSystems> m_column{};  // of the clock of a system
  std::array<double, kSystems> m_clock{};         // m
  unsigned int m_unknowns = 0;
  bool m_hasPosition = false;
  C_Matrix m_normal = C_Matrix(kMaxUnknowns, kMaxUnknowns);
  C_Matrix m_right = C_Matrix(kMaxUnknowns, 1);
  C_Matrix m_change = C_Matrix(kMaxUnknowns, 1);
};

template <class Visit>
void PointSolver::Impl::ForUsed(const Visit& visit) {
  for (std::size_t i = 0; i < m_solution.numSatellites; ++i)
    if (m_solution.satellites[i].use == PointUse::Used) visit(i, m_solution.satellites[i]);
}

void PointSolver::Impl::Solve(const PointEpoch& epoch, const EphemerisStore& ephemerides) {
  const C_Vector3 start = m_hasPosition ? m_solution.position : C_Vector3();
  m_solution = PointSolution();
  m_solution.position = start;
  m_clock = {};
  m_solution.numSatellites = std::min(epoch.numSatellites, PointEpochs::kMaxSatellites);
  FindStates(epoch, ephemerides);
  ChooseCombinations(epoch);
  SetRanges(epoch);
  m_solution.result = Locate();
  m_hasPosition = m_solution.result == PointResult::Ok;
  if (m_hasPosition) return SetSatellites();
  m_solution.position.Set(NA_DOUBLE, NA_DOUBLE, NA_DOUBLE);
  for (PointSatellite& satellite : m_solution.satellites) satellite.azimuth = satellite.elevation = NA_DOUBLE;
}

// A signal leaves when the satellite's clock shows receiver time minus pseudorange / c, whatever the receiver's clock
// error is: it is in both.
void PointSolver::Impl::FindStates(const PointEpoch& epoch, const EphemerisStore& ephemerides) {
  for (std::size_t i = 0; i < m_solution.numSatellites; ++i) {
    const PointRanges& ranges = epoch.satellites[i];
    PointSatellite& satellite = m_solution.satellites[i];
    SatelliteOrbit& orbit = m_equations[i].orbit;
    satellite.system = ranges.system;
    satellite.svId = ranges.svId;
    C_GnssTime sent = epoch.time;
    sent.m_secOfWeek -= (Has(ranges.first) ? ranges.first : ranges.second).range / kSpeedOfLight;
    satellite.use = UseBy(ephemerides.Find(ranges.system, ranges.svId, sent, epoch.leapSeconds, orbit));
    if (satellite.use == PointUse::Used) CorrectTime(orbit.state);
  }
}

// The second band that most satellites of a system have, if four or half of them have it.
void PointSolver::Impl::ChooseCombinations(const PointEpoch& epoch) {
  constexpr unsigned int kEnough = 4;
  constexpr unsigned int kDigits = 10;
  std::array<std::array<unsigned int, kDigits>, kSystems> pairs{};
  std::array<unsigned int, kSystems> satellites{};
  ForUsed([&](std::size_t i, const PointSatellite& satellite) {
    const PointRanges& ranges = epoch.satellites[i];
    ++satellites[satellite.system];
    if (HasBoth(ranges)) ++pairs[satellite.system][static_cast<unsigned int>(ranges.second.code[0] - '0') % kDigits];
  });
  for (unsigned int s = 0; s < kSystems; ++s) {
    const auto* const most = std::max_element(pairs[s].begin(), pairs[s].end());
    if (*most >= kEnough || (*most > 0 && 2 * *most >= satellites[s]))
      m_solution.systems[s].secondBand = static_cast<char>('0' + (most - pairs[s].begin()));
  }
}

void PointSolver::Impl::SetRanges(const PointEpoch& epoch) {
  ForUsed([&](std::size_t i, PointSatellite& satellite) {
    const PointRanges& ranges = epoch.satellites[i];
    const char band = m_solution.systems[satellite.system].secondBand;
    const bool isComplete = Has(ranges.first) && (band == '\0' || ranges.second.code[0] == band);
    if (!isComplete) satellite.use = PointUse::NoRange;
    if (isComplete) Combine(ranges, band == '\0', m_equations[i]);
  });
}

void PointSolver::Impl::Combine(const PointRanges& ranges, bool isSingle, Equation& equation) const {
  const double clock = kSpeedOfLight * equation.orbit.state.clockOffset;
  const double first = Corrected(ranges.first, equation.orbit);
  equation.isSingle = isSingle;
  equation.noise = 1;
  equation.range = first + clock;
  if (isSingle) return;
  const double f1 = Square(ranges.first.frequency);
  const double f2 = Square(ranges.second.frequency);
  const double second = Corrected(ranges.second, equation.orbit);
  equation.range = (f1 * first - f2 * second) / (f1 - f2) + clock;
  equation.noise = std::hypot(f1, f2) / std::fabs(f1 - f2);
}

PointResult PointSolver::Impl::Locate() {
  if (const PointResult result = Approach(kNear, true); result != PointResult::Ok) return result;
  Verdict verdict = Verdict::Rejected;
  while (verdict == Verdict::Rejected) {
    if (const PointResult result = Approach(kSettled, false); result != PointResult::Ok) return result;
    verdict = RejectWorst();
  }
  if (verdict == Verdict::Contradictory) return PointResult::Contradictory;
  return SetPrecision();
}

// Steps until one is shorter than `limit`. While the position is rough, elevations mean nothing: all ranges have the
// same weight.
PointResult PointSolver::Impl::Approach(double limit, bool isRough) {
  double step = HUGE_VAL;
  for (unsigned int i = 0; i < kMaxSteps; ++i) {
    Linearize(isRough);
    if (!CountUsed()) return PointResult::TooFew;
    if (IsReached(limit, step)) return PointResult::Ok;
    if (!(Position().Norm() < kFarthest)) return PointResult::Diverged;
  }
  return PointResult::Diverged;
}

// Numbers the unknowns. A system's clock takes a range; the others determine the position.
bool PointSolver::Impl::CountUsed() {
  std::array<unsigned int, kSystems> used{};
  ForUsed([&](std::size_t, const PointSatellite& satellite) { ++used[satellite.system]; });
  ForUsed([&](std::size_t, PointSatellite& satellite) {
    if (used[satellite.system] == 1) satellite.use = PointUse::OnlyOfSystem;
  });
  unsigned int ranges = 0;
  m_unknowns = kAxes;
  for (unsigned int s = 0; s < kSystems; ++s) {
    if (used[s] < 2) used[s] = 0;
    m_column[s] = m_unknowns;
    m_unknowns += used[s] > 0 ? 1 : 0;
    ranges += used[s];
    m_solution.systems[s].numUsed = static_cast<unsigned char>(used[s]);
  }
  m_solution.numUsed = static_cast<unsigned char>(ranges);
  return ranges >= m_unknowns;
}

void PointSolver::Impl::Linearize(bool isRough) {
  C_PointCoordinate here(C_PointCoordinate::COORD_CARTESIAN, Position());
  if (!isRough) here.ConvertToAllInternal();
  ForUsed([&](std::size_t i, PointSatellite& satellite) {
    Predict(i, isRough);
    if (isRough) return;
    here.ElevationAndAzimuth(m_equations[i].orbit.state.position, true, satellite.elevation, satellite.azimuth);
    if (!(satellite.elevation >= kMask)) satellite.use = PointUse::BelowMask;
    Weigh(i, satellite.elevation, here.Geodetic().Z(), here.Geodetic().X());
  });
}

// The range to where the satellite was, in the frame of the time of reception.
void PointSolver::Impl::Predict(std::size_t i, bool isRough) {
  Equation& equation = m_equations[i];
  const C_Vector3& sent = equation.orbit.state.position;
  const double angle = kEarthRotation * (isRough ? equation.range : (sent - Position()).Norm()) / kSpeedOfLight;
  const C_Vector3 received(sent.X() * std::cos(angle) + sent.Y() * std::sin(angle),
                           sent.Y() * std::cos(angle) - sent.X() * std::sin(angle), sent.Z());
  const C_Vector3 path = Position() - received;
  equation.toReceiver = path.UnitVec();
  equation.misfit = equation.range - path.Norm() - m_clock[m_solution.satellites[i].system];
  equation.variance = 1;
}

void PointSolver::Impl::Weigh(std::size_t i, double elevation, double height, double latitude) {
  Equation& equation = m_equations[i];
  const double sine = std::sin(std::max(elevation, kMask));
  equation.misfit -= TroposphericDelay(latitude, height, std::max(elevation, kMask));
  equation.variance = Square(kOrbitSpread[m_solution.satellites[i].system]) +
                      Square(kCodeNoise * equation.noise) * (1 + 1 / Square(sine)) +
                      (equation.isSingle ? Square(kIonosphereSpread / sine) : 0);
}

// Normal equations. Each range has a coefficient for each axis and 1 for its clock.
void PointSolver::Impl::Accumulate(bool isWeighted) {
  m_normal.Resize(m_unknowns, m_unknowns);
  m_right.Resize(m_unknowns, 1);
  for (unsigned int row = 0; row < m_unknowns; ++row) {
    m_right(row, 0) = 0;
    for (unsigned int column = 0; column < m_unknowns; ++column) m_normal(row, column) = 0;
  }
  ForUsed([&](std::size_t i, const PointSatellite& satellite) {
    const Equation& equation = m_equations[i];
    const double weight = isWeighted ? 1 / equation.variance : 1;
    const C_Vector3& u = equation.toReceiver;
    const double values[] = {u.X(), u.Y(), u.Z(), 1};
    const unsigned int places[] = {0, 1, 2, m_column[satellite.system]};
    for (unsigned int a = 0; a < 4; ++a) {
      m_right(places[a], 0) += weight * values[a] * equation.misfit;
      for (unsigned int b = 0; b < 4; ++b) m_normal(places[a], places[b]) += weight * values[a] * values[b];
    }
  });
  // Satellites in one direction would make the matrix singular. This keeps it regular, is far below what a usable
  // geometry has, and does not slow the iteration noticeably.
  constexpr double kRegular = 1e-9;
  double greatest = 0;
  for (unsigned int k = 0; k < m_unknowns; ++k) greatest = std::max(greatest, m_normal(k, k));
  for (unsigned int k = 0; k < m_unknowns; ++k) m_normal(k, k) += kRegular * greatest;
}

bool PointSolver::Impl::IsReached(double limit, double& step) {
  Accumulate(true);
  m_normal.SymInv();
  C_Matrix::Multiply(m_normal, m_right, m_change, false);
  const C_Vector3 move(m_change(0, 0), m_change(1, 0), m_change(2, 0));
  m_solution.position += move;
  for (unsigned int s = 0; s < kSystems; ++s)
    if (m_solution.systems[s].numUsed > 0) m_clock[s] += m_change(m_column[s], 0);
  step = move.Norm();
  return step < limit;
}

// The standard deviation of a residual: that of its range, less the range's own part in the solution.
double PointSolver::Impl::StandardDeviationLeft(std::size_t i) const {
  const Equation& equation = m_equations[i];
  const C_Vector3& u = equation.toReceiver;
  const double values[] = {u.X(), u.Y(), u.Z(), 1};
  const unsigned int places[] = {0, 1, 2, m_column[m_solution.satellites[i].system]};
  double fitted = 0;
  for (unsigned int a = 0; a < 4; ++a)
    for (unsigned int b = 0; b < 4; ++b) fitted += values[a] * values[b] * m_normal(places[a], places[b]);
  constexpr double kLeast = 0.01;  // of the variance: a range that nothing controls has no residual either
  return std::sqrt(std::max(equation.variance - fitted, kLeast * equation.variance));
}

// Removes the range that contradicts the others most. With a single range too many, a contradiction shows, but not
// which range is wrong.
PointSolver::Impl::Verdict PointSolver::Impl::RejectWorst() {
  double greatest = 0;
  PointSatellite* worst = nullptr;
  ForUsed([&](std::size_t i, PointSatellite& satellite) {
    const double size = std::fabs(m_equations[i].misfit) / StandardDeviationLeft(i);
    if (!(size > greatest)) return;
    greatest = size;
    worst = &satellite;
  });
  if (m_solution.numUsed == m_unknowns || worst == nullptr || greatest <= kOutlier) return Verdict::Consistent;
  if (m_solution.numUsed < m_unknowns + 2) return Verdict::Contradictory;
  worst->use = PointUse::Outlier;
  return Verdict::Rejected;
}

// The last step may have moved a satellite below the mask.
PointResult PointSolver::Impl::SetPrecision() {
  Linearize(false);
  if (!CountUsed()) return PointResult::TooFew;
  Accumulate(false);
  m_normal.SymInv();
  const double ecef[] = {m_normal(0, 0), m_normal(1, 1), m_normal(2, 2),
                         m_normal(0, 1), m_normal(0, 2), m_normal(1, 2)};
  double local[6];
  C_PointCoordinate here(C_PointCoordinate::COORD_CARTESIAN, Position());
  here.ConvertToAllInternal();
  ALGO::CovEcefToLocal(here.Geodetic().X(), here.Geodetic().Y(), here.Geodetic().Z(), ecef, local);
  m_solution.hdop = std::sqrt(local[0] + local[1]);
  m_solution.vdop = std::sqrt(local[2]);
  m_solution.pdop = std::sqrt(local[0] + local[1] + local[2]);
  m_solution.tdop = std::sqrt(m_normal(kAxes, kAxes));
  return m_solution.pdop <= kMaxPdop ? PointResult::Ok : PointResult::PoorGeometry;
}

void PointSolver::Impl::SetSatellites() {
  C_PointCoordinate here(C_PointCoordinate::COORD_CARTESIAN, Position());
  double squares = 0;
  for (std::size_t i = 0; i < m_solution.numSatellites; ++i) {
    PointSatellite& satellite = m_solution.satellites[i];
    const bool hasState =
        satellite.use == PointUse::Used || satellite.use >= PointUse::NoRange || satellite.use == PointUse::Unhealthy;
    if (hasState)
      here.ElevationAndAzimuth(m_equations[i].orbit.state.position, true, satellite.elevation, satellite.azimuth);
  }
  ForUsed([&](std::size_t i, PointSatellite& satellite) {
    satellite.residual = m_equations[i].misfit;
    squares += Square(satellite.residual);
  });
  m_solution.residualRms = std::sqrt(squares / m_solution.numUsed);
  for (unsigned int s = 0; s < kSystems; ++s)
    if (m_solution.systems[s].numUsed > 0) m_solution.systems[s].clockOffset = m_clock[s] / kSpeedOfLight;
}

PointSolver::PointSolver() : m_impl(std::make_unique<Impl>()) {}
PointSolver::~PointSolver() = default;

const PointSolution& PointSolver::Solve(const PointEpoch& epoch, const EphemerisStore& ephemerides) {
  m_impl->Solve(epoch, ephemerides);
  return m_impl->m_solution;
}

}  // namespace velagnss
