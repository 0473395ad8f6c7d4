#include "apps/velagnss/commands/PortsCommand.h"

#include <CLI/CLI.hpp>

#include "apps/velagnss/commands/PortsText.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/sinks/OutputRun.h"

namespace Host {
namespace {

class C_PortsCommand : public C_Command, public C_TextBuffer {
 public:
  void Declare(CLI::App& app) override { app.add_flag("--json", m_isJson, "one JSON object per port"); }

  int Run() override {
    const std::vector<S_PortInfo> ports = ListPorts();
    if (ports.empty()) {
      ReportError(
          "there is no serial port; plug the device in and look again; sudo dmesg shows whether it was noticed");
      return eExitData;
    }
    C_OutputRun output;
    if (!output.Open("-")) return eExitOutput;
    C_JsonWriter json;
    WritePorts(ports, json);
    m_text = m_isJson ? json.Text() : PortsTable(ports);
    return output.Write(*this);
  }

 private:
  bool m_isJson = false;
};

}  // namespace

const S_CommandEntry kPortsCommand = {
    "ports",
    "List the serial ports of this machine.\n\n"
    "Examples:\n"
    "  velagnss ports                                 name, USB vendor:product, serial number, description\n"
    "  velagnss ports --json                          one JSON object per port\n"
    "  velagnss decode '/dev/ttyUSB0?baud=115200'     what comes from one of them\n\n"
    "The indented line is the port's name in /dev/serial/by-id, which stays the same whatever else is plugged in.\n"
    "Exit code 1: there is none.\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_PortsCommand>(); }};

}  // namespace Host
