#include "apps/velagnss/commands/PortsText.h"

#include <fmt/core.h>

#include <algorithm>

#include "apps/velagnss/text/Utf8.h"

namespace Host {
namespace {

std::string UsbText(const S_PortInfo& port) {
  return port.usbId ? fmt::format("{:04x}:{:04x}", port.usbId->vendor, port.usbId->product) : "-";
}

std::string Shown(const std::string& text) { return text.empty() ? "-" : PrintableText(text); }

void WriteUsbId(const S_PortInfo& port, C_JsonWriter& json) {
  json.Key("usb_vendor").IntegerOrNull(port.usbId ? std::optional(port.usbId->vendor) : std::nullopt);
  json.Key("usb_product").IntegerOrNull(port.usbId ? std::optional(port.usbId->product) : std::nullopt);
}

}  // namespace

std::string PortsTable(const std::vector<S_PortInfo>& ports) {
  std::size_t width = 0;
  std::size_t serialWidth = 0;
  for (const S_PortInfo& port : ports) {
    width = std::max(width, port.name.size());
    serialWidth = std::max(serialWidth, Shown(port.serialNumber).size());
  }
  std::string table;
  for (const S_PortInfo& port : ports) {
    table += fmt::format("{:{}}  {:9}  {:{}}  {}\n", port.name, width, UsbText(port), Shown(port.serialNumber),
                         serialWidth, Shown(port.description));
    if (!port.byId.empty()) table += fmt::format("    {}\n", PrintableText(port.byId));
  }
  return table;
}

void WritePorts(const std::vector<S_PortInfo>& ports, C_JsonWriter& json) {
  for (const S_PortInfo& port : ports) {
    json.BeginObject();
    json.Key("schema").Integer(kSchemaVersion);
    json.Key("report").Name("port");
    json.Key("name").Utf8(port.name);
    json.Key("by_id");
    port.byId.empty() ? json.Null() : json.Utf8(port.byId);
    json.Key("description").StringOrNull(port.description);
    WriteUsbId(port, json);
    json.Key("manufacturer").StringOrNull(port.manufacturer);
    json.Key("serial_number").StringOrNull(port.serialNumber);
    json.EndObject();
    json.EndLine();
  }
}

}  // namespace Host
