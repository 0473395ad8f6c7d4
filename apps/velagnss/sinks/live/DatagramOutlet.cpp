#include "apps/velagnss/sinks/live/DatagramOutlet.h"

#include <sys/socket.h>

#include <asio/io_context.hpp>
#include <cerrno>
#include <cstring>
#include <utility>

namespace Host {

void C_DatagramOutlet::Begin(std::string, t_OnEnd onEnd) {
  m_onEnd = std::move(onEnd);
  Send();
}

void C_DatagramOutlet::Send() {
  while (!m_isWaiting && !m_hasEnded) {
    const t_Piece piece = m_queue->Take(t_Clock::now());
    if (piece == nullptr) {
      if (m_isFinishing) End("closed");
      return;
    }
    const eSent sent = SendPiece(piece);
    if (sent == eSent::Failed) return End(std::strerror(errno));
    if (sent == eSent::Yes) continue;
    m_isWaiting = true;
    m_descriptor.async_wait(asio::posix::stream_descriptor::wait_write,
                            [this, self = shared_from_this()](const asio::error_code& error) {
                              m_isWaiting = false;
                              if (!error) Send();
                            });
  }
}

C_DatagramOutlet::eSent C_DatagramOutlet::SendPiece(const t_Piece& piece) {
  for (std::size_t i = 0; i < piece->ends.size(); ++i) {
    const eSent sent = SendUnit(piece->Unit(i));
    if (sent == eSent::Yes) continue;
    const int error = errno;
    m_queue->PutBack(piece, i, t_Clock::now());
    errno = error;
    return sent;
  }
  return eSent::Yes;
}

// A refusal is the answer to an earlier datagram: nobody listens now, but may later.
C_DatagramOutlet::eSent C_DatagramOutlet::SendUnit(std::string_view unit) {
  ssize_t sent = -1;
  do {
    sent = ::send(m_descriptor.native_handle(), unit.data(), unit.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  } while (sent < 0 && (errno == EINTR || errno == ECONNREFUSED));
  if (sent >= 0) {
    ++m_counters->units;
    m_counters->bytes += unit.size();
    return eSent::Yes;
  }
  if (errno == EAGAIN || errno == ENOBUFS) return eSent::NotNow;
  if (errno != EMSGSIZE) return eSent::Failed;
  ++m_counters->dropped;
  return eSent::Yes;
}

}  // namespace Host
