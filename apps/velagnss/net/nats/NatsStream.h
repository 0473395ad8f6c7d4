// One stream of a server, and its messages by subject or number.
#ifndef VELAGNSS_APPS_NATS_STREAM_H
#define VELAGNSS_APPS_NATS_STREAM_H

#include <cstdint>
#include <string>
#include <utility>

#include "apps/velagnss/net/nats/NatsFailure.h"
#include "apps/velagnss/net/nats/NatsHandles.h"
#include "apps/velagnss/net/nats/NatsSession.h"

namespace Host {

// Used by the thread of its session, which must outlive it. Calls wait for the server, at most some seconds each.
class C_NatsStream {
 public:
  C_NatsStream(const C_NatsSession& session, std::string name) : m_session(&session), m_name(std::move(name)) {}

  const std::string& Name() const { return m_name; }

  t_NatsResult Read(t_StreamInfo& info) const;

  // Null when there is no such message.
  t_NatsResult Find(const std::string& subject, t_NatsMessage& message) const;  // the last one
  t_NatsResult Find(std::uint64_t sequence, t_NatsMessage& message) const;

  // No failure when somebody else has removed it at the same moment.
  t_NatsResult Remove(std::uint64_t sequence) const;

  // All messages of a subject, which may have wildcards; up to the one with the number `last` if it is not 0.
  t_NatsResult RemoveAll(const std::string& subject, std::uint64_t last = 0) const;

 private:
  const C_NatsSession* m_session;
  std::string m_name;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_STREAM_H
