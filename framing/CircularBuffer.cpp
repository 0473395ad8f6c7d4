#include "framing/CircularBuffer.h"

#include <algorithm>
#include <cstring>

namespace {

// The byte count of the storage must fit 32 bits, as the item counts do; in 64 bits the product cannot overflow.
bool IsUsable(unsigned int maxItems, unsigned int itemSize) {
  const unsigned long long bytes = 1ULL * maxItems * itemSize;
  return bytes > 0 && bytes <= 0xFFFFFFFF;
}

}  // namespace

// An unusable size gives capacity 0 rather than an exception: such a queue stays empty, and all operations are safe.
C_CircularBuffer::C_CircularBuffer(unsigned int maxItems, unsigned int itemSize,
                                   eCircBufOvrflowHandling overflowHandling)
    : m_maxItems(IsUsable(maxItems, itemSize) ? maxItems : 0),
      m_itemSize(itemSize),
      m_storage(new unsigned char[std::size_t{m_maxItems} * itemSize]()),
      m_overflowHandling(overflowHandling) {}

C_CircularBuffer::~C_CircularBuffer() = default;

// The recognizer resets its queue at every drained piece of a stream, so clearing the whole ring would dominate: only
// bytes that were written since the last reset can be other than zero.
void C_CircularBuffer::Reset() {
  m_numItems = 0;
  m_headIndex = 0;
  m_tailIndex = 0;
  if (m_dirtyBytes > 0) std::memset(m_storage.get(), 0, m_dirtyBytes);
  m_dirtyBytes = 0;
}

void C_CircularBuffer::SetOverflowHandling(eCircBufOvrflowHandling overflowHandling) {
  m_overflowHandling = overflowHandling;
}

// A queue that is both empty and full has capacity 0, and thus no oldest item to drop.
bool C_CircularBuffer::NewItemOverflowProtect() {
  if (m_numItems < m_maxItems) return true;
  switch (m_overflowHandling) {
    case eCircBufOvrflowDropOldest:
      if (m_numItems == 0) {
        Reset();
      } else {
        --m_numItems;
        m_headIndex = Next(m_headIndex);
      }
      return true;
    case eCircBufOvrflowFlushAll:
      Reset();
      return true;
    default:
      return false;
  }
}

void C_CircularBuffer::QueueItem(const void* item) {
  // The policy may agree even where there is no slot at all.
  if (item == nullptr || !NewItemOverflowProtect() || m_maxItems == 0) return;
  Write(m_tailIndex, item, 1);
  m_tailIndex = Next(m_tailIndex);
  ++m_numItems;
}

// Policies are compared by value, not listed: every number above the known ones refuses, but cuts a long batch first.
void C_CircularBuffer::QueueAcrossEnd(const void* items, unsigned int n) {
  if (items == nullptr || m_maxItems == 0) return;
  const unsigned char* source = static_cast<const unsigned char*>(items);
  if (n > m_maxItems) {
    if (m_overflowHandling == eCircBufOvrflowRejectNew) return;
    source += std::size_t{n - m_maxItems} * m_itemSize;
    n = m_maxItems;
  }
  const unsigned int free = m_maxItems - m_numItems;
  if (n > free) {
    if (m_overflowHandling > eCircBufOvrflowFlushAll) return;
    FlushItems(m_overflowHandling == eCircBufOvrflowDropOldest ? n - free : m_numItems);
  }
  // At most two copies: up to the end of the ring, then from its start.
  const unsigned int first = std::min(n, m_maxItems - m_tailIndex);
  Write(m_tailIndex, source, first);
  if (first < n) Write(0, source + std::size_t{first} * m_itemSize, n - first);
  m_tailIndex = Advanced(m_tailIndex, n);
  m_numItems += n;
}

// Moves the later items back one slot each, from the tail so that none is overwritten before it has moved.
void C_CircularBuffer::QueueItemBeforeNth(const void* item, unsigned int n) {
  if (item == nullptr || !NewItemOverflowProtect()) return;
  if (n >= m_numItems) {
    QueueItem(item);
    return;
  }
  const unsigned int place = Advanced(m_headIndex, n);
  for (unsigned int slot = m_tailIndex; slot != place;) {
    const unsigned int before = slot == 0 ? m_maxItems - 1 : slot - 1;
    Write(slot, Slot(before), 1);
    slot = before;
  }
  Write(place, item, 1);
  m_tailIndex = Next(m_tailIndex);
  ++m_numItems;
}

// The slot is not cleared, because the caller reads it after this.
void* C_CircularBuffer::DequeueItem() {
  if (m_numItems == 0) return nullptr;
  unsigned char* item = Slot(m_headIndex);
  m_headIndex = Next(m_headIndex);
  --m_numItems;
  return item;
}

// At most two copies: up to the end of the ring, then from its start. An empty queue may have no storage to point into.
void C_CircularBuffer::Read(void* dest, unsigned int n) const {
  if (n == 0) return;
  const unsigned int first = std::min(n, m_maxItems - m_headIndex);
  const std::size_t firstBytes = std::size_t{first} * m_itemSize;
  std::memcpy(dest, Slot(m_headIndex), firstBytes);
  std::memcpy(static_cast<unsigned char*>(dest) + firstBytes, m_storage.get(), std::size_t{n - first} * m_itemSize);
}

// Flushes by what was asked, not by what was copied: asking for all or more resets the queue.
unsigned int C_CircularBuffer::DequeueNItems(void* dest, unsigned int n) {
  if (dest == nullptr) return 0;
  const unsigned int count = PeekNItems(dest, n);
  FlushItems(n);
  return count;
}

unsigned int C_CircularBuffer::PeekNItems(void* dest, unsigned int n) {
  const unsigned int count = std::min(n, m_numItems);
  Read(dest, count);
  return count;
}

void* C_CircularBuffer::PeekNthQueuedItem(unsigned int n) const {
  if (n >= m_numItems) return nullptr;
  return Slot(Advanced(m_headIndex, n));
}

// A copy, for hosts that must not hold a pointer into the ring.
bool C_CircularBuffer::CopyNthQueuedItem(unsigned int n, void* dest) const {
  const void* item = PeekNthQueuedItem(n);
  if (item == nullptr || dest == nullptr) return false;
  std::memcpy(dest, item, m_itemSize);
  return true;
}
