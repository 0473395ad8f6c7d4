#include "apps/velagnss/monitor/MessageLog.h"

#include <fmt/core.h>
#include <unistd.h>

#include <utility>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMostKept = 200;  // a source that is lost every second would fill the memory otherwise
constexpr auto kNewFor = 10s;

constexpr eStyle kStyles[] = {eStyle::Bad, eStyle::Warning, eStyle::Normal};  // in the order of eMessage

}  // namespace

C_MessageLog::C_MessageLog(std::function<void()> hasNews) : m_hasNews(std::move(hasNews)) {
  SetMessageTaker([this](eMessage kind, const std::string& text) { Take(kind, text); });
}

C_MessageLog::~C_MessageLog() { SetMessageTaker({}); }

void C_MessageLog::Take(eMessage kind, const std::string& text) {
  {
    const std::scoped_lock lock(m_mutex);
    const C_TimeText now = C_TimeText::OfMachine(std::chrono::system_clock::now());
    m_kept.push_back({kind, text, {now, kStyles[static_cast<int>(kind)], std::string(MessageStart(kind)) + text}});
    if (m_kept.size() > kMostKept) m_kept.pop_front(), ++m_leftOut;
    m_last = t_Clock::now();
  }
  m_hasNews();
}

std::vector<S_LogLine> C_MessageLog::Lines() const {
  const std::scoped_lock lock(m_mutex);
  std::vector<S_LogLine> lines;
  for (const S_Kept& kept : m_kept) lines.push_back(kept.line);
  return lines;
}

std::optional<S_LogLine> C_MessageLog::Latest() const {
  const std::scoped_lock lock(m_mutex);
  if (m_kept.empty() || t_Clock::now() - m_last > kNewFor) return std::nullopt;
  return m_kept.back().line;
}

// If standard error is not a terminal, they have been written there all along.
void C_MessageLog::GiveBack() {
  SetMessageTaker({});
  if (::isatty(STDERR_FILENO) == 0) return;
  if (m_leftOut > 0) ReportMessage(eMessage::Notice, fmt::format("{} left out", Counted(m_leftOut, "older message")));
  for (const S_Kept& kept : m_kept) ReportMessage(kept.kind, kept.text);
}

}  // namespace Host
