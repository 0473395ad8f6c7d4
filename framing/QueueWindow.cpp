#include "framing/QueueWindow.h"

#include <cstring>

namespace velagnss::framing {

C_QueueWindow::C_QueueWindow(unsigned int capacity, eCircBufOvrflowHandling overflowHandling)
    : m_ring(capacity, 1, overflowHandling), m_copy(new unsigned char[CopyCapacity()]()) {}

// A whole ring of false starts, each dropped and looked at again, and a frame after them: with less room, the copy
// would begin anew within the same bytes, and a stream of false starts would be copied over and over.
unsigned int C_QueueWindow::CopyCapacity() const { return 2U * m_ring.MaxNumItems(); }

// Each byte is copied once, however many false starts come before it: the copy grows with the stream.
const unsigned char* C_QueueWindow::Unwrapped(unsigned int count, unsigned int headRun) {
  if (m_position >= m_copyEnd || m_position + count > m_copyBegin + CopyCapacity()) {
    m_copyBegin = m_position;
    m_copyEnd = m_position;
  }
  unsigned char* const copy = &m_copy[m_position - m_copyBegin];
  for (auto held = static_cast<unsigned int>(m_copyEnd - m_position); held < count;) {
    const unsigned int end = held < headRun ? headRun : count;  // first to the ring's end, then from its start
    std::memcpy(copy + held, m_ring.PeekNthQueuedItem(held), end - held);
    m_copyEnd = m_position + end;
    held = end;
  }
  return copy;
}

}  // namespace velagnss::framing
