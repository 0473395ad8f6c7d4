#include "apps/velagnss/record/ReplaySource.h"

#include <fmt/core.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"

namespace Host {

using namespace std::chrono;

C_ReplaySource::C_ReplaySource(S_ReplayOptions options)
    : m_options(std::move(options)),
      m_name(m_options.files.size() == 1 ? m_options.files.front() : fmt::format("{} files", m_options.files.size())),
      m_timer(m_options.speed ? ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK) : -1),
      m_reader(std::make_unique<C_ReplayReader>(m_options.files, m_options.maxGap)),
      m_start(steady_clock::now()) {
  SetTimer();
}

t_SteadyTime C_ReplaySource::DueTime() const {
  if (!m_options.speed) return m_start;
  const auto at = static_cast<double>((m_before + m_piece.at).count()) / *m_options.speed;
  constexpr double kNever = 3e15;  // a hundred years, which the clock can still be ahead of
  return m_start + microseconds(static_cast<std::int64_t>(std::min(at, kNever)));
}

// A time that is over makes the timer readable at once, but a time of 0 would switch it off.
void C_ReplaySource::SetTimer() {
  const auto due = std::max(duration_cast<nanoseconds>(DueTime().time_since_epoch()), nanoseconds(1));
  itimerspec time{};
  time.it_value.tv_sec = duration_cast<seconds>(due).count();
  time.it_value.tv_nsec = (due % seconds(1)).count();
  if (m_timer.IsOpen()) ::timerfd_settime(m_timer.Get(), TFD_TIMER_ABSTIME, &time, nullptr);
}

// The next piece; false at the end.
bool C_ReplaySource::Fetch() {
  for (;;) {
    const C_ReplayReader::eRead read = m_reader->Next(m_piece);
    m_used = 0;
    if (read == C_ReplayReader::eRead::Piece) return m_hasGiven = true;
    m_piece.bytes.clear();
    m_hasFailed = read == C_ReplayReader::eRead::Failed;
    if (m_hasFailed || !m_options.loops || !m_hasGiven || !Restart()) return false;
  }
}

bool C_ReplaySource::Restart() {
  if (!std::exchange(m_hasLooped, true))
    ReportWarning(fmt::format("{}: begins again; from here on the times in the data have been before", m_name));
  m_before += m_piece.at;
  m_piece.at = {};
  m_hasGiven = false;
  m_reader = std::make_unique<C_ReplayReader>(m_options.files, m_options.maxGap);
  return true;
}

C_ByteSource::eRead C_ReplaySource::Read(std::span<unsigned char> buffer, S_Chunk& chunk) {
  if (m_used == m_piece.bytes.size()) {
    if (!Fetch()) return m_hasFailed ? eRead::Failed : eRead::End;
    SetTimer();
  }
  if (steady_clock::now() < DueTime()) return eRead::Nothing;
  const std::size_t size = std::min(buffer.size(), m_piece.bytes.size() - m_used);
  std::copy_n(m_piece.bytes.begin() + static_cast<std::ptrdiff_t>(m_used), size, buffer.begin());
  m_used += size;
  chunk = {buffer.first(size), m_piece.arrival.value_or(floor<microseconds>(system_clock::now())),
           m_piece.arrival.has_value()};
  return eRead::Bytes;
}

}  // namespace Host
