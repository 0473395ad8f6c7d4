#include "apps/velagnss/commands/RelayCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/pipeline/NoFrameWarning.h"
#include "apps/velagnss/relay/RelayJob.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

class C_RelayCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  int Relay(const S_RelayOptions& options, C_Destinations& destinations) const;
  S_RelaySource Source() const;
  eExitCode CheckFiles(const C_Destinations& destinations) const;
  eExitCode Judge(const std::deque<C_RelayJob>& jobs, const C_Destinations& destinations) const;

  S_StreamArguments m_stream;
  S_FilterArguments m_filter;
  std::vector<std::string> m_to;
  std::uint64_t m_waitClients = 0;
};

void C_RelayCommand::Declare(CLI::App& app) {
  DeclareStreamArguments(app, m_stream);
  DeclareDestinations(app, m_to);
  DeclareFilter(app, m_filter);
  DeclareSeed(app, m_stream);
  app.add_option("--wait-clients", m_waitClients,
                 "begin when this many clients are connected, counted over all destinations")
      ->option_text("COUNT")
      ->check(NumberBetween(std::uint64_t{1}, std::uint64_t{100'000}, "a whole number from 1 to 100000"));
}

S_RelaySource C_RelayCommand::Source() const {
  S_RelaySource source;
  source.isSelected = !m_filter.protocols.empty() || !m_filter.messages.empty() || !m_stream.search.empty() ||
                      m_stream.listedOnly || !m_stream.selection.IsEverything();
  source.isOne = m_stream.input.names.size() <= 1;
  source.isLive = CountLive(m_stream.input) > 0;
  source.credentials = m_stream.input.live.credentials;
  return source;
}

int C_RelayCommand::Run() {
  S_RelayOptions options{RunOptions(m_stream), {}, m_stream.input.names.size() > 1};
  if (const std::string error = FillFilter(m_filter, m_stream, options.filter); !error.empty())
    return ReportUsage("relay", error);
  C_Destinations destinations;
  if (const std::string error = destinations.Read(m_to, Source()); !error.empty()) return ReportUsage("relay", error);
  if (m_waitClients > 0 && destinations.Files().size() == m_to.size())
    return ReportUsage("relay", "--wait-clients needs a destination to connect to, such as --to tcp-listen://:2947");
  if (const eExitCode code = CheckFiles(destinations); code != eExitOk) return code;
  if (!destinations.Open()) return eExitOutput;
  return Relay(options, destinations);
}

eExitCode C_RelayCommand::CheckFiles(const C_Destinations& destinations) const {
  for (const std::string& file : destinations.Files())
    if (const eExitCode code = CheckOutput(file, m_stream.input); code != eExitOk) return code;
  return CanBeOpened(m_stream.input) ? eExitOk : eExitInput;
}

int C_RelayCommand::Relay(const S_RelayOptions& options, C_Destinations& destinations) const {
  if (!destinations.WaitForClients(m_waitClients)) return eExitOk;
  std::deque<C_RelayJob> jobs;
  const auto next = [&]() -> C_StreamJob& { return jobs.emplace_back(options, destinations); };
  const eExitCode inputCode = RunInputs(m_stream.input, true, next(), next);
  for (C_RelayJob& job : jobs) job.Finish();
  destinations.Finish();
  const eExitCode code = Judge(jobs, destinations);
  return code == eExitOutput || inputCode == eExitOk ? code : inputCode;
}

eExitCode C_RelayCommand::Judge(const std::deque<C_RelayJob>& jobs, const C_Destinations& destinations) const {
  std::uint64_t bytes = 0;
  std::uint64_t frames = 0;
  eExitCode code = destinations.Judge();
  for (const C_RelayJob& job : jobs) {
    bytes += job.Run().BytesRead();
    frames += job.Run().FramesFound();
    code = std::max(code, job.Run().Judge());
  }
  ReportDetail(fmt::format("{} and {} relayed", Counted(bytes, "byte"), Counted(frames, "frame")));
  const bool needsFrames = destinations.Units() != std::set{eUnits::Raw};
  if (frames > 0 || !needsFrames) return code;
  if (bytes > 0) ReportNoFrame(InputsText(m_stream.input), bytes);
  return std::max(code, eExitData);
}

}  // namespace

const S_CommandEntry kRelayCommand = {
    "relay",
    "Pass streams on to clients, other machines, ports, casters and files.\n\n"
    "Examples:\n"
    "  velagnss relay /dev/ttyUSB0 --to tcp-listen://:2947              for programs of this machine\n"
    "  velagnss relay --proto rtcm3 tcp://rover:5000 --to udp://239.1.2.3:6000   RTCM 3 only, to a group\n"
    "  velagnss relay /dev/ttyUSB0 --to 'ntrip-caster://:2101/BASE?users=u.txt'   a caster\n"
    "  velagnss relay rover.bin --to json:all.jsonl --to raw:tcp-listen://:2948   several\n"
    "  velagnss relay rover.bin --to sqlite:rover.db                    a database\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_RelayCommand>(); }};

}  // namespace Host
