// "ntrip://USER@HOST:PORT/MOUNT" and "ntrips://": the stream of a caster, NTRIP version 2 or 1.
#ifndef VELAGNSS_APPS_NTRIP_LINK_H
#define VELAGNSS_APPS_NTRIP_LINK_H

#include "apps/velagnss/input/live/LinkKind.h"

namespace Host {

extern const S_LinkKind kNtripLink;
extern const S_LinkKind kNtripTlsLink;

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_LINK_H
