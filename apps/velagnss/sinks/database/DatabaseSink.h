// An SQLite database as a destination.
#ifndef VELAGNSS_APPS_DATABASE_SINK_H
#define VELAGNSS_APPS_DATABASE_SINK_H

#include <memory>
#include <string>

#include "apps/velagnss/sinks/live/Sink.h"
#include "apps/velagnss/sinks/live/SinkThread.h"

namespace Host {

// Takes lines of JSON. `file` is created if it is not there, and goes on where it is otherwise. `canWait`: the source
// waits while the database is busy; otherwise units are dropped, and counted, when too many wait.
//
// Units count as sent when they are committed, and until then as waiting: both within a second of their coming.
std::unique_ptr<C_Sink> MakeDatabaseSink(const std::string& file, bool canWait, C_SinkThread& messages);

}  // namespace Host

#endif  // VELAGNSS_APPS_DATABASE_SINK_H
