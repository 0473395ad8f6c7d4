#include "apps/velagnss/rinex/ObsHeader.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/rinex/StationLines.h"

namespace Host {
namespace {

constexpr std::size_t kMaxSteps = 1000;             // more different ones have nothing in common
constexpr std::int64_t kMaxInterval = 999'999'000;  // ms: six digits of seconds fit

// Entries of a line and its continuations, each of which begins with `indent` blanks.
void AppendList(std::string& text, std::string_view label, std::string line, std::size_t perLine, std::size_t indent,
                const std::vector<std::string>& entries) {
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (i > 0 && i % perLine == 0) {
      AppendHeaderLine(text, line, label);
      line.assign(indent, ' ');
    }
    line += entries[i];
  }
  AppendHeaderLine(text, line, label);
}

void AppendTypes(std::string& text, const S_ObsHeader& header) {
  for (std::size_t system = 0; system < kNumNavSystems; ++system) {
    const std::vector<std::string>& types = header.types[system];
    if (types.empty()) continue;
    std::vector<std::string> entries;
    entries.reserve(types.size());
    for (const std::string& type : types) entries.push_back(" " + type);
    AppendList(text, "SYS / # / OBS TYPES", fmt::format("{}  {:3}", NavSystems()[system].letter, types.size()), 13, 6,
               entries);
  }
}

void AppendTime(std::string& text, std::int64_t time, std::string_view label) {
  const S_RinexTime parts = RinexTime(time);
  AppendHeaderLine(text,
                   fmt::format("{:6}{:6}{:6}{:6}{:6}{:13.7f}     GPS", parts.year, parts.month, parts.day, parts.hour,
                               parts.minute, parts.second),
                   label);
}

// Phases of MSM are aligned by definition, so nothing is added to any. Whether those of other messages are, the station
// says or does not say.
void AppendPhaseShifts(std::string& text, const S_ObsHeader& header) {
  constexpr std::string_view kLabel = "SYS / PHASE SHIFT";
  for (std::size_t system = 0; system < kNumNavSystems; ++system) {
    const char letter = NavSystems()[system].letter;
    bool isUnknown = false;
    for (const std::string& type : header.types[system]) {
      const t_SignalCode code = {type[1], type[2]};
      const bool isReference = IsReferenceSignal(letter, code);
      if (type[0] != 'L') continue;
      if (!isReference && !header.hasQuarterCycles && header.contents.IsLegacyPhase(system, code))
        isUnknown = true;
      else
        AppendHeaderLine(text, fmt::format("{} {}{}", letter, type, isReference ? "" : "  0.00000"), kLabel);
    }
    if (isUnknown) AppendHeaderLine(text, std::string(1, letter), kLabel);
  }
}

void AppendSlots(std::string& text, const S_ObsHeader& header) {
  std::vector<std::string> entries;
  for (const unsigned char slot : header.contents.GlonassSlots())
    entries.push_back(fmt::format("R{:02} {:2} ", slot, header.context.channels[slot]));
  AppendList(text, "GLONASS SLOT / FRQ #", fmt::format("{:3} ", entries.size()), 8, 4, entries);
}

// What was added to the phases: nothing where they are aligned, and nobody knows without a message about it.
void AppendBiases(std::string& text, const S_ObsHeader& header) {
  using Biases = velagnss::Rtcm3GlonassBiases;
  constexpr struct {
    std::string_view code;
    double Biases::*bias;
  } kRows[] = {{"C1C", &Biases::l1Ca}, {"C1P", &Biases::l1P}, {"C2C", &Biases::l2Ca}, {"C2P", &Biases::l2P}};
  std::string line;
  for (const auto& row : kRows) {
    const auto& biases = header.context.biases;
    const bool isAligned = biases && biases->isAligned == 1;
    const bool isKnown = biases && (isAligned || !IsNotAvailable((*biases).*row.bias));
    const double bias = isAligned || !isKnown ? 0 : (*biases).*row.bias;
    line += isKnown ? fmt::format(" {} {:8.3f}", row.code, bias + 0.0) : std::string(13, ' ');
  }
  AppendHeaderLine(text, line, "GLONASS COD/PHS/BIS");
}

std::string_view TitleOf(const C_ObsContents& contents) {
  std::string_view title;
  for (std::size_t system = 0; system < kNumNavSystems; ++system)
    if (contents.HasSystem(system)) title = title.empty() ? NavSystems()[system].title : "M: Mixed";
  return title;
}

bool HasStrengths(const S_ObsHeader& header) {
  return std::any_of(header.types.begin(), header.types.end(), [](const std::vector<std::string>& types) {
    return std::any_of(types.begin(), types.end(), [](const std::string& type) { return type[0] == 'S'; });
  });
}

}  // namespace

void C_ObsContents::Note(const S_ObsEpoch& epoch) {
  if (m_numEpochs++ == 0)
    m_first = epoch.time;
  else if (m_steps.size() < kMaxSteps || m_steps.count(epoch.time - m_last) > 0)
    ++m_steps[epoch.time - m_last];
  m_last = epoch.time;
  for (const S_ObsSignal& signal : epoch.signals) {
    S_Signal& row = m_signals[signal.system][signal.code];
    for (std::size_t kind = 0; kind < kNumObsKinds; ++kind)
      row.occurs[kind] = row.occurs[kind] || signal.values[kind] != kNoNumber;
    row.isLegacyPhase = row.isLegacyPhase || (signal.flags & S_ObsSignal::eIsLegacy) != 0;
    if (NavSystems()[signal.system].letter == 'R') m_slots.insert(signal.number);
  }
}

std::int64_t C_ObsContents::Interval() const {
  if (m_steps.empty() || m_steps.size() >= kMaxSteps) return 0;
  const auto isRarer = [](const auto& a, const auto& b) { return a.second < b.second; };
  const std::int64_t usual = std::max_element(m_steps.begin(), m_steps.end(), isRarer)->first;
  const bool isConstant =
      std::all_of(m_steps.begin(), m_steps.end(), [usual](const auto& step) { return step.first % usual == 0; });
  return isConstant ? usual : 0;
}

std::vector<std::string> C_ObsContents::Types(std::size_t system, const t_ObsTypes& wanted) const {
  if (!HasSystem(system)) return {};
  if (!wanted[system].empty()) return wanted[system];
  std::vector<std::string> types;
  for (const auto& [code, signal] : m_signals[system])
    for (std::size_t kind = 0; kind < kNumObsKinds; ++kind)
      if (signal.occurs[kind]) types.push_back({kObsKindLetters[kind], code[0], code[1]});
  return types;
}

bool C_ObsContents::IsLegacyPhase(std::size_t system, t_SignalCode code) const {
  const auto place = m_signals[system].find(code);
  return place != m_signals[system].end() && place->second.isLegacyPhase;
}

char SystemLetter(const C_ObsContents& contents) { return TitleOf(contents)[0]; }

void AppendObsHeader(std::string& text, const S_ObsHeader& header) {
  const double last = static_cast<double>(header.contents.Last()) / double{kMsPerSecond};
  const unsigned int leapSeconds = header.facts.LeapSeconds(last);
  AppendFirstLines(text, {3.05, "OBSERVATION DATA", TitleOf(header.contents)}, header.options,
                   header.facts.RunDate(header.options, std::floor(last) - leapSeconds));
  AppendHeaderLine(text, header.marker, kMarkerLabel);
  AppendHeaderLine(text, fmt::format("{:<20}{}", header.options.observer, header.options.agency), "OBSERVER / AGENCY");
  for (const std::string_view label : {kReceiverLabel, kAntennaLabel, kPositionLabel, kAntennaDeltaLabel})
    if (const auto line = header.stationLines.find(std::string(label)); line != header.stationLines.end())
      AppendHeaderLine(text, line->second, label);
  AppendTypes(text, header);
  if (HasStrengths(header)) AppendHeaderLine(text, "DBHZ", "SIGNAL STRENGTH UNIT");
  if (const std::int64_t interval = header.contents.Interval(); interval > 0 && interval <= kMaxInterval)
    AppendHeaderLine(text, fmt::format("{:10.3f}", static_cast<double>(interval) / double{kMsPerSecond}), "INTERVAL");
  AppendTime(text, header.contents.First(), "TIME OF FIRST OBS");
  AppendTime(text, header.contents.Last(), "TIME OF LAST OBS");
  AppendPhaseShifts(text, header);
  if (!header.contents.GlonassSlots().empty()) {
    AppendSlots(text, header);
    AppendBiases(text, header);
  }
  AppendLeapSeconds(text, leapSeconds);
  AppendHeaderLine(text, "", "END OF HEADER");
}

}  // namespace Host
