#include "apps/velagnss/net/Credentials.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

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

// Returns an error text.
std::string ReadFile(const std::string& file, std::string& text) {
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

// Whether the file has a line for `address`. A password may hold blanks: it is the rest of the line.
bool FindLine(std::string_view text, S_Address& address, int& badLine) {
  for (int number = 1; !text.empty(); ++number) {
    const std::string_view line = NextLine(text);
    const std::vector<std::string_view> words = WordsOf(line);
    if (words.empty() || words[0].starts_with('#')) continue;
    if (words.size() < 3 && badLine == 0) badLine = number;
    if (words.size() < 3 || !IsFor(words[0], address)) continue;
    if (!address.user.empty() && address.user != words[1]) continue;
    address.user = words[1];
    address.password = line.substr(static_cast<std::size_t>(words[2].data() - line.data()));
    return true;
  }
  return false;
}

std::string FromEnvironment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

std::string FillAccount(S_Address& address, const std::string& file) {
  if (!address.password.empty()) return {};
  if (!file.empty()) {
    std::string text;
    int badLine = 0;
    if (std::string error = ReadFile(file, text); !error.empty()) return error;
    if (FindLine(text, address, badLine)) return {};
    if (badLine != 0) return FileError(file, fmt::format("line {} is not HOST[:PORT] USER PASSWORD", badLine));
  }
  const std::string user = FromEnvironment("VELAGNSS_NTRIP_USER");
  if (!address.user.empty() && !user.empty() && user != address.user) return {};
  if (address.user.empty()) address.user = user;
  if (!address.user.empty()) address.password = FromEnvironment("VELAGNSS_NTRIP_PASSWORD");
  return {};
}

}  // namespace Host
