// What a consumer makes of a stream for one after it, where both have a stage of their own.
#ifndef VELAGNSS_APPS_HANDOVER_H
#define VELAGNSS_APPS_HANDOVER_H

#include <cstdint>
#include <deque>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

namespace Host {

// The maker is blocks ahead of the taker, which must nevertheless get things at the frame that they were made at, as if
// both got each frame in turn. Both pass on `BeginBlock` and `EndBlock` of their own.
//
// Outside of blocks the taker gets what was made since the last block. No more blocks wait than the pipeline has.
template <class Thing>
class C_Handover {
 public:
  static constexpr std::uint64_t kEnd = std::numeric_limits<std::uint64_t>::max();  // of the input: after all frames

  // By the maker, at a frame with this offset.
  void Make(std::uint64_t offset, Thing thing) { m_made.emplace_back(offset, std::move(thing)); }
  void EndMaking() {
    const std::lock_guard lock(m_mutex);
    m_blocks.push_back(std::exchange(m_made, {}));
  }

  // By the taker.
  void BeginTaking() {
    const std::lock_guard lock(m_mutex);
    m_taken = std::move(m_blocks.front());
    m_blocks.pop_front();
    m_isInBlock = true;
  }
  void EndTaking() { m_isInBlock = false; }

  // Calls `take` with all that was made up to the frame with this offset and has not been taken.
  template <class Take>
  void TakeUpTo(std::uint64_t offset, const Take& take) {
    t_Things& things = m_isInBlock ? m_taken : m_made;
    while (m_next < things.size() && things[m_next].first <= offset) take(std::move(things[m_next++].second));
    if (m_next < things.size()) return;
    things.clear();
    m_next = 0;
  }

 private:
  using t_Things = std::vector<std::pair<std::uint64_t, Thing>>;  // with the offsets of their frames

  t_Things m_made;  // since the last block
  std::mutex m_mutex;
  std::deque<t_Things> m_blocks;  // to be taken
  t_Things m_taken;               // of them the one that is
  std::size_t m_next = 0;         // of the things that are taken
  bool m_isInBlock = false;       // the taker is
};

}  // namespace Host

#endif  // VELAGNSS_APPS_HANDOVER_H
