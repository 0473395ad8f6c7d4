// The bytes of a frame as part of a stream.
#ifndef VELAGNSS_APPS_FRAME_BYTES_H
#define VELAGNSS_APPS_FRAME_BYTES_H

#include <string>

#include "stream/FrameReader.h"

namespace Host {

// Appends the frame as it came, and the rest of its line end, of which a frame holds the first character at most. An
// NMEA 0183 sentence ends with CR LF then, whatever its receiver sent.
void AppendFrame(const velagnss::Frame& frame, std::string& bytes);

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_BYTES_H
