#include "apps/velagnss/commands/RecordCommand.h"

#include <fmt/core.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/commands/RecordArguments.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

namespace fs = std::filesystem;

// What of the name does not depend on time and source.
fs::path FixedDirectory(const std::string& pattern) {
  const std::string fixed = pattern.substr(0, pattern.find('%'));
  const fs::path directory = fs::path(fixed).parent_path();
  return directory.empty() ? fs::path(".") : directory;
}

class C_RecordCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  bool CanWrite() const;

  S_InputOptions m_input;
  std::string m_output;
  S_RecorderOptions m_options;
};

void C_RecordCommand::Declare(CLI::App& app) {
  DeclareInputs(app, m_input);
  app.add_option("-o,--output", m_output,
                 "names of the files: %Y %m %d %H %M %S %j are the time in UTC, %n the\nsource; a directory takes the "
                 "usual names, %n_%Y%m%d_%H%M%SZ.bin")
      ->option_text("NAME");
  DeclareRotation(app, m_options);
}

// A disk may be away for a while later on; at the start a wrong name is more likely.
bool C_RecordCommand::CanWrite() const {
  const fs::path directory = FixedDirectory(m_options.pattern);
  std::error_code error;
  fs::create_directories(directory, error);
  if (::access(directory.c_str(), W_OK | X_OK) == 0) return true;
  ReportError(fmt::format("{}: cannot be written: {}; name another directory with -o", directory.native(),
                          std::strerror(errno)));
  return false;
}

int C_RecordCommand::Run() {
  if (const std::string error = FillPattern(m_output, m_input.names.size(), m_options); !error.empty())
    return ReportUsage("record", error);
  if (!CanBeOpened(m_input)) return eExitInput;
  if (!CanWrite()) return eExitOutput;
  CountHangups();
  C_Recorders recorders(m_options);
  const eExitCode code = RunInputs(m_input, true, recorders.Next(), [&]() -> C_StreamJob& { return recorders.Next(); });
  return std::max(code, recorders.Judge());
}

}  // namespace

const S_CommandEntry kRecordCommand = {
    "record",
    "Record the raw bytes of sources in files.\n\n"
    "Examples:\n"
    "  velagnss record --every 1h /dev/ttyUSB0                        a file per hour, cut between frames\n"
    "  velagnss record -o '/rec/%Y/%j/%n_%H.bin' --every 1h tcp://a:5015   with a directory per day\n"
    "  velagnss record --gzip --max-size 100M -o /rec/ tcp://a:5015   by size, compressed\n"
    "  velagnss record --data-time --every 15m session.bin            divided by its own time\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_RecordCommand>(); }};

}  // namespace Host
