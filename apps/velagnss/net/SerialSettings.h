// The settings of a serial port as addresses hold them: "serial:///dev/ttyUSB0?baud=115200&parity=even".
#ifndef VELAGNSS_APPS_SERIAL_SETTINGS_H
#define VELAGNSS_APPS_SERIAL_SETTINGS_H

#include "apps/velagnss/net/AddressForm.h"
#include "apps/velagnss/os/SerialPort.h"

namespace Host {

extern const S_AddressForm kSerialForm;

// Of an address that has been checked against the form.
S_SerialSettings ReadSerialSettings(const S_Address& address);

}  // namespace Host

#endif  // VELAGNSS_APPS_SERIAL_SETTINGS_H
