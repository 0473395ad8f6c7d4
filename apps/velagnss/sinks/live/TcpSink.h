// "tcp://HOST:PORT": the stream to a program that listens there.
#ifndef VELAGNSS_APPS_TCP_SINK_H
#define VELAGNSS_APPS_TCP_SINK_H

#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

extern const S_SinkKind kTcpSink;

}  // namespace Host

#endif  // VELAGNSS_APPS_TCP_SINK_H
