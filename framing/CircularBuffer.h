// A bounded first-in-first-out queue of fixed-size items in one contiguous ring of storage.
//
// For hosts that queue bytes or records of their own. Items are opaque: the queue copies them and never looks inside.
#ifndef VELAGNSS_FRAMING_CIRCULAR_BUFFER_H
#define VELAGNSS_FRAMING_CIRCULAR_BUFFER_H

#include <cstddef>
#include <cstring>
#include <memory>

#include "velagnss_export.h"

// What happens to an item when the queue is full. Any other value refuses like `eCircBufOvrflowRejectNew`, except
// that a batch longer than the capacity is first cut to its last `MaxNumItems()` items.
enum eCircBufOvrflowHandling : unsigned int {
  eCircBufOvrflowDropOldest = 0,  // the oldest items make room
  eCircBufOvrflowFlushAll = 1,    // the whole queue is emptied
  eCircBufOvrflowRejectNew = 2,   // nothing is queued, the queue stays as it was
};

// Allocates memory only at construction. One thread at a time; not copyable. The inline operations make the layout part
// of the binary interface: a change of the private members is a change of the library's major version.
//
// "Reset" below means: no items, both ends at slot 0, every byte of storage zero.
class VELAGNSS_API C_CircularBuffer {
 public:
  // A queue of at most `maxItems` items of `itemSize` bytes each. When either is 0, or their product passes 32 bits,
  // the queue has capacity 0: it is always full, and nothing can be written to it.
  C_CircularBuffer(unsigned int maxItems, unsigned int itemSize, eCircBufOvrflowHandling overflowHandling);
  ~C_CircularBuffer();
  C_CircularBuffer(const C_CircularBuffer&) = delete;
  C_CircularBuffer& operator=(const C_CircularBuffer&) = delete;

  // Empties the queue as above; capacity, item size and policy stay.
  void Reset();

  // Replaces the policy; what is queued stays.
  void SetOverflowHandling(eCircBufOvrflowHandling overflowHandling);

  // Items queued, the capacity in items, the bytes of one item, and whether the policy applies to the next item.
  unsigned int NumItems() const { return m_numItems; }
  unsigned int MaxNumItems() const { return m_maxItems; }
  unsigned int ItemSize() const { return m_itemSize; }
  bool IsQueueFull() const { return m_numItems >= m_maxItems; }

  // Queues a copy of one item, if the policy makes room for it. Null: nothing happens.
  void QueueItem(const void* item);

  // Queues `n` consecutive items. Under `eCircBufOvrflowRejectNew` all of them or none; under the other two policies
  // the newest data wins: of a batch longer than the capacity its last `MaxNumItems()` items. Null: nothing happens.
  void QueueNItems(const void* items, unsigned int n) {
    const bool fitsInOnePiece = n <= m_maxItems - m_numItems && n < m_maxItems - m_tailIndex;
    if (items == nullptr || !fitsInOnePiece) {
      QueueAcrossEnd(items, n);
      return;
    }
    Write(m_tailIndex, items, n);
    m_tailIndex += n;
    m_numItems += n;
  }

  // Inserts a copy of one item so that it becomes the n-th queued one (0 is the oldest); with n >= NumItems() it is
  // queued last. Room is made first: where that drops the oldest item, `n` counts from the new oldest. Moves the items
  // after it, one slot each.
  void QueueItemBeforeNth(const void* item, unsigned int n);

  // Removes the oldest item. Returns its slot, whose bytes stay until the slot is written again; null when empty.
  void* DequeueItem();

  // Moves up to `n` of the oldest items to `dest`, in order, and returns how many. Taking all that is queued (n >=
  // NumItems()) resets the queue. Null: 0, nothing happens.
  unsigned int DequeueNItems(void* dest, unsigned int n);

  // Copies up to `n` of the oldest items to `dest`, which must not be null, and returns how many. They stay queued.
  unsigned int PeekNItems(void* dest, unsigned int n);

  // The slot of the n-th queued item (0 is the oldest), where a host may also change it; null when n >= NumItems().
  void* PeekNthQueuedItem(unsigned int n) const;

  // Copies the n-th queued item; false when there is none or `dest` is null.
  bool CopyNthQueuedItem(unsigned int n, void* dest) const;

  // Discards the `n` oldest items; n >= NumItems() resets the queue.
  void FlushItems(unsigned int n) {
    if (n >= m_numItems) {
      Reset();
      return;
    }
    m_numItems -= n;
    m_headIndex = Advanced(m_headIndex, n);
  }

  // Makes room for one more item by the policy; true when one may now be written. On a queue of capacity 0 the result
  // follows the policy too (true for the first two), although nothing can be written there.
  bool NewItemOverflowProtect();

  // The oldest items as far as they lie in one piece, for readers that scan in place: a pointer to the first and, in
  // `count`, their number (all that are queued, unless they wrap at the ring's end).
  const void* PeekHeadRun(unsigned int& count) const {
    const unsigned int toEnd = m_maxItems - m_headIndex;
    count = m_numItems < toEnd ? m_numItems : toEnd;
    return Slot(m_headIndex);
  }

 private:
  // The slot that is `n` items (at most m_maxItems) after `slot`.
  unsigned int Advanced(unsigned int slot, unsigned int n) const {
    const unsigned int toEnd = m_maxItems - slot;
    return n < toEnd ? slot + n : n - toEnd;
  }
  unsigned int Next(unsigned int slot) const { return slot + 1 < m_maxItems ? slot + 1 : 0; }
  unsigned char* Slot(unsigned int slot) const { return m_storage.get() + std::size_t{slot} * m_itemSize; }
  void QueueAcrossEnd(const void* items, unsigned int n);  // or when the policy must make room
  void Write(unsigned int slot, const void* items, unsigned int n) {
    unsigned char* const dest = Slot(slot);
    const std::size_t bytes = std::size_t{n} * m_itemSize;
    if (bytes == 1) {
      *dest = *static_cast<const unsigned char*>(items);  // a stream that comes byte by byte
    } else {
      std::memcpy(dest, items, bytes);
    }
    const std::size_t end = static_cast<std::size_t>(dest - m_storage.get()) + bytes;
    if (m_dirtyBytes < end) m_dirtyBytes = end;
  }
  void Read(void* dest, unsigned int n) const;

  unsigned int m_maxItems;
  unsigned int m_itemSize;
  std::unique_ptr<unsigned char[]> m_storage;
  eCircBufOvrflowHandling m_overflowHandling;
  unsigned int m_numItems = 0;
  unsigned int m_headIndex = 0;  // slot of the oldest item
  unsigned int m_tailIndex = 0;  // slot of the next new item: (m_headIndex + m_numItems) % m_maxItems
  std::size_t m_dirtyBytes = 0;  // bytes from here on are zero: a reset clears no more than was written
};

#endif  // VELAGNSS_FRAMING_CIRCULAR_BUFFER_H
