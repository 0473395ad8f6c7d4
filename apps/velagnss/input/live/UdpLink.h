// "udp://ADDRESS:PORT": datagrams, sent to this machine or to a multicast group.
#ifndef VELAGNSS_APPS_UDP_LINK_H
#define VELAGNSS_APPS_UDP_LINK_H

#include "apps/velagnss/input/live/LinkKind.h"

namespace Host {

extern const S_LinkKind kUdpLink;

}  // namespace Host

#endif  // VELAGNSS_APPS_UDP_LINK_H
