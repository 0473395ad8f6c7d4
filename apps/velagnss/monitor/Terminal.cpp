#include "apps/velagnss/monitor/Terminal.h"

#define NCURSES_NOMACROS  // they would take names of ours
#include <curses.h>
#include <fcntl.h>
#include <fmt/core.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "apps/velagnss/monitor/TerminalType.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/os/TerminalSignals.h"

namespace Host {
namespace {

constexpr char kDevice[] = "/dev/tty";
constexpr std::string_view kAdvice = "; 'decode' and 'stat' need no terminal";

// In the order of eStyle. The default background stays, so colors are those that can be read on black and on white;
// `bright` replaces one where the terminal has 16.
struct S_Look {
  attr_t colored;  // with the color
  attr_t plain;    // without colors
  short color;     // -1: that of the terminal
  short bright;
};
constexpr short kNone = -1;
constexpr S_Look kLooks[] = {
    {A_NORMAL, A_NORMAL, kNone, kNone},                  // Normal
    {A_BOLD, A_BOLD, kNone, kNone},                      // Title
    {A_DIM, A_DIM, kNone, kNone},                        // Dim
    {A_NORMAL, A_NORMAL, COLOR_GREEN, COLOR_GREEN},      // Good
    {A_NORMAL, A_BOLD, COLOR_YELLOW, COLOR_YELLOW},      // Warning
    {A_BOLD, A_BOLD, COLOR_RED, COLOR_RED},              // Bad
    {A_REVERSE, A_REVERSE, kNone, kNone},                // Selected
    {A_NORMAL, A_NORMAL, COLOR_GREEN, COLOR_GREEN},      // Gps
    {A_NORMAL, A_NORMAL, COLOR_RED, COLOR_RED},          // Glonass
    {A_NORMAL, A_NORMAL, COLOR_YELLOW, COLOR_YELLOW},    // Beidou
    {A_NORMAL, A_NORMAL, COLOR_BLUE, COLOR_BLUE + 8},    // Galileo
    {A_NORMAL, A_NORMAL, COLOR_MAGENTA, COLOR_MAGENTA},  // Sbas
    {A_NORMAL, A_NORMAL, COLOR_CYAN, COLOR_CYAN},        // Qzss
    {A_BOLD, A_NORMAL, COLOR_MAGENTA, COLOR_MAGENTA},    // Navic
};
static_assert(std::size(kLooks) == kNumStyles);

struct S_KeyCode {
  int code;
  eKey key;
};
constexpr int ControlKey(char letter) { return letter & 0x1F; }
constexpr S_KeyCode kKeyCodes[] = {
    {KEY_UP, eKey::Up},
    {KEY_DOWN, eKey::Down},
    {KEY_LEFT, eKey::Left},
    {KEY_RIGHT, eKey::Right},
    {KEY_PPAGE, eKey::PageUp},
    {KEY_NPAGE, eKey::PageDown},
    {KEY_HOME, eKey::Home},
    {KEY_END, eKey::End},
    {'\t', eKey::Tab},
    {KEY_BTAB, eKey::BackTab},
    {'\r', eKey::Enter},
    {'\n', eKey::Enter},
    {KEY_ENTER, eKey::Enter},
    {'\x1b', eKey::Escape},
    {KEY_BACKSPACE, eKey::Backspace},
    {'\b', eKey::Backspace},
    {'\x7f', eKey::Backspace},
    {KEY_DC, eKey::Backspace},
    {ControlKey('U'), eKey::EraseLine},
    {ControlKey('L'), eKey::Redraw},
};

bool IsSet(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

// Of a thread, until it ends.
class C_ThreadLocale {
 public:
  explicit C_ThreadLocale(locale_t locale) : m_locale(locale) { ::uselocale(locale); }
  ~C_ThreadLocale() {
    ::uselocale(LC_GLOBAL_LOCALE);
    ::freelocale(m_locale);
  }
  C_ThreadLocale(const C_ThreadLocale&) = delete;
  C_ThreadLocale& operator=(const C_ThreadLocale&) = delete;

 private:
  locale_t m_locale;
};

// The locale that the environment wants for characters, for this thread: whether it is one with UTF-8. The rest of the
// program keeps the "C" locale, and numbers keep it everywhere. A locale that is not installed is replaced by C.UTF-8.
bool SetCharacters() {
  const char* const names[] = {"LC_ALL", "LC_CTYPE", "LANG"};
  const char* const* const name = std::find_if(std::begin(names), std::end(names), &IsSet);
  const std::string wanted = name == std::end(names) ? "C" : std::getenv(*name);
  locale_t locale = ::newlocale(LC_CTYPE_MASK, wanted.c_str(), nullptr);
  const bool wantsUtf8 = wanted.find("UTF-8") != wanted.npos || wanted.find("utf8") != wanted.npos;
  if (locale == nullptr && wantsUtf8) locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (locale == nullptr) return false;
  static thread_local const C_ThreadLocale used(locale);
  return std::string_view(::nl_langinfo(CODESET)) == "UTF-8";
}

std::string TerminalType() {
  const char* type = std::getenv("TERM");
  return type == nullptr ? "" : type;
}

// Whether the terminal has a control sequence, by its name in terminfo.
bool CanDo(const char* name) {
  const char* sequence = ::tigetstr(name);
  return sequence != nullptr && reinterpret_cast<std::intptr_t>(sequence) != -1;
}

}  // namespace

std::optional<std::string> C_Terminal::OpenFiles() {
  m_descriptor = ::open(kDevice, O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (m_descriptor < 0 || ::tcgetattr(m_descriptor, &m_line) != 0)
    return fmt::format("there is no terminal to draw on: {}: {}{}", kDevice, std::strerror(errno), kAdvice);
  m_out.reset(::fdopen(m_descriptor, "w"));
  m_in.reset(::fdopen(::fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0), "r"));
  if (m_in == nullptr || m_out == nullptr) return fmt::format("{}: {}", kDevice, std::strerror(errno));
  return std::nullopt;
}

std::optional<std::string> C_Terminal::Open(const S_TerminalOptions& options) {
  if (auto error = OpenFiles()) return error;
  WaitForForeground(m_descriptor);
  if (SignalReceived() != 0) return std::nullopt;
  m_isPlain = !SetCharacters() || options.isPlain;
  const std::string type = TerminalType();
  // newterm would not free what it has allocated for a type that it does not find.
  const bool isKnown = IsTerminalTypeKnown(type, m_descriptor);
  m_screen = isKnown ? ::newterm(type.c_str(), m_out.get(), m_in.get()) : nullptr;
  if (m_screen == nullptr)
    return fmt::format("terminals of the type '{}' are unknown here; set TERM, for example to xterm{}", type, kAdvice);
  if (!CanDo("cup") || !CanDo("clear")) {
    Close();
    return fmt::format("terminals of the type '{}' have no screen to draw on{}", type, kAdvice);
  }
  SetUp(options);
  return std::nullopt;
}

// Ctrl-C and Ctrl-Z stay signals, which come even when the terminal takes no output.
void C_Terminal::SetUp(const S_TerminalOptions& options) {
  constexpr int kEscapeDelay = 25;  // ms from Escape to what would make it the beginning of another key
  ::set_escdelay(kEscapeDelay);
  ::cbreak();
  ::noecho();
  ::nonl();
  ::typeahead(-1);
  ::curs_set(0);
  ::keypad(stdscr, true);
  ::nodelay(stdscr, true);
  SetColors(options.color);
}

void C_Terminal::SetColors(eColor color) {
  constexpr int kMostColors = 16;
  const bool isWanted = color == eColor::Always || (color == eColor::Auto && !IsSet("NO_COLOR"));
  m_hasColor = isWanted && ::has_colors() && ::start_color() == OK && ::use_default_colors() == OK;
  if (!m_hasColor) return;
  for (std::size_t i = 0; i < std::size(kLooks); ++i)
    ::init_pair(static_cast<short>(i + 1), COLORS >= kMostColors ? kLooks[i].bright : kLooks[i].color, kNone);
}

void C_Terminal::Close() {
  if (m_screen == nullptr) return;
  if (!::isendwin()) ::endwin();
  ::delscreen(m_screen);
  m_screen = nullptr;
}

// Asked anew each time: the signal of a change may have been missed while the program was stopped.
C_Grid C_Terminal::MakeGrid() {
  winsize size{};
  if (::ioctl(m_descriptor, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0 &&
      (size.ws_row != LINES || size.ws_col != COLS)) {
    ::resizeterm(size.ws_row, size.ws_col);
    Redraw();
  }
  return {LINES, COLS, m_isPlain};
}

void C_Terminal::Redraw() {
  m_shown.reset();
  ::clearok(stdscr, true);
}

// Curses compares as well, but it takes cells one by one.
void C_Terminal::Show(const C_Grid& grid) {
  if (!m_shown) ::werase(stdscr);
  for (int row = 0; row < grid.Rows(); ++row) ShowRow(grid, row);
  m_shown = grid;
  ::refresh();
}

// In runs of cells that have changed and are of one style.
void C_Terminal::ShowRow(const C_Grid& grid, int row) {
  const auto hasChanged = [&](int column) { return !m_shown || grid.At(row, column) != m_shown->At(row, column); };
  std::wstring run;
  for (int column = 0; column < grid.Columns(); column += std::max<int>(1, static_cast<int>(run.size()))) {
    run.clear();
    const eStyle style = grid.At(row, column).style;
    for (int end = column; end < grid.Columns() && hasChanged(end) && grid.At(row, end).style == style; ++end)
      run += static_cast<wchar_t>(grid.At(row, end).character);
    if (run.empty()) continue;
    const auto number = static_cast<std::size_t>(style);
    const attr_t attributes = m_hasColor ? kLooks[number].colored : kLooks[number].plain;
    ::attr_set(attributes, static_cast<short>(m_hasColor ? number + 1 : 0), nullptr);
    ::mvaddnwstr(row, column, run.data(), static_cast<int>(run.size()));
  }
}

S_Key C_Terminal::ReadKey() {
  const int code = ::getch();
  if (code == ERR) return {};
  if (code >= ' ' && code <= '~') return {eKey::Character, static_cast<char>(code)};
  const auto* const found = std::find_if(std::begin(kKeyCodes), std::end(kKeyCodes),
                                         [code](const S_KeyCode& row) { return row.code == code; });
  return {found == std::end(kKeyCodes) ? eKey::Other : found->key, '\0'};
}

void C_Terminal::Leave() { ::endwin(); }

void C_Terminal::Return() {
  ::reset_prog_mode();
  Redraw();
}

// What the user has stopped only goes on after a stop by the program.
void C_Terminal::GoOn() const {
  ::tcflow(m_descriptor, TCOOFF);
  ::tcflow(m_descriptor, TCOON);
}

void C_Terminal::DropOutput() const { ::tcflush(m_descriptor, TCOFLUSH); }

void C_Terminal::RestoreLine() const { ::tcsetattr(m_descriptor, TCSANOW, &m_line); }

}  // namespace Host
