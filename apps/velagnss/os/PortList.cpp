#include "apps/velagnss/os/PortList.h"

#include <libserialport.h>

#include <filesystem>
#include <memory>

namespace Host {
namespace {

std::string Text(const char* text) { return text == nullptr ? "" : text; }

S_PortInfo InfoOf(const sp_port* port) {
  S_PortInfo info;
  info.name = Text(::sp_get_port_name(port));
  info.byId = LinkTo(info.name, "/dev/serial/by-id");
  info.description = Text(::sp_get_port_description(port));
  info.manufacturer = Text(::sp_get_port_usb_manufacturer(port));
  info.serialNumber = Text(::sp_get_port_usb_serial(port));
  int vendor = 0;
  int product = 0;
  if (::sp_get_port_usb_vid_pid(port, &vendor, &product) == SP_OK)
    info.usbId = {static_cast<std::uint16_t>(vendor), static_cast<std::uint16_t>(product)};
  return info;
}

}  // namespace

std::vector<S_PortInfo> ListPorts() {
  sp_port** list = nullptr;
  if (::sp_list_ports(&list) != SP_OK) return {};
  const std::unique_ptr<sp_port*, decltype(&::sp_free_port_list)> owner(list, &::sp_free_port_list);
  std::vector<S_PortInfo> ports;
  for (; *list != nullptr; ++list) ports.push_back(InfoOf(*list));
  return ports;
}

std::string LinkTo(const std::string& port, const std::string& directory) {
  std::error_code none;
  const std::filesystem::path target = std::filesystem::canonical(port, none);
  if (none) return {};
  for (std::filesystem::directory_iterator entry(directory, none), end; !none && entry != end; entry.increment(none)) {
    std::error_code dangling;
    if (std::filesystem::canonical(entry->path(), dangling) == target) return entry->path();
  }
  return {};
}

}  // namespace Host
