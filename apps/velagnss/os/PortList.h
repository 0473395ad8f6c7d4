// The serial ports that this machine has now.
#ifndef VELAGNSS_APPS_PORT_LIST_H
#define VELAGNSS_APPS_PORT_LIST_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Host {

struct S_UsbId {
  std::uint16_t vendor;
  std::uint16_t product;
};

// Texts are empty where there are none; those of USB devices are the device's own, of any bytes.
struct S_PortInfo {
  std::string name;         // "/dev/ttyUSB0": depends on the order in which devices were plugged in
  std::string byId;         // "/dev/serial/by-id/...": stays the same
  std::string description;  // for people
  std::optional<S_UsbId> usbId;
  std::string manufacturer;
  std::string serialNumber;
};

// Pseudo-terminals are not among them.
std::vector<S_PortInfo> ListPorts();

// The link in `directory` that leads to `port`; empty when there is none.
std::string LinkTo(const std::string& port, const std::string& directory);

}  // namespace Host

#endif  // VELAGNSS_APPS_PORT_LIST_H
