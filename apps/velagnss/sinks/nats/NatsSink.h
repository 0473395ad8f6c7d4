// "nats://HOST:PORT/STREAM": a message for each unit, kept by a server.
#ifndef VELAGNSS_APPS_NATS_SINK_H
#define VELAGNSS_APPS_NATS_SINK_H

#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

extern const S_SinkKind kNatsSink;
extern const S_SinkKind kNatsTlsSink;

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_SINK_H
