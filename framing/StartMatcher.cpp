#include "framing/StartMatcher.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "textproto/SentenceIds.h"

namespace velagnss::framing {

namespace {

// The first bytes of a start as one word: nearly all false starts fail at a single comparison.
constexpr unsigned int kHeadBytes = sizeof(std::uint64_t);

std::uint64_t Head(const unsigned char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, kHeadBytes);
  return word;
}

// The same of fewer bytes. Patterns that reach into the zeros are ruled out by their length.
std::uint64_t ShortHead(const unsigned char* bytes, unsigned int count) {
  unsigned char padded[kHeadBytes] = {};
  std::copy_n(bytes, count, padded);
  return Head(padded);
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

// "$.....," is the start of any sentence; an NMEA 0183 frame must name one that is known.
bool NamesAKnownSentence(const unsigned char* bytes) {
  return textproto::SentenceIds::Find(reinterpret_cast<const char*>(bytes) + 3) != C_RawDataMessage::eNmeaUnknown;
}

}  // namespace

// The second byte separates "$>" from "$B", "$J", "$P" and "$R": most starts are left with one or two rows.
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
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    const S_ProtocolRow& row = kProtocols[i];
    if (!enabled[row.frame.protocol]) continue;
    m_searched |= 1U << i;
    m_comparedLengths[i] = patient ? row.neededLength : row.frame.startLength;
    m_minLength = std::min(m_minLength, m_comparedLengths[i]);
    m_maxLength = std::max(m_maxLength, m_comparedLengths[i]);
  }
  for (unsigned int byte = 0; byte < 256; ++byte) m_canStart[byte] = (m_rowsByByte[0][byte] & m_searched) != 0;
}

// Rows come lowest bit first, which is their search order. A row whose bytes are not all there is passed over, so that
// a shorter pattern after it may win: this is what makes a search without patience depend on the cut of the stream.
unsigned int C_StartMatcher::Find(const unsigned char* bytes, unsigned int held) const {
  const unsigned int candidates = m_searched & m_rowsByByte[0][bytes[0]] & m_rowsByByte[1][bytes[1]];
  const std::uint64_t head = held < kHeadBytes ? ShortHead(bytes, held) : Head(bytes);
  for (unsigned int rows = candidates; rows != 0; rows &= rows - 1) {
    const auto row = static_cast<unsigned int>(std::countr_zero(rows));
    if ((head & kHeads[row].mask) != kHeads[row].pattern || m_comparedLengths[row] > held) continue;
    const S_FrameDescriptor& frame = kProtocols[row].frame;
    if (frame.startLength > kHeadBytes && !BeginsAs(frame, bytes)) continue;
    if (frame.protocol != C_RawDataMessage::eNMEA0183 || NamesAKnownSentence(bytes)) return row;
  }
  return kNoRow;
}

}  // namespace velagnss::framing
