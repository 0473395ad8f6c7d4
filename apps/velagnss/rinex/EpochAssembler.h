// From messages of RTCM 3, one for each system or more, to epochs of all systems.
#ifndef VELAGNSS_APPS_EPOCH_ASSEMBLER_H
#define VELAGNSS_APPS_EPOCH_ASSEMBLER_H

#include <functional>
#include <string>

#include "apps/velagnss/rinex/ObsEpoch.h"
#include "rtcm3/Rtcm3Records.h"

namespace Host {

// An epoch ends when the time changes. The flag "more messages follow" is not relied on: streams put together from
// several sources have it wrong, and two epochs with the same time are more than readers of RINEX bear.
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
  std::int64_t Apart(const velagnss::Rtcm3Time& time) const;  // from the open epoch, ms
  bool MayHaveWrongLeapSeconds(const velagnss::Rtcm3Observations& message) const;
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
