#include "apps/velagnss/sinks/FileReplacement.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <optional>
#include <random>

namespace Host {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFile = 0666;  // less the umask
constexpr mode_t kPermissions = 07777;
constexpr int kMaxLinks = 40;  // as many as Linux follows
constexpr int kMaxNames = 100;

// The file that a chain of symbolic links ends at, which need not exist. Links of the kernel's own, as in
// /proc/self/fd, name descriptors rather than files and are not followed.
std::optional<fs::path> FollowLinks(fs::path name) {
  std::error_code error;
  for (int i = 0; i < kMaxLinks; ++i) {
    if (name.native().starts_with("/proc/") || name.native().starts_with("/dev/fd/")) return std::nullopt;
    if (!fs::is_symlink(name, error)) return name;
    name = name.parent_path() / fs::read_symlink(name, error);
  }
  return std::nullopt;
}

fs::path DirectoryOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

std::string NameThroughProc(int descriptor) { return fmt::format("/proc/self/fd/{}", descriptor); }

// Gives `use` temporary names until it takes one (not -1, or another failure than EEXIST).
int TryNames(const fs::path& target, fs::path& chosen, const std::function<int(const char* name)>& use) {
  std::random_device random;
  for (int i = 0; i < kMaxNames; ++i) {
    chosen =
        DirectoryOf(target) / fmt::format(".{}.velagnss-{:06x}", target.filename().native(), random() & 0xFF'FFFFU);
    const int result = use(chosen.c_str());
    if (result >= 0) return result;
    if (errno != EEXIST) break;
  }
  const int error = errno;
  chosen.clear();
  errno = error;
  return -1;
}

// An owner that cannot be kept is that of the program: only the superuser can give files away.
void CopyPermissions(int descriptor, const struct stat& status) {
  [[maybe_unused]] const int ignored = ::fchown(descriptor, status.st_uid, status.st_gid);
  ::fchmod(descriptor, status.st_mode & kPermissions);
}

}  // namespace

bool C_FileReplacement::CanReplace(const fs::path& name) {
  const std::optional<fs::path> target = FollowLinks(name);
  struct stat status {};
  if (!target || !target->has_filename()) return false;
  return ::stat(target->c_str(), &status) == 0 ? S_ISREG(status.st_mode) : errno == ENOENT;
}

C_FileDescriptor C_FileReplacement::Begin(const fs::path& name) {
  m_target = FollowLinks(name).value_or(name);
  struct stat status {};
  m_replaces = ::stat(m_target.c_str(), &status) == 0;
  // A file that is protected against writing must not be replaced, although its directory would allow it.
  if (m_replaces && ::access(m_target.c_str(), W_OK) != 0) return {};
  C_FileDescriptor contents(::open(DirectoryOf(m_target).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kNewFile));
  const bool canBeNamed = contents.IsOpen() && ::access(NameThroughProc(contents.Get()).c_str(), F_OK) == 0;
  if (!canBeNamed) {
    const auto create = [](const char* file) { return ::open(file, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile); };
    contents = C_FileDescriptor(TryNames(m_target, m_temporary, create));
  }
  if (contents.IsOpen() && m_replaces) CopyPermissions(contents.Get(), status);
  return contents;
}

// After a power failure either the old contents or the new ones must be there, so the new ones go to the disk before
// they replace anything. A file that is new replaces nothing, and that wait is saved.
bool C_FileReplacement::Commit(const C_FileDescriptor& contents) {
  if (m_replaces && ::fdatasync(contents.Get()) != 0 && errno != EINVAL) return false;
  if (m_temporary.empty() && !GiveName(contents)) return false;
  if (::rename(m_temporary.c_str(), m_target.c_str()) != 0) return false;
  m_temporary.clear();
  return true;
}

bool C_FileReplacement::GiveName(const C_FileDescriptor& contents) {
  const std::string source = NameThroughProc(contents.Get());
  const auto link = [&source](const char* name) {
    return ::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW);
  };
  return TryNames(m_target, m_temporary, link) == 0;
}

C_FileReplacement::~C_FileReplacement() {
  if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
}

}  // namespace Host
