// A connection to a NATS server with JetStream.
#ifndef VELAGNSS_APPS_NATS_SESSION_H
#define VELAGNSS_APPS_NATS_SESSION_H

#include <functional>
#include <string>

#include "apps/velagnss/net/Address.h"
#include "apps/velagnss/net/nats/NatsFailure.h"
#include "apps/velagnss/net/nats/NatsHandles.h"

namespace Host {

struct S_NatsAccess {
  std::string credentials = {};  // a file with users and passwords (Credentials.h); may be empty

  // Whether libnats connects again by itself after a loss, again and again. What was published and not acknowledged may
  // then arrive after what is published later.
  bool reconnects = false;
};

// Used by one thread at a time. Calls wait for the server, at most some seconds each.
class C_NatsSession {
 public:
  // `address` has been checked. The account comes from it, from the files that it names, from the credentials file, or
  // from VELAGNSS_NATS_USER, VELAGNSS_NATS_PASSWORD and VELAGNSS_NATS_TOKEN. Nothing is left open after a failure.
  t_NatsResult Open(const S_Address& address, const S_NatsAccess& access);
  void Close();

  // Valid from `Open` to `Close`.
  natsConnection* Connection() const { return m_connection.get(); }
  jsCtx* JetStream() const { return m_jetStream.get(); }

  // False after a loss; true again if libnats has reconnected.
  bool IsConnected() const;

  // The server of the moment, "127.0.0.1:4222"; empty when not connected.
  std::string Peer() const;

  // Looks the stream up. A missing one is created if `creates`; what the server made of it is in `info`.
  t_NatsResult OpenStream(jsStreamConfig& wanted, bool creates, t_StreamInfo& info) const;

 private:
  t_NatsResult Connect(const S_Address& address, const S_NatsAccess& access);
  t_NatsResult CheckJetStream() const;

  t_NatsConnection m_connection;
  t_JetStream m_jetStream;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_SESSION_H
