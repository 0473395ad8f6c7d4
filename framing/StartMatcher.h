// Which protocol the oldest queued bytes start a frame of. Internal.
#ifndef VELAGNSS_FRAMING_START_MATCHER_H
#define VELAGNSS_FRAMING_START_MATCHER_H

#include <array>
#include <cstdint>

#include "framing/ProtocolTable.h"

namespace velagnss::framing {

using t_Protocols = std::array<bool, kNumProtocols>;  // a flag for each, by `eProtocols`

// The start patterns, arranged so that a start is told by a few table accesses: each protocol is a bit, the first two
// bytes choose the bits that may match, and of what is left eight bytes are compared at once. Rows are those of
// `kProtocols`, in search order.
class C_StartMatcher {
 public:
  static constexpr unsigned int kNoRow = kNumProtocols;

  // Takes the start patterns from the table.
  void TakePatterns();

  // Searches for these protocols from now on. A patient search compares a pattern only when all bytes are there that
  // its protocol needs, otherwise when its own are.
  void Search(const t_Protocols& enabled, bool patient);

  // Whether a frame can start with this byte.
  bool CanStart(unsigned char byte) const { return m_rowsByByte[0][byte] != 0; }

  // Bytes that the first pattern can be compared with, and that the last one can; 255 and 0 when nothing is searched.
  unsigned int MinLength() const { return m_minLength; }
  unsigned int MaxLength() const { return m_maxLength; }

  // The row of the first protocol whose start the `held` bytes are, or kNoRow. Two bytes are read in any case.
  unsigned int Find(const unsigned char* bytes, unsigned int held) const;

 private:
  void AddRowByByte(unsigned int row);

  unsigned short m_minLength = 255;
  unsigned short m_maxLength = 0;
  unsigned short m_rowsByByte[2][256] = {};              // rows that may have the byte first, second: bit i for row i
  std::uint64_t m_heads[kNumProtocols] = {};             // the first bytes of the start pattern as one word
  std::uint64_t m_headMasks[kNumProtocols] = {};         // and of its mask
  unsigned short m_comparedLengths[kNumProtocols] = {};  // bytes held before a row is compared
};
static_assert(kNumProtocols <= 16, "a row has no bit");

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_START_MATCHER_H
