#include "apps/velagnss/text/FrameBytes.h"

#include <string_view>

namespace Host {

void AppendFrame(const velagnss::Frame& frame, std::string& bytes) {
  std::string_view content(reinterpret_cast<const char*>(frame.data), frame.length);
  const bool isBinary = frame.protocol == C_RawDataMessage::eRTCM3_x || frame.protocol == C_RawDataMessage::eVelaBIN;
  // NMEA 0183 requires CR LF, but not every receiver sends both. The line ends of other protocols decide whether some
  // of their frames can be decoded, so these are completed only.
  while (frame.protocol == C_RawDataMessage::eNMEA0183 && (content.ends_with('\r') || content.ends_with('\n')))
    content.remove_suffix(1);
  bytes += content;
  if (isBinary || content.ends_with('\n')) return;
  bytes += content.ends_with('\r') ? "\n" : "\r\n";
}

}  // namespace Host
