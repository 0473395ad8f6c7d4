#include "apps/velagnss/pipeline/FrameBlock.h"

#include <algorithm>

namespace Host {

C_FrameBlock::C_FrameBlock(std::size_t maxItems)
    : m_maxItems(maxItems), m_items(new S_BlockItem[maxItems]), m_bytes(new unsigned char[kMaxBytes]) {}

void C_FrameBlock::Add(const velagnss::StreamItem& item, const velagnss::StreamTotals& totals) {
  S_BlockItem& to = m_items[m_size++];
  to.item = item;
  to.totals = totals;
  if (auto* const frame = std::get_if<velagnss::Frame>(&to.item))
    frame->data = Copy(frame->data, frame->length);
  else if (auto* const start = std::get_if<velagnss::RejectedStart>(&to.item))
    start->data = Copy(start->data, start->size);
  else if (auto* const range = std::get_if<velagnss::SkippedRange>(&to.item))
    range->data = Copy(range->data, range->size);
}

const unsigned char* C_FrameBlock::Copy(const unsigned char* bytes, std::size_t size) {
  unsigned char* const place = m_bytes.get() + m_bytesUsed;
  std::copy_n(bytes, size, place);
  m_bytesUsed += size;
  return place;
}

}  // namespace Host
