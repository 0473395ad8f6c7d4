#include "apps/velagnss/sinks/live/OutgoingSink.h"

#include <fmt/core.h>

#include <exception>
#include <utility>

#include "apps/velagnss/input/live/RetryPauses.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/live/Connection.h"
#include "apps/velagnss/sinks/live/DatagramOutlet.h"

namespace Host {

using eWeight = S_SinkMessage::eWeight;
using std::chrono::milliseconds;

C_OutgoingSink::C_OutgoingSink(C_SinkThread& thread, std::string name, const S_QueueLimits& limits, S_DialRules rules,
                               t_Dial dial)
    : C_NetSink(thread, std::move(name), limits),
      m_rules(rules),
      m_dial(std::move(dial)),
      m_queue(std::make_shared<C_SendQueue>(limits, Counters())) {}

C_OutgoingSink::~C_OutgoingSink() {
  m_await.Stop();
  if (m_dialer.joinable()) m_dialer.join();
}

void C_OutgoingSink::Begin() {
  m_dialer = std::thread([this] { KeepConnected(); });
}

void C_OutgoingSink::KeepConnected() try {
  C_RetryPauses pauses(m_rules.retry);
  while (!m_await.IsStopping()) {
    if (m_rules.waitsForData) m_await.Until(C_Await::t_Time::max(), [this] { return m_hasData.load(); });
    if (m_await.IsStopping()) return;
    const auto begin = C_Await::t_Clock::now();
    S_Dialed dialed = m_dial(m_await);
    const bool isConnected = !dialed.failure;
    const S_LinkFailure failure = isConnected ? UseConnection(std::move(dialed)) : std::move(*dialed.failure);
    if (m_await.IsStopping()) return;
    const auto goodFor = std::chrono::duration_cast<milliseconds>(C_Await::t_Clock::now() - begin);
    const milliseconds pause = pauses.Next(failure, isConnected ? goodFor : milliseconds(0));
    ReportFailure(failure, pause);
    if (m_hasFailed) return;
    m_await.Sleep(pause);
  }
} catch (const std::exception& error) {  // what the system refuses: memory, descriptors
  ReportFailure({S_LinkFailure::eKind::Final, error.what(), {}}, {});
}

// Until it is lost.
S_LinkFailure C_OutgoingSink::UseConnection(S_Dialed dialed) {
  SayConnected(dialed.peer);
  m_loss.reset();
  const auto shared = std::make_shared<S_Dialed>(std::move(dialed));
  Thread().Post([this, shared] { Attach(std::move(*shared)); });
  m_await.Until(C_Await::t_Time::max(), [this] { return m_loss.has_value(); });
  return m_loss.value_or(S_LinkFailure{S_LinkFailure::eKind::Lost, "stopped", {}});
}

void C_OutgoingSink::ReportFailure(const S_LinkFailure& failure, milliseconds pause) {
  const std::string text = Printable(failure.text);
  if (failure.kind == S_LinkFailure::eKind::Final) {
    m_hasFailed = true;
    return Say(eWeight::Error, text);
  }
  SayFailure(text, pause);
}

void C_OutgoingSink::Attach(S_Dialed dialed) {
  if (dialed.kind == S_Dialed::eKind::Datagrams) {
    m_outlet = std::make_shared<C_DatagramOutlet>(Context(), std::move(dialed.descriptor), Counters(), m_queue);
  } else {
    auto connection =
        std::make_shared<C_Connection>(Context(), std::move(dialed.descriptor), Limits(), Counters(), m_queue);
    if (dialed.kind == S_Dialed::eKind::Chunks) connection->UseChunks();
    if (dialed.kind == S_Dialed::eKind::Port) connection->UsePort();
    m_outlet = std::move(connection);
  }
  ++Counters()->accepted;
  Counters()->readers = 1;
  m_outlet->Begin({}, [this](const std::string& why) { OnLost(why); });
  if (IsFinishing()) m_outlet->Finish();
}

void C_OutgoingSink::OnLost(const std::string& why) {
  m_outlet.reset();
  Counters()->readers = 0;
  if (IsFinishing() && m_queue->IsEmpty()) {
    m_await.Stop();
    return NoteFinished();
  }
  m_hasData = !m_queue->IsEmpty();
  m_await.Post([this, why] { m_loss = S_LinkFailure{S_LinkFailure::eKind::Lost, why, {}}; });
}

void C_OutgoingSink::OnPiece(const t_Piece& piece) {
  if (m_hasFailed) return m_queue->Clear();  // nobody will ever take what waits
  if (m_outlet != nullptr) {
    m_outlet->Put(piece);
  } else if (!m_queue->Add(piece, t_Clock::now())) {
    m_queue->Clear();
  }
  if (!m_hasData.exchange(true)) m_await.Post([] {});
}

void C_OutgoingSink::OnTick(t_Clock::time_point now) {
  if (m_outlet != nullptr) m_outlet->CheckProgress(now);
}

void C_OutgoingSink::BeginFinish() {
  if (m_outlet != nullptr) return m_outlet->Finish();
  if (!m_queue->IsEmpty() && !m_hasFailed) return;
  m_await.Stop();
  NoteFinished();
}

}  // namespace Host
