#include "apps/velagnss/pipeline/NoFrameWarning.h"

#include <fmt/core.h>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {

void ReportNoFrame(std::string_view where, std::uint64_t bytes) {
  ReportWarning(
      fmt::format("{}: no frame in {}: check that this is the output of a receiver and, for a serial port, its "
                  "speed",
                  where, Counted(bytes, "byte")));
}

}  // namespace Host
