// The host program: reads what a receiver sent and shows what is in it.
#include "apps/velagnss/CommandLine.h"
#include "apps/velagnss/Diagnostics.h"
#include "apps/velagnss/ExitCodes.h"
#include "apps/velagnss/FileDescriptor.h"
#include "apps/velagnss/Signals.h"

using namespace Host;

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  InstallSignalHandlers();
  try {
    const int code = C_CommandLine().Run(argc, argv);
    return SignalReceived() != 0 ? kExitSignalBase + SignalReceived() : code;
  } catch (...) {  // nothing throws but the allocation of memory
    ReportOutOfMemory();
    return eExitInput;
  }
}
