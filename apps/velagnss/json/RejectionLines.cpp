#include "apps/velagnss/json/RejectionLines.h"

#include <algorithm>

namespace Host {

void C_RejectionLines::Add(const velagnss::RejectedStart& start) {
  if (m_linesOfRange < kLinesPerRange) {
    ++m_linesOfRange;
    S_RejectionsLine line;
    line.Add(start);
    return m_sink(line);
  }
  (start.reason == velagnss::RejectedStart::Reason::Checksum ? m_checksum : m_notAFrame).Add(start);
}

void C_RejectionLines::EndRange() {
  const bool isChecksumFirst = m_checksum.first.offset < m_notAFrame.first.offset;
  Write(isChecksumFirst ? m_checksum : m_notAFrame);
  Write(isChecksumFirst ? m_notAFrame : m_checksum);
  m_linesOfRange = 0;
}

void C_RejectionLines::Write(S_RejectionsLine& group) {
  if (group.count > 0) m_sink(group);
  group.count = 0;
}

}  // namespace Host
