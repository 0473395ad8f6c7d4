#include "apps/velagnss/net/ntrip/Request.h"

#include <fmt/core.h>
#include <openssl/evp.h>

#include <algorithm>

namespace Host {
namespace {

// Casters take clients whose agent does not begin with "NTRIP" for browsers.
constexpr std::string_view kAgent = "NTRIP velagnss/" VELAGNSS_VERSION;

bool IsVisible(char c) { return c > 0x20 && c < 0x7F; }
bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

std::string Line(std::string_view name, std::string_view value) {
  return value.empty() ? std::string() : fmt::format("{}: {}\r\n", name, value);
}

std::string AuthorizationLine(const S_NtripRequest& request) {
  return Line("Authorization", request.user.empty() ? "" : BasicAuthorization(request.user, request.password));
}

std::string CommonLines(const S_NtripRequest& request) {
  return Line("Host", request.hostAndPort) + Line("Ntrip-Version", request.version == 2 ? "Ntrip/2.0" : "") +
         Line("User-Agent", kAgent) + AuthorizationLine(request);
}

}  // namespace

std::string BasicAuthorization(std::string_view user, std::string_view password) {
  const std::string account = fmt::format("{}:{}", user, password);
  std::string text((account.size() + 2) / 3 * 4 + 1, '\0');  // with a NUL
  const int size =
      ::EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                        reinterpret_cast<const unsigned char*>(account.data()), static_cast<int>(account.size()));
  text.resize(static_cast<std::size_t>(size));
  return "Basic " + text;
}

// A caster that speaks both versions takes a request without "Ntrip-Version" for version 1.
std::string ReaderHead(const S_NtripRequest& request, std::string_view gga) {
  const bool isV2 = request.version == 2;
  return fmt::format("GET /{} HTTP/1.{}\r\n", request.mount, isV2 ? 1 : 0) + CommonLines(request) +
         Line("Ntrip-GGA", isV2 ? gga : "") + Line("Connection", "close") + "\r\n";
}

// Old casters would take a version of HTTP in a line "SOURCE" for a part of the mount.
std::string PusherHead(const S_NtripRequest& request, std::string_view record) {
  if (request.version == 1)
    return fmt::format("SOURCE {} {}\r\n", request.password, request.mount) + Line("Source-Agent", kAgent) +
           Line("STR", record) + "\r\n";
  return fmt::format("POST /{} HTTP/1.1\r\n", request.mount) + CommonLines(request) + Line("Ntrip-STR", record) +
         Line("Content-Type", "gnss/data") + Line("Transfer-Encoding", "chunked") + Line("Connection", "close") +
         "\r\n";
}

std::string CheckMount(std::string_view mount) {
  constexpr std::size_t kMaxMount = 100;
  if (mount.size() > kMaxMount) return "the name of the mount is longer than 100 characters";
  const auto isBad = [](char c) { return !IsVisible(c) || c == '?' || c == '#' || c == ';'; };
  if (std::any_of(mount.begin(), mount.end(), isBad))
    return "the name of the mount has a character that is not allowed";
  return {};
}

// RFC 7617: a ':' ends the user.
std::string CheckAccount(std::string_view user, std::string_view password) {
  constexpr std::size_t kMax = 500;
  if (user.size() > kMax || password.size() > kMax) return "user or password is longer than 500 characters";
  if (user.find(':') != std::string_view::npos) return "the name of the user has a ':' in it";
  if (std::any_of(user.begin(), user.end(), &IsControl) || std::any_of(password.begin(), password.end(), &IsControl))
    return "user or password has a control character in it";
  return {};
}

std::string CheckPusherPassword(std::string_view password) {
  if (password.empty()) return "version 1 needs a password";
  if (!std::all_of(password.begin(), password.end(), &IsVisible))
    return "a password of version 1 may have neither blanks nor characters other than ASCII";
  return {};
}

}  // namespace Host
