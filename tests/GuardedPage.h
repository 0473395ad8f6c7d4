// Bytes whose neighbours cannot be read: what runs past their end dies at once, in every build.
#ifndef VELAGNSS_TESTS_GUARDED_PAGE_H
#define VELAGNSS_TESTS_GUARDED_PAGE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

// A run of readable pages with an unreadable one on each side.
class GuardedPage {
 public:
  // Room for `capacity` bytes.
  explicit GuardedPage(std::size_t capacity) : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    m_room = (capacity + m_page - 1) / m_page * m_page;
    void* const memory = mmap(nullptr, m_room + 2 * m_page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    m_base = static_cast<unsigned char*>(memory);
    if (mprotect(m_base + m_page, m_room, PROT_READ | PROT_WRITE) != 0) std::abort();
  }
  GuardedPage(const GuardedPage&) = delete;
  GuardedPage& operator=(const GuardedPage&) = delete;
  ~GuardedPage() { munmap(m_base, m_room + 2 * m_page); }

  // A copy of the bytes whose last one is the last readable byte; the next call overwrites it.
  unsigned char* AtEnd(std::string_view bytes) { return Place(bytes, m_base + m_page + m_room - bytes.size()); }

  // A copy of the bytes whose first one is the first readable byte.
  unsigned char* AtStart(std::string_view bytes) { return Place(bytes, m_base + m_page); }

 private:
  unsigned char* Place(std::string_view bytes, unsigned char* where) {
    if (bytes.size() > m_room) std::abort();
    if (!bytes.empty()) std::memcpy(where, bytes.data(), bytes.size());
    return where;
  }

  std::size_t m_page;
  std::size_t m_room = 0;
  unsigned char* m_base = nullptr;
};

#endif  // VELAGNSS_TESTS_GUARDED_PAGE_H
