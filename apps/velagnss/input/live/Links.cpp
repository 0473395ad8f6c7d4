#include "apps/velagnss/input/live/Links.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "apps/velagnss/input/live/LinkKind.h"
#include "apps/velagnss/input/live/NatsLink.h"
#include "apps/velagnss/input/live/NtripLink.h"
#include "apps/velagnss/input/live/SerialLink.h"
#include "apps/velagnss/input/live/TcpLink.h"
#include "apps/velagnss/input/live/TcpListenLink.h"
#include "apps/velagnss/input/live/UdpLink.h"
#include "apps/velagnss/input/live/UnixLink.h"
#include "apps/velagnss/net/http/HttpAddress.h"
#include "apps/velagnss/os/SerialPort.h"
#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

const S_LinkKind* const kKinds[] = {
    &kNatsLink, &kNatsTlsLink,   &kNtripLink, &kNtripTlsLink, &kSerialLink,
    &kTcpLink,  &kTcpListenLink, &kUdpLink,   &kUnixLink,
};

const S_LinkKind* FindKind(std::string_view scheme) {
  const auto* const* const found = std::find_if(
      std::begin(kKinds), std::end(kKinds), [scheme](const S_LinkKind* kind) { return kind->form.scheme == scheme; });
  return found == std::end(kKinds) ? nullptr : *found;
}

// A device's name alone is that of a port; options may follow it as well.
std::string ReadName(const std::string& name, S_Address& address) {
  return ReadAddress(IsAddress(name) ? name : "serial://" + name, address);
}

constexpr std::string_view kPlaces[] = {"/dev/tty", "/dev/serial/", "/dev/pts/"};

// Also of a device that is not plugged in now.
bool IsNameOfPort(std::string_view name) {
  name = name.substr(0, name.find('?'));
  const bool isInPlace = name != "/dev/tty" && std::any_of(std::begin(kPlaces), std::end(kPlaces),
                                                           [name](auto place) { return name.starts_with(place); });
  std::error_code none;
  return IsSerialDevice(std::string(name)) || (isInPlace && !std::filesystem::exists(name, none));
}

}  // namespace

bool IsLive(const std::string& name) { return (IsAddress(name) && !IsHttp(name)) || IsNameOfPort(name); }

std::string CheckLive(const std::string& name) {
  S_Address address;
  if (std::string error = ReadName(name, address); !error.empty()) return error;
  const S_LinkKind* const kind = FindKind(address.scheme);
  if (kind == nullptr)
    return fmt::format("has an unknown scheme; known are: http, https, {}",
                       JoinNames(
                           kKinds, [](const S_LinkKind* known) { return known->form.scheme; }, ", "));
  return CheckAddress(address, kind->form);
}

// Nobody knows where the password is in an address that cannot be read.
std::string ShownLive(const std::string& name) {
  S_Address address;
  if (!IsAddress(name)) return name;
  return ReadAddress(name, address).empty() ? address.Shown() : address.scheme + "://...";
}

std::unique_ptr<C_Link> MakeLink(const std::string& name, const S_LiveOptions& options, C_Await& await) {
  S_Address address;
  ReadName(name, address);
  return FindKind(address.scheme)->make(address, options, await);
}

}  // namespace Host
