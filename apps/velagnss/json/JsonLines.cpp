#include "apps/velagnss/json/JsonLines.h"

namespace Host {

C_JsonLines::C_JsonLines(const S_JsonLinesOptions& options) : m_options(options), m_lines(m_json) {
  m_lines.SetHex(m_options.hex);
}

// Periods such as GGA:10 start again with each input, whose times are unrelated to those of the previous one.
void C_JsonLines::BeginInput(const std::string& name) {
  m_options.filter.Restart();
  if (m_options.namesInput) m_lines.SetInput(name);
}

void C_JsonLines::OnFrame(const S_FrameRecord& record) {
  const velagnss::Frame& frame = record.frame;
  // Counted before the filter: --strict judges the whole input, not only what is shown.
  if (record.decoded.hasDataError) ++m_dataErrors;
  if (!m_options.filter.Passes(frame, record.clock.Seconds())) return;
  ++m_framesWritten;
  m_lines.WriteFrame(frame, m_options.framesOnly ? nullptr : &record.decoded, record.clock);
}

void C_JsonLines::OnRejection(const velagnss::RejectedStart& start) {
  ++m_dataErrors;
  if (m_options.events) m_lines.WriteRejection(start);
}

void C_JsonLines::OnSkipped(const velagnss::SkippedRange& range) {
  ++m_dataErrors;
  if (m_options.events) m_lines.WriteSkipped(range);
}

}  // namespace Host
