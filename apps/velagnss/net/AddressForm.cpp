#include "apps/velagnss/net/AddressForm.h"

#include <fmt/core.h>

#include <algorithm>
#include <functional>

#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

using eNeed = S_AddressForm::eNeed;

std::string CheckPart(std::string_view name, const std::string& part, eNeed need, const S_AddressForm& form) {
  if (part.empty() && need == eNeed::Must) return fmt::format("has no {}; write it as {}", name, form.example);
  if (!part.empty() && need == eNeed::None)
    return fmt::format("has the {} '{}', which {} does not take; write it as {}", name, part, form.scheme,
                       form.example);
  return {};
}

// The text of an account may hold a password: it is not shown.
std::string CheckAccount(const S_Address& address, const S_AddressForm& form) {
  if (form.account != eNeed::None || (address.user.empty() && address.password.empty())) return {};
  return fmt::format("has a user before the '@', which {} does not take; write it as {}", form.scheme, form.example);
}

std::string CheckOption(const std::string& name, const std::string& value, const S_AddressForm& form) {
  if (form.options.empty()) return fmt::format("has the option '{}', but {} takes no options", name, form.scheme);
  const auto option = std::find_if(form.options.begin(), form.options.end(),
                                   [&name](const S_AddressOption& known) { return known.name == name; });
  if (option == form.options.end())
    return fmt::format("unknown option '{}'; {} takes: {}", name, form.scheme,
                       JoinNames(form.options, &S_AddressOption::name, ", "));
  if (!option->isGood(value)) return fmt::format("{} must be {}, not '{}'", name, option->allowed, value);
  return {};
}

// A path alone means nothing where none is expected.
std::string PathOf(const S_Address& address, eNeed need) {
  const bool isRoot = address.path == "/";
  return isRoot && (need == eNeed::None || need == eNeed::Must) ? std::string() : address.path;
}

}  // namespace

std::string CheckAddress(const S_Address& address, const S_AddressForm& form) {
  std::string error = CheckAccount(address, form);
  if (error.empty()) error = CheckPart("host", address.host, form.host, form);
  if (error.empty()) error = CheckPart("port", address.port, form.port, form);
  if (error.empty()) error = CheckPart("path", PathOf(address, form.path), form.path, form);
  for (const auto& [name, value] : address.options)
    if (error.empty()) error = CheckOption(name, value, form);
  if (error.empty() && form.check != nullptr) error = form.check(address);
  return error;
}

}  // namespace Host
