// What the monitor knows of one source, kept up to date by its records.
#ifndef VELAGNSS_APPS_SOURCE_MODEL_H
#define VELAGNSS_APPS_SOURCE_MODEL_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/monitor/FaultLog.h"
#include "apps/velagnss/monitor/MessageRates.h"
#include "apps/velagnss/monitor/RawObjects.h"
#include "apps/velagnss/monitor/ReceiverState.h"
#include "apps/velagnss/monitor/SourceView.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

// Ages and rates are by the machine's clock for a live source, and by the stream's time for any other: a file is read
// in an instant, and its last epoch is as good as new. While such a source is silent, its time goes on.
//
// Memory is bounded, whatever the stream holds. One thread feeds the model; whoever takes snapshots on another one
// locks both sides.
class C_SourceModel : public C_RecordConsumer {
 public:
  using t_Clock = S_Chunk::t_Clock;
  using t_Now = std::function<t_Clock::time_point()>;

  // `now` is the machine's clock.
  explicit C_SourceModel(std::string name, t_Now now = &t_Clock::now);

  bool NeedsEvents() const override { return true; }
  void BeginInput(const std::string& name) override;
  void OnBytes(std::span<const unsigned char> bytes, t_Arrival arrival) override;
  void OnFrame(const S_FrameRecord& record) override;
  void OnRejection(const velagnss::RejectedStart& start) override;
  void OnSkipped(const velagnss::SkippedRange& range) override;
  void OnTotals(const velagnss::StreamTotals& totals) override { m_framesBad = totals.framesBad; }
  void EndInput(const S_InputEnd& end) override;
  void OnLink(const S_LinkChange& change) override;

  // Which frames become raw objects: protocols and messages with commas, as the options --proto and --msg take them;
  // empty for all. Those kept that do not pass are dropped. Gives back an error text, and changes nothing then.
  std::optional<std::string> SetFilter(std::string_view list) { return m_raw.SetFilter(list); }

  S_SourceView Snapshot() const;

  // That of a snapshot.
  eSourceState State() const;

 private:
  double MachineTime() const;  // s
  double Now() const;          // s on the scale of ages and rates; NaN while there is none
  C_TimeText When() const;     // for people
  double Patience() const;     // s, after which a value is stale
  double Silence() const;      // s since the last byte; NaN before the first
  S_LinkView Link() const;

  std::string m_name;
  t_Now m_now;
  bool m_isLive = false;
  bool m_hasEnded = false;

  std::uint64_t m_bytes = 0;
  std::uint64_t m_bytesRated = 0;  // offset up to which the rate has counted
  std::uint64_t m_frames = 0;
  std::uint64_t m_framesBad = 0;
  double m_bytesAt = kNoAge;         // machine's time
  std::uint64_t m_bytesAtFrame = 0;  // bytes that had come with the last frame
  C_Rate m_byteRate;
  C_Rate m_frameRate;
  std::optional<S_Noted<C_TimeText>> m_time;
  double m_seconds = kNoAge;  // of the stream

  std::optional<S_LinkChange> m_link;  // the last change
  std::uint64_t m_connected = 0;
  std::uint64_t m_lost = 0;

  C_ReceiverState m_receivers;
  C_MessageRates m_messages;
  C_FaultLog m_faults;
  C_RawObjects m_raw;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_MODEL_H
