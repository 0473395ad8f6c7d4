#include "framing/QueueWindow.h"

#include <algorithm>
#include <cstring>

namespace velagnss::framing {

namespace {

// The size of the buffer in windows. Even a stream of false starts, which keeps the window full, then moves a third of
// a byte for each byte that is fed.
constexpr std::size_t kWindows = 4;

}  // namespace

// All of it is initialized, because scans read ahead of what is queued.
C_QueueWindow::C_QueueWindow(unsigned int capacity)
    : m_capacity(capacity),
      m_buffer(new unsigned char[kWindows * capacity + kReadAhead]()),
      m_head(m_buffer.get()),
      m_end(m_head + kWindows * capacity) {}

unsigned int C_QueueWindow::Copy(unsigned char* out, unsigned int room) const {
  if (out == nullptr) return 0;
  const unsigned int count = std::min(room, m_queued);
  std::memcpy(out, m_head, count);
  return count;
}

void C_QueueWindow::MoveToFront() {
  std::memmove(m_buffer.get(), m_head, m_queued);
  m_head = m_buffer.get();
}

}  // namespace velagnss::framing
