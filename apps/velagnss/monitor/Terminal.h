// The terminal that the program runs at, as a screen of cells and a source of keys.
//
// It is /dev/tty: the standard streams may be anything else. Only one thread may use it, from `Open` to `Close`.
#ifndef VELAGNSS_APPS_TERMINAL_H
#define VELAGNSS_APPS_TERMINAL_H

#include <termios.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/monitor/Grid.h"
#include "apps/velagnss/monitor/Key.h"

struct screen;  // of curses

namespace Host {

enum class eColor : unsigned char { Auto, Always, Never };  // Auto: unless NO_COLOR is set

struct S_TerminalOptions {
  bool isPlain = false;  // ASCII alone, even where UTF-8 can be shown
  eColor color = eColor::Auto;
};

class C_Terminal {
 public:
  C_Terminal() = default;
  ~C_Terminal() { Close(); }
  C_Terminal(const C_Terminal&) = delete;
  C_Terminal& operator=(const C_Terminal&) = delete;

  // Takes the screen, in the foreground; not when a signal ends the program before. Returns an error text for the user,
  // or nothing.
  std::optional<std::string> Open(const S_TerminalOptions& options);

  // Gives it back as it was.
  void Close();

  // Readable when there is a key, or when the terminal is lost.
  int Descriptor() const { return m_descriptor; }

  // An empty grid of the terminal's size as it is now.
  C_Grid MakeGrid();

  // Shows a grid; only what has changed is sent. Waits as long as the terminal takes nothing.
  void Show(const C_Grid& grid);

  // Never waits. None: there is no more.
  S_Key ReadKey();

  // Between the two, the screen is that of the shell.
  void Leave();
  void Return();

  // Sends the whole screen with the next `Show`.
  void Redraw();

  // From any thread, for a terminal that takes nothing: the end of a Ctrl-S; for a reader that is stuck, what waits in
  // the terminal is dropped, so that there is room for more.
  void GoOn() const;
  void DropOutput() const;

  // From any thread, when that was in vain: line editing and echo as before.
  void RestoreLine() const;

 private:
  struct S_CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  using t_File = std::unique_ptr<std::FILE, S_CloseFile>;

  std::optional<std::string> OpenFiles();
  void SetUp(const S_TerminalOptions& options);
  void SetColors(eColor color);
  void ShowRow(const C_Grid& grid, int row);

  t_File m_out;
  t_File m_in;
  int m_descriptor = -1;
  screen* m_screen = nullptr;
  termios m_line{};  // as it was
  bool m_isPlain = true;
  bool m_hasColor = false;
  std::optional<C_Grid> m_shown;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TERMINAL_H
