// The speed of a serial port, any number of bits per second.
#ifndef VELAGNSS_APPS_SERIAL_SPEED_H
#define VELAGNSS_APPS_SERIAL_SPEED_H

namespace Host {

// 0 when it is not known.
unsigned int SerialSpeed(int port);

// False when the port cannot be set to `speed`, or only to one that is more than 2.5 % off: a byte of 10 bits is then
// sampled wrong at its end.
bool SetSerialSpeed(int port, unsigned int speed);

}  // namespace Host

#endif  // VELAGNSS_APPS_SERIAL_SPEED_H
