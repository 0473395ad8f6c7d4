// What every decoder promises, whatever the bytes.
#ifndef VELAGNSS_FUZZ_DECODE_CHECKS_H
#define VELAGNSS_FUZZ_DECODE_CHECKS_H

#include <memory>

#include "fuzz/Fuzz.h"

namespace Fuzz {

// Memory as its last owner may have left it.
template <class Record>
std::unique_ptr<Record> FilledWith(unsigned char byte) {
  auto record = std::make_unique<Record>();
  std::memset(static_cast<void*>(record.get()), byte, sizeof(Record));
  return record;
}

template <class Record>
bool AreSameBytes(const Record& a, const Record& b, std::size_t size = sizeof(Record)) {
  return std::memcmp(&a, &b, size) == 0;
}

// Decodes into records that held other bytes before: `decode(record)` gives the same result each time, and the same
// record, padding included; after a failure too if `isAlwaysWritten`. Gives back the result. `size`: of a member of a
// union, when it is that which is decoded.
template <class Record, class Decode>
unsigned int DecodeOverAnyMemory(Decode decode, bool isAlwaysWritten, std::size_t size = sizeof(Record)) {
  const auto first = FilledWith<Record>(0x00);
  const unsigned int result = decode(*first);
  constexpr unsigned char kOthers[] = {0xAA, 0xFF};
  for (const unsigned char byte : kOthers) {
    const auto other = FilledWith<Record>(byte);
    Require(decode(*other) == result, "the result does not depend on what the record held");
    if (result == 0 || isAlwaysWritten)
      Require(AreSameBytes(*first, *other, size), "the record does not depend on what it held");
  }
  return result;
}

// A good frame decodes the same whatever its decoder was given before: built before a foreign frame, checked after.
template <class Record, class Decode>
class C_GoodFrame {
 public:
  explicit C_GoodFrame(Decode decode) : m_decode(decode), m_before(FilledWith<Record>(0)) {
    m_result = m_decode(*m_before);
  }
  void RequireSame() {
    const auto after = FilledWith<Record>(0x55);
    Require(m_decode(*after) == m_result && AreSameBytes(*after, *m_before), "a good frame decodes as before");
  }

 private:
  Decode m_decode;
  std::unique_ptr<Record> m_before;
  unsigned int m_result;
};

template <class Record, class Decode>
C_GoodFrame<Record, Decode> GoodFrame(Decode decode) {
  return C_GoodFrame<Record, Decode>(decode);
}

}  // namespace Fuzz

#endif  // VELAGNSS_FUZZ_DECODE_CHECKS_H
