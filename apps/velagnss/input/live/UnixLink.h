// "unix:///PATH": bytes from a program of this machine that listens at a socket file.
#ifndef VELAGNSS_APPS_UNIX_LINK_H
#define VELAGNSS_APPS_UNIX_LINK_H

#include "apps/velagnss/input/live/LinkKind.h"

namespace Host {

extern const S_LinkKind kUnixLink;

}  // namespace Host

#endif  // VELAGNSS_APPS_UNIX_LINK_H
