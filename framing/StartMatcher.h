// Which protocol the oldest queued bytes start a frame of. Internal.
#ifndef VELAGNSS_FRAMING_START_MATCHER_H
#define VELAGNSS_FRAMING_START_MATCHER_H

#include <array>

#include "framing/ProtocolTable.h"
#include "textproto/SentenceIds.h"

namespace velagnss::framing {

using t_Protocols = std::array<bool, kNumProtocols>;  // a flag for each, by `eProtocols`

// What a start is: the row of its protocol, and of a sentence its type.
struct S_Start {
  // No row has this number: they count from 0.
  static constexpr unsigned int kNoRow = kNumProtocols;

  unsigned int row = kNoRow;
  unsigned int sentence = C_RawDataMessage::eNmeaUnknown;
};

// The start patterns, arranged so that a start is identified by a few table accesses: each row of `kProtocols` is a
// bit, the first three bytes select the rows that may match, and only those are compared, in their order.
class C_StartMatcher {
 public:
  // Takes the start patterns from the table.
  void TakePatterns();

  // Searches for these protocols from now on. A patient search compares a pattern only when all bytes are there that
  // its protocol needs, otherwise when its own are.
  void Search(const t_Protocols& enabled, bool patient);

  // Stops the search at this byte as well, although no pattern begins with it. Holds until the next `Search`.
  void AlsoStopAt(unsigned char byte);

  // Whether a frame can start with this byte.
  bool CanStart(unsigned char byte) const { return m_canStart[byte]; }

  // Position of the first byte in [from, to) that a frame can start with; `to` when there is none. Reads ahead.
  unsigned int FindStartByte(const unsigned char* bytes, unsigned int from, unsigned int to) const;

  // Bytes that the first pattern can be compared with, and that the last one can; 255 and 0 when nothing is searched.
  unsigned int MinLength() const { return m_minLength; }
  unsigned int MaxLength() const { return m_maxLength; }

  // The first protocol whose start the `held` bytes are. Eight bytes are read in any case.
  S_Start Find(const unsigned char* bytes, unsigned int held) const {
    const unsigned int rows = Candidates(bytes);
    // Most starts can only be a sentence or only RTCM 3, whose pattern says no more than its first two bytes.
    if (rows == 1U << kSentenceRow) return FindSentence(bytes, held);
    if (rows == 1U << kRtcmRow) return held < kProtocols[kRtcmRow].neededLength ? S_Start() : S_Start{kRtcmRow};
    return rows == 0 ? S_Start() : FindAmong(rows, bytes, held);
  }

  // For `held` bytes that do not make a start yet: how many must be held before they can be one, or are given up.
  unsigned int NextLength(const unsigned char* bytes, unsigned int held) const {
    if (held < kBytesLookedUp) return held + 1;
    const unsigned int rows = Candidates(bytes);
    return rows == 0 ? m_maxLength : NextLengthAmong(rows, held);
  }

  // Whether a pattern that needs more than the `held` bytes begins as they do. They are at least those that
  // identify a sentence.
  bool MayMatchLater(const unsigned char* bytes, unsigned int held) const {
    const unsigned int rows = Candidates(bytes) & m_longRows;
    return rows != 0 && MayAnyMatchLater(rows, bytes, held);
  }

 private:
  static constexpr unsigned int kBytesLookedUp = 3;
  static constexpr unsigned int kStartBytes = 3;  // "$", the preamble of RTCM 3, and "!"

  static constexpr unsigned int kSentenceRow = kRowOf[C_RawDataMessage::eNMEA0183];
  static constexpr unsigned int kRtcmRow = kRowOf[C_RawDataMessage::eRTCM3_x];
  static_assert(kProtocols[kRtcmRow].frame.startLength == kProtocols[kRtcmRow].neededLength);

  // The rows that may match, by the first three bytes. A shorter pattern takes any byte after its own.
  unsigned int Candidates(const unsigned char* bytes) const {
    return m_searched & m_rowsByByte[0][bytes[0]] & m_rowsByByte[1][bytes[1]] & m_rowsByByte[2][bytes[2]];
  }
  // Makes the list from the flags.
  void ListStartBytes();
  // The same among these rows. Most false starts have none.
  S_Start FindAmong(unsigned int rows, const unsigned char* bytes, unsigned int held) const;
  unsigned int NextLengthAmong(unsigned int rows, unsigned int held) const;
  bool MayAnyMatchLater(unsigned int rows, const unsigned char* bytes, unsigned int held) const;
  // "$.....," is the start of any sentence; an NMEA 0183 frame must name one that is known.
  static S_Start FindSentence(const unsigned char* bytes, unsigned int held) {
    constexpr const S_ProtocolRow& kRow = kProtocols[kSentenceRow];
    static_assert(kRow.frame.startLength == 7 && kRow.neededLength == 7);
    if (held < kRow.neededLength || bytes[6] != ',') return {};
    const unsigned int sentence = textproto::SentenceIds::Find(reinterpret_cast<const char*>(bytes) + 3);
    return sentence == C_RawDataMessage::eNmeaUnknown ? S_Start() : S_Start{kSentenceRow, sentence};
  }

  // Their values when nothing is enabled: no start is ever long enough, and none is worth waiting for.
  unsigned short m_minLength = 255;
  unsigned short m_maxLength = 0;
  unsigned int m_searched = 0;                            // rows
  unsigned int m_longRows = 0;                            // that need more bytes than a sentence's start has
  unsigned short m_comparedLengths[kNumProtocols] = {};   // bytes held before a row is compared
  bool m_canStart[256] = {};                              // by byte: of the rows that are searched
  unsigned char m_startBytes[kStartBytes] = {};           // the same as a list; those left over repeat the first
  unsigned short m_rowsByByte[kBytesLookedUp][256] = {};  // rows that may have the byte first, second, third
};
static_assert(kNumProtocols <= 16, "a row has no bit");

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_START_MATCHER_H
