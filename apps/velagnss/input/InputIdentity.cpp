#include "apps/velagnss/input/InputIdentity.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/sha.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <vector>

#include "apps/velagnss/net/Address.h"
#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {
namespace {

constexpr std::size_t kDigestBytes = 8;

bool IsRegular(int descriptor) {
  struct stat status {};
  return descriptor >= 0 && ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// What a short read leaves out would change the digest.
std::vector<unsigned char> HeadOf(int descriptor) {
  std::vector<unsigned char> head(kIdentityHead);
  std::size_t size = 0;
  while (size < head.size()) {
    const ssize_t count = ::pread(descriptor, head.data() + size, head.size() - size, static_cast<off_t>(size));
    if (count <= 0) break;
    size += static_cast<std::size_t>(count);
  }
  head.resize(size);
  return head;
}

std::string ShownName(const std::string& name) {
  S_Address address;
  return IsAddress(name) && ReadAddress(name, address).empty() ? address.Shown() : name;
}

}  // namespace

std::string IdentityOfHead(std::span<const unsigned char> head) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
  ::SHA256(head.data(), head.size(), digest.data());
  return fmt::format("{:02x}", fmt::join(digest.begin(), digest.begin() + kDigestBytes, ""));
}

bool IsOfContents(std::string_view identity) { return identity.find('@') == std::string_view::npos; }

std::string IdentityOfInput(const std::string& name) {
  if (name != "-" && !IsAddress(name)) {
    const C_FileDescriptor file(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (IsRegular(file.Get())) return IdentityOfHead(HeadOf(file.Get()));
  }
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return fmt::format("{}@{}", ShownName(name), std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace Host
