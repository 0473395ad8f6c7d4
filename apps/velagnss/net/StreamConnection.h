// An open stream of asio, a socket or a descriptor, read and written with deadlines.
#ifndef VELAGNSS_APPS_STREAM_CONNECTION_H
#define VELAGNSS_APPS_STREAM_CONNECTION_H

#include <array>
#include <asio/buffer.hpp>
#include <asio/write.hpp>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "apps/velagnss/net/Transport.h"

namespace Host {

// Of bytes that wait to be sent.
inline constexpr std::size_t kMaxUnsent = std::size_t{64} << 10;

// A read stays outstanding between the calls, so that bytes which come just before the end are not lost with it.
template <class Stream>
class C_StreamConnection {
 public:
  C_StreamConnection(C_Await& await, Stream stream)
      : m_await(await), m_state(std::make_shared<S_State>(std::move(stream))) {}
  ~C_StreamConnection() { Close(); }
  C_StreamConnection(const C_StreamConnection&) = delete;
  C_StreamConnection& operator=(const C_StreamConnection&) = delete;

  // As C_Transport declares them.
  C_Transport::S_Read Read(C_Await::t_Time deadline);
  void Send(std::string_view bytes);
  void Close() {
    asio::error_code ignored;
    m_state->stream.close(ignored);
  }

  Stream& Get() { return m_state->stream; }

 private:
  // Handlers hold it: they may run after the connection is gone, in a wait of the next one.
  struct S_State : std::enable_shared_from_this<S_State> {
    explicit S_State(Stream given) : stream(std::move(given)) {}
    void BeginRead();
    void BeginWrite();

    Stream stream;
    bool isReading = false;
    std::size_t numRead = 0;
    asio::error_code readError;
    bool isWriting = false;
    asio::error_code writeError;
    std::string sent;     // what is being written
    std::string waiting;  // for that to end
    std::array<unsigned char, std::size_t{64} << 10> buffer;
  };

  C_Await& m_await;
  std::shared_ptr<S_State> m_state;
};

template <class Stream>
void C_StreamConnection<Stream>::S_State::BeginRead() {
  isReading = true;
  numRead = 0;
  stream.async_read_some(asio::buffer(buffer),
                         [self = this->shared_from_this()](const asio::error_code& error, std::size_t size) {
                           self->isReading = false;
                           self->numRead = size;
                           self->readError = error;
                         });
}

template <class Stream>
void C_StreamConnection<Stream>::S_State::BeginWrite() {
  isWriting = true;
  sent = std::exchange(waiting, {});
  asio::async_write(stream, asio::buffer(sent),
                    [self = this->shared_from_this()](const asio::error_code& error, std::size_t) {
                      self->isWriting = false;
                      self->writeError = error;
                      if (!error && !self->waiting.empty()) self->BeginWrite();
                    });
}

template <class Stream>
C_Transport::S_Read C_StreamConnection<Stream>::Read(C_Await::t_Time deadline) {
  S_State& state = *m_state;
  if (!state.isReading && !state.readError) state.BeginRead();
  if (!m_await.Until(deadline, [&state] { return !state.isReading || state.writeError; })) return {};
  // What the other side sent before it went away is still there.
  if (state.isReading) m_await.Until(C_Await::t_Clock::now(), [&state] { return !state.isReading; });
  if (!state.isReading && !state.readError) return {std::span(state.buffer).first(state.numRead), false, {}};
  if (state.readError == asio::error::eof) return {{}, true, {}};
  return {{}, false, (state.readError ? state.readError : state.writeError).message()};
}

template <class Stream>
void C_StreamConnection<Stream>::Send(std::string_view bytes) {
  if (m_state->writeError || m_state->waiting.size() + bytes.size() > kMaxUnsent) return;
  m_state->waiting += bytes;
  if (!m_state->isWriting) m_state->BeginWrite();
}

}  // namespace Host

#endif  // VELAGNSS_APPS_STREAM_CONNECTION_H
