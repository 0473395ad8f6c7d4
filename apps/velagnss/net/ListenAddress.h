// Where sources and sinks wait for others to connect or to send.
#ifndef VELAGNSS_APPS_LISTEN_ADDRESS_H
#define VELAGNSS_APPS_LISTEN_ADDRESS_H

#include <asio/ip/address.hpp>
#include <cstdint>
#include <string>

#include "apps/velagnss/net/Address.h"
#include "apps/velagnss/net/Await.h"

namespace Host {

struct S_ListenAddress {
  asio::ip::address address;
  std::uint16_t port = 0;
  std::string error;  // empty when the others are known
};

// Without a host it is 127.0.0.1: only programs of this machine are let in unless the user says otherwise.
S_ListenAddress FindListenAddress(C_Await& await, const S_Address& address);

// What `error` of bind or listen means for the user.
std::string ListenErrorText(const asio::error_code& error, const S_Address& address);

}  // namespace Host

#endif  // VELAGNSS_APPS_LISTEN_ADDRESS_H
