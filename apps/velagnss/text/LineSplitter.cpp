#include "apps/velagnss/text/LineSplitter.h"

#include <utility>

namespace Host {

// Keeps at most one character more than the limit: enough to tell that a line is too long, and bounded memory for
// input without any line end.
bool C_LineSplitter::Take(std::span<const unsigned char>& rest) {
  if (std::exchange(m_isComplete, false)) m_line.clear();
  const std::string_view text(reinterpret_cast<const char*>(rest.data()), rest.size());
  const std::size_t end = text.find('\n');
  m_line.append(text.substr(0, end).substr(0, m_maxLine + 1 - m_line.size()));
  m_isComplete = end != std::string_view::npos;
  m_number += m_isComplete ? 1 : 0;
  rest = rest.subspan(m_isComplete ? end + 1 : rest.size());
  return m_isComplete;
}

bool C_LineSplitter::End() {
  if (std::exchange(m_isComplete, false)) m_line.clear();
  m_isComplete = !m_line.empty();
  m_number += m_isComplete ? 1 : 0;
  return m_isComplete;
}

void C_LineSplitter::Restart() {
  m_line.clear();
  m_isComplete = false;
  m_number = 0;
}

}  // namespace Host
