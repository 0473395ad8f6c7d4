// The header of an observation file: what was written to it, and what the station says about itself.
#ifndef VELAGNSS_APPS_OBS_HEADER_H
#define VELAGNSS_APPS_OBS_HEADER_H

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "apps/velagnss/rinex/ObsSelection.h"

namespace Host {

// What the epochs of one file hold.
class C_ObsContents {
 public:
  void Note(const S_ObsEpoch& epoch);

  std::int64_t First() const { return m_first; }
  std::int64_t Last() const { return m_last; }

  // ms between epochs; 0 when that is not constant. Gaps do not count.
  std::int64_t Interval() const;

  // The columns of a system: those that the user wants, or all that occur.
  std::vector<std::string> Types(std::size_t system, const t_ObsTypes& wanted) const;

  bool HasSystem(std::size_t system) const { return !m_signals[system].empty(); }
  const std::set<unsigned char>& GlonassSlots() const { return m_slots; }

  // Whether a phase comes from messages whose phases are not aligned by definition.
  bool IsLegacyPhase(std::size_t system, t_SignalCode code) const;

 private:
  struct S_Signal {
    std::array<bool, kNumObsKinds> occurs{};
    bool isLegacyPhase = false;
  };

  std::array<std::map<t_SignalCode, S_Signal>, kNumNavSystems> m_signals;
  std::set<unsigned char> m_slots;
  std::map<std::int64_t, unsigned int> m_steps;  // ms between epochs, how often
  std::int64_t m_first = 0;
  std::int64_t m_last = 0;
  std::uint64_t m_numEpochs = 0;
};

struct S_ObsHeader {
  const S_RinexOptions& options;
  const C_StreamFacts& facts;
  const S_ObsContext& context;
  const C_ObsContents& contents;
  const t_ObsTypes& types;  // the columns of each system
  const std::map<std::string, std::string>& stationLines;
  std::string marker;
  bool hasQuarterCycles;  // phases of 1001 to 1012 are aligned
};
// 'M' for several systems.
char SystemLetter(const C_ObsContents& contents);

void AppendObsHeader(std::string& text, const S_ObsHeader& header);

}  // namespace Host

#endif  // VELAGNSS_APPS_OBS_HEADER_H
