// Helpers for tests that are tables of named cases.
#ifndef VELAGNSS_TESTS_CASES_H
#define VELAGNSS_TESTS_CASES_H

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

// Names a parameterised test after its case's `name`.
template <class Case>
std::string CaseName(const testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

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

#endif  // VELAGNSS_TESTS_CASES_H
