// The bytes of a frame as part of a stream.
#ifndef VELAGNSS_APPS_FRAME_BYTES_H
#define VELAGNSS_APPS_FRAME_BYTES_H

#include <string>

#include "stream/FrameReader.h"

namespace Host {

// Appends the frame as it came. What ends with a line end gets both characters of it: a frame holds the first at most,
// and not every receiver sends the CR that the standard requires.
void AppendFrame(const velagnss::Frame& frame, std::string& bytes);

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_BYTES_H
