#include "apps/velagnss/json/RejectionLines.h"

#include <algorithm>

namespace Host {

void C_RejectionLines::Add(const velagnss::RejectedStart& start) {
  if (m_linesOfRange < kLinesPerRange) {
    ++m_linesOfRange;
    return m_lines.WriteRejections(start, start.offset, 1);
  }
  S_Group& group = start.reason == velagnss::RejectedStart::Reason::Checksum ? m_checksum : m_notAFrame;
  if (group.count == 0) {
    group.first = start;
    std::copy_n(start.data, start.size, group.bytes.begin());
    group.first.data = group.bytes.data();
  }
  group.lastOffset = start.offset;
  ++group.count;
}

void C_RejectionLines::EndRange() {
  const bool isChecksumFirst = m_checksum.first.offset < m_notAFrame.first.offset;
  Write(isChecksumFirst ? m_checksum : m_notAFrame);
  Write(isChecksumFirst ? m_notAFrame : m_checksum);
  m_linesOfRange = 0;
}

void C_RejectionLines::Write(S_Group& group) {
  if (group.count > 0) m_lines.WriteRejections(group.first, group.lastOffset, group.count);
  group.count = 0;
}

}  // namespace Host
