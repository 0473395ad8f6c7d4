#include "apps/velagnss/commands/MonitorCommand.h"

#include <poll.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/monitor/ScreenThread.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

const std::map<std::string, eColor> kColors = {
    {"auto", eColor::Auto}, {"always", eColor::Always}, {"never", eColor::Never}};

std::string Joined(const S_FilterArguments& arguments) {
  std::string all;
  for (const auto* lists : {&arguments.protocols, &arguments.messages})
    for (const std::string& list : *lists) all += (all.empty() ? "" : ",") + list;
  return all;
}

void WaitForEnd() {
  pollfd waiting = {SignalDescriptor(), POLLIN, 0};
  while (SignalReceived() == 0) ::poll(&waiting, 1, -1);
}

class C_MonitorCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  std::string WhatIsWrong() const;
  int Show() const;

  S_StreamArguments m_stream;
  S_FilterArguments m_filter;
  S_TerminalOptions m_terminal;
};

void C_MonitorCommand::Declare(CLI::App& app) {
  DeclareStreamArguments(app, m_stream);
  DeclareFilter(app, m_filter);
  DeclareSeed(app, m_stream);
  app.add_flag("--plain", m_terminal.isPlain, "draw with ASCII characters only");
  app.add_option_function<std::string>(
         "--color", [this](const std::string& when) { m_terminal.color = kColors.at(when); },
         "auto (default: unless NO_COLOR is set), always or never")
      ->option_text("WHEN")
      ->check([](const std::string& when) {
        return kColors.contains(when) ? std::string() : "must be auto, always or never, not '" + when + "'";
      });
}

// The terminal cannot be read for keys and for data.
std::string C_MonitorCommand::WhatIsWrong() const {
  const auto& names = m_stream.input.names;
  const bool readsStandard = names.empty() || std::find(names.begin(), names.end(), "-") != names.end();
  if (readsStandard && ::isatty(STDIN_FILENO) == 1) return "standard input is the terminal; name a source";
  C_MessageFilter filter;
  return FillFilter(m_filter, m_stream, filter);
}

int C_MonitorCommand::Run() {
  if (const std::string error = WhatIsWrong(); !error.empty()) return ReportUsage("monitor", error);
  return CanBeOpened(m_stream.input) ? Show() : eExitInput;
}

// Files are shown until the user ends the program, live sources have no end anyway. The messages come when the screen
// is that of the shell again.
int C_MonitorCommand::Show() const {
  C_Wake wake;
  C_Sources sources(RunOptions(m_stream), std::ref(wake));
  const std::string filter = Joined(m_filter);
  sources.SetFilter(filter);
  C_MessageLog log(std::ref(wake));
  C_ScreenThread screen(wake, sources, log, filter);
  if (const auto error = screen.Start(m_terminal)) {
    log.GiveBack();
    ReportError(*error);
    return eExitOutput;
  }
  eExitCode code =
      RunInputs(m_stream.input, false, sources.NextJob(), [&]() -> C_StreamJob& { return sources.NextJob(); });
  WaitForEnd();
  const C_ScreenThread::eEnd end = screen.Stop();
  code = std::max(code, sources.Judge());
  if (end == C_ScreenThread::eEnd::Stuck) std::_Exit(SignalReceived() > 0 ? kExitSignalBase + SignalReceived() : code);
  if (end == C_ScreenThread::eEnd::Restored) log.GiveBack();
  return screen.IsLost() ? std::max(code, eExitOutput) : code;
}

}  // namespace

const S_CommandEntry kMonitorCommand = {
    "monitor",
    "Watch sources in the terminal: position, satellites, messages, faults.\n\n"
    "Examples:\n"
    "  velagnss monitor /dev/ttyUSB0                      a receiver\n"
    "  velagnss monitor tcp://a:5015 ntrip://b/BASE       two sources; Tab switches between them\n"
    "  velagnss monitor --tee today.bin tcp://a:5015      also recorded\n"
    "  velagnss monitor --proto rtcm3 --plain base.bin    a file to its end, in ASCII\n"
    "  velagnss replay session.bin | velagnss monitor     a file at its own speed\n"
    "\nKeys: 1 to 5 choose a page, arrows scroll, p holds the screen, f filters the raw\n"
    "objects, ? explains everything, q quits.\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_MonitorCommand>(); }};

}  // namespace Host
