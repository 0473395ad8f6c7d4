// "tcp-listen://ADDRESS:PORT": bytes from whoever connects, one sender at a time.
#ifndef VELAGNSS_APPS_TCP_LISTEN_LINK_H
#define VELAGNSS_APPS_TCP_LISTEN_LINK_H

#include "apps/velagnss/input/live/LinkKind.h"

namespace Host {

extern const S_LinkKind kTcpListenLink;

}  // namespace Host

#endif  // VELAGNSS_APPS_TCP_LISTEN_LINK_H
