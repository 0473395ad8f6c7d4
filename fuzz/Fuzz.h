// What the fuzz targets share. A target is one source: LLVMFuzzerTestOneInput takes the input, and `Require` ends the
// program where a property does not hold. Memory and undefined behaviour are watched by the sanitizers.
#ifndef VELAGNSS_FUZZ_FUZZ_H
#define VELAGNSS_FUZZ_FUZZ_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>

// What libFuzzer calls, and what it offers; see its documentation.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed);
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace Fuzz {

inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s\n", property);
  std::abort();
}

inline void RequireOneOf(unsigned int result, std::initializer_list<unsigned int> results, const char* operation) {
  if (std::find(results.begin(), results.end(), result) != results.end()) return;
  std::fprintf(stderr, "%s answers %u\n", operation, result);
  std::abort();
}

inline std::string_view View(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Takes an input apart from its front. Beyond its end, it reads as 0.
class C_Input {
 public:
  C_Input(const std::uint8_t* data, std::size_t size) : m_rest(View(data, size)) {}

  bool IsEmpty() const { return m_rest.empty(); }

  // A number of as many bytes as its type has.
  template <class Number>
  Number Value() {
    Number value = 0;
    const std::string bytes = Take(sizeof value);
    std::memcpy(&value, bytes.data(), bytes.size());
    return value;
  }

  // A number below the limit, from as few bytes as hold it.
  unsigned int Below(std::size_t limit) {
    const auto value = limit > 256 ? Value<std::uint16_t>() : Value<std::uint8_t>();
    return static_cast<unsigned int>(value % limit);
  }

  // The next `count` bytes, or as many as there are.
  std::string Take(std::size_t count) {
    const std::string taken(m_rest.substr(0, count));
    m_rest.remove_prefix(taken.size());
    return taken;
  }
  std::string Rest() { return Take(m_rest.size()); }

 private:
  std::string_view m_rest;
};

// The body of a custom mutator: changes the input as libFuzzer does, then lets `repair` make it whole again, so that
// the code after the checks is reached. One input in eight is left as it came.
template <class Repair>
std::size_t Mutate(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned int seed, Repair repair) {
  size = LLVMFuzzerMutate(data, size, maxSize);
  std::minstd_rand random(seed);
  if (random() % 8 == 0) return size;
  std::string whole(View(data, size));
  repair(whole, random);
  whole.resize(std::min(whole.size(), maxSize));
  std::copy(whole.begin(), whole.end(), data);
  return whole.size();
}

}  // namespace Fuzz

#endif  // VELAGNSS_FUZZ_FUZZ_H
