#include "positioning/EphemerisStore.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <variant>
#include <vector>

#include "positioning/Constants.h"

namespace velagnss {
namespace {

using namespace positioning;

// Satellite numbers by `ALGO::eGNSSSystem`.
struct Numbers {
  unsigned char first;
  unsigned char count;
};
constexpr Numbers kNumbers[kSystems] = {{1, 32}, {1, 28}, {1, 63}, {1, 36}, {120, 39}, {193, 10}, {1, 14}};

constexpr std::size_t kKept = 4;  // of a satellite

// The index of a satellite among all.
std::optional<std::size_t> IndexOf(unsigned int system, unsigned char svId) {
  if (system >= kSystems) return std::nullopt;
  const Numbers& own = kNumbers[system];
  if (svId < own.first || svId >= own.first + own.count) return std::nullopt;
  const auto add = [](std::size_t sum, const Numbers& numbers) { return sum + numbers.count; };
  return std::accumulate(kNumbers, kNumbers + system, std::size_t{svId} - own.first, add);
}

constexpr std::size_t NumSatellites() {
  std::size_t count = 0;
  for (const Numbers& numbers : kNumbers) count += numbers.count;
  return count;
}

using Ephemeris = std::variant<std::monostate, Rtcm3KeplerEphemeris, S_IFPvaEphRec>;

struct Entry {
  Ephemeris ephemeris;
  bool isWeekKnown = false;
};

// Like std::visit, which would bring an exception with it.
template <class Visit>
auto Apply(const Ephemeris& ephemeris, const Visit& visit) {
  if (const auto* const kepler = std::get_if<Rtcm3KeplerEphemeris>(&ephemeris)) return visit(*kepler);
  if (const auto* const pva = std::get_if<S_IFPvaEphRec>(&ephemeris)) return visit(*pva);
  return visit(std::monostate());
}

struct Satellite {
  std::array<Entry, kKept> entries;
  std::size_t next = 0;  // the oldest one
};

// I/NAV and F/NAV of Galileo have the same issue, but other clocks.
bool IsSame(const Rtcm3KeplerEphemeris& a, const Rtcm3KeplerEphemeris& b) {
  return a.ephemeris.Toe == b.ephemeris.Toe && a.ephemeris.Iode == b.ephemeris.Iode && a.dataSource == b.dataSource;
}
bool IsSame(const S_IFPvaEphRec& a, const S_IFPvaEphRec& b) { return a.RefTime == b.RefTime && a.Iod == b.Iod; }

double ReferenceSeconds(const Rtcm3KeplerEphemeris& e) { return e.ephemeris.Toe; }
double ReferenceSeconds(const S_IFPvaEphRec& e) { return e.RefTime; }

// The time nearest to `reference` with the seconds of `time`, modulo `period`.
C_GnssTime NearestTo(const C_GnssTime& reference, const C_GnssTime& time, double period) {
  return reference + std::remainder(time.m_secOfWeek - reference.m_secOfWeek, period);
}

// What `Find` asks of each kind of ephemeris.
struct Question {
  const C_GnssTime& time;
  unsigned char leapSeconds;
  bool isWeekKnown;

  template <class Record>
  C_GnssTime TimeFor(const Record& record, const C_GnssTime& reference) const {
    constexpr bool isPva = std::is_same_v<Record, S_IFPvaEphRec>;
    if (isWeekKnown && !IsNotAvailable(time.m_week)) return time;
    const bool lacksDay = isPva && !isWeekKnown && record.System == ALGO::GNSS_GLONASS;
    return NearestTo(reference, time, lacksDay ? ALGO::kSecondsPerDay : ALGO::kSecondsPerWeek);
  }

  double Age(std::monostate) const { return HUGE_VAL; }
  double Age(const Rtcm3KeplerEphemeris& e) const {
    const C_GnssTime reference = ReferenceTime(e.ephemeris);
    return std::fabs(TimeFor(e.ephemeris, reference) - reference);
  }
  double Age(const S_IFPvaEphRec& e) const {
    const C_GnssTime reference = ReferenceTime(e, leapSeconds);
    return std::fabs(TimeFor(e, reference) - reference);
  }

  OrbitResult Answer(std::monostate, SatelliteOrbit&) const { return OrbitResult::Missing; }
  OrbitResult Answer(const Rtcm3KeplerEphemeris& e, SatelliteOrbit& orbit) const {
    orbit.kepler = &e;
    return WithHealth(IsHealthy(e.ephemeris),
                      StateAt(e.ephemeris, TimeFor(e.ephemeris, ReferenceTime(e.ephemeris)), orbit.state));
  }
  OrbitResult Answer(const S_IFPvaEphRec& e, SatelliteOrbit& orbit) const {
    orbit.kepler = nullptr;
    return WithHealth(IsHealthy(e), StateAt(e, TimeFor(e, ReferenceTime(e, leapSeconds)), leapSeconds, orbit.state));
  }

  static OrbitResult WithHealth(bool isHealthy, OrbitResult result) {
    return result == OrbitResult::Ok && !isHealthy ? OrbitResult::Unhealthy : result;
  }
};

double AgeOf(const Entry& entry, const C_GnssTime& time, unsigned char leapSeconds) {
  const Question question{time, leapSeconds, entry.isWeekKnown};
  return Apply(entry.ephemeris, [&question](const auto& e) { return question.Age(e); });
}

}  // namespace

class EphemerisStore::Impl {
 public:
  template <class T>
  void Note(unsigned int system, unsigned char svId, const T& ephemeris, bool isWeekKnown);

  std::vector<Satellite> m_satellites = std::vector<Satellite>(NumSatellites());
};

template <class T>
void EphemerisStore::Impl::Note(unsigned int system, unsigned char svId, const T& ephemeris, bool isWeekKnown) {
  const auto index = IndexOf(system, svId);
  // Without a time, an ephemeris could push out those that are good, or seem to be the nearest.
  if (!index || !IsNumber(ReferenceSeconds(ephemeris))) return;
  Satellite& satellite = m_satellites[*index];
  auto* place = std::find_if(satellite.entries.begin(), satellite.entries.end(), [&ephemeris](const Entry& entry) {
    const T* const known = std::get_if<T>(&entry.ephemeris);
    return known != nullptr && IsSame(*known, ephemeris);
  });
  if (place == satellite.entries.end()) {
    place = &satellite.entries[satellite.next];
    satellite.next = (satellite.next + 1) % kKept;
  }
  place->ephemeris = ephemeris;
  place->isWeekKnown = isWeekKnown;
}

EphemerisStore::EphemerisStore() : m_impl(std::make_unique<Impl>()) {}
EphemerisStore::~EphemerisStore() = default;

void EphemerisStore::Note(const Rtcm3KeplerEphemeris& ephemeris, bool isWeekKnown) {
  m_impl->Note(ephemeris.ephemeris.System, ephemeris.ephemeris.SvId, ephemeris, isWeekKnown);
}

void EphemerisStore::Note(const S_IFKeplerEphRec& ephemeris, bool isWeekKnown) {
  Rtcm3KeplerEphemeris whole;
  whole.ephemeris = ephemeris;
  Note(whole, isWeekKnown);
}

void EphemerisStore::Note(const S_IFPvaEphRec& ephemeris, bool isWeekKnown) {
  m_impl->Note(ephemeris.System, ephemeris.SvId, ephemeris, isWeekKnown);
}

OrbitResult EphemerisStore::Find(ALGO::eGNSSSystem system, unsigned char svId, const C_GnssTime& time,
                                 unsigned char leapSeconds, SatelliteOrbit& orbit) const {
  const auto index = IndexOf(system, svId);
  if (!index || !IsNumber(time.m_secOfWeek)) return OrbitResult::Missing;
  const auto& entries = m_impl->m_satellites[*index].entries;
  const Entry& nearest = *std::min_element(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
    return AgeOf(a, time, leapSeconds) < AgeOf(b, time, leapSeconds);
  });
  const Question question{time, leapSeconds, nearest.isWeekKnown};
  return Apply(nearest.ephemeris, [&](const auto& e) { return question.Answer(e, orbit); });
}

void EphemerisStore::Clear() {
  for (Satellite& satellite : m_impl->m_satellites) satellite = Satellite();
}

}  // namespace velagnss
