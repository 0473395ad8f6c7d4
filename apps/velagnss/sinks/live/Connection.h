// One open connection of a destination: sends what waits for it, and notices its end.
#ifndef VELAGNSS_APPS_CONNECTION_H
#define VELAGNSS_APPS_CONNECTION_H

#include <array>
#include <asio/buffer.hpp>
#include <asio/error.hpp>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/sinks/live/Outlet.h"

namespace Host {

// A socket or a port. What the other side sends is read and dropped: unread bytes would hide its end, and turn our own
// into a reset.
class C_Connection : public C_Outlet {
 public:
  C_Connection(asio::io_context& context, C_FileDescriptor descriptor, const S_QueueLimits& limits,
               t_SinkCounters counters, std::shared_ptr<C_SendQueue> queue);

  // Each piece becomes a chunk (RFC 9112, 7.1), and the end the last one.
  void UseChunks() { m_usesChunks = true; }

  // It is a serial port, or a pipe, which cannot be read.
  void UsePort() { m_isPort = true; }
  void UsePipe() { m_isPipe = true; }

  void Begin(std::string head, t_OnEnd onEnd) override;
  void CheckProgress(t_Clock::time_point now) override;

 private:
  struct S_InFlight {
    t_Piece piece;
    std::size_t begin;  // in the bytes of this write
  };

  void Read();
  void Send() override;
  bool Gather(t_Clock::time_point now);
  void AddPieces(t_Clock::time_point now);
  void OnWritten(const asio::error_code& error, std::size_t sent);
  void Account(std::size_t sent);
  void EndWriting();
  void EndPort();
  void BeforeEnd() override;

  S_QueueLimits m_limits;
  std::array<char, 1024> m_dropped;

  std::string m_head;                  // before the first piece
  std::vector<S_InFlight> m_inFlight;  // of the write that is going on
  std::deque<std::string> m_lines;     // likewise: the head, lines around chunks
  std::vector<asio::const_buffer> m_buffers;
  t_Clock::time_point m_lastProgress;
  bool m_isWriting = false;
  bool m_usesChunks = false;
  bool m_isPort = false;
  bool m_isPipe = false;
  bool m_isShutDown = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_CONNECTION_H
