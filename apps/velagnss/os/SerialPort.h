// Serial ports as the operating system has them.
#ifndef VELAGNSS_APPS_SERIAL_PORT_H
#define VELAGNSS_APPS_SERIAL_PORT_H

#include <optional>
#include <string>

#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

struct S_SerialSettings {
  enum class eParity { None, Even, Odd };
  enum class eFlow { None, Hardware, Software };  // RTS and CTS, XON and XOFF

  std::optional<unsigned int> baud;  // none: what the port is set to
  unsigned int dataBits = 8;         // 5 to 8
  eParity parity = eParity::None;
  unsigned int stopBits = 1;
  eFlow flow = eFlow::None;
};

struct S_SerialFailure {
  std::string text;  // what happened, and what to do
  bool mayPass;      // the device may come back, the other program may end
};

// Opens a port for this program alone: raw, not waiting, its old bytes dropped. `path` may be a symbolic link.
std::optional<S_SerialFailure> OpenSerialPort(const std::string& path, const S_SerialSettings& settings,
                                              C_FileDescriptor& port);

// Lets others have it, and drops what has not been sent: closing would wait for that up to 30 s. Then it can be closed.
void ReleaseSerialPort(int port);

// "115200 8N1"
std::string SerialText(int port, const S_SerialSettings& settings);

// Whether a file is a terminal device: a serial port or a pseudo-terminal. Does not open it, which would raise its
// control lines. The terminal that the program runs at is none.
bool IsSerialDevice(const std::string& path);

}  // namespace Host

#endif  // VELAGNSS_APPS_SERIAL_PORT_H
