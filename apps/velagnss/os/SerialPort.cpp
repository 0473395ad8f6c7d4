#include "apps/velagnss/os/SerialPort.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "apps/velagnss/os/SerialSpeed.h"

namespace Host {
namespace {

using eParity = S_SerialSettings::eParity;
using eFlow = S_SerialSettings::eFlow;

constexpr char kBusy[] = "another program has it open; end that one, see: fuser -v";

// The group that may use the device, "dialout" on most systems; "" for none.
std::string GroupOf(const std::string& path) {
  struct stat status {};
  constexpr mode_t kUse = S_IRGRP | S_IWGRP;
  if (::stat(path.c_str(), &status) != 0 || (status.st_mode & kUse) != kUse) return {};
  char buffer[4096];
  group entry{};
  group* found = nullptr;
  ::getgrgid_r(status.st_gid, &entry, buffer, sizeof buffer, &found);
  return found == nullptr ? "" : found->gr_name;
}

std::string DeniedText(const std::string& path) {
  const std::string group = GroupOf(path);
  if (group.empty()) return "permission denied; let a rule of udev give the device to the group dialout, and join it";
  return fmt::format("permission denied; join the group {0} and log in again: sudo usermod -aG {0} $USER", group);
}

S_SerialFailure OpenFailure(const std::string& path) {
  switch (errno) {
    case EACCES:
    case EPERM:
      return {DeniedText(path), true};
    case EBUSY:
      return {fmt::format("{} {}", kBusy, path), true};
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return {"there is no such device", true};
    default:
      return {std::strerror(errno), true};
  }
}

constexpr tcflag_t kDataBits[] = {CS5, CS6, CS7, CS8};

// Raw: a terminal would turn CR into LF and act on control characters. Breaks and bytes that came damaged are dropped,
// not read as zeros. The line for "hang up" stays up when the port is closed: some boards take it for a reset.
void Apply(const S_SerialSettings& settings, termios& line) {
  ::cfmakeraw(&line);
  line.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | INPCK);
  line.c_iflag |= IGNBRK | IGNPAR;
  line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | PARODD | CRTSCTS | HUPCL);
  line.c_cflag |= CREAD | CLOCAL | kDataBits[settings.dataBits - 5];
  if (settings.stopBits == 2) line.c_cflag |= CSTOPB;
  if (settings.parity != eParity::None) line.c_cflag |= PARENB;
  if (settings.parity != eParity::None) line.c_iflag |= INPCK;
  if (settings.parity == eParity::Odd) line.c_cflag |= PARODD;
  if (settings.flow == eFlow::Hardware) line.c_cflag |= CRTSCTS;
  if (settings.flow == eFlow::Software) line.c_iflag |= IXON | IXOFF;
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
}

// TIOCEXCL stops other programs from opening the port, but not those of root; the lock stops those that ask for it.
std::optional<S_SerialFailure> Claim(int port, const std::string& path) {
  if (::flock(port, LOCK_EX | LOCK_NB) != 0) return S_SerialFailure{fmt::format("{} {}", kBusy, path), true};
  ::ioctl(port, TIOCEXCL);
  return std::nullopt;
}

std::optional<S_SerialFailure> Configure(int port, const S_SerialSettings& settings) {
  termios line{};
  if (::tcgetattr(port, &line) != 0) return S_SerialFailure{std::strerror(errno), true};
  Apply(settings, line);
  if (::tcsetattr(port, TCSANOW, &line) != 0)
    return S_SerialFailure{fmt::format("its settings are refused: {}", std::strerror(errno)), true};
  if (settings.baud && !SetSerialSpeed(port, *settings.baud))
    return S_SerialFailure{fmt::format("the port cannot run at {} baud", *settings.baud), false};
  const int lines = TIOCM_DTR | TIOCM_RTS;
  if (settings.flow != eFlow::Hardware) ::ioctl(port, TIOCMBIS, &lines);  // receivers with such lines wait for them
  ::tcflush(port, TCIOFLUSH);
  return std::nullopt;
}

// Of the program's own terminal, also by the names /dev/stdin and /dev/tty.
bool IsOwnTerminal(dev_t device) {
  constexpr dev_t kControllingTerminal = 0x500;  // 5:0
  if (device == kControllingTerminal) return true;
  for (int standard = STDIN_FILENO; standard <= STDERR_FILENO; ++standard) {
    struct stat status {};
    if (::fstat(standard, &status) == 0 && S_ISCHR(status.st_mode) && status.st_rdev == device) return true;
  }
  return false;
}

// The kernel lists its terminal devices below a class; pseudo-terminals, majors 136 to 143, are not among them.
bool IsTerminal(dev_t device) {
  if (major(device) >= 136 && major(device) <= 143) return true;
  std::error_code none;
  const auto subsystem =
      std::filesystem::read_symlink(fmt::format("/sys/dev/char/{}:{}/subsystem", major(device), minor(device)), none);
  return subsystem.filename() == "tty";
}

}  // namespace

std::optional<S_SerialFailure> OpenSerialPort(const std::string& path, const S_SerialSettings& settings,
                                              C_FileDescriptor& port) {
  C_FileDescriptor opened(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!opened.IsOpen()) return OpenFailure(path);
  if (::isatty(opened.Get()) == 0) return S_SerialFailure{"is not a serial port", false};
  if (auto failure = Claim(opened.Get(), path)) return failure;
  if (auto failure = Configure(opened.Get(), settings)) {
    ReleaseSerialPort(opened.Get());
    return failure;
  }
  port = std::move(opened);
  return std::nullopt;
}

// Pseudo-terminals would stay claimed for as long as their other end is open.
void ReleaseSerialPort(int port) {
  ::tcflush(port, TCOFLUSH);
  ::ioctl(port, TIOCNXCL);
}

std::string SerialText(int port, const S_SerialSettings& settings) {
  constexpr char kParities[] = {'N', 'E', 'O'};
  return fmt::format("{} {}{}{}", SerialSpeed(port), settings.dataBits, kParities[static_cast<int>(settings.parity)],
                     settings.stopBits);
}

bool IsSerialDevice(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) && IsTerminal(status.st_rdev) &&
         !IsOwnTerminal(status.st_rdev);
}

}  // namespace Host
