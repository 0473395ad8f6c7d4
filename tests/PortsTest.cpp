// `velagnss ports`: what is shown of serial ports.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "HostData.h"
#include "JsonSchema.h"
#include "ProgramRun.h"
#include "apps/velagnss/commands/PortsText.h"

namespace {

using nlohmann::json;

const std::vector<Host::S_PortInfo> kPorts = {
    {"/dev/ttyUSB10", "/dev/serial/by-id/usb-A-if00", "a\"b\x1b[2J", Host::S_UsbId{0x0403, 0x6001}, "Maker", "A5028"},
    {"/dev/ttyS0", "", "", std::nullopt, "", ""},
};

TEST(Ports, TableIsSafeForATerminal) {
  EXPECT_EQ(Host::PortsTable(kPorts),
            "/dev/ttyUSB10  0403:6001  A5028  a\"b\\x1b[2J\n"
            "    /dev/serial/by-id/usb-A-if00\n"
            "/dev/ttyS0     -          -      -\n");
}

TEST(Ports, JsonHasWhatIsKnown) {
  Host::C_JsonWriter writer;
  Host::WritePorts(kPorts, writer);
  const std::string text(writer.Text());
  const std::size_t end = text.find('\n');
  EXPECT_EQ(json::parse(text.substr(0, end)), json({{"schema", 1},
                                                    {"report", "port"},
                                                    {"name", "/dev/ttyUSB10"},
                                                    {"by_id", "/dev/serial/by-id/usb-A-if00"},
                                                    {"description", "a\"b\x1b[2J"},
                                                    {"usb_vendor", 0x0403},
                                                    {"usb_product", 0x6001},
                                                    {"manufacturer", "Maker"},
                                                    {"serial_number", "A5028"}}));
  const json second = json::parse(text.substr(end));
  EXPECT_EQ(JsonSchema(json::parse(ReadHostFile("docs/velagnss.schema.json"))).Check(second), "");
  for (const char* member : {"by_id", "description", "usb_vendor", "usb_product", "manufacturer", "serial_number"})
    EXPECT_TRUE(second.at(member).is_null()) << member;
}

class PortsProgram : public Program {};

TEST_F(PortsProgram, LinkOfAPort) {
  std::filesystem::create_symlink("/dev/nowhere", m_directory / "dangling");
  std::filesystem::create_symlink("/dev/null", m_directory / "good");
  EXPECT_EQ(Host::LinkTo("/dev/null", m_directory), m_directory / "good");
  EXPECT_EQ(Host::LinkTo("/dev/zero", m_directory), "");
  EXPECT_EQ(Host::LinkTo("/dev/null", m_directory / "none"), "");
}

// Whether this machine has ports or not.
TEST_F(PortsProgram, ExitCodeTellsWhetherThereIsOne) {
  const Outcome outcome = Run("velagnss ports");
  EXPECT_EQ(outcome.code, outcome.output.empty() ? 1 : 0);
  EXPECT_EQ(outcome.messages.empty(), !outcome.output.empty());
  EXPECT_EQ(Run("velagnss ports --json").code, outcome.code);
}

}  // namespace
