// The names by which users call protocols and messages.
#ifndef VELAGNSS_APPS_MESSAGE_NAMES_H
#define VELAGNSS_APPS_MESSAGE_NAMES_H

#include <optional>
#include <string_view>
#include <vector>

#include "framing/RawDataMessage.h"

namespace Host {

inline constexpr unsigned int kNumProtocols = C_RawDataMessage::eAllProtocols;
inline constexpr unsigned int kNoMessageType = 0xFFFFFFFF;  // of protocols that number no messages

// The number of a message; none where the protocol numbers no messages.
inline std::optional<unsigned int> MessageNumber(unsigned int messageType) {
  return messageType == kNoMessageType ? std::nullopt : std::optional(messageType);
}

// "nmea", "rtcm3", "bin", ...: lower case, one word.
std::string_view ProtocolName(C_RawDataMessage::eProtocols protocol);

// The protocol of that name, in either case.
std::optional<C_RawDataMessage::eProtocols> FindProtocol(std::string_view name);

// All names, separated by blanks; for messages and help.
std::string ProtocolNames();

// The name of a message in at most 15 characters, held in place.
class C_MessageName {
 public:
  C_MessageName(C_RawDataMessage::eProtocols protocol, unsigned int messageType);
  std::string_view Text() const { return {m_text, m_size}; }

 private:
  void Append(std::string_view text);
  void AppendNumber(unsigned int number);

  char m_text[15] = {};
  unsigned char m_size = 0;
};

// One message of one protocol, as the recognizer numbers them.
struct S_MessageKey {
  C_RawDataMessage::eProtocols protocol;
  unsigned int type;
  friend bool operator==(const S_MessageKey&, const S_MessageKey&) = default;
};

// The messages meant by a name ("GGA", "BIN95", "HPR") or by a number (1077, 95: of RTCM 3 and the binary protocol).
// Either case will do; empty when there is none.
std::vector<S_MessageKey> FindMessages(std::string_view nameOrNumber);

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_NAMES_H
