// The name of a frame's message.
#ifndef VELAGNSS_APPS_FRAME_NAME_H
#define VELAGNSS_APPS_FRAME_NAME_H

#include <string>
#include <string_view>

#include "stream/Names.h"

namespace Host {

// "GGA", "RTCM1077", "TXT".
inline std::string NameOf(const velagnss::Frame& frame) {
  const std::string_view unlisted = velagnss::UnlistedName(frame);
  const velagnss::MessageName listed(frame.protocol, frame.message);
  return std::string(unlisted.empty() ? listed.Text() : unlisted);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_NAME_H
