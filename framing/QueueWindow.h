// The queued bytes of a stream, in one piece from the oldest one on. Internal.
#ifndef VELAGNSS_FRAMING_QUEUE_WINDOW_H
#define VELAGNSS_FRAMING_QUEUE_WINDOW_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "framing/ByteCopy.h"
#include "framing/ByteScan.h"

namespace velagnss::framing {

// A window that moves through a buffer several times its size, so that scanners look at whole frames in place. Bytes
// move to the front only when the window reaches the buffer's end, which is rare: nearly all bytes are copied once.
// Positions count the bytes of the stream, so that what is known of a byte outlives the false starts that are dropped
// before it.
class C_QueueWindow {
 public:
  explicit C_QueueWindow(unsigned int capacity);

  // In bytes, as everywhere in this class.
  unsigned int Queued() const { return m_queued; }
  unsigned int FreeSpace() const { return m_capacity - m_queued; }
  bool IsFull() const { return m_queued == m_capacity; }

  // Position in the stream of the oldest queued byte.
  std::uint64_t Position() const { return m_position; }

  // Queues bytes, FreeSpace() at most.
  void Add(const unsigned char* bytes, unsigned int count) {
    if (count > static_cast<std::size_t>(m_end - m_head) - m_queued) MoveToFront();
    CopyBytes(m_head + m_queued, bytes, count);
    m_queued += count;
  }

  // Whether one byte, or a few, can be queued without moving the others, and the operations that queue them.
  bool HasPlace() const { return m_queued < m_capacity && m_head + m_queued < m_end; }
  bool HasPlace(unsigned int count) const {
    return count <= m_capacity - m_queued && count <= static_cast<std::size_t>(m_end - m_head) - m_queued;
  }
  void AddInPlace(unsigned char byte) { m_head[m_queued++] = byte; }
  void AddInPlace(const unsigned char* bytes, unsigned int count) {
    CopyShort(m_head + m_queued, bytes, count);
    m_queued += count;
  }

  // Copies the oldest bytes, `room` at most, and returns how many. A null pointer gets none.
  unsigned int Copy(unsigned char* out, unsigned int room) const;

  // Removes the oldest bytes; `count` is at most Queued().
  void Drop(unsigned int count) {
    m_head += count;
    m_queued -= count;
    m_position += count;
  }

  // The queued bytes. The pointer is valid until bytes are added or dropped. kReadAhead more can be read after them, of
  // any value, so a scan need not stop at the last byte.
  const unsigned char* Bytes() const { return m_head; }

 private:
  void MoveToFront();

  unsigned int m_capacity;
  std::unique_ptr<unsigned char[]> m_buffer;
  unsigned char* m_head;  // the oldest byte
  unsigned char* m_end;   // of the bytes that may be queued
  unsigned int m_queued = 0;
  // 64 bits: at 1 Gbit/s they last for thousands of years, so no position is ever reused.
  std::uint64_t m_position = 0;
};

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_QUEUE_WINDOW_H
