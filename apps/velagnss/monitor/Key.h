// Keys as the monitor knows them.
#ifndef VELAGNSS_APPS_KEY_H
#define VELAGNSS_APPS_KEY_H

namespace Host {

enum class eKey : unsigned char {
  None,
  Character,
  Up,
  Down,
  Left,
  Right,
  PageUp,
  PageDown,
  Home,
  End,
  Tab,
  BackTab,
  Enter,
  Escape,
  Backspace,
  EraseLine,
  Redraw,
  Other,  // one that means nothing here
};

struct S_Key {
  eKey key = eKey::None;
  char character = '\0';  // printable ASCII
  friend bool operator==(const S_Key&, const S_Key&) = default;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_KEY_H
