// A piece of a stream that goes from stage to stage of a pipeline: its items with what has been found out about them.
#ifndef VELAGNSS_APPS_FRAME_BLOCK_H
#define VELAGNSS_APPS_FRAME_BLOCK_H

#include <memory>
#include <span>
#include <vector>

#include "stream/FrameReader.h"
#include "stream/RecordDecoder.h"
#include "stream/StreamClock.h"

namespace Host {

struct S_BlockItem {
  velagnss::StreamItem item;      // its bytes are those of the block
  velagnss::StreamTotals totals;  // of the stream up to here
  velagnss::StreamClock clock;    // has noted the frame
  bool isPrepared = false;        // `Follow` completes the record
  bool isInRange = true;
  bool isWanted = true;
  velagnss::DecodedFrame decoded;  // of a frame; decoded in place, because it is large
};

// What is still to be done for a block when its items have been seen in order. It depends on no other block.
class C_BlockWork {
 public:
  virtual ~C_BlockWork() = default;

  // On any thread, at the same time as that of other blocks. The items are still there.
  virtual void Do() = 0;
};

// Memory is allocated once. Blocks are small, so that what one stage has written is still in the cache for the next.
class C_FrameBlock {
 public:
  explicit C_FrameBlock(std::size_t maxItems);

  void Clear() { m_size = m_bytesUsed = 0; }
  bool IsEmpty() const { return m_size == 0; }
  bool IsFull() const { return m_size == m_maxItems || kMaxBytes - m_bytesUsed < kMaxItemBytes; }

  // Copies the item with its bytes. The block must not be full.
  void Add(const velagnss::StreamItem& item, const velagnss::StreamTotals& totals);

  std::span<S_BlockItem> Items() { return {m_items.get(), m_size}; }

  // One for each consumer, null for those that have none.
  std::vector<std::unique_ptr<C_BlockWork>> works;

 private:
  static constexpr std::size_t kMaxItemBytes = 2048;  // of a frame; skipped ranges and rejected starts show fewer
  static constexpr std::size_t kMaxBytes = 1 << 16;

  const unsigned char* Copy(const unsigned char* bytes, std::size_t size);

  std::size_t m_maxItems;
  std::unique_ptr<S_BlockItem[]> m_items;
  std::size_t m_size = 0;
  std::unique_ptr<unsigned char[]> m_bytes;
  std::size_t m_bytesUsed = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_BLOCK_H
