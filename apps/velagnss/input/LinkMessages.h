// Messages to the user about the state of a live source.
#ifndef VELAGNSS_APPS_LINK_MESSAGES_H
#define VELAGNSS_APPS_LINK_MESSAGES_H

#include <string>

#include "apps/velagnss/input/ByteSource.h"

namespace Host {

// A line for each change. Tries that fail for the same reason as the one before are left out unless verbose: a device
// that is away for a week must not fill the log.
class C_LinkMessages {
 public:
  void Report(const std::string& source, const S_LinkChange& change);

 private:
  std::string m_lastFailure;  // since it was connected
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LINK_MESSAGES_H
