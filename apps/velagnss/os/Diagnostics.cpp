#include "apps/velagnss/os/Diagnostics.h"

#include <fmt/core.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <span>
#include <utility>

#include "apps/velagnss/os/HidePassword.h"

namespace Host {
namespace {

eVerbosity g_verbosity = eVerbosity::Normal;
bool g_progressShown = false;
t_MessageTaker g_taker;

// ECMA-48; no colors for users who set NO_COLOR (no-color.org).
struct S_Color {
  std::string_view on;
  std::string_view off = "\x1b[0m";
};
struct S_MessageStyle {
  std::string_view start;
  S_Color color;
};
constexpr S_MessageStyle kStyles[] = {{"error: ", {"\x1b[1;31m"}}, {"warning: ", {"\x1b[1;33m"}}, {"", {"", ""}}};

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

// Addresses also get here as arguments that are in the wrong place, and as names of files.
void HidePasswords(std::string& message) {
  for (std::size_t begin = 0, end = 0; begin < message.size(); begin = end + 1) {
    end = std::min(message.find_first_of(" '", begin), message.size());
    HidePassword(std::span(message).subspan(begin, end - begin));
  }
}

const S_MessageStyle& StyleOf(eMessage kind) { return kStyles[static_cast<std::size_t>(kind)]; }

// The progress line is cleared first, or the message would be appended to it.
void Write(eMessage kind, std::string_view message) {
  ShowProgressLine({});
  const auto& [start, color] = StyleOf(kind);
  const bool isColored = UsesColor();
  WriteToError(
      fmt::format("velagnss: {}{}{}{}\n", isColored ? color.on : "", start, isColored ? color.off : "", message));
}

}  // namespace

void ReportMessage(eMessage kind, std::string_view message) {
  std::string shown = Printable(message);
  HidePasswords(shown);
  if (g_taker) g_taker(kind, shown);
  if (!g_taker || ::isatty(STDERR_FILENO) == 0) Write(kind, shown);
}

std::string_view MessageStart(eMessage kind) { return StyleOf(kind).start; }
void SetMessageTaker(t_MessageTaker taker) { g_taker = std::move(taker); }

void SetVerbosity(eVerbosity verbosity) { g_verbosity = verbosity; }
eVerbosity Verbosity() { return g_verbosity; }

void ReportError(std::string_view message) { ReportMessage(eMessage::Error, message); }
void ReportWarning(std::string_view message) {
  if (g_verbosity != eVerbosity::Quiet) ReportMessage(eMessage::Warning, message);
}
void ReportNotice(std::string_view message) {
  if (g_verbosity != eVerbosity::Quiet) ReportMessage(eMessage::Notice, message);
}
void ReportDetail(std::string_view message) {
  if (g_verbosity == eVerbosity::Verbose) ReportMessage(eMessage::Notice, message);
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

void HidePassword(std::span<char> word) {
  const std::string_view text(word.data(), word.size());
  const std::size_t account = text.find("://");
  const std::size_t at = text.rfind('@');
  if (account == std::string_view::npos || at == std::string_view::npos) return;
  const std::size_t colon = text.find(':', account + 3);
  if (colon < at) std::fill(word.data() + colon + 1, word.data() + at, 'x');
}

bool IsErrorATerminal() {
  static const bool terminal = [] {
    const char* type = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) == 1 && type != nullptr && std::string_view(type) != "dumb";
  }();
  return terminal;
}

std::string_view CutToColumns(std::string_view line, std::size_t columns) {
  if (line.size() < columns) return line;
  const std::size_t cut = line.size() + 1 - std::min(line.size() + 1, columns);
  const std::size_t nameEnd = line.rfind(": ");
  if (nameEnd == std::string_view::npos || cut < nameEnd) return line.substr(cut);
  // A number without its first digit would be a wrong one.
  std::size_t figure = nameEnd + 2;
  while (figure < cut) {
    const std::size_t comma = line.find(", ", figure);
    if (comma == std::string_view::npos) return {};
    figure = comma + 2;
  }
  return line.substr(figure);
}

void ShowProgressLine(std::string_view line) {
  if (line.empty() && !g_progressShown) return;
  WriteToError(fmt::format("\r\x1b[K{}", CutToColumns(line, Columns())));  // back to the first column, clear to the end
  g_progressShown = !line.empty();
}

}  // namespace Host
