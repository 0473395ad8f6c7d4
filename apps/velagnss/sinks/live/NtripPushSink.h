// "ntrip-push://USER@HOST:PORT/MOUNT": the stream to a caster, which hands it on.
#ifndef VELAGNSS_APPS_NTRIP_PUSH_SINK_H
#define VELAGNSS_APPS_NTRIP_PUSH_SINK_H

#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

extern const S_SinkKind kNtripPushSink;

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_PUSH_SINK_H
