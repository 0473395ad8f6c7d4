#include "positioning/PointEpochs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "geo/NotAvailable.h"
#include "positioning/Constants.h"

namespace velagnss {
namespace {

using namespace positioning;

constexpr double kApart = 0.005;  // s, between the messages of an epoch
constexpr unsigned char kLeapSecondsOf2017 = 18;

// RINEX codes in the order of preference, two letters each.
struct Choice {
  std::string_view first;
  std::string_view second;
};
constexpr Choice kChoices[kSystems] = {
    // by `ALGO::eGNSSSystem`
    {"1C1W1P1X1L1S", "2W2P2C2X2L2S5X5Q5I"},
    {"1C1P", "2C2P"},
    {"2I2X2Q", "6I6X6Q7I7X7Q"},
    {"1C1X1B1Z", "5X5Q5I7X7Q7I8X8Q8I"},
    {},
    {"1C1X1L1S", "2X2L2S5X5Q5I"},
    {"5A", "9A"},
};

std::size_t RankOf(std::string_view codes, const char* code) {
  for (std::size_t i = 0; i + 1 < codes.size(); i += 2)
    if (codes[i] == code[0] && codes[i + 1] == code[1]) return i;
  return codes.npos;
}

bool IsChosen(const Choice& choice, const char* code) {
  return RankOf(choice.first, code) != choice.first.npos || RankOf(choice.second, code) != choice.second.npos;
}

// Keeps the better one of two signals.
void Prefer(std::string_view codes, const Rtcm3Signal& signal, PointRange& range) {
  const std::size_t rank = RankOf(codes, signal.code);
  if (rank == codes.npos || rank >= RankOf(codes, range.code)) return;
  range.range = signal.data.Pseudorange;
  range.frequency = signal.frequency;
  std::copy(std::begin(signal.code), std::end(signal.code), range.code);
}

bool IsUsable(const Rtcm3Signal& signal) {
  return !IsNotAvailable(signal.data.Pseudorange) && !IsNotAvailable(signal.frequency) && signal.data.Pseudorange > 0;
}

// A message of GLONASS carries both UTC + 3 h and, resolved, GPS time; the observations are a few milliseconds off.
unsigned char LeapSecondsOf(const Rtcm3Time& time) {
  constexpr double kMs = 1000;
  const double ahead = time.seconds - (time.sent / kMs - ALGO::kGlonassAhead);
  const double inDay = ahead - std::floor(ahead / ALGO::kSecondsPerDay) * ALGO::kSecondsPerDay;
  return static_cast<unsigned char>(std::lround(inDay) % 100);
}

struct Collected {
  PointEpoch epoch;
  std::array<PointRanges, PointEpochs::kMaxSatellites> satellites;
  bool isStarted = false;
};

}  // namespace

class PointEpochs::Impl {
 public:
  bool BelongsToEpoch(const Rtcm3Observations& observations) const;
  void Begin(const Rtcm3Observations& observations);
  void Add(const Rtcm3Observations& observations);
  const PointEpoch* End();

 private:
  PointRanges* RangesOf(ALGO::eGNSSSystem system, unsigned char svId);

  std::array<Collected, 2> m_collected;  // the current epoch, and the one before
  Collected* m_current = &m_collected[0];
};

bool PointEpochs::Impl::BelongsToEpoch(const Rtcm3Observations& observations) const {
  const PointEpoch& epoch = m_current->epoch;
  if (!m_current->isStarted || observations.station != epoch.station) return false;
  const double apart = std::remainder(observations.time.seconds - epoch.time.m_secOfWeek, ALGO::kSecondsPerWeek);
  return std::fabs(apart) < kApart;
}

void PointEpochs::Impl::Begin(const Rtcm3Observations& observations) {
  m_current->isStarted = true;
  m_current->epoch = PointEpoch();
  m_current->epoch.station = observations.station;
  m_current->epoch.leapSeconds = kLeapSecondsOf2017;
  m_current->epoch.time.Set(observations.time.week, observations.time.seconds, ALGO::GNSS_GPS);
}

void PointEpochs::Impl::Add(const Rtcm3Observations& observations) {
  if (observations.system == ALGO::GNSS_GLONASS) m_current->epoch.leapSeconds = LeapSecondsOf(observations.time);
  if (observations.rangeModulus != 0) return;
  for (unsigned int i = 0; i < observations.numSignals; ++i) {
    const Rtcm3Signal& signal = observations.signals[i];
    const Rtcm3Satellite& satellite = observations.satellites[signal.satellite];
    if (satellite.system >= kSystems || IsNotAvailable(satellite.svId) || !IsUsable(signal)) continue;
    const Choice& choice = kChoices[satellite.system];
    if (!IsChosen(choice, signal.code)) continue;
    PointRanges* const ranges = RangesOf(satellite.system, satellite.svId);
    if (ranges == nullptr) continue;
    Prefer(choice.first, signal, ranges->first);
    Prefer(choice.second, signal, ranges->second);
  }
}

// An epoch has some tens of satellites, mostly in the order of the messages: the one wanted is near the end.
PointRanges* PointEpochs::Impl::RangesOf(ALGO::eGNSSSystem system, unsigned char svId) {
  PointEpoch& epoch = m_current->epoch;
  PointRanges* const begin = m_current->satellites.data();
  for (PointRanges* known = begin + epoch.numSatellites; known-- != begin;)
    if (known->svId == svId && known->system == system) return known;
  if (epoch.numSatellites == kMaxSatellites) return nullptr;
  PointRanges& added = begin[epoch.numSatellites++];
  added = {system, svId, {}, {}};
  return &added;
}

const PointEpoch* PointEpochs::Impl::End() {
  if (!m_current->isStarted) return nullptr;
  Collected& ended = *m_current;
  ended.isStarted = false;
  ended.epoch.satellites = ended.satellites.data();
  m_current = &m_collected[m_current == m_collected.data() ? 1 : 0];
  return &ended.epoch;
}

PointEpochs::PointEpochs() : m_impl(std::make_unique<Impl>()) {}
PointEpochs::~PointEpochs() = default;

const PointEpoch* PointEpochs::Note(const Rtcm3Observations& observations) {
  if (!IsNumber(observations.time.seconds)) return nullptr;
  const PointEpoch* const ended = m_impl->BelongsToEpoch(observations) ? nullptr : m_impl->End();
  if (!m_impl->BelongsToEpoch(observations)) m_impl->Begin(observations);
  m_impl->Add(observations);
  return ended;
}

const PointEpoch* PointEpochs::Flush() { return m_impl->End(); }

}  // namespace velagnss
