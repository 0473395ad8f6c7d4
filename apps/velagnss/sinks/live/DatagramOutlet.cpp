#include "apps/velagnss/sinks/live/DatagramOutlet.h"

#include <sys/socket.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <cerrno>
#include <cstring>
#include <utility>

namespace Host {

C_DatagramOutlet::C_DatagramOutlet(asio::io_context& context, C_FileDescriptor socket, t_SinkCounters counters,
                                   std::shared_ptr<C_SendQueue> queue)
    : m_socket(context, socket.Release()), m_counters(std::move(counters)), m_queue(std::move(queue)) {}

void C_DatagramOutlet::Begin(std::string, t_OnEnd onEnd) {
  m_onEnd = std::move(onEnd);
  Send();
}

void C_DatagramOutlet::Put(const t_Piece& piece) {
  if (m_hasEnded || m_isFinishing) return;
  if (!m_queue->Add(piece, t_Clock::now())) return End("does not keep up");
  Send();
}

void C_DatagramOutlet::Finish() {
  m_isFinishing = true;
  Send();
}

void C_DatagramOutlet::Close() {
  m_onEnd = nullptr;
  End({});
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
    m_socket.async_wait(asio::posix::stream_descriptor::wait_write,
                        [self = shared_from_this()](const asio::error_code& error) {
                          self->m_isWaiting = false;
                          if (!error) self->Send();
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
    sent = ::send(m_socket.native_handle(), unit.data(), unit.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
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

void C_DatagramOutlet::End(const std::string& why) {
  if (m_hasEnded) return;
  m_hasEnded = true;
  asio::error_code ignored;
  m_socket.close(ignored);
  if (m_onEnd) asio::post(m_socket.get_executor(), [onEnd = std::exchange(m_onEnd, nullptr), why] { onEnd(why); });
}

}  // namespace Host
