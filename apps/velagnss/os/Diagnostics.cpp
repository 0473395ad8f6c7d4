#include "apps/velagnss/os/Diagnostics.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace Host {
namespace {

eVerbosity g_verbosity = eVerbosity::Normal;
bool g_progressShown = false;

// ECMA-48; no colors for users who set NO_COLOR (no-color.org).
struct S_Color {
  std::string_view on;
  std::string_view off = "\x1b[0m";
};
constexpr S_Color kRed{"\x1b[1;31m"};
constexpr S_Color kYellow{"\x1b[1;33m"};

bool UsesColor() {
  static const bool use = [] {
    const char* noColor = std::getenv("NO_COLOR");
    return IsErrorATerminal() && (noColor == nullptr || *noColor == '\0');
  }();
  return use;
}

// Another program may have made a shared terminal non-blocking.
bool IsReaderBack() noexcept {
  constexpr int kPatienceMilliseconds = 500;
  pollfd waiting{STDERR_FILENO, POLLOUT, 0};
  return ::poll(&waiting, 1, kPatienceMilliseconds) == 1;
}

void WriteToError(std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EAGAIN && IsReaderBack()) continue;
    if (written <= 0) return;  // nobody is left to read it
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// Asked anew for each line: a progress line that wraps could not be erased.
std::size_t Columns() {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

// The progress line is cleared first, or the message would be appended to it.
void Report(std::string_view kind, const S_Color& color, std::string_view message) {
  ShowProgressLine({});
  const bool isColored = UsesColor() && !kind.empty();
  WriteToError(fmt::format("velagnss: {}{}{}{}\n", isColored ? color.on : "", kind, isColored ? color.off : "",
                           Printable(message)));
}

// The bytes that a lead byte of UTF-8 announces, with itself; 0 for other bytes. 0xC0, 0xC1 and those from 0xF5 on are
// never used (RFC 3629).
std::size_t SequenceSize(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

// The size of the harmless character at the front of `text`; 0 when there is none.
std::size_t PlainSize(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t size = SequenceSize(byte(0));
  if (size == 1) {
    const bool isLayout = byte(0) == '\n' || byte(0) == '\r' || byte(0) == '\t';
    return isLayout || (byte(0) >= 0x20 && byte(0) < 0x7F) ? 1 : 0;
  }
  if (size > text.size()) return 0;
  for (std::size_t i = 1; i < size; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  const bool isControl = byte(0) == 0xC2 && byte(1) < 0xA0;
  return isControl ? 0 : size;
}

}  // namespace

void SetVerbosity(eVerbosity verbosity) { g_verbosity = verbosity; }
eVerbosity Verbosity() { return g_verbosity; }

void ReportError(std::string_view message) { Report("error: ", kRed, message); }
void ReportWarning(std::string_view message) {
  if (g_verbosity != eVerbosity::Quiet) Report("warning: ", kYellow, message);
}
void ReportDetail(std::string_view message) {
  if (g_verbosity == eVerbosity::Verbose) Report("", {}, message);
}

void ReportOutOfMemory() noexcept { WriteToError("velagnss: error: out of memory; try a smaller --read-size\n"); }

// File names and text from the wire may hold escape sequences, which a terminal would obey.
std::string Printable(std::string_view text) {
  std::string printable;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool isPlain = byte >= 0x20 && byte < 0x7F;
    printable += isPlain ? std::string(1, character) : fmt::format("\\x{:02x}", byte);
  }
  return printable;
}

std::string PrintableText(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    const std::size_t size = PlainSize(text);
    printable += size > 0 ? std::string(text.substr(0, size))
                          : fmt::format("\\x{:02x}", static_cast<unsigned char>(text.front()));
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return printable;
}

bool IsErrorATerminal() {
  static const bool terminal = [] {
    const char* type = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) == 1 && type != nullptr && std::string_view(type) != "dumb";
  }();
  return terminal;
}

void ShowProgressLine(std::string_view line) {
  if (line.empty() && !g_progressShown) return;
  if (const std::size_t columns = Columns(); line.size() >= columns) line.remove_prefix(line.size() - columns + 1);
  WriteToError(fmt::format("\r\x1b[K{}", line));  // back to the first column, clear to the end
  g_progressShown = !line.empty();
}

}  // namespace Host
