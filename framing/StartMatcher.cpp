#include "framing/StartMatcher.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "framing/UnlistedSentence.h"

namespace velagnss::framing {

namespace {

// The first bytes of a start as one word: nearly all false starts fail at a single comparison.
constexpr unsigned int kHeadBytes = sizeof(std::uint64_t);

std::uint64_t Head(const unsigned char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, kHeadBytes);
  return word;
}

struct S_Head {
  std::uint64_t pattern;
  std::uint64_t mask;
};

constexpr auto kHeads = [] {
  std::array<S_Head, kNumProtocols> heads = {};
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    std::array<unsigned char, kHeadBytes> pattern = {};
    std::array<unsigned char, kHeadBytes> mask = {};
    std::copy_n(kProtocols[i].frame.startPattern, pattern.size(), pattern.begin());
    std::copy_n(kProtocols[i].frame.startMask, mask.size(), mask.begin());
    heads[i] = {std::bit_cast<std::uint64_t>(pattern), std::bit_cast<std::uint64_t>(mask)};
  }
  return heads;
}();

bool AgreesAsFarAs(const S_FrameDescriptor& frame, const unsigned char* bytes, unsigned int count) {
  unsigned int at = 0;
  while (at < count && (bytes[at] & frame.startMask[at]) == frame.startPattern[at]) ++at;
  return at == count;
}

}  // namespace

// The second byte separates "$>" from "$B", "$J", "$P" and "$R", and the third those from the talkers of sentences:
// nearly all starts are left with one row.
void C_StartMatcher::TakePatterns() {
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    const S_FrameDescriptor& frame = kProtocols[i].frame;
    for (unsigned int place = 0; place < std::size(m_rowsByByte); ++place) {
      for (unsigned int byte = 0; byte < 256; ++byte) {
        const bool fits = (byte & frame.startMask[place]) == frame.startPattern[place];
        if (fits) m_rowsByByte[place][byte] = static_cast<unsigned short>(m_rowsByByte[place][byte] | 1U << i);
      }
    }
  }
}

// Only the flags by byte and the lengths depend on what is enabled; the patterns stay.
void C_StartMatcher::Search(const t_Protocols& enabled, bool patient) {
  m_minLength = 255;
  m_maxLength = 0;
  m_searched = 0;
  m_longRows = 0;
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    const S_ProtocolRow& row = kProtocols[i];
    if (!enabled[row.frame.protocol]) continue;
    m_searched |= 1U << i;
    m_comparedLengths[i] = patient ? row.neededLength : row.frame.startLength;
    if (m_comparedLengths[i] > kShortestSentence) m_longRows |= 1U << i;
    m_minLength = std::min(m_minLength, m_comparedLengths[i]);
    m_maxLength = std::max(m_maxLength, m_comparedLengths[i]);
  }
  for (unsigned int byte = 0; byte < 256; ++byte) m_canStart[byte] = (m_rowsByByte[0][byte] & m_searched) != 0;
  ListStartBytes();
}

void C_StartMatcher::AlsoStopAt(unsigned char byte) {
  m_canStart[byte] = true;
  ListStartBytes();
}

// A pattern with another start byte needs a longer list.
static_assert([] {
  for (const S_ProtocolRow& row : kProtocols) {
    const unsigned char first = row.frame.startPattern[0];
    if (row.frame.startMask[0] != 0xFF || (first != '$' && first != 0xD3)) return false;
  }
  return true;
}());

void C_StartMatcher::ListStartBytes() {
  unsigned int count = 0;
  for (unsigned int byte = 0; byte < 256; ++byte) {
    if (m_canStart[byte]) m_startBytes[count++] = static_cast<unsigned char>(byte);
  }
  std::fill(m_startBytes + count, std::end(m_startBytes), m_startBytes[0]);
}

unsigned int C_StartMatcher::FindStartByte(const unsigned char* bytes, unsigned int from, unsigned int to) const {
  if (!m_canStart[m_startBytes[0]]) return to;  // the list is empty
#ifdef __SSE2__
  const auto listed = [this](unsigned int i) { return _mm_set1_epi8(static_cast<char>(m_startBytes[i])); };
  const __m128i list[] = {listed(0), listed(1), listed(2)};
  const auto marks = [bytes, &list](unsigned int at) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
    const __m128i isFirst = _mm_cmpeq_epi8(block, list[0]);
    const __m128i isOther = _mm_or_si128(_mm_cmpeq_epi8(block, list[1]), _mm_cmpeq_epi8(block, list[2]));
    return static_cast<unsigned int>(_mm_movemask_epi8(_mm_or_si128(isFirst, isOther)));
  };
  for (; from < to; from += 32) {
    const unsigned int found = marks(from) | marks(from + 16) << 16;
    if (found != 0) return std::min(from + static_cast<unsigned int>(std::countr_zero(found)), to);
  }
  return to;
#else
  while (from < to && !m_canStart[bytes[from]]) ++from;
  return from;
#endif
}

// Rows come lowest bit first, which is their search order. A row whose bytes are not all there is passed over, so that
// a shorter pattern after it may win: this is what makes a search without patience depend on the cut of the stream.
S_Start C_StartMatcher::FindAmong(unsigned int rows, const unsigned char* bytes, unsigned int held) const {
  const std::uint64_t head = Head(bytes);  // may reach beyond what is held: such patterns are ruled out by their length
  for (; rows != 0; rows &= rows - 1) {
    const auto row = static_cast<unsigned int>(std::countr_zero(rows));
    if ((head & kHeads[row].mask) != kHeads[row].pattern || m_comparedLengths[row] > held) continue;
    const S_FrameDescriptor& frame = kProtocols[row].frame;
    if (frame.startLength > kHeadBytes && !BeginsAs(frame, bytes)) continue;
    if (row != kSentenceRow) return {row};
    if (const S_Start sentence = FindSentence(bytes, held); sentence.row != S_Start::kNoRow) return sentence;
  }
  return {};
}

unsigned int C_StartMatcher::NextLengthAmong(unsigned int rows, unsigned int held) const {
  unsigned int next = m_maxLength;
  for (; rows != 0; rows &= rows - 1) {
    const unsigned int compared = m_comparedLengths[std::countr_zero(rows)];
    if (compared > held) next = std::min(next, compared);
  }
  return next;
}

bool C_StartMatcher::MayAnyMatchLater(unsigned int rows, const unsigned char* bytes, unsigned int held) const {
  for (; rows != 0; rows &= rows - 1) {
    const auto row = static_cast<unsigned int>(std::countr_zero(rows));
    const S_FrameDescriptor& frame = kProtocols[row].frame;
    if (m_comparedLengths[row] > held && AgreesAsFarAs(frame, bytes, std::min<unsigned int>(held, frame.startLength)))
      return true;
  }
  return false;
}

}  // namespace velagnss::framing
