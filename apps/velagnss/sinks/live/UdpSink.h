// "udp://HOST:PORT": a datagram for each unit, to a machine or a multicast group.
#ifndef VELAGNSS_APPS_UDP_SINK_H
#define VELAGNSS_APPS_UDP_SINK_H

#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

extern const S_SinkKind kUdpSink;

}  // namespace Host

#endif  // VELAGNSS_APPS_UDP_SINK_H
