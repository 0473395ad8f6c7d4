// "nats://HOST:PORT/STREAM": the frames that a server keeps, and those that it gets.
#ifndef VELAGNSS_APPS_NATS_LINK_H
#define VELAGNSS_APPS_NATS_LINK_H

#include "apps/velagnss/input/live/LinkKind.h"

namespace Host {

extern const S_LinkKind kNatsLink;
extern const S_LinkKind kNatsTlsLink;

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_LINK_H
