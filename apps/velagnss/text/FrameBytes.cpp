#include "apps/velagnss/text/FrameBytes.h"

#include <string_view>

namespace Host {

void AppendFrame(const velagnss::Frame& frame, std::string& bytes) {
  std::string_view content(reinterpret_cast<const char*>(frame.data), frame.length);
  const bool isBinary = frame.protocol == C_RawDataMessage::eRTCM3_x || frame.protocol == C_RawDataMessage::eVelaBIN;
  // Packed bytes have their top bit set, so this takes none of them.
  while (!isBinary && (content.ends_with('\r') || content.ends_with('\n'))) content.remove_suffix(1);
  bytes.append(content).append(isBinary ? "" : "\r\n");
}

}  // namespace Host
