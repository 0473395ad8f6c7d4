#include "bench/BareFramer.h"

#ifdef __AVX2__

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "framing/CRC24.h"
#include "framing/FrameRecognizer.h"
#include "framing/MessageLengths.h"
#include "textproto/SentenceIds.h"

namespace {

using namespace velagnss;
using t_Byte = unsigned char;

constexpr t_Byte kPreamble = 0xD3;
constexpr std::size_t kBlock = sizeof(__m256i);

// Position of the first byte in [from, to) that `marks` finds in blocks and `isMark` one at a time; `to` for none.
template <class Marks, class IsMark>
std::size_t Find(const t_Byte* bytes, std::size_t from, std::size_t to, Marks marks, IsMark isMark) {
  for (; from + kBlock <= to; from += kBlock) {
    const auto found = static_cast<unsigned int>(
        _mm256_movemask_epi8(marks(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + from)))));
    if (found != 0) return from + static_cast<std::size_t>(std::countr_zero(found));
  }
  while (from < to && !isMark(bytes[from])) ++from;
  return from;
}

bool IsStart(t_Byte byte) { return byte == '$' || byte == kPreamble; }

std::size_t FindStart(const t_Byte* bytes, std::size_t from, std::size_t to) {
  const __m256i dollar = _mm256_set1_epi8('$');
  const __m256i preamble = _mm256_set1_epi8(static_cast<char>(kPreamble));
  const auto marks = [&](__m256i block) {
    return _mm256_or_si256(_mm256_cmpeq_epi8(block, dollar), _mm256_cmpeq_epi8(block, preamble));
  };
  return Find(bytes, from, to, marks, IsStart);
}

std::size_t FindControl(const t_Byte* bytes, std::size_t from, std::size_t to) {
  const __m256i greatest = _mm256_set1_epi8(31);
  const auto marks = [&](__m256i block) { return _mm256_cmpeq_epi8(_mm256_min_epu8(block, greatest), block); };
  return Find(bytes, from, to, marks, [](t_Byte byte) { return byte < 32; });
}

// The checksum by 16 tables: table s has the sums of a byte that s zero bytes follow.
const auto kSums = [] {
  std::array<std::array<std::uint32_t, 256>, 16> sums = {};
  std::copy_n(C_CRC24::mu32CRC_Table, 256, sums[0].begin());
  for (std::size_t s = 1; s < sums.size(); ++s) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t before = sums[s - 1][byte];
      sums[s][byte] = (before << 8 & 0xFFFFFF) ^ sums[0][before >> 16];
    }
  }
  return sums;
}();

std::uint32_t Crc(const t_Byte* bytes, std::size_t count) {
  std::uint32_t crc = 0;
  for (; count >= 16; bytes += 16, count -= 16) {
    std::uint32_t next =
        kSums[15][bytes[0] ^ crc >> 16] ^ kSums[14][bytes[1] ^ (crc >> 8 & 255)] ^ kSums[13][bytes[2] ^ (crc & 255)];
    for (std::size_t i = 3; i < 16; ++i) next ^= kSums[15 - i][bytes[i]];
    crc = next;
  }
  for (; count > 0; ++bytes, --count) crc = (crc << 8 & 0xFFFFFF) ^ kSums[0][crc >> 16 ^ *bytes];
  return crc;
}

t_Byte XorOf(const t_Byte* bytes, std::size_t count) {
  std::uint64_t folded = 0;
  for (; count >= sizeof folded; bytes += sizeof folded, count -= sizeof folded) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    folded ^= word;
  }
  for (const int shift : {32, 16, 8}) folded ^= folded >> shift;
  auto sum = static_cast<t_Byte>(folded);
  for (; count > 0; ++bytes, --count) sum = static_cast<t_Byte>(sum ^ *bytes);
  return sum;
}

int HexDigit(t_Byte byte) {
  if (byte >= '0' && byte <= '9') return byte - '0';
  return byte >= 'A' && byte <= 'F' ? byte - 'A' + 10 : -1;
}

const auto kIsRtcmNumber = [] {
  std::array<bool, 4096> accepted = {};
  for (unsigned int number = 0; number < accepted.size(); ++number)
    accepted[number] = C_FrameRecognizer::IsASupportedRtcm3Type(number);
  return accepted;
}();

// The frame that begins at `frame`, of which `held` bytes are there: its length; kFalse for a false start, and kMore
// when bytes are missing.
constexpr std::size_t kFalse = 0;
constexpr std::size_t kMore = static_cast<std::size_t>(-1);

std::size_t RtcmFrame(const t_Byte* frame, std::size_t held) {
  if (held < 5) return kMore;
  if (frame[1] > 3 || !kIsRtcmNumber[static_cast<unsigned int>(frame[3] << 4 | frame[4] >> 4)]) return kFalse;
  const std::size_t length = static_cast<unsigned int>(frame[1] << 8 | frame[2]) + 6U;
  if (length > held) return kMore;
  return Crc(frame, length) == 0 ? length : kFalse;
}

std::size_t Sentence(const t_Byte* frame, std::size_t held) {
  if (held < 7) return kMore;
  const unsigned int type = textproto::SentenceIds::Find(reinterpret_cast<const char*>(frame) + 3);
  if (frame[6] != ',' || type == C_RawDataMessage::eNmeaUnknown) return kFalse;
  const framing::S_FrameLengths limits = framing::kNmeaLengths[type];
  const std::size_t limit = std::min<std::size_t>(held, limits.greatest);
  const std::size_t end = FindControl(frame, 7, limit);
  if (end == limit) return limit < limits.greatest ? kMore : kFalse;
  if (end + 1 < limits.least || (frame[end] != '\r' && frame[end] != '\n') || frame[end - 3] != '*') return kFalse;
  const int sum = HexDigit(frame[end - 2]) << 4 | HexDigit(frame[end - 1]);
  return sum == XorOf(frame + 1, end - 4) ? end + 1 : kFalse;
}

// All frames of the bytes; returns where the first unfinished one begins.
template <class OnFrame>
std::size_t Frames(const t_Byte* bytes, std::size_t count, OnFrame onFrame) {
  for (std::size_t at = 0;;) {
    while (at < count && (bytes[at] == '\r' || bytes[at] == '\n')) ++at;
    if (at < count && !IsStart(bytes[at])) at = FindStart(bytes, at, count);
    if (at == count) return at;
    const std::size_t length =
        bytes[at] == kPreamble ? RtcmFrame(bytes + at, count - at) : Sentence(bytes + at, count - at);
    if (length == kMore) return at;
    if (length != kFalse) onFrame(bytes + at, length);
    at += std::max<std::size_t>(length, 1);
  }
}

// Keeps a copy that nothing reads.
void Keep(const void* bytes) { asm volatile("" : : "r"(bytes) : "memory"); }

}  // namespace

bool BareFramer::CanRun() { return __builtin_cpu_supports("avx2"); }

std::size_t BareFramer::Pump(const unsigned char* stream, std::size_t count, std::size_t piece) {
  constexpr std::size_t kLongest = 1029;
  std::vector<t_Byte> queue(piece + kLongest);
  std::array<t_Byte, kLongest> work;
  std::array<t_Byte, kLongest> out;
  std::size_t held = 0;
  std::size_t frames = 0;
  for (std::size_t at = 0; at < count;) {
    const std::size_t taken = std::min(piece, count - at);
    std::memcpy(&queue[held], stream + at, taken);
    at += taken;
    held += taken;
    const std::size_t done = Frames(queue.data(), held, [&](const t_Byte* frame, std::size_t length) {
      std::memcpy(work.data(), frame, length);
      Keep(work.data());
      std::memcpy(out.data(), work.data(), length);
      Keep(out.data());
      ++frames;
    });
    std::memmove(queue.data(), &queue[done], held - done);
    held -= done;
  }
  return frames;
}

#else

bool BareFramer::CanRun() { return false; }
std::size_t BareFramer::Pump(const unsigned char*, std::size_t, std::size_t) { return 0; }

#endif
