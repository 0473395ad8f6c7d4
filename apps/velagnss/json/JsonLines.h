// Frames and events as lines of JSON: what `velagnss decode` writes.
#ifndef VELAGNSS_APPS_JSON_LINES_H
#define VELAGNSS_APPS_JSON_LINES_H

#include <cstdint>
#include <limits>

#include "apps/velagnss/epoch/EpochBuilder.h"
#include "apps/velagnss/json/FrameJson.h"
#include "apps/velagnss/json/RejectionLines.h"
#include "apps/velagnss/pipeline/MessageFilter.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

struct S_JsonLinesOptions {
  C_MessageFilter filter;
  std::uint64_t count = std::numeric_limits<std::uint64_t>::max();  // objects to write
  bool namesInput = false;                                          // in every object
  bool framesOnly = false;                                          // envelopes, nothing decoded
  bool hex = false;
  bool events = false;
  bool epochs = false;      // an object for each epoch
  bool epochsOnly = false;  // and no others
};

class C_JsonLines : public C_RecordConsumer {
 public:
  explicit C_JsonLines(const S_JsonLinesOptions& options);

  C_TextMaker& Text() { return m_json; }
  const C_TextMaker& Text() const { return m_json; }

  std::uint64_t FramesWritten() const { return m_framesWritten; }

  // Frames whose contents are wrong, rejected starts and skipped ranges.
  std::uint64_t DataErrors() const { return m_dataErrors; }

  const C_MessageFilter& Filter() const { return m_options.filter; }

  bool NeedsRecords() const override {
    return !m_options.framesOnly || m_options.filter.UsesTime() || m_options.epochs;
  }
  bool NeedsEvents() const override { return true; }
  bool GoesThroughRanges() const override { return true; }
  void Mute(bool isMute) override { m_isMute = isMute; }
  std::unique_ptr<C_BlockWork> MakeBlockWork() override { return std::make_unique<C_BlockLines>(); }
  void BeginBlock(C_BlockWork* work) override;
  void EndBlock() override { m_block = nullptr; }
  void Collect(C_BlockWork& work) override { m_json.Lines(static_cast<C_BlockLines&>(work).Text()); }
  void BeginInput(const std::string& name) override;
  void OnBytes(std::span<const unsigned char>, t_Arrival arrival) override { m_lines.SetArrival(arrival); }
  void OnLink(const S_LinkChange& change) override;
  void OnFrame(const S_FrameRecord& record) override;
  void OnRejection(const velagnss::RejectedStart& start) override;
  void OnSkipped(const velagnss::SkippedRange& range) override;
  void EndInput(const S_InputEnd& end) override;
  bool WantsMore() const override { return m_framesWritten < m_options.count; }

 protected:
  virtual void OnEpoch(S_Epoch&& epoch);

 private:
  bool FollowsSkipped(const velagnss::Frame& frame) const;

  // Writes the line, now or as the work of a block.
  template <class Line>
  void Put(Line line);

  S_JsonLinesOptions m_options;
  C_JsonWriter m_json;
  C_FrameJson m_lines;
  C_BlockLines* m_block = nullptr;  // in a run on several cores
  C_RejectionLines m_rejections{[this](const S_RejectionsLine& line) { Put(line); }};
  C_EpochBuilder m_epochs{[this](S_Epoch&& epoch) { OnEpoch(std::move(epoch)); }};
  std::string m_skipped;           // the last run of bytes of no frame, if it may end with a TAG block
  std::uint64_t m_skippedEnd = 0;  // where it ends
  std::uint64_t m_framesWritten = 0;
  std::uint64_t m_dataErrors = 0;
  bool m_isMute = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_JSON_LINES_H
