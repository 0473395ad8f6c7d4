#include "framing/StartMatcher.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "textproto/SentenceIds.h"

namespace velagnss::framing {

namespace {

constexpr unsigned int kHeadBytes = sizeof(std::uint64_t);

// The first bytes of a start as one word.
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

// "$.....," is the start of any sentence; an NMEA 0183 frame must name one that is known.
bool NamesAKnownSentence(const unsigned char* bytes) {
  return SentenceIds::Find(reinterpret_cast<const char*>(bytes) + 3) != C_RawDataMessage::eNmeaUnknown;
}

}  // namespace

void C_StartMatcher::TakePatterns() {
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    m_heads[i] = Head(kProtocols[i].frame.startPattern);
    m_headMasks[i] = Head(kProtocols[i].frame.startMask);
  }
}

void C_StartMatcher::Search(const t_Protocols& enabled, bool patient) {
  m_minLength = 255;
  m_maxLength = 0;
  std::memset(m_rowsByByte, 0, sizeof m_rowsByByte);
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    const S_ProtocolRow& row = kProtocols[i];
    if (!enabled[row.frame.protocol]) continue;
    m_comparedLengths[i] = patient ? row.neededLength : row.frame.startLength;
    m_minLength = std::min(m_minLength, m_comparedLengths[i]);
    m_maxLength = std::max(m_maxLength, m_comparedLengths[i]);
    AddRowByByte(i);
  }
}

void C_StartMatcher::AddRowByByte(unsigned int row) {
  const S_FrameDescriptor& frame = kProtocols[row].frame;
  for (unsigned int place = 0; place < std::size(m_rowsByByte); ++place) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
      const bool fits = (byte & frame.startMask[place]) == frame.startPattern[place];
      if (fits) m_rowsByByte[place][byte] = static_cast<unsigned short>(m_rowsByByte[place][byte] | 1U << row);
    }
  }
}

unsigned int C_StartMatcher::Find(const unsigned char* bytes, unsigned int held) const {
  const std::uint64_t head = held < kHeadBytes ? ShortHead(bytes, held) : Head(bytes);
  for (unsigned int rows = m_rowsByByte[0][bytes[0]] & m_rowsByByte[1][bytes[1]]; rows != 0; rows &= rows - 1) {
    const auto row = static_cast<unsigned int>(std::countr_zero(rows));
    if ((head & m_headMasks[row]) != m_heads[row] || m_comparedLengths[row] > held) continue;
    const S_FrameDescriptor& frame = kProtocols[row].frame;
    if (!BeginsAs(frame, bytes, kHeadBytes)) continue;
    if (frame.protocol != C_RawDataMessage::eNMEA0183 || NamesAKnownSentence(bytes)) return row;
  }
  return kNoRow;
}

}  // namespace velagnss::framing
