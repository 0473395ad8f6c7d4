#include "apps/velagnss/input/live/ChunkQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace Host {

C_ChunkQueue::C_ChunkQueue() : m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!m_wake.IsOpen()) throw std::system_error(errno, std::generic_category());
}

bool C_ChunkQueue::Push(std::span<const unsigned char> bytes) {
  const S_Chunk::t_Clock::time_point arrival = S_Chunk::t_Clock::now();
  std::unique_lock lock(m_mutex);
  WaitForRoom(lock);
  for (; !bytes.empty() && !m_isClosed; bytes = bytes.subspan(std::min(bytes.size(), kMaxPiece))) {
    const std::span<const unsigned char> piece = bytes.first(std::min(bytes.size(), kMaxPiece));
    m_bytes += piece.size();
    Add({{piece.begin(), piece.end()}, arrival, {}});
  }
  return !m_isClosed;
}

void C_ChunkQueue::Push(S_LinkChange change) {
  change.at = S_Chunk::t_Clock::now();
  std::unique_lock lock(m_mutex);
  WaitForRoom(lock);
  Add({{}, change.at, std::move(change)});
}

void C_ChunkQueue::PushEnd() {
  std::unique_lock lock(m_mutex);
  WaitForRoom(lock);
  Add({{}, S_Chunk::t_Clock::now(), {}, true});
}

void C_ChunkQueue::WaitForRoom(std::unique_lock<std::mutex>& lock) {
  m_hasRoom.wait(lock, [this] { return m_isClosed || (m_bytes < kMaxBytes && m_items.size() < kMaxItems); });
}

// The event counter is that of "something waits", not of items.
void C_ChunkQueue::Add(S_Item item) {
  m_items.push_back(std::move(item));
  const std::uint64_t one = 1;
  if (m_items.size() == 1) [[maybe_unused]]
    const ssize_t written = ::write(m_wake.Get(), &one, sizeof one);
}

std::optional<C_ChunkQueue::S_Item> C_ChunkQueue::Pop() {
  const std::scoped_lock lock(m_mutex);
  if (m_items.empty()) return std::nullopt;
  S_Item item = std::move(m_items.front());
  m_items.pop_front();
  m_bytes -= item.bytes.size();
  m_hasRoom.notify_one();
  std::uint64_t count = 0;
  if (m_items.empty()) [[maybe_unused]]
    const ssize_t got = ::read(m_wake.Get(), &count, sizeof count);
  return item;
}

void C_ChunkQueue::Close() {
  const std::scoped_lock lock(m_mutex);
  m_isClosed = true;
  m_hasRoom.notify_all();
}

}  // namespace Host
