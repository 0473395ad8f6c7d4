#include "apps/velagnss/input/live/LiveSource.h"

#include <fmt/core.h>

#include <algorithm>
#include <ctime>
#include <utility>

#include "apps/velagnss/input/live/RetryPauses.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using t_Time = C_Await::t_Time;

// How long the machine has been suspended since it was started. The steady clock does not count that time.
std::chrono::nanoseconds TimeSuspended() {
  const auto read = [](clockid_t clock) {
    timespec now{};
    ::clock_gettime(clock, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
  };
  return read(CLOCK_BOOTTIME) - read(CLOCK_MONOTONIC);
}

S_RetryRules Rules(const C_Link& link, const S_LiveOptions& options) {
  S_RetryRules rules = link.RetryRules();
  if (options.retryPause) rules.first = rules.longest = std::max(*options.retryPause, rules.least);
  return rules;
}

S_LinkFailure Idle(milliseconds timeout) {
  return {S_LinkFailure::eKind::Lost, fmt::format("no data for {} s", static_cast<double>(timeout.count()) / 1000), {}};
}

}  // namespace

C_LiveSource::C_LiveSource(std::string shownName, const S_LiveOptions& options, t_MakeLink makeLink)
    : m_name(std::move(shownName)),
      m_options(options),
      m_positions(m_name, options.position == kPositionOfStream ? options.positions.get() : nullptr),
      m_thread([this, make = std::move(makeLink)] { Work(make); }) {}

C_LiveSource::~C_LiveSource() {
  m_queue.Close();
  m_await.Stop();
  m_thread.join();
}

// Only what the system refuses throws: memory, descriptors, threads.
void C_LiveSource::Work(const t_MakeLink& makeLink) {
  try {
    KeepOpen(*makeLink(m_await));
  } catch (const std::exception& error) {
    m_queue.Push({S_LinkChange::eState::Failed, error.what(), {}, 0, {}});
  }
}

void C_LiveSource::KeepOpen(C_Link& link) {
  using eState = S_LinkChange::eState;
  C_RetryPauses pauses(Rules(link, m_options));
  link.SetNotice([this](const std::string& text) { m_queue.Push({eState::Notice, text, {}, 0, {}}); });
  while (!m_await.IsStopping()) {
    m_queue.Push({eState::Connecting, {}, {}, pauses.Failures(), {}});
    milliseconds goodFor{};
    std::optional<S_LinkFailure> failure = link.Open();
    if (!failure) {
      m_queue.Push({eState::Connected, link.Peer(), {}, pauses.Failures(), {}});
      failure = Stream(link, goodFor);
    }
    link.Close();
    if (m_await.IsStopping()) return;
    if (failure->kind == S_LinkFailure::eKind::Ended) return m_queue.PushEnd();
    const milliseconds pause = pauses.Next(*failure, goodFor);
    const bool isOver = failure->kind == S_LinkFailure::eKind::Final ||
                        (m_options.maxTries > 0 && pauses.Failures() == m_options.maxTries);
    const eState state = isOver                                           ? eState::Failed
                         : failure->kind == S_LinkFailure::eKind::Refused ? eState::Refused
                                                                          : eState::Lost;
    m_queue.Push({state, std::move(failure->text), isOver ? 0ms : pause, pauses.Failures(), {}});
    if (isOver) return;
    m_await.Sleep(pause);
  }
}

// Until the link fails. `goodFor`: from its first byte to its last.
S_LinkFailure C_LiveSource::Stream(C_Link& link, milliseconds& goodFor) {
  constexpr auto kLook = 10s;  // after the clocks; a wait may also end early
  const std::optional<milliseconds> idleTimeout =
      m_options.idleTimeout ? m_options.idleTimeout : link.RetryRules().idleTimeout;
  const std::chrono::nanoseconds suspended = TimeSuspended();
  std::optional<t_Time> first;
  t_Time last = C_Await::t_Clock::now();
  while (!m_await.IsStopping()) {
    const t_Time look = C_Await::t_Clock::now() + kLook;
    const C_Link::S_Read read = link.Read(idleTimeout ? std::min(look, last + *idleTimeout) : look);
    if (!read.bytes.empty()) {
      m_positions.Take(read.bytes);
      if (!m_queue.Push(read.bytes)) break;
    }
    const t_Time now = C_Await::t_Clock::now();  // after the queue had room, which may have taken long
    if (!read.bytes.empty()) {
      if (!first) first = now;
      last = now;
    }
    if (first) goodFor = std::chrono::duration_cast<milliseconds>(last - *first);
    if (read.failure) return *read.failure;
    if (TimeSuspended() - suspended > kLook) return {S_LinkFailure::eKind::Lost, "the machine was suspended", {}};
    if (idleTimeout && now - last >= *idleTimeout) return Idle(*idleTimeout);
  }
  return {S_LinkFailure::eKind::Lost, "stopped", {}};
}

C_ByteSource::eRead C_LiveSource::Read(std::span<unsigned char> buffer, S_Chunk& chunk) {
  std::optional<C_ChunkQueue::S_Item> item = m_queue.Pop();
  if (!item) return eRead::Nothing;
  if (item->isEnd) return eRead::End;
  if (item->bytes.empty()) {
    m_change = std::move(item->change);
    return eRead::Change;
  }
  std::copy(item->bytes.begin(), item->bytes.end(), buffer.begin());
  chunk = {buffer.first(item->bytes.size()), item->arrival, true};
  return eRead::Bytes;
}

}  // namespace Host
