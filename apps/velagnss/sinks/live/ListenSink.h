// "tcp-listen://ADDRESS:PORT" and "unix-listen:///PATH": the stream for everybody who connects.
#ifndef VELAGNSS_APPS_LISTEN_SINK_H
#define VELAGNSS_APPS_LISTEN_SINK_H

#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

extern const S_SinkKind kTcpListenSink;
extern const S_SinkKind kUnixListenSink;

}  // namespace Host

#endif  // VELAGNSS_APPS_LISTEN_SINK_H
