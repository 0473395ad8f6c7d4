// What the monitor knows of one source, kept up to date by its records.
#ifndef VELAGNSS_APPS_SOURCE_MODEL_H
#define VELAGNSS_APPS_SOURCE_MODEL_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/monitor/SourceView.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

// Ages and rates are by the machine's clock for a live source, and by the stream's time for any other: a file is read
// in an instant, and its last epoch is as good as new.
//
// Memory is bounded, whatever the stream holds: the limits are in SourceModel.cpp. One thread feeds the model; whoever
// takes snapshots on another one locks both sides.
class C_SourceModel : public C_RecordConsumer {
 public:
  using t_Clock = S_Chunk::t_Clock;
  using t_Now = std::function<t_Clock::time_point()>;

  // `now` is the machine's clock.
  explicit C_SourceModel(std::string name, t_Now now = &t_Clock::now);
  ~C_SourceModel() override;

  bool NeedsEvents() const override { return true; }
  void BeginInput(const std::string& name) override;
  void OnBytes(std::span<const unsigned char> bytes, t_Arrival arrival) override;
  void OnFrame(const S_FrameRecord& record) override;
  void OnRejection(const velagnss::RejectedStart& start) override;
  void OnSkipped(const velagnss::SkippedRange& range) override;
  void EndInput(const S_InputEnd& end) override;
  void OnLink(const S_LinkChange& change) override;

  // Which frames become raw objects: protocols and messages with commas, as the options --protocol and --msg take them;
  // empty for all. Objects that do not pass are dropped. Gives back an error text, and changes nothing then.
  std::optional<std::string> SetFilter(std::string_view list);

  // The source could not be opened, or reading it failed.
  void SetFailed();

  S_SourceView Snapshot() const;

 private:
  class C_Impl;
  std::unique_ptr<C_Impl> m_impl;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_MODEL_H
