// Makes another format out of a receiver's frames: what `velagnss convert` asks of each format.
#ifndef VELAGNSS_APPS_CONVERTER_H
#define VELAGNSS_APPS_CONVERTER_H

#include <cstdint>
#include <string>

#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/pipeline/FrameDecoder.h"

namespace Host {

// A frame and what it came to.
struct S_DecodedFrame {
  const C_RawDataMessage& frame;
  std::uint64_t offset;           // of its first byte in the input
  const C_FrameDecoder& decoder;  // tells of this frame until the next one
};

// The calls come in this order: for each input `BeginInput`, `Take` for each frame in it, `EndInput`; at last `Finish`.
// `text` is the output that is not written yet: whole lines are appended to it, at any call.
class C_Converter {
 public:
  virtual ~C_Converter() = default;

  virtual void BeginInput(const std::string& /*name*/) {}
  virtual void Take(const S_DecodedFrame& decoded, std::string& text) = 0;
  virtual void EndInput(const C_FrameDecoder& /*decoder*/, std::string& /*text*/) {}

  // `eExitData`, with the reason reported to the user, when something is not in the output that should be.
  virtual eExitCode Finish(std::string& text) = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_CONVERTER_H
