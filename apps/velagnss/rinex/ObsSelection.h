// Which epochs and observations go into the file, and with which loss of lock indicators.
#ifndef VELAGNSS_APPS_OBS_SELECTION_H
#define VELAGNSS_APPS_OBS_SELECTION_H

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/rinex/ObsEpoch.h"
#include "apps/velagnss/rinex/RinexHeader.h"
#include "apps/velagnss/rinex/RinexOptions.h"

namespace Host {

// What is known of the whole stream once it has been read.
struct S_ObsContext {
  static constexpr std::size_t kSlots = 256;

  std::vector<std::optional<std::int64_t>> firstDated;  // by input, ms: when its first date came
  std::array<signed char, kSlots> channels;             // of GLONASS, by slot
  std::optional<velagnss::Rtcm3GlonassBiases> biases;
};

// Goes through the epochs in their order; once for the header and once for the body, with the same answers.
class C_ObsSelection {
 public:
  // `leftOut` may be null.
  C_ObsSelection(const S_RinexOptions& options, const S_ObsContext& context, C_LeftOut* leftOut);

  // Dates an epoch, puts its values into the units of RINEX and removes what is not written. False when nothing of it
  // is written.
  bool Take(S_ObsEpoch& epoch);

 private:
  // What is known of a signal from the epochs before.
  struct S_History {
    bool isSlipPending = false;  // that has not been written
    bool isLegacy = false;
    std::uint32_t input = 0;
    std::int64_t time = 0;  // ms
  };

  bool Date(S_ObsEpoch& epoch) const;
  std::string Objection(S_ObsEpoch& epoch) const;
  bool IsInInterval(std::int64_t time) const;
  bool LacksChannel(const S_ObsSignal& signal) const;
  void Finish(S_ObsSignal& signal) const;
  bool KeepTypes(S_ObsSignal& signal) const;
  void FlagSlip(S_ObsSignal& signal, const S_ObsEpoch& epoch, bool isWritten);
  void LeaveOut(const S_ObsEpoch& epoch, const std::string& reason) const;

  const S_RinexOptions& m_options;
  const S_ObsContext& m_context;
  C_LeftOut* m_leftOut;
  std::array<bool, kNumNavSystems> m_isSelected;
  t_ObsTypes m_types;
  std::optional<std::int64_t> m_last;  // time of the last epoch that was written
  std::map<std::array<unsigned char, 4>, S_History> m_signals;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OBS_SELECTION_H
