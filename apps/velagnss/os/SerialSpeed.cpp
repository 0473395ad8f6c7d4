#include "apps/velagnss/os/SerialSpeed.h"

// A file of its own: this header and termios.h declare the same names.
#include <asm/termbits.h>
#include <sys/ioctl.h>

namespace Host {
namespace {

bool IsNear(unsigned int real, unsigned int wanted) {
  const unsigned int apart = real > wanted ? real - wanted : wanted - real;
  return apart <= wanted / 40;
}

}  // namespace

unsigned int SerialSpeed(int port) {
  termios2 settings{};
  return ::ioctl(port, TCGETS2, &settings) == 0 ? settings.c_ispeed : 0;
}

// BOTHER takes the speed as a number; the standard ones have no advantage.
bool SetSerialSpeed(int port, unsigned int speed) {
  termios2 settings{};
  if (::ioctl(port, TCGETS2, &settings) != 0) return false;
  settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | (CBAUD << IBSHIFT));
  settings.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
  settings.c_ispeed = speed;
  settings.c_ospeed = speed;
  return ::ioctl(port, TCSETS2, &settings) == 0 && ::ioctl(port, TCGETS2, &settings) == 0 &&
         IsNear(settings.c_ispeed, speed) && IsNear(settings.c_ospeed, speed);
}

}  // namespace Host
