// "tcp://HOST:PORT": bytes from a TCP server.
#ifndef VELAGNSS_APPS_TCP_LINK_H
#define VELAGNSS_APPS_TCP_LINK_H

#include "apps/velagnss/input/live/LinkKind.h"

namespace Host {

extern const S_LinkKind kTcpLink;

}  // namespace Host

#endif  // VELAGNSS_APPS_TCP_LINK_H
