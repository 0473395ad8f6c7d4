// The messages that users mean by a name or a number.
#ifndef VELAGNSS_APPS_MESSAGE_NAMES_H
#define VELAGNSS_APPS_MESSAGE_NAMES_H

#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "framing/RawDataMessage.h"
#include "stream/FrameReader.h"

namespace Host {

inline constexpr unsigned int kNumProtocols = C_RawDataMessage::eAllProtocols;

// All protocols by name, separated by spaces; for messages and help.
std::string ProtocolNames();

// All sentences that have a name of their own, NMEA 0183 and "$PKVN,", separated by spaces; for completions.
std::string SentenceNames();

// One message of one protocol, as the frame search numbers them; 0 where a protocol numbers none. Sentences that are
// not listed share a number, so they have a name as well; it is empty for every other message.
struct S_MessageKey {
  C_RawDataMessage::eProtocols protocol;
  unsigned int type;
  std::string name = {};
  friend bool operator==(const S_MessageKey&, const S_MessageKey&) = default;
  friend bool operator<(const S_MessageKey& a, const S_MessageKey& b) {
    return std::tie(a.protocol, a.type, a.name) < std::tie(b.protocol, b.type, b.name);
  }
};

// The messages of a name ("GGA", "BIN95", "HPR") or of a number (1077, 95: of RTCM 3 and the binary protocol), in
// either case; empty when there is none.
std::vector<S_MessageKey> FindMessages(std::string_view nameOrNumber);

// The key of a frame's message.
S_MessageKey KeyOf(const velagnss::Frame& frame);

// The key of the sentences of that name that are not listed; nothing for a text that is neither a formatter nor a
// proprietary address.
std::optional<S_MessageKey> FindUnlisted(std::string_view name);

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_NAMES_H
