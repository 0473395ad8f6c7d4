#include "apps/velagnss/input/SourceLoop.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>

#include "apps/velagnss/input/LinkMessages.h"
#include "apps/velagnss/input/Progress.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using t_Clock = std::chrono::steady_clock;

// A source on its way into its job.
class C_Stream {
 public:
  C_Stream(const S_SourceAndJob& stream, std::size_t pieceSize, bool showProgress)
      : m_source(stream.source),
        m_job(stream.job),
        m_pieceSize(pieceSize),
        m_progress(std::make_unique<C_Progress>(showProgress, m_source.Name(), m_source.Size())) {
    m_job.OnSource(m_source);
    m_job.BeginInput(m_source.Name());
  }

  C_StreamJob& Job() { return m_job; }
  bool IsOpen() const { return m_isOpen; }
  bool HasFailed() const { return m_hasFailed; }

  // One read when the source is ready; closes the stream when that was the last one, when its job wants no more, and
  // after a signal.
  void Serve(bool isReady, std::span<unsigned char> buffer);

  // When its pause becomes a quiet time; none while it is quiet, and for a source that has no such time.
  std::optional<t_Clock::time_point> QuietAt() const { return m_quietAt; }

 private:
  void Read(std::span<unsigned char> buffer);
  void Feed(const S_Chunk& chunk);
  void Take(const S_LinkChange& change);
  void TellQuiet();
  void Close();

  C_ByteSource& m_source;
  C_StreamJob& m_job;
  std::size_t m_pieceSize;
  std::unique_ptr<C_Progress> m_progress;
  std::uint64_t m_total = 0;
  std::optional<t_Clock::time_point> m_quietAt;
  C_LinkMessages m_messages;
  bool m_isOpen = true;
  bool m_hasFailed = false;
};

void C_Stream::Serve(bool isReady, std::span<unsigned char> buffer) {
  const auto goesOn = [this] { return SignalReceived() == 0 && m_job.WantsMore(); };
  if (isReady && goesOn()) Read(buffer);
  if (m_quietAt && t_Clock::now() >= *m_quietAt) TellQuiet();
  if (m_isOpen && !goesOn()) Close();
}

void C_Stream::Read(std::span<unsigned char> buffer) {
  S_Chunk chunk;
  const C_ByteSource::eRead read = m_source.Read(buffer, chunk);
  if (read == C_ByteSource::eRead::Nothing) return;
  if (read == C_ByteSource::eRead::Bytes) return Feed(chunk);
  if (read == C_ByteSource::eRead::Change) return Take(m_source.Change());
  m_hasFailed = read == C_ByteSource::eRead::Failed;
  Close();
}

void C_Stream::Feed(const S_Chunk& chunk) {
  for (std::span<const unsigned char> rest = chunk.bytes; !rest.empty() && m_job.WantsMore();) {
    const std::size_t size = std::min(rest.size(), m_pieceSize);
    m_job.Feed({rest.first(size), chunk.arrival, chunk.isLive});
    rest = rest.subspan(size);
  }
  m_total += chunk.bytes.size();
  m_progress->Update(m_source.Size() > 0 ? m_source.Consumed() : m_total);
  if (const auto quietTime = m_source.QuietTime()) m_quietAt = t_Clock::now() + *quietTime;
}

void C_Stream::Take(const S_LinkChange& change) {
  m_messages.Report(m_source.Name(), change);
  if (change.state == S_LinkChange::eState::Notice) return;
  m_job.OnLink(change);
  m_hasFailed = change.state == S_LinkChange::eState::Failed;
  if (m_hasFailed) Close();
}

void C_Stream::TellQuiet() {
  m_quietAt.reset();
  m_job.OnQuiet();
}

void C_Stream::Close() {
  m_isOpen = false;
  m_progress.reset();
  if (!m_hasFailed) {
    if (m_total == 0 && SignalReceived() == 0 && m_job.WantsMore())
      ReportWarning(fmt::format("{}: is empty", m_source.Name()));
    ReportDetail(fmt::format("{}: {} read", m_source.Name(), Counted(m_total, "byte")));
  }
  m_job.EndInput();
}

template <class Call>
void ForEachOpen(std::span<C_Stream> streams, const Call& call) {
  for (C_Stream& stream : streams)
    if (stream.IsOpen()) call(stream.Job());
}

// Until the first stream becomes quiet or wants to be called. Waits take whole milliseconds, so it is rounded up.
C_SourceWait::t_Limit WaitLimit(std::span<C_Stream> streams) {
  C_SourceWait::t_Limit limit;
  const t_Clock::time_point now = t_Clock::now();
  for (C_Stream& stream : streams) {
    if (!stream.IsOpen()) continue;
    if (const auto longest = stream.Job().LongestWait()) limit = std::min(limit.value_or(*longest), *longest);
    if (!stream.QuietAt()) continue;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(std::max(*stream.QuietAt() - now, t_Clock::duration()));
    limit = std::min(limit.value_or(left), left);
  }
  return limit;
}

// What is ready is shown before a wait, unless there is nothing to wait for.
void WaitForBytes(C_SourceWait& wait, std::span<C_Stream> streams) {
  if (wait.Wait(0ms) == C_SourceWait::eWait::Ready) return;
  ForEachOpen(streams, [](C_StreamJob& job) { job.BeforeWait(); });
  wait.Wait(WaitLimit(streams));
}

}  // namespace

bool C_SourceLoop::Run(std::span<const S_SourceAndJob> given) {
  C_SourceWait wait(given.empty() ? -1 : given.front().job.WakeDescriptor());
  std::vector<C_Stream> streams;
  for (const S_SourceAndJob& stream : given) {
    streams.emplace_back(stream, m_pieceSize, m_showProgress && given.size() == 1);
    wait.Add(stream.source);
  }
  std::size_t open = streams.size();
  while (open > 0) {
    if (SignalReceived() == 0) WaitForBytes(wait, streams);
    for (std::size_t i = 0; i < streams.size(); ++i) {
      if (!streams[i].IsOpen()) continue;
      streams[i].Serve(wait.IsReady(i), m_buffer);
      if (streams[i].IsOpen()) continue;
      wait.Remove(i);
      --open;
    }
  }
  return std::none_of(streams.begin(), streams.end(), [](const C_Stream& stream) { return stream.HasFailed(); });
}

}  // namespace Host
