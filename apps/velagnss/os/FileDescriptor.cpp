#include "apps/velagnss/os/FileDescriptor.h"

#include <fcntl.h>

namespace Host {

// The system assigns the lowest free number, so going upwards fills each gap. Opened in the wrong direction: input
// cannot be read, output cannot be written.
void OccupyStandardDescriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0) continue;
    ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace Host
