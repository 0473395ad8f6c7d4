// What the destinations that the sink thread serves have in common.
#ifndef VELAGNSS_APPS_NET_SINK_H
#define VELAGNSS_APPS_NET_SINK_H

#include <asio/steady_timer.hpp>
#include <atomic>
#include <string>

#include "apps/velagnss/sinks/live/SendQueue.h"
#include "apps/velagnss/sinks/live/Sink.h"
#include "apps/velagnss/sinks/live/SinkThread.h"

namespace Host {

// The virtual functions run on the sink thread, but for `Prepare`.
class C_NetSink : public C_Sink {
 public:
  using t_Clock = C_SinkThread::t_Clock;

  // `thread` must be stopped before the sink goes.
  C_NetSink(C_SinkThread& thread, std::string name, const S_QueueLimits& limits);

  const std::string& Name() const final { return m_name; }
  bool Open() final;
  void Put(const t_Piece& piece) final;
  bool IsFull() const final;
  void Finish() final;
  bool IsFinished() const final { return m_isFinished; }
  S_SinkTotals Totals() const final;

 protected:
  // On the main thread, before anything else: false, reported, when it is of no use to begin.
  virtual bool Prepare() { return true; }
  virtual void Begin() = 0;
  virtual void OnPiece(const t_Piece& piece) = 0;
  virtual void OnTick(t_Clock::time_point now) = 0;  // twice a second
  virtual void BeginFinish() = 0;

  bool IsFinishing() const { return m_isFinishing; }
  void NoteFinished();
  void Say(S_SinkMessage::eWeight weight, const std::string& text);

  // On the thread that connects, if there is one. The same failure again and again is one line.
  void SayConnected(const std::string& peer);
  void SayFailure(const std::string& text, std::chrono::milliseconds pause);

  C_SinkThread& Thread() { return m_thread; }
  asio::io_context& Context() { return m_thread.Context(); }
  const S_QueueLimits& Limits() const { return m_limits; }
  const t_SinkCounters& Counters() { return m_counters; }

 private:
  void Tick();

  C_SinkThread& m_thread;
  std::string m_name;
  S_QueueLimits m_limits;
  const t_SinkCounters m_counters = std::make_shared<S_SinkCounters>();
  asio::steady_timer m_timer;
  std::string m_lastFailure;
  std::atomic<std::size_t> m_posted = 0;  // bytes that the sink thread has not taken yet
  bool m_isFinishing = false;
  std::atomic<bool> m_isFinished = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NET_SINK_H
