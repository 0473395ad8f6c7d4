// A list that keeps its first entries and counts all: noise without end must not fill the memory.
#ifndef VELAGNSS_APPS_BOUNDED_LIST_H
#define VELAGNSS_APPS_BOUNDED_LIST_H

#include <cstdint>
#include <vector>

namespace Host {

template <class Entry>
class C_BoundedList {
 public:
  static constexpr std::size_t kCapacity = 1000;

  void Add(const Entry& entry) {
    if (m_entries.size() < kCapacity) m_entries.push_back(entry);
    ++m_count;
  }
  // Entries of another list, which are counted only.
  void AddCount(std::uint64_t count) { m_count += count; }

  const std::vector<Entry>& Entries() const { return m_entries; }
  std::uint64_t Count() const { return m_count; }

 private:
  std::vector<Entry> m_entries;
  std::uint64_t m_count = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_BOUNDED_LIST_H
