#include "apps/velagnss/net/http/HttpAddress.h"

#include <algorithm>
#include <iterator>

#include "apps/velagnss/net/Credentials.h"
#include "apps/velagnss/net/ntrip/HttpHead.h"

namespace Host {
namespace {

constexpr std::string_view kSchemes[] = {"http://", "https://"};

// The server reads path and query as they are written, so only the account is taken out.
std::string WithoutAccount(const std::string& name) {
  const std::size_t begin = name.find("://") + 3;
  const std::size_t end = std::min(name.find_first_of("/?", begin), name.size());
  const std::size_t at = name.rfind('@', end);
  return at == std::string::npos || at < begin ? name : name.substr(0, begin) + name.substr(at + 1);
}

}  // namespace

bool IsHttp(std::string_view name) {
  const std::string lower = InLowerCase(name.substr(0, std::size(kSchemes[1])));
  return std::any_of(std::begin(kSchemes), std::end(kSchemes),
                     [&lower](auto scheme) { return lower.starts_with(scheme); });
}

// Blanks must be written as %20: a request has none in its address.
std::string CheckHttp(const std::string& name) {
  S_Address address;
  if (std::string error = ReadAddress(name, address); !error.empty()) return error;
  if (address.host.empty()) return "has no host; write it as https://HOST/FILE";
  if (name.find(' ') != std::string::npos) return "has a blank in it; write it as %20";
  return {};
}

std::string ReadHttp(const std::string& name, const std::string& credentials, S_HttpAddress& http) {
  S_Address address;
  std::string error = ReadAddress(name, address);
  if (error.empty()) error = FillAccount(address, credentials);
  http = {WithoutAccount(name), {address.user, address.password}};
  return error;
}

}  // namespace Host
