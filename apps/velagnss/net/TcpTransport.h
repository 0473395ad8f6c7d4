// Bytes over a TCP connection.
#ifndef VELAGNSS_APPS_TCP_TRANSPORT_H
#define VELAGNSS_APPS_TCP_TRANSPORT_H

#include <memory>

#include "apps/velagnss/net/Transport.h"

namespace Host {

std::unique_ptr<C_Transport> MakeTcpTransport(C_Await& await);

}  // namespace Host

#endif  // VELAGNSS_APPS_TCP_TRANSPORT_H
