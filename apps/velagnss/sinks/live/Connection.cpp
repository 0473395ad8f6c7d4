#include "apps/velagnss/sinks/live/Connection.h"

#include <fmt/core.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <asio/completion_condition.hpp>
#include <asio/io_context.hpp>
#include <asio/write.hpp>
#include <utility>

#include "apps/velagnss/os/SerialPort.h"

namespace Host {
namespace {

using namespace std::chrono_literals;

// More than the system takes at once, and few enough to be dropped when they get old.
constexpr std::size_t kMostBytesAtOnce = 1 << 15;
constexpr std::size_t kMostPiecesAtOnce = 16;

// How long the other side may take to notice that we have ended.
constexpr auto kLinger = 1s;

}  // namespace

C_Connection::C_Connection(asio::io_context& context, C_FileDescriptor descriptor, const S_QueueLimits& limits,
                           t_SinkCounters counters, std::shared_ptr<C_SendQueue> queue)
    : C_Outlet(context, std::move(descriptor), std::move(counters), std::move(queue)), m_limits(limits) {}

void C_Connection::Begin(std::string head, t_OnEnd onEnd) {
  m_onEnd = std::move(onEnd);
  m_head = std::move(head);
  if (!m_isPipe) Read();
  Send();
}

void C_Connection::CheckProgress(t_Clock::time_point now) {
  const auto idle = now - m_lastProgress;
  if (m_isShutDown && m_isPort) EndPort();
  if (m_isShutDown && idle > kLinger) return End("closed");
  if (m_isWriting && idle > m_limits.stall)
    End(fmt::format("has taken nothing for {} s", std::chrono::ceil<std::chrono::seconds>(m_limits.stall).count()));
}

void C_Connection::Read() {
  m_descriptor.async_read_some(asio::buffer(m_dropped),
                               [this, self = shared_from_this()](const asio::error_code& error, std::size_t) {
                                 if (m_hasEnded) return;
                                 if (!error) return Read();
                                 const auto* const atEnd = m_isPort ? "the device is gone" : "closed by the other side";
                                 End(error == asio::error::eof ? atEnd : error.message());
                               });
}

void C_Connection::Send() {
  if (m_isWriting || m_hasEnded || m_isShutDown) return;
  const t_Clock::time_point now = t_Clock::now();
  if (!Gather(now)) {
    if (m_isFinishing) EndWriting();
    return;
  }
  m_isWriting = true;
  m_lastProgress = now;
  const auto goOn = [this](const asio::error_code& error, std::size_t sent) {
    if (sent > 0) m_lastProgress = t_Clock::now();
    return asio::transfer_all()(error, sent);
  };
  asio::async_write(
      m_descriptor, m_buffers, goOn,
      [this, self = shared_from_this()](const asio::error_code& error, std::size_t sent) { OnWritten(error, sent); });
}

// False: there is nothing to send.
bool C_Connection::Gather(t_Clock::time_point now) {
  m_inFlight.clear();
  m_lines.clear();
  m_buffers.clear();
  if (!m_head.empty()) m_buffers.push_back(asio::buffer(m_lines.emplace_back(std::exchange(m_head, {}))));
  AddPieces(now);
  return !m_buffers.empty();
}

void C_Connection::AddPieces(t_Clock::time_point now) {
  std::size_t size = asio::buffer_size(m_buffers);
  const auto addLine = [&](std::string line) {
    m_buffers.push_back(asio::buffer(m_lines.emplace_back(std::move(line))));
    size += m_lines.back().size();
  };
  while (size < kMostBytesAtOnce && m_inFlight.size() < kMostPiecesAtOnce) {
    const t_Piece piece = m_queue->Take(now);
    if (piece == nullptr) return;
    if (m_usesChunks) addLine(fmt::format("{:X}\r\n", piece->bytes.size()));
    m_inFlight.push_back({piece, size});
    m_counters->waiting += piece->ends.size();
    m_buffers.push_back(asio::buffer(piece->bytes));
    size += piece->bytes.size();
    if (m_usesChunks) addLine("\r\n");
  }
}

void C_Connection::OnWritten(const asio::error_code& error, std::size_t sent) {
  m_isWriting = false;
  Account(sent);
  if (m_hasEnded) return;
  if (error) return End(error.message());
  Send();
}

// What was not sent as a whole unit goes back: the next connection of a destination begins with it.
void C_Connection::Account(std::size_t sent) {
  const t_Clock::time_point now = t_Clock::now();
  for (auto flight = m_inFlight.rbegin(); flight != m_inFlight.rend(); ++flight) {
    const S_Piece& piece = *flight->piece;
    const std::size_t pieceSent = std::min(sent - std::min(sent, flight->begin), piece.bytes.size());
    const auto unsent = std::upper_bound(piece.ends.begin(), piece.ends.end(), pieceSent);
    const auto units = static_cast<std::size_t>(unsent - piece.ends.begin());
    m_counters->units += units;
    m_counters->waiting -= piece.ends.size();
    m_counters->bytes += pieceSent;
    m_queue->PutBack(flight->piece, units, now);
  }
  m_inFlight.clear();
}

void C_Connection::EndWriting() {
  if (m_usesChunks) {
    m_usesChunks = false;
    m_head = "0\r\n\r\n";
    return Send();
  }
  m_isShutDown = true;
  m_lastProgress = t_Clock::now();
  if (m_isPort) return EndPort();
  if (::shutdown(m_descriptor.native_handle(), SHUT_WR) != 0) End("closed");
}

// A port that is closed drops what the line has not taken yet.
void C_Connection::EndPort() {
  int waiting = 0;
  if (::ioctl(m_descriptor.native_handle(), TIOCOUTQ, &waiting) != 0 || waiting == 0) End("closed");
}

void C_Connection::BeforeEnd() {
  if (m_isPort) ReleaseSerialPort(m_descriptor.native_handle());
}

}  // namespace Host
