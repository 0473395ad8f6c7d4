// Bytes over a TLS connection, version 1.2 or later.
#ifndef VELAGNSS_APPS_TLS_TRANSPORT_H
#define VELAGNSS_APPS_TLS_TRANSPORT_H

#include <memory>
#include <string>

#include "apps/velagnss/net/Transport.h"

namespace Host {

struct S_TlsOptions {
  bool isInsecure = false;  // any certificate will do: the other side may be anybody
  std::string authorities;  // a file of certificates, PEM, that are trusted instead of the system's; may be empty
};

// The chain of the other side's certificate and the name in it are verified before anything is sent.
std::unique_ptr<C_Transport> MakeTlsTransport(C_Await& await, const S_TlsOptions& options);

}  // namespace Host

#endif  // VELAGNSS_APPS_TLS_TRANSPORT_H
