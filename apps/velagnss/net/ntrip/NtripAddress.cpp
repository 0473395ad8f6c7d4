#include "apps/velagnss/net/ntrip/NtripAddress.h"

#include <fmt/core.h>

#include "apps/velagnss/net/TcpTransport.h"
#include "apps/velagnss/net/TlsTransport.h"
#include "apps/velagnss/net/ntrip/HttpHead.h"
#include "apps/velagnss/net/ntrip/Request.h"
#include "apps/velagnss/os/Diagnostics.h"

namespace Host {
namespace {

using eNeed = S_AddressForm::eNeed;

// Casters say where something is moved to in the words of the web.
struct S_SchemePair {
  std::string_view web;
  std::string_view ntrip;
};
constexpr S_SchemePair kSchemes[] = {{"http", "ntrip"}, {"https", "ntrips"}};

bool IsVersion(const std::string& value) { return value == "1" || value == "2"; }
bool IsNo(const std::string& value) { return value == "no"; }
bool IsEmpty(const std::string& value) { return value.empty(); }
bool IsName(const std::string& value) { return !value.empty(); }

constexpr S_AddressOption kOptions[] = {
    {"version", "1 or 2", &IsVersion},
    {"gga", "no", &IsNo},
    {"ca", "the name of a file", &IsName},
    {"insecure", "without a value", &IsEmpty},
};
constexpr std::span<const S_AddressOption> kPlainOptions = std::span(kOptions).first(2);

std::string CheckNtrip(const S_Address& address) {
  const std::string error = CheckMount(MountOf(address));
  return error.empty() ? CheckAccount(address.user, address.password) : error;
}

constexpr S_AddressForm FormOf(std::string_view scheme, std::string_view example,
                               std::span<const S_AddressOption> options, eNeed path) {
  return {.scheme = scheme,
          .example = example,
          .account = eNeed::Maybe,
          .host = eNeed::Must,
          .port = eNeed::Maybe,
          .path = path,
          .options = options,
          .check = &CheckNtrip};
}

}  // namespace

constexpr S_AddressForm kNtripForm = FormOf("ntrip", "ntrip://USER@HOST:PORT/MOUNT", kPlainOptions, eNeed::Must);
constexpr S_AddressForm kNtripTlsForm = FormOf("ntrips", "ntrips://USER@HOST:PORT/MOUNT", kOptions, eNeed::Must);
constexpr S_AddressForm kNtripTableForm = FormOf("ntrip", "ntrip://HOST:PORT", kPlainOptions, eNeed::None);
constexpr S_AddressForm kNtripTlsTableForm = FormOf("ntrips", "ntrips://HOST:PORT", kOptions, eNeed::None);

std::string_view OptionOf(const S_Address& address, const std::string& name) {
  const auto option = address.options.find(name);
  return option == address.options.end() ? std::string_view() : option->second;
}

std::string_view MountOf(const S_Address& address) {
  return address.path.empty() ? std::string_view() : std::string_view(address.path).substr(1);
}

std::unique_ptr<C_Transport> MakeNtripTransport(C_Await& await, const S_Address& address) {
  if (address.scheme != "ntrips") return MakeTcpTransport(await);
  return MakeTlsTransport(
      await, {.isInsecure = address.options.contains("insecure"), .authorities = std::string(OptionOf(address, "ca"))});
}

S_Address WithNtripPort(S_Address address) {
  if (address.port.empty()) address.port = "2101";
  return address;
}

std::string Redirect(const S_Address& from, std::string_view location, S_Address& to) {
  to = from;
  const std::string shown = Printable(location.substr(0, 100));
  if (location.starts_with('/') && !location.starts_with("//")) {
    to.path = location;
    return {};
  }
  S_Address read;
  std::string noAddress = fmt::format("moved to '{}', which is not an address", shown);
  if (!ReadAddress(location, read).empty()) return noAddress;
  for (const S_SchemePair& pair : kSchemes)
    if (read.scheme == pair.web) {
      read.scheme = pair.ntrip;
      if (read.port.empty()) read.port = pair.web == "http" ? "80" : "443";
    }
  read = WithNtripPort(read);
  if (read.scheme != from.scheme) return fmt::format("moved to '{}': another scheme is not followed", shown);
  if (read.host.empty()) return noAddress;  // it would be this machine
  const bool isSameServer = InLowerCase(read.host) == InLowerCase(from.host) && read.port == from.port;
  if (!isSameServer && !from.user.empty())
    return fmt::format("moved to '{}': another server does not get the password", shown);
  to.host = read.host;
  to.port = read.port;
  to.path = read.path;
  return {};
}

}  // namespace Host
