// "ntrip-caster://ADDRESS:PORT/MOUNT": a caster of our own, for a local network.
#ifndef VELAGNSS_APPS_NTRIP_CASTER_SINK_H
#define VELAGNSS_APPS_NTRIP_CASTER_SINK_H

#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

extern const S_SinkKind kNtripCasterSink;

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_CASTER_SINK_H
