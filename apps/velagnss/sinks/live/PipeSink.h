// A pipe as a destination, such as standard output with a program that reads it.
#ifndef VELAGNSS_APPS_PIPE_SINK_H
#define VELAGNSS_APPS_PIPE_SINK_H

#include <memory>
#include <string>

#include "apps/velagnss/sinks/live/NetSink.h"

namespace Host {

// Whether `name` ("-" for standard output) is one.
bool IsPipe(const std::string& name);

// Served by the sink thread, because its reader may be slow, as a client may. It ends when its reader leaves.
std::unique_ptr<C_NetSink> MakePipeSink(C_SinkThread& thread, const std::string& name, const S_QueueLimits& limits);

}  // namespace Host

#endif  // VELAGNSS_APPS_PIPE_SINK_H
