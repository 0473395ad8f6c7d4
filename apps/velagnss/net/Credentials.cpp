#include "apps/velagnss/net/Credentials.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "apps/velagnss/net/ntrip/HttpHead.h"
#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {
namespace {

constexpr std::size_t kMaxFile = std::size_t{1} << 20;

std::string FileError(const std::string& file, std::string_view what) {
  return fmt::format("credentials file {}: {}", file, what);
}

// Files of the service manager belong to root, and the user of the service reads them by an access list, which shows
// in the bits of the group.
bool MayOthersRead(const struct stat& status) {
  const bool isOurs = status.st_uid == ::geteuid() && status.st_uid != 0;
  return (status.st_mode & (isOurs ? 077 : 027)) != 0;
}

std::string_view NextLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  while (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

bool IsFor(std::string_view place, const S_Address& address) {
  const std::string lower = InLowerCase(place);
  return lower == InLowerCase(address.host) || lower == InLowerCase(address.HostAndPort());
}

// A password may hold blanks: it is the rest of the line.
struct S_Line {
  std::string_view place;
  std::string_view user;
  std::string_view password;
};

// Returns an error text. The lines are parts of `text`.
std::string ReadLines(const std::string& file, std::string& text, std::vector<S_Line>& lines) {
  if (std::string error = ReadSecretFile(file, text); !error.empty()) return error;
  std::string_view rest = text;
  for (int number = 1; !rest.empty(); ++number) {
    const std::string_view line = NextLine(rest);
    const std::vector<std::string_view> words = WordsOf(line);
    if (words.empty() || words[0].starts_with('#')) continue;
    if (words.size() < 3) return FileError(file, fmt::format("line {} is not HOST[:PORT] USER PASSWORD", number));
    lines.push_back({words[0], words[1], line.substr(static_cast<std::size_t>(words[2].data() - line.data()))});
  }
  return {};
}

// An account is only for servers of its kind.
struct S_VariablesRow {
  std::string_view scheme;  // how it begins
  std::string_view variables;
};
constexpr S_VariablesRow kVariables[] = {
    {"http", "VELAGNSS_HTTP_"},
    {"nats", "VELAGNSS_NATS_"},
    {"ntrip", "VELAGNSS_NTRIP_"},
};

std::string VariablesFor(std::string_view scheme) {
  for (const S_VariablesRow& row : kVariables)
    if (scheme.starts_with(row.scheme)) return std::string(row.variables);
  return "VELAGNSS_NTRIP_";
}

std::string FromEnvironment(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  return value != nullptr ? value : "";
}

}  // namespace

std::string ReadSecretFile(const std::string& file, std::string& text) {
  const C_FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!descriptor.IsOpen() || ::fstat(descriptor.Get(), &status) != 0) return FileError(file, std::strerror(errno));
  if (!S_ISREG(status.st_mode)) return FileError(file, "is not a regular file");
  if (MayOthersRead(status)) return FileError(file, "other users may read it; chmod 600 keeps them out");
  text.resize(kMaxFile + 1);
  std::size_t size = 0;
  ssize_t count = 0;
  while (size < text.size() && (count = ::read(descriptor.Get(), text.data() + size, text.size() - size)) > 0)
    size += static_cast<std::size_t>(count);
  text.resize(size);
  if (count < 0) return FileError(file, std::strerror(errno));
  return size > kMaxFile ? FileError(file, "is longer than 1 MiB") : std::string();
}

std::string CheckCredentials(const std::string& file) {
  std::string text;
  std::vector<S_Line> lines;
  return ReadLines(file, text, lines);
}

std::string FillAccount(S_Address& address, const std::string& file) {
  if (!address.password.empty()) return {};
  std::string text;
  std::vector<S_Line> lines;
  if (std::string error = file.empty() ? "" : ReadLines(file, text, lines); !error.empty()) return error;
  for (const S_Line& line : lines) {
    if (!IsFor(line.place, address) || (!address.user.empty() && address.user != line.user)) continue;
    address.user = line.user;
    address.password = line.password;
    return {};
  }
  const std::string variables = VariablesFor(address.scheme);
  const std::string user = FromEnvironment(variables + "USER");
  if (!address.user.empty() && !user.empty() && user != address.user) return {};
  if (address.user.empty()) address.user = user;
  if (!address.user.empty()) address.password = FromEnvironment(variables + "PASSWORD");
  return {};
}

}  // namespace Host
