#include "apps/velagnss/monitor/ScreenThread.h"

#include <poll.h>
#include <pthread.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

using namespace std::chrono_literals;

constexpr auto kShortestPause = 100ms;                   // between two screens
constexpr std::chrono::milliseconds kLongestPause = 1s;  // ages are shown in seconds

}  // namespace

C_ScreenThread::C_ScreenThread(C_Wake& wake, C_Sources& sources, const C_MessageLog& log, const std::string& filter)
    : m_wake(wake),
      m_sources(sources),
      m_log(log),
      m_controls(filter, [&sources](std::string_view text) { return sources.SetFilter(text); }) {}

// When another exception is on its way, a second one would end the program without a message.
C_ScreenThread::~C_ScreenThread() {
  try {
    if (Stop() == eEnd::Stuck) std::_Exit(eExitOutput);
  } catch (...) {
  }
}

std::optional<std::string> C_ScreenThread::Start(const S_TerminalOptions& options) {
  EndAtSecondSignal(false);
  std::promise<std::optional<std::string>> opened;
  std::future<std::optional<std::string>> result = opened.get_future();
  m_thread = std::thread([this, options, promise = std::move(opened)]() mutable { Work(options, std::move(promise)); });
  return result.get();
}

// The terminal is restored as soon as a signal comes, whatever else there is to be done before the end.
void C_ScreenThread::Work(const S_TerminalOptions& options, std::promise<std::optional<std::string>> opened) {
  std::optional<std::string> error = m_terminal.Open(options);
  const bool isOpen = !error;
  opened.set_value(std::move(error));
  if (isOpen) ShowUntilEnd();
  EndAtSecondSignal(true);
  const std::scoped_lock lock(m_mutex);
  m_isDone = true;
  m_hasEnded.notify_all();
}

// Only the allocation of memory throws.
void C_ScreenThread::ShowUntilEnd() {
  try {
    while (!m_isEnding && SignalReceived() == 0) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(
          m_lastDraw + (m_hasNews ? kShortestPause : kLongestPause) - t_Clock::now());
      left > 0ms ? Wait(left) : Draw();
    }
  } catch (...) {
    m_failure = std::current_exception();
    RequestEnd();
  }
  m_terminal.Close();
}

void C_ScreenThread::Draw() {
  C_Grid grid = m_terminal.MakeGrid();
  const S_ScreenState state = State();
  m_controls.SetExtent(grid.Rows(), DrawScreen(grid, View(state.tab), state));
  m_terminal.Show(grid);
  m_lastDraw = t_Clock::now();
  m_hasNews = false;
}

S_ScreenState C_ScreenThread::State() {
  S_ScreenState state = m_controls.State();
  if (state.isPaused != m_isPaused) Hold(state.isPaused);
  state.tabs = m_sources.Tabs();
  m_controls.SetTabs(state.tabs.size());
  state.log = m_log.Lines();
  if (const std::optional<S_LogLine> latest = m_log.Latest(); latest && state.message.empty()) {
    state.message = latest->text;
    state.messageStyle = latest->style;
  }
  return state;
}

// A source that begins while all are held is held as it is when it is first looked at.
const S_SourceView& C_ScreenThread::View(std::size_t tab) {
  S_SourceView& view = m_views[tab];
  if (m_isPaused && !view.name.empty()) return view;
  if (std::optional<S_SourceView> now = m_sources.View(tab)) view = std::move(*now);
  return view;
}

void C_ScreenThread::Hold(bool isPaused) {
  m_isPaused = false;
  m_views.clear();
  for (std::size_t tab = 0; isPaused && tab < m_sources.Tabs().size(); ++tab) View(tab);
  m_isPaused = isPaused;
}

// While there is news, only the time for the next screen is waited for, and keys.
void C_ScreenThread::Wait(std::chrono::milliseconds longest) {
  enum { kKeys, kEnd, kSignals, kNews, kCount };
  pollfd waiting[kCount] = {{m_terminal.Descriptor(), POLLIN, 0},
                            {SignalDescriptor(), POLLIN, 0},
                            {m_signals.Descriptor(), POLLIN, 0},
                            {m_hasNews ? -1 : m_wake.Descriptor(), POLLIN, 0}};
  if (::poll(waiting, kCount, static_cast<int>(longest.count())) <= 0) return;
  if (waiting[kNews].revents != 0) {
    m_wake.Clear();
    m_hasNews = true;
  }
  if (waiting[kSignals].revents != 0) ObeySignals();
  if (waiting[kKeys].revents != 0) ObeyKeys((waiting[kKeys].revents & ~POLLIN) != 0);
}

void C_ScreenThread::ObeySignals() {
  const C_TerminalSignals::S_Came came = m_signals.Take();
  if (came.stop) {
    m_terminal.Leave();
    m_signals.StopProgram();
  }
  if (came.stop || came.resumed) {
    WaitForForeground(m_terminal.Descriptor());
    if (SignalReceived() == 0) m_terminal.Return();
  }
  m_hasNews = true;
}

void C_ScreenThread::ObeyKeys(bool isLost) {
  m_isLost = isLost;
  if (isLost) return RequestEnd();
  for (S_Key key = m_terminal.ReadKey(); key.key != eKey::None; key = m_terminal.ReadKey()) {
    if (key.key == eKey::Redraw) m_terminal.Redraw();
    m_controls.Press(key);
  }
  if (m_controls.WantsEnd()) RequestEnd();
  m_hasNews = true;
}

C_ScreenThread::eEnd C_ScreenThread::Stop() {
  constexpr auto kPatience = 300ms;  // for a terminal that is slow, such as a serial line
  if (!m_thread.joinable()) return eEnd::Restored;
  m_isEnding = true;
  m_wake();
  bool isComplete = IsDoneWithin(kPatience);
  if (!isComplete) {
    m_terminal.GoOn();
    isComplete = IsDoneWithin(kPatience);
  }
  if (!isComplete && !Free()) return eEnd::Stuck;
  m_thread.join();
  if (m_failure) std::rethrow_exception(std::exchange(m_failure, nullptr));
  return isComplete ? eEnd::Restored : eEnd::Dropped;
}

bool C_ScreenThread::IsDoneWithin(std::chrono::milliseconds time) {
  std::unique_lock lock(m_mutex);
  return m_hasEnded.wait_for(lock, time, [this] { return m_isDone; });
}

// Once is not enough: the thread may have more to write before it looks up.
bool C_ScreenThread::Free() {
  constexpr int kTries = 15;
  for (int i = 0; i < kTries; ++i) {
    m_terminal.DropOutput();
    ::pthread_kill(m_thread.native_handle(), SIGWINCH);  // a write that waits returns
    if (IsDoneWithin(50ms)) return true;
  }
  m_terminal.RestoreLine();
  return false;
}

}  // namespace Host
