// A link over a stream of asio: what all of them but UDP share.
#ifndef VELAGNSS_APPS_STREAM_LINK_H
#define VELAGNSS_APPS_STREAM_LINK_H

#include <optional>
#include <string>
#include <utility>

#include "apps/velagnss/input/live/Link.h"
#include "apps/velagnss/net/StreamConnection.h"

namespace Host {

template <class Stream>
class C_StreamLink : public C_Link {
 public:
  S_Read Read(C_Await::t_Time deadline) override;
  void Close() override { m_connection.reset(); }
  std::string Peer() const override { return m_peer; }

 protected:
  // `endText`: what the end of the stream means.
  C_StreamLink(C_Await& await, std::string endText) : m_await(await), m_endText(std::move(endText)) {}

  void Use(Stream stream, std::string peer) {
    m_connection.emplace(m_await, std::move(stream));
    m_peer = std::move(peer);
  }
  Stream* Opened() { return m_connection ? &m_connection->Get() : nullptr; }

  C_Await& m_await;

 private:
  const std::string m_endText;
  std::optional<C_StreamConnection<Stream>> m_connection;
  std::string m_peer;
};

template <class Stream>
C_Link::S_Read C_StreamLink<Stream>::Read(C_Await::t_Time deadline) {
  if (!m_connection) return {{}, S_LinkFailure::Lost("not open")};
  C_Transport::S_Read read = m_connection->Read(deadline);
  if (read.hasEnded) return {{}, S_LinkFailure::Lost(m_endText)};
  if (!read.error.empty()) return {{}, S_LinkFailure::Lost(std::move(read.error))};
  return {read.bytes, {}};
}

}  // namespace Host

#endif  // VELAGNSS_APPS_STREAM_LINK_H
