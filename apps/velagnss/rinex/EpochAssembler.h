// From messages of RTCM 3, one for each system or more, to epochs of all systems.
#ifndef VELAGNSS_APPS_EPOCH_ASSEMBLER_H
#define VELAGNSS_APPS_EPOCH_ASSEMBLER_H

#include <functional>
#include <optional>
#include <string>

#include "apps/velagnss/rinex/ObsEpoch.h"
#include "rtcm3/Rtcm3Records.h"

namespace Host {

// Readers of RINEX do not accept two epochs with the same time; see pipeline/Observations.h.
class C_EpochAssembler {
 public:
  using t_OnEpoch = std::function<void(const S_ObsEpoch& epoch)>;
  using t_LeaveOut = std::function<void(const std::string& reason)>;
  C_EpochAssembler(t_OnEpoch onEpoch, t_LeaveOut leaveOut)
      : m_onEpoch(std::move(onEpoch)), m_leaveOut(std::move(leaveOut)) {}

  void Add(const velagnss::Rtcm3Observations& message);

  // Whether an epoch has begun and may go on.
  bool IsOpen() const { return !m_epoch.signals.empty(); }

  // Ends the input: the epoch that is open is handed over.
  void EndInput();

 private:
  std::optional<double> OpenTime() const;  // s of the week
  void DateEpoch(const velagnss::Rtcm3Time& time);
  void Close();
  void AddSignal(const velagnss::Rtcm3Observations& message, const velagnss::Rtcm3Signal& signal);
  void Insert(const S_ObsSignal& signal);

  t_OnEpoch m_onEpoch;
  t_LeaveOut m_leaveOut;
  S_ObsEpoch m_epoch;
  std::uint32_t m_input = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_EPOCH_ASSEMBLER_H
