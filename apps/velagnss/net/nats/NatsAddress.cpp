#include "apps/velagnss/net/nats/NatsAddress.h"

#include <fmt/format.h>

namespace Host {
namespace {

constexpr std::string_view kPort = "4222";
constexpr std::size_t kMaxStreamName = 128;  // servers before 2.10 take up to 255, but make a directory of it
constexpr std::size_t kMaxToken = 100;

bool IsName(const std::string& value) { return !value.empty(); }
bool IsEmpty(const std::string& value) { return value.empty(); }

constexpr std::string_view kTlsOptions[] = {"ca", "cert", "key", "insecure"};

bool IsWordCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' || c == '_';
}

std::string CheckStream(const std::string& name) {
  if (!name.empty() && name.size() <= kMaxStreamName && std::all_of(name.begin(), name.end(), &IsWordCharacter))
    return {};
  return fmt::format("'{}' cannot be the name of a stream: it must have 1 to {} letters, digits, '-' and '_'", name,
                     kMaxStreamName);
}

}  // namespace

constexpr std::array<S_AddressOption, 6> kNatsOptions = {{
    {"ca", "the name of a file", &IsName},
    {"cert", "the name of a file", &IsName},
    {"key", "the name of a file", &IsName},
    {"insecure", "without a value", &IsEmpty},
    {"creds", "the name of a file", &IsName},
    {"token", "the name of a file", &IsName},
}};

S_AddressForm NatsForm(std::string_view scheme, std::string_view example, std::span<const S_AddressOption> options) {
  using eNeed = S_AddressForm::eNeed;
  return {.scheme = scheme,
          .example = example,
          .account = eNeed::Maybe,
          .host = eNeed::Must,
          .port = eNeed::Maybe,
          .path = eNeed::Must,
          .options = options,
          .check = &CheckNats};
}

std::string CheckNats(const S_Address& address) {
  const auto has = [&address](std::string_view option) { return address.options.contains(std::string(option)); };
  for (const std::string_view option : kTlsOptions)
    if (has(option) && address.scheme != "natss") return fmt::format("{} is for TLS: write natss://", option);
  if (has("cert") != has("key")) return "cert and key need each other";
  const int accounts = (has("creds") ? 1 : 0) + (has("token") ? 1 : 0) + (address.user.empty() ? 0 : 1);
  if (accounts > 1) return "can have only one of a user, creds and token";
  return CheckStream(StreamOf(address));
}

bool IsNats(const S_Address& address) { return address.scheme == "nats" || address.scheme == "natss"; }

std::string NatsOption(const S_Address& address, const std::string& name) {
  const auto option = address.options.find(name);
  return option == address.options.end() ? std::string() : option->second;
}

S_Address WithNatsPort(S_Address address) {
  if (address.port.empty()) address.port = kPort;
  return address;
}

std::string StreamOf(const S_Address& address) { return address.path.empty() ? std::string() : address.path.substr(1); }

std::string SubjectToken(std::string_view text) {
  std::string token(text.substr(0, kMaxToken));
  std::replace_if(
      token.begin(), token.end(), [](char c) { return !IsWordCharacter(c); }, '_');
  return token.empty() ? "_" : token;
}

}  // namespace Host
