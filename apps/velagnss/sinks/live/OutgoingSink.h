// A destination that we connect to, and connect to again whenever the connection is lost.
#ifndef VELAGNSS_APPS_OUTGOING_SINK_H
#define VELAGNSS_APPS_OUTGOING_SINK_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "apps/velagnss/input/live/Link.h"
#include "apps/velagnss/net/Await.h"
#include "apps/velagnss/sinks/live/NetSink.h"
#include "apps/velagnss/sinks/live/Outlet.h"

namespace Host {

// The outcome of a try to connect.
struct S_Dialed {
  C_FileDescriptor descriptor = {};
  std::string peer = {};  // what the other end is, for messages; may be empty
  enum class eKind { Stream, Chunks, Port, Datagrams };
  eKind kind = eKind::Stream;
  std::optional<S_LinkFailure> failure = {};  // then there is nothing else
};

struct S_DialRules {
  S_RetryRules retry;
  bool waitsForData = false;  // connects only when there is something to send
};

// Connecting is a sequence of steps with deadlines, so it has a thread of its own. Sending is done by the sink thread.
// What comes while there is no connection waits in the queue, within its limits.
class C_OutgoingSink : public C_NetSink {
 public:
  using t_Dial = std::function<S_Dialed(C_Await& await)>;

  C_OutgoingSink(C_SinkThread& thread, std::string name, const S_QueueLimits& limits, S_DialRules rules, t_Dial dial);
  ~C_OutgoingSink() override;
  C_OutgoingSink(const C_OutgoingSink&) = delete;
  C_OutgoingSink& operator=(const C_OutgoingSink&) = delete;

  bool HasEnded() const override { return m_hasFailed; }
  bool HasFailed() const override { return m_hasFailed; }

 protected:
  void Begin() override;
  void OnPiece(const t_Piece& piece) override;
  void OnTick(t_Clock::time_point now) override;
  void BeginFinish() override;

 private:
  // On the dialing thread.
  void KeepConnected();
  S_LinkFailure UseConnection(S_Dialed dialed);
  void ReportFailure(const S_LinkFailure& failure, std::chrono::milliseconds pause);

  // On the sink thread.
  void Attach(S_Dialed dialed);
  void OnLost(const std::string& why);

  S_DialRules m_rules;
  t_Dial m_dial;
  std::shared_ptr<C_SendQueue> m_queue;
  std::shared_ptr<C_Outlet> m_outlet;  // none: not connected
  std::atomic<bool> m_hasData = false;
  std::atomic<bool> m_hasFailed = false;

  C_Await m_await;
  std::optional<S_LinkFailure> m_loss;  // of the connection
  std::thread m_dialer;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OUTGOING_SINK_H
