// "serial:///dev/ttyUSB0": bytes from a serial port.
#ifndef VELAGNSS_APPS_SERIAL_LINK_H
#define VELAGNSS_APPS_SERIAL_LINK_H

#include "apps/velagnss/input/live/LinkKind.h"

namespace Host {

extern const S_LinkKind kSerialLink;

}  // namespace Host

#endif  // VELAGNSS_APPS_SERIAL_LINK_H
