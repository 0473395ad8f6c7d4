// Protocols, messages, results, systems and signals as words: short, lower case where they are not proper names, and
// the same in every output.
#ifndef VELAGNSS_STREAM_NAMES_H
#define VELAGNSS_STREAM_NAMES_H

#include <optional>
#include <string_view>

#include "framing/RawDataMessage.h"
#include "geo/GnssEnums.h"
#include "stream/FrameReader.h"
#include "velagnss_export.h"

namespace velagnss {

// "nmea", "rtcm3", "bin", "pkvn", "rd", "jrox", "site", "ack", "ji", "jquery", "geo"; "none" for any other number.
VELAGNSS_API std::string_view ProtocolName(C_RawDataMessage::eProtocols protocol);

// The protocol of that name, in either case; missing when there is none.
VELAGNSS_API std::optional<C_RawDataMessage::eProtocols> FindProtocol(std::string_view name);

// The number of a message as its protocol counts them; missing where the protocol numbers no messages.
VELAGNSS_API std::optional<unsigned int> MessageNumber(unsigned int message);

// The number of a frame's message; missing also for a sentence that is not listed.
VELAGNSS_API std::optional<unsigned int> MessageNumber(const Frame& frame);

// The name of a sentence that is not listed, as `SentenceName` gives it: "TXT", "VDM", "PGRME". Empty for every other
// frame, which has a `MessageName`. Points into the frame.
VELAGNSS_API std::string_view UnlistedName(const Frame& frame);

// Message numbers that frames of a protocol can have are those below this one; 1 where the protocol numbers none.
VELAGNSS_API unsigned int NumMessages(C_RawDataMessage::eProtocols protocol);

// Whether a message of the protocol may be called by its number alone, "1077" or "95": RTCM 3 and the binary protocol.
VELAGNSS_API bool IsCalledByNumber(C_RawDataMessage::eProtocols protocol);

// The name of a message: the formatter of a sentence ("GGA"), the name of a proprietary sentence ("HPR"), or a word and
// the number ("RTCM1077", "BIN95"), whether or not the number is in use. Held in place, at most 15 characters; empty
// for a sentence that has no number and for a protocol that does not exist.
class VELAGNSS_API MessageName {
 public:
  // `message` as in `Frame`.
  MessageName(C_RawDataMessage::eProtocols protocol, unsigned int message);

  // The name; part of this object.
  std::string_view Text() const { return {m_text, m_size}; }

 private:
  char m_text[15] = {};
  unsigned char m_size = 0;
};

// A code of `records/ResultCodes.h` in words: "checksum mismatch"; "not decoded" for a number that is no code. 0 is
// "ok".
VELAGNSS_API std::string_view ResultText(unsigned int result);

// Why a start was rejected, and what a skipped range held.
VELAGNSS_API std::string_view ReasonText(RejectedStart::Reason reason);
VELAGNSS_API std::string_view ReasonText(SkippedRange::Reason reason);

// "gps", "glonass", "beidou", "galileo", "sbas", "qzss", "navic" (6); empty for any other number.
VELAGNSS_API std::string_view SystemName(ALGO::eGNSSSystem system);

// A carrier band as receivers call it, "L1", "E5b"; and the component of a signal on it, "C/A", "P(Y)", "I". Empty for
// the numbers that are not in use.
VELAGNSS_API std::string_view FrequencyName(ALGO::eGNSSFrequency frequency);
VELAGNSS_API std::string_view TrackTypeName(ALGO::eGNSSTrackType trackType);

}  // namespace velagnss

#endif  // VELAGNSS_STREAM_NAMES_H
