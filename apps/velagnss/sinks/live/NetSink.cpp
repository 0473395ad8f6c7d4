#include "apps/velagnss/sinks/live/NetSink.h"

#include <fmt/format.h>

#include <utility>

namespace Host {
namespace {

using namespace std::chrono_literals;

constexpr auto kTick = 500ms;

// The sink thread takes pieces at once. It is behind only when a file is read as fast as it can be.
constexpr std::size_t kMostPosted = 4 << 20;

}  // namespace

C_NetSink::C_NetSink(C_SinkThread& thread, std::string name, const S_QueueLimits& limits)
    : m_thread(thread), m_name(std::move(name)), m_limits(limits), m_timer(thread.Context()) {}

bool C_NetSink::Open() {
  if (!Prepare()) return false;
  m_thread.Post([this] {
    Begin();
    Tick();
  });
  return true;
}

void C_NetSink::Put(const t_Piece& piece) {
  const std::size_t size = piece->bytes.size();
  if (m_limits.policy != ePolicy::Wait && m_posted + size > kMostPosted) {
    m_counters->dropped += piece->ends.size();
    return;
  }
  m_posted += size;
  m_thread.Post([this, piece, size] {
    OnPiece(piece);
    m_posted -= size;
    if (m_limits.policy == ePolicy::Wait) m_thread.Wake();
  });
}

bool C_NetSink::IsFull() const {
  return m_limits.policy == ePolicy::Wait && (m_counters->full > 0 || m_posted > m_limits.bytes);
}

void C_NetSink::Finish() {
  m_thread.Post([this] {
    m_isFinishing = true;
    BeginFinish();
  });
}

void C_NetSink::NoteFinished() {
  m_isFinished = true;
  m_timer.cancel();
  m_thread.Wake();
}

S_SinkTotals C_NetSink::Totals() const {
  return {m_counters->readers, m_counters->accepted, m_counters->units,
          m_counters->bytes,   m_counters->dropped,  m_counters->waiting};
}

void C_NetSink::Say(S_SinkMessage::eWeight weight, const std::string& text) {
  m_thread.Say(weight, m_name + ": " + text);
}

void C_NetSink::SayConnected(const std::string& peer) {
  Say(S_SinkMessage::eWeight::Notice, peer.empty() ? "connected" : "connected to " + peer);
  m_lastFailure.clear();
}

void C_NetSink::SayFailure(const std::string& text, std::chrono::milliseconds pause) {
  const bool isNews = text != std::exchange(m_lastFailure, text);
  Say(isNews ? S_SinkMessage::eWeight::Warning : S_SinkMessage::eWeight::Detail,
      fmt::format("{}; trying again in {:.1f} s", text, static_cast<double>(pause.count()) / 1000));
}

void C_NetSink::Tick() {
  if (m_isFinished) return;
  m_timer.expires_after(kTick);
  m_timer.async_wait([this](const asio::error_code& error) {
    if (error) return;
    OnTick(t_Clock::now());
    Tick();
  });
}

}  // namespace Host
