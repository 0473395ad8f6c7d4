// The names of the proprietary sentences, "$PKVN,HPR,...": the decoder and the frame recognizer look them up. Internal.
#ifndef VELAGNSS_TEXTPROTO_PKVN_NAMES_H
#define VELAGNSS_TEXTPROTO_PKVN_NAMES_H

#include <algorithm>
#include <iterator>
#include <string_view>

#include "textproto/VelaPKVN_Messages.h"

namespace velagnss::textproto::PkvnSentences {

// "P" for proprietary and the manufacturer's three letters (NMEA 0183).
inline constexpr std::string_view kPrefix = "$PKVN,";

// The row is the message type.
inline constexpr std::string_view kNames[] = {
    "RAW", "ATTSTAT", "GBS", "HPR", "BLV", "FVI", "RTKSTAT", "VCT", "INTLT", "TEMPERATURE", "ARN_ROUTER",
};
static_assert(kNames[VelaPKVN_Messages::ePkvnARN_ROUTER] == "ARN_ROUTER" &&
              std::size(kNames) == VelaPKVN_Messages::ePkvnARN_ROUTER + 1);

// The name at the start of the text after the prefix: up to a comma or a NUL, at most 31 characters.
constexpr std::string_view NameIn(std::string_view afterPrefix) {
  // More than any name has: a longer text cannot be one, wherever its comma is.
  constexpr std::size_t kMaxName = 31;
  return afterPrefix.substr(0, std::min(kMaxName, afterPrefix.find_first_of(std::string_view(",\0", 2))));
}

// Its message type; `ePkvnUnknown` for any other name.
constexpr VelaPKVN_Messages::eMessageTypes TypeOf(std::string_view name) {
  const auto* row = std::find(std::begin(kNames), std::end(kNames), name);
  if (row == std::end(kNames)) return VelaPKVN_Messages::ePkvnUnknown;
  return static_cast<VelaPKVN_Messages::eMessageTypes>(row - kNames);
}

}  // namespace velagnss::textproto::PkvnSentences

#endif  // VELAGNSS_TEXTPROTO_PKVN_NAMES_H
