// The functions that control what was opened, where a mapped device differs from the file that it
// is mapped to: a flush of a terminal discards input only, and the I2C bus answers its requests.

#include <sys/ioctl.h>
#include <termios.h>

#include <cstdarg>
#include <cstdint>

#include "interpose/i2c_device.h"
#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::isMappedTerminal;

ORB_SIM_WRAPPER int tcflush(int descriptor, int queue) noexcept {
  if (queue != TCIFLUSH && isMappedTerminal(descriptor)) {
    if (queue == TCOFLUSH) {
      return 0;
    }
    if (queue == TCIOFLUSH) {
      queue = TCIFLUSH;
    }
  }
  return callNext<"tcflush", decltype(::tcflush)>(descriptor, queue);
}

ORB_SIM_WRAPPER int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == TCFLSH) {
    return tcflush(descriptor, static_cast<int>(reinterpret_cast<intptr_t>(argument)));
  }
  if (orb::sim::isI2cRequest(descriptor, request)) {
    return orb::sim::controlI2cDevice(descriptor, request, argument);
  }
  return callNext<"ioctl", decltype(::ioctl)>(descriptor, request, argument);
}
