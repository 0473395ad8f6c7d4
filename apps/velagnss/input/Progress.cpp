#include "apps/velagnss/input/Progress.h"

#include <fmt/core.h>

#include <utility>

#include "apps/velagnss/os/Diagnostics.h"

namespace Host {
namespace {

using namespace std::chrono_literals;

// Runs of less than a second show nothing; then five lines a second look continuous.
constexpr auto kFirstShowAfter = 1s;
constexpr auto kShowEvery = 200ms;

}  // namespace

C_Progress::C_Progress(bool isWanted, std::string name, std::uint64_t size)
    : m_isOn(isWanted && IsErrorATerminal() && Verbosity() != eVerbosity::Quiet),
      m_name(std::move(name)),
      m_size(size),
      m_start(t_Clock::now()),
      m_nextShow(m_start + kFirstShowAfter) {}

C_Progress::~C_Progress() {
  if (m_isOn) ShowProgressLine({});
}

void C_Progress::Update(std::uint64_t done) {
  if (!m_isOn) return;
  const t_Clock::time_point now = t_Clock::now();
  if (now < m_nextShow) return;
  m_nextShow = now + kShowEvery;
  ShowProgressLine(Printable(ProgressText(m_name, done, m_size, std::chrono::duration<double>(now - m_start).count())));
}

std::string ProgressText(const std::string& name, std::uint64_t done, std::uint64_t size, double seconds) {
  constexpr double kMega = 1e6;
  const auto bytes = static_cast<double>(done);
  const double rate = seconds > 0 ? bytes / seconds : 0;
  // A pipe has no size, and a file that is still being written outgrows the size it had when it was opened.
  if (size == 0 || rate <= 0 || done > size)
    return fmt::format("{}: {:.1f} MB, {:.1f} MB/s", name, bytes / kMega, rate / kMega);
  return fmt::format("{}: {} %, {:.1f} MB/s, {:.0f} s left", name, 100 * done / size, rate / kMega,
                     static_cast<double>(size - done) / rate);
}

}  // namespace Host
