// The casters of a run, by their addresses: several mounts may share one.
#ifndef VELAGNSS_APPS_CASTERS_H
#define VELAGNSS_APPS_CASTERS_H

#include "apps/velagnss/sinks/live/SinkThread.h"

namespace Host {

class C_Casters {
 public:
  explicit C_Casters(C_SinkThread& thread) : m_thread(thread) {}

 private:
  [[maybe_unused]] C_SinkThread& m_thread;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_CASTERS_H
