#include "framing/CircularBuffer.h"

#include <deque>
#include <random>
#include <vector>

#include "tests/Cases.h"

namespace {

using t_Item = std::vector<unsigned char>;

// The rules of the queue over a deque: what the ring must look like from outside.
struct S_Model {
  unsigned int capacity;
  unsigned int policy;
  std::deque<t_Item> items;

  bool MakeRoom() {
    if (items.size() < capacity) return true;
    if (policy == eCircBufOvrflowDropOldest) Drop(1);
    if (policy == eCircBufOvrflowFlushAll) items.clear();
    return policy <= eCircBufOvrflowFlushAll;
  }
  void Queue(const t_Item& item) {
    if (MakeRoom() && capacity > 0) items.push_back(item);
  }
  void QueueN(std::vector<t_Item> batch) {
    if (batch.size() > capacity) {
      if (policy == eCircBufOvrflowRejectNew) return;
      batch.erase(batch.begin(), batch.end() - capacity);
    }
    if (items.size() + batch.size() > capacity) {
      if (policy > eCircBufOvrflowFlushAll) return;
      if (policy == eCircBufOvrflowFlushAll) items.clear();
      while (items.size() + batch.size() > capacity) items.pop_front();
    }
    items.insert(items.end(), batch.begin(), batch.end());
  }
  void Insert(const t_Item& item, std::size_t n) {
    if (MakeRoom() && capacity > 0) items.insert(items.begin() + std::min(n, items.size()), item);
  }
  void Drop(std::size_t n) { items.erase(items.begin(), items.begin() + std::min(n, items.size())); }
};

struct S_QueueCase {
  const char* name;
  unsigned int policy;
  unsigned int maxItems;
  unsigned int itemSize;
  bool isUsable = true;  // else the queue has no capacity
};

constexpr S_QueueCase kQueueCases[] = {
    {"DropOldest", eCircBufOvrflowDropOldest, 7, 1},
    {"DropOldestWide", eCircBufOvrflowDropOldest, 5, 3},
    {"FlushAll", eCircBufOvrflowFlushAll, 7, 1},
    {"FlushAllWide", eCircBufOvrflowFlushAll, 4, 5},
    {"RejectNew", eCircBufOvrflowRejectNew, 7, 1},
    {"RejectNewWide", eCircBufOvrflowRejectNew, 5, 2},
    {"NoSuchPolicy", 9, 6, 1},
    {"OneSlot", eCircBufOvrflowDropOldest, 1, 2},
    {"OneByte", eCircBufOvrflowFlushAll, 1, 1},
    {"NoItems", eCircBufOvrflowDropOldest, 0, 4, false},
    {"NoItemsFlush", eCircBufOvrflowFlushAll, 0, 4, false},
    {"NoItemsReject", eCircBufOvrflowRejectNew, 0, 4, false},
    {"NoItemSize", eCircBufOvrflowDropOldest, 4, 0, false},
    {"ProductOver32Bits", eCircBufOvrflowRejectNew, 0x10001, 0xFFFF0001, false},
};

std::deque<t_Item> Contents(C_CircularBuffer& queue) {
  std::deque<t_Item> items;
  for (unsigned int i = 0; i < queue.NumItems(); ++i) {
    const auto* slot = static_cast<const unsigned char*>(queue.PeekNthQueuedItem(i));
    items.emplace_back(slot, slot + queue.ItemSize());
  }
  return items;
}

// The same contents through the block copy and through the run at the head.
void ExpectOneView(C_CircularBuffer& queue) {
  const std::deque<t_Item> items = Contents(queue);
  std::vector<unsigned char> block((queue.NumItems() + 1) * queue.ItemSize());
  ASSERT_EQ(queue.PeekNItems(block.data(), queue.NumItems() + 1), items.size());
  unsigned int run = 0;
  const auto* head = static_cast<const unsigned char*>(queue.PeekHeadRun(run));
  for (std::size_t i = 0; i < items.size(); ++i) {
    ASSERT_EQ(std::memcmp(&block[i * queue.ItemSize()], items[i].data(), queue.ItemSize()), 0);
    const bool isInRun = i < run;
    ASSERT_TRUE(!isInRun || std::memcmp(head + i * queue.ItemSize(), items[i].data(), queue.ItemSize()) == 0);
  }
  EXPECT_EQ(queue.PeekNthQueuedItem(queue.NumItems()), nullptr);
}

// What both are given in a round: `n` items, also as bytes in a row, and one more.
struct S_Round {
  C_CircularBuffer& queue;
  S_Model& model;
  std::vector<t_Item> batch;
  std::vector<unsigned char> bytes;
  t_Item item;
  unsigned int n;
};

void TakeN(S_Round& r) {
  const std::size_t taken = std::min<std::size_t>(r.n, r.model.items.size());
  EXPECT_EQ(r.queue.DequeueNItems(r.bytes.data(), r.n), taken);
  for (std::size_t i = 0; i < taken; ++i)
    EXPECT_EQ(std::memcmp(&r.bytes[i * r.item.size()], r.model.items[i].data(), r.item.size()), 0);
  r.model.Drop(r.n);
}

constexpr void (*kOperations[])(S_Round& r) = {
    [](S_Round& r) { r.queue.QueueItem(r.item.data()), r.model.Queue(r.item); },
    [](S_Round& r) { r.queue.QueueNItems(r.bytes.data(), r.n), r.model.QueueN(r.batch); },
    [](S_Round& r) { r.queue.QueueItemBeforeNth(r.item.data(), r.n), r.model.Insert(r.item, r.n); },
    [](S_Round& r) {
      EXPECT_EQ(r.queue.DequeueItem() != nullptr, !r.model.items.empty());
      r.model.Drop(1);
    },
    &TakeN,
    [](S_Round& r) { r.queue.FlushItems(r.n), r.model.Drop(r.n); },
    [](S_Round& r) {
      if (r.n == 0) r.queue.Reset(), r.model.items.clear();
    },
    [](S_Round& r) { EXPECT_EQ(r.queue.NewItemOverflowProtect(), r.model.MakeRoom()); },
};

TEST_ROWS(CircularBuffer, DoesWhatASimpleModelDoes, kQueueCases, c) {
  const unsigned int capacity = c.isUsable ? c.maxItems : 0;
  const unsigned int itemSize = c.isUsable ? c.itemSize : 8;
  C_CircularBuffer queue(c.maxItems, c.itemSize, static_cast<eCircBufOvrflowHandling>(c.policy));
  ASSERT_EQ(queue.MaxNumItems(), capacity);
  S_Model model{capacity, c.policy, {}};
  std::mt19937 random(1);
  unsigned char next = 0;
  for (int i = 0; i < 20000; ++i) {
    const unsigned int n = static_cast<unsigned int>(random()) % (capacity + 3);
    S_Round round{queue, model, std::vector<t_Item>(n), std::vector<unsigned char>((capacity + 3) * itemSize), {}, n};
    for (unsigned int k = 0; k < n; ++k) {
      round.batch[k].assign(itemSize, ++next);
      std::copy(round.batch[k].begin(), round.batch[k].end(), &round.bytes[k * itemSize]);
    }
    round.item.assign(itemSize, ++next);
    kOperations[random() % std::size(kOperations)](round);
    ASSERT_EQ(Contents(queue), model.items) << "round " << i;
    ASSERT_EQ(queue.IsQueueFull(), model.items.size() == capacity);
    if (c.isUsable) ExpectOneView(queue);
  }
}

TEST(CircularBufferReset, LeavesEveryByteZero) {
  C_CircularBuffer queue(4, 2, eCircBufOvrflowDropOldest);
  const unsigned char items[] = {1, 2, 3, 4, 5, 6, 7, 8};
  queue.QueueNItems(items, 3);
  queue.FlushItems(2);
  queue.QueueNItems(items, 3);  // across the end
  const auto* oldest = static_cast<const unsigned char*>(queue.PeekNthQueuedItem(0));
  const unsigned char* storage = oldest - 4;
  unsigned char out[8];
  EXPECT_EQ(queue.DequeueNItems(out, 9), 4U);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(storage[i], 0) << i;
  queue.QueueItem(items);
  EXPECT_EQ(queue.PeekNthQueuedItem(0), storage) << "a drained queue starts over at its first slot";
}

TEST(CircularBufferNull, ChangesNothing) {
  C_CircularBuffer queue(2, 1, eCircBufOvrflowDropOldest);
  queue.QueueNItems("ab", 2);
  unsigned char out = 0;
  queue.QueueItem(nullptr);
  queue.QueueNItems(nullptr, 2);
  queue.QueueItemBeforeNth(nullptr, 0);
  EXPECT_EQ(queue.DequeueNItems(nullptr, 1), 0U);
  EXPECT_FALSE(queue.CopyNthQueuedItem(0, nullptr));
  EXPECT_FALSE(queue.CopyNthQueuedItem(2, &out));
  EXPECT_TRUE(queue.CopyNthQueuedItem(1, &out));
  EXPECT_EQ(out, 'b');
  EXPECT_EQ(queue.NumItems(), 2U);
}

}  // namespace
