#include "apps/velagnss/input/SourceName.h"

#include <algorithm>
#include <cctype>

#include "apps/velagnss/net/Address.h"

namespace Host {
namespace {

constexpr std::size_t kMaxSourceName = 100;  // file systems allow 255 bytes for a whole name

}  // namespace

std::string SafeSourceName(std::string_view source) {
  S_Address address;
  std::string name;
  if (IsAddress(source) && ReadAddress(source, address).empty())
    name = address.host + (address.port.empty() ? "" : "_" + address.port) + address.path;
  else
    name = source.substr(source.find_last_of('/') + 1);
  name.erase(0, name.find_first_not_of('/'));
  name.resize(std::min(name.size(), kMaxSourceName));
  const auto isUnsafe = [](unsigned char c) { return c != '-' && c != '_' && (c >= 0x80 || std::isalnum(c) == 0); };
  std::replace_if(name.begin(), name.end(), isUnsafe, '_');
  return name.empty() ? "source" : name;
}

}  // namespace Host
