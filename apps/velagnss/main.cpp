// The velagnss program: reads what a receiver sent and shows what is in it.
#include "apps/velagnss/commands/CommandLine.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/SpilledText.h"

using namespace Host;

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  InstallSignalHandlers();
  try {
    const int code = C_CommandLine().Run(argc, argv);
    return SignalReceived() > 0 ? kExitSignalBase + SignalReceived() : code;
  } catch (const S_SpillLost&) {
    ReportError("a temporary file cannot be read back; set TMPDIR to a directory on another disk");
    return eExitOutput;
  } catch (...) {  // only the allocation of memory throws
    ReportOutOfMemory();
    return eExitInput;
  }
}
