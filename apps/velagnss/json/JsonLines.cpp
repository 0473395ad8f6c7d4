#include "apps/velagnss/json/JsonLines.h"

namespace Host {

C_JsonLines::C_JsonLines(const S_JsonLinesOptions& options) : m_options(options), m_lines(m_json) {
  m_lines.SetHex(m_options.hex);
}

// Periods such as GGA:10 start again with each input, whose times are unrelated to those of the previous one.
void C_JsonLines::BeginInput(const std::string& name) {
  m_options.filter.Restart();
  m_skipped.clear();
  if (m_options.namesInput) m_lines.SetInput(name);
}

void C_JsonLines::BeginBlock(C_BlockWork* work) {
  m_block = static_cast<C_BlockLines*>(work);
  m_block->Begin(m_lines);
}

template <class Line>
void C_JsonLines::Put(Line line) {
  if (m_isMute) return;
  if (m_block != nullptr)
    m_block->Add(std::move(line));
  else
    line.WriteTo(m_lines);
}

void C_JsonLines::OnFrame(const S_FrameRecord& record) {
  const velagnss::Frame& frame = record.frame;
  // Counted before the filter: --strict judges the whole input, not only what is shown.
  if (record.decoded.hasDataError && !m_isMute) ++m_dataErrors;
  // The frames of an epoch make it whether they are shown or not.
  if (m_options.epochs) m_epochs.Take(record);
  if (m_options.epochsOnly || !WantsMore() || !m_options.filter.Passes(frame, record.clock.Seconds()) || m_isMute)
    return;
  ++m_framesWritten;
  Put(S_FrameLine{&frame, m_options.framesOnly ? nullptr : &record.decoded, &record.clock,
                  FollowsSkipped(frame) ? m_skipped : std::string()});
}

void C_JsonLines::OnEpoch(S_Epoch&& epoch) {
  if (m_isMute || (m_options.epochsOnly && m_framesWritten++ >= m_options.count)) return;
  Put(S_EpochLine{std::make_unique<S_Epoch>(std::move(epoch))});
}

// A run of skipped bytes has no end when the last frame wanted comes before it, and the last epoch may be incomplete.
void C_JsonLines::EndInput(const S_InputEnd& end) {
  m_rejections.EndRange();
  if (m_options.epochs && WantsMore()) m_epochs.Finish(end.clock);
}

void C_JsonLines::OnLink(const S_LinkChange& change) {
  if (!m_options.events) return;
  m_rejections.EndRange();
  m_lines.WriteLink(change);
}

void C_JsonLines::OnRejection(const velagnss::RejectedStart& start) {
  if (!m_isMute) ++m_dataErrors;
  if (m_options.events) m_rejections.Add(start);
}

// A run of TAG blocks alone is not a fault. The end of a long run is not available, so its TAG blocks are not shown.
void C_JsonLines::OnSkipped(const velagnss::SkippedRange& range) {
  const bool isWhole = range.size == range.length && range.data[range.size - 1] == '\\';
  m_skipped.assign(reinterpret_cast<const char*>(range.data), isWhole ? range.size : 0);
  m_skippedEnd = range.offset + range.length;
  if (!IsTagOnly(range) && !m_isMute) ++m_dataErrors;
  if (!m_options.events) return;
  m_rejections.EndRange();
  Put(S_SkippedLine{range});
}

bool C_JsonLines::FollowsSkipped(const velagnss::Frame& frame) const {
  return frame.protocol == C_RawDataMessage::eNMEA0183 && frame.offset == m_skippedEnd;
}

}  // namespace Host
