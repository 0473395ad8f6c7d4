// The messages that users mean by a name or a number.
#ifndef VELAGNSS_APPS_MESSAGE_NAMES_H
#define VELAGNSS_APPS_MESSAGE_NAMES_H

#include <string>
#include <string_view>
#include <vector>

#include "framing/RawDataMessage.h"

namespace Host {

inline constexpr unsigned int kNumProtocols = C_RawDataMessage::eAllProtocols;

// All protocols by name, separated by spaces; for messages and help.
std::string ProtocolNames();

// One message of one protocol, as the frame search numbers them; 0 where a protocol numbers none.
struct S_MessageKey {
  C_RawDataMessage::eProtocols protocol;
  unsigned int type;
  friend bool operator==(const S_MessageKey&, const S_MessageKey&) = default;
};

// The messages of a name ("GGA", "BIN95", "HPR") or of a number (1077, 95: of RTCM 3 and the binary protocol), in
// either case; empty when there is none.
std::vector<S_MessageKey> FindMessages(std::string_view nameOrNumber);

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_NAMES_H
