// What a live source has for the program's main thread: pieces of bytes and changes of state, in their order.
#ifndef VELAGNSS_APPS_CHUNK_QUEUE_H
#define VELAGNSS_APPS_CHUNK_QUEUE_H

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "apps/velagnss/input/ByteSource.h"
#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

class C_ChunkQueue {
 public:
  // Of bytes that wait. A source that is ahead by as much is read no further: TCP then holds the sender back, and the
  // kernel drops what other kinds send.
  static constexpr std::size_t kMaxBytes = std::size_t{4} << 20;
  static constexpr std::size_t kMaxItems = 8192;  // pieces can be as short as a byte

  struct S_Item {
    std::vector<unsigned char> bytes;  // empty: a change
    S_Chunk::t_Clock::time_point arrival;
    S_LinkChange change;
    bool isEnd = false;  // instead of a change: nothing follows
  };

  C_ChunkQueue();

  // Readable while something waits.
  int Descriptor() const { return m_wake.Get(); }

  static constexpr std::size_t kMaxPiece = 1 << 16;  // of an item

  // Adds bytes that have just been read. False after `Close`.
  bool Push(std::span<const unsigned char> bytes);
  // Adds a change of now.
  void Push(S_LinkChange change);
  // The last of the source.
  void PushEnd();

  // Never waits.
  std::optional<S_Item> Pop();

  // Nothing more is wanted: `Push`, which otherwise waits for room, returns at once.
  void Close();

 private:
  void WaitForRoom(std::unique_lock<std::mutex>& lock);
  void Add(S_Item item);

  C_FileDescriptor m_wake;
  std::mutex m_mutex;
  std::condition_variable m_hasRoom;
  std::deque<S_Item> m_items;
  std::size_t m_bytes = 0;
  bool m_isClosed = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_CHUNK_QUEUE_H
