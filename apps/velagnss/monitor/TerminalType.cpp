#include "apps/velagnss/monitor/TerminalType.h"

#include <curses.h>
#include <term.h>  // whose macros take common words: nothing else is done in this file

namespace Host {

bool IsTerminalTypeKnown(const std::string& type, int descriptor) {
  int result = 0;
  if (type.empty() || ::setupterm(type.c_str(), descriptor, &result) != OK) return false;
  ::del_curterm(cur_term);
  return true;
}

}  // namespace Host
