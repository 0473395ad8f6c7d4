// "serial:///dev/ttyUSB0": the stream to a serial port, such as corrections to a receiver.
#ifndef VELAGNSS_APPS_SERIAL_SINK_H
#define VELAGNSS_APPS_SERIAL_SINK_H

#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

extern const S_SinkKind kSerialSink;

}  // namespace Host

#endif  // VELAGNSS_APPS_SERIAL_SINK_H
