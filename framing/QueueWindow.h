// The queued bytes of a stream, seen as if they lay in one piece from the oldest one on. Internal.
#ifndef VELAGNSS_FRAMING_QUEUE_WINDOW_H
#define VELAGNSS_FRAMING_QUEUE_WINDOW_H

#include <cstdint>
#include <memory>

#include "framing/CircularBuffer.h"

namespace velagnss::framing {

// A ring of bytes, and a copy of those that pass the ring's end: scanners look at whole frames in place wherever a
// frame does not wrap, and get it as one piece where it does. Positions count the bytes of the stream, so that what is
// known of a byte outlives the false starts that are dropped before it.
class C_QueueWindow {
 public:
  C_QueueWindow(unsigned int capacity, eCircBufOvrflowHandling overflowHandling);

  // In bytes, as everywhere in this class.
  unsigned int Queued() const { return m_ring.NumItems(); }
  unsigned int FreeSpace() const { return m_ring.MaxNumItems() - m_ring.NumItems(); }
  bool IsFull() const { return m_ring.IsQueueFull(); }
  void SetOverflowHandling(eCircBufOvrflowHandling overflowHandling) { m_ring.SetOverflowHandling(overflowHandling); }

  // Position in the stream of the oldest queued byte.
  std::uint64_t Position() const { return m_position; }

  // Queues bytes; where they do not fit, the ring's overflow policy holds.
  void Add(const unsigned char* bytes, unsigned int count) { m_ring.QueueNItems(bytes, count); }

  // Copies the oldest bytes, `room` at most, and returns how many. A null pointer gets none.
  unsigned int Copy(unsigned char* out, unsigned int room) { return out == nullptr ? 0 : m_ring.PeekNItems(out, room); }

  // Removes the oldest bytes; `count` is at most Queued().
  void Drop(unsigned int count) {
    m_ring.FlushItems(count);
    m_position += count;
  }

  // The oldest bytes as far as they lie in one piece; their number in `count`.
  const unsigned char* HeadRun(unsigned int& count) const {
    return static_cast<const unsigned char*>(m_ring.PeekHeadRun(count));
  }

  // The first `count` bytes, at most Queued(), in one piece. The pointer holds until bytes are added or dropped.
  const unsigned char* Bytes(unsigned int count) {
    unsigned int run = 0;
    const unsigned char* const head = HeadRun(run);
    return count <= run ? head : Unwrapped(count, run);
  }

 private:
  // Twice the queue, in bytes.
  unsigned int CopyCapacity() const;
  // Copies only what the copy does not hold yet: a frame that wraps is asked for again with every piece that comes.
  const unsigned char* Unwrapped(unsigned int count, unsigned int headRun);

  C_CircularBuffer m_ring;
  // 64 bits: at 1 Gbit/s they last for thousands of years, so no position is ever reused.
  std::uint64_t m_position = 0;
  std::uint64_t m_copyBegin = 0;  // positions of the bytes that m_copy holds
  std::uint64_t m_copyEnd = 0;
  std::unique_ptr<unsigned char[]> m_copy;
};

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_QUEUE_WINDOW_H
