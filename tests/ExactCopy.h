// Bytes in a block of their own, for whatever must not read past them.
#ifndef VELAGNSS_TESTS_EXACT_COPY_H
#define VELAGNSS_TESTS_EXACT_COPY_H

#include <cstring>
#include <memory>
#include <string_view>

// A copy of `bytes` on the heap in a block of exactly that size, so that the address sanitizer guards both ends.
class ExactCopy {
 public:
  explicit ExactCopy(std::string_view bytes) : m_size(bytes.size()), m_block(new unsigned char[bytes.size()]) {
    if (!bytes.empty()) std::memcpy(m_block.get(), bytes.data(), bytes.size());
  }
  unsigned char* Data() { return m_block.get(); }
  unsigned short Size() const { return static_cast<unsigned short>(m_size); }

 private:
  std::size_t m_size;
  std::unique_ptr<unsigned char[]> m_block;
};

#endif  // VELAGNSS_TESTS_EXACT_COPY_H
