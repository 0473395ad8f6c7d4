#include "apps/velagnss/net/Address.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr std::string_view kSeparator = "://";

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

// RFC 3986, 3.1.
bool IsScheme(std::string_view text) {
  return !text.empty() && IsLetter(text[0]) && std::all_of(text.begin(), text.end(), [](char c) {
    return IsLetter(c) || IsDigit(c) || c == '+' || c == '-' || c == '.';
  });
}

std::optional<unsigned int> HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  if (lower >= 'a' && lower <= 'f') return lower - 'a' + 10;
  return std::nullopt;
}

// RFC 3986, 2.1. A percent sign that begins no such group is itself: passwords are often pasted as they are.
std::string Decoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool mayBeGroup = text[i] == '%' && i + 2 < text.size();
    const auto high = mayBeGroup ? HexValue(text[i + 1]) : std::nullopt;
    const auto low = mayBeGroup ? HexValue(text[i + 2]) : std::nullopt;
    decoded += high && low ? static_cast<char>(*high << 4 | *low) : text[i];
    if (high && low) i += 2;
  }
  return decoded;
}

// Cuts `text` at the first `mark`; what follows it is returned, and nothing when there is none.
std::string_view CutAt(std::string_view& text, char mark) {
  const std::size_t at = text.find(mark);
  if (at == std::string_view::npos) return {};
  const std::string_view rest = text.substr(at + 1);
  text = text.substr(0, at);
  return rest;
}

// Returns an error text.
std::string ReadOptions(std::string_view query, S_Address& address) {
  while (!query.empty()) {
    const std::string_view rest = CutAt(query, '&');
    const std::string_view value = CutAt(query, '=');
    const bool isNew = query.empty() || address.options.emplace(Decoded(query), Decoded(value)).second;
    if (!isNew) return "has an option that is given twice";
    query = rest;
  }
  return {};
}

// A password may hold '@' and ':': the last '@' ends the account, the first ':' the name.
void ReadAccount(std::string_view& authority, S_Address& address) {
  const std::size_t at = authority.rfind('@');
  if (at == std::string_view::npos) return;
  std::string_view name = authority.substr(0, at);
  const std::string_view password = CutAt(name, ':');
  address.user = Decoded(name);
  address.password = Decoded(password);
  authority.remove_prefix(at + 1);
}

// Returns an error text.
std::string ReadHost(std::string_view authority, S_Address& address) {
  std::string_view port;
  if (authority.starts_with('[')) {
    const std::size_t end = authority.find(']');
    if (end == std::string_view::npos) return "has an IPv6 address whose '[' is not closed";
    address.host = authority.substr(1, end - 1);
    port = authority.substr(end + 1);
    if (!port.empty() && port[0] != ':') return "may have only ':' and a port after the ']' of its IPv6 address";
    port.remove_prefix(port.empty() ? 0 : 1);
  } else {
    port = CutAt(authority, ':');
    address.host = Decoded(authority);
  }
  std::uint16_t number = 0;
  // The text is not shown: without a host, or with a '/' in the password, it is the password.
  if (!port.empty() && (!ParseWhole(port, number) || number == 0))
    return "has a port that is not a number from 1 to 65535";
  address.port = port;
  return {};
}

bool HasControl(const S_Address& address) {
  const auto isBad = [](const std::string& text) { return std::any_of(text.begin(), text.end(), &IsControl); };
  return isBad(address.user) || isBad(address.password) || isBad(address.host) || isBad(address.path) ||
         std::any_of(address.options.begin(), address.options.end(),
                     [&](const auto& option) { return isBad(option.first) || isBad(option.second); });
}

}  // namespace

bool IsAddress(std::string_view text) {
  const std::size_t at = text.find(kSeparator);
  return at != std::string_view::npos && IsScheme(text.substr(0, at));
}

std::string ReadAddress(std::string_view text, S_Address& address) {
  address = {};
  const std::size_t at = text.find(kSeparator);
  if (at == std::string_view::npos || !IsScheme(text.substr(0, at))) return "is not written as SCHEME://HOST:PORT";
  address.scheme = text.substr(0, at);
  for (char& c : address.scheme) c = static_cast<char>(IsLetter(c) ? c | 0x20 : c);
  std::string_view rest = text.substr(at + kSeparator.size());
  const std::string_view query = CutAt(rest, '?');
  std::string_view authority = rest.substr(0, rest.find('/'));
  if (!authority.empty() && text.find('@', at + kSeparator.size() + authority.size()) != std::string_view::npos)
    return "has an '@' after a '/' or '?'; in a user or password write these as %2F and %3F, and another '@' as %40";
  address.path = Decoded(rest.substr(authority.size()));
  if (std::string error = ReadOptions(query, address); !error.empty()) return error;
  ReadAccount(authority, address);
  if (std::string error = ReadHost(authority, address); !error.empty()) return error;
  return HasControl(address) ? "has a control character in it" : std::string();
}

std::string S_Address::HostAndPort() const {
  const bool isV6 = host.find(':') != std::string::npos;
  return fmt::format("{}{}{}{}{}", isV6 ? "[" : "", host, isV6 ? "]" : "", port.empty() ? "" : ":", port);
}

std::string S_Address::Shown() const { return fmt::format("{}://{}{}", scheme, HostAndPort(), path); }

}  // namespace Host
