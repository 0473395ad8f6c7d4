// For commands whose only waits are those of asio.
#ifndef VELAGNSS_APPS_STOP_ON_SIGNAL_H
#define VELAGNSS_APPS_STOP_ON_SIGNAL_H

#include "apps/velagnss/net/Await.h"

namespace Host {

// From now on a signal that asks the program to end (Signals.h) stops all waits of `await`.
void StopOnSignal(C_Await& await);

}  // namespace Host

#endif  // VELAGNSS_APPS_STOP_ON_SIGNAL_H
