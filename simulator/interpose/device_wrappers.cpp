// The functions that use what was opened, where a mapped device differs from the file behind it.
//
// A mapped terminal keeps the bytes that its client has written: a flush discards input only. On
// the I2C bus's device, the kernel refuses to read and to write: the bus does it.

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>

#include "interpose/i2c_device.h"
#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::isMappedTerminal;
using orb::sim::isOpenOnI2cDevice;

namespace {

/// Whether a call has failed because `descriptor` is open on the I2C bus's device.
template <typename Result>
bool isForI2c(Result result, int descriptor) noexcept {
  return result < 0 && errno == ENOTCONN && isOpenOnI2cDevice(descriptor);
}

}  // namespace

ORB_SIM_WRAPPER int tcflush(int descriptor, int queue) noexcept {
  if (queue != TCIFLUSH && isMappedTerminal(descriptor)) {
    if (queue == TCOFLUSH) return 0;
    if (queue == TCIOFLUSH) queue = TCIFLUSH;
  }
  return callNext<"tcflush", decltype(::tcflush)>(descriptor, queue);
}

ORB_SIM_WRAPPER int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == TCFLSH)
    return tcflush(descriptor, static_cast<int>(reinterpret_cast<intptr_t>(argument)));
  if (orb::sim::isI2cRequest(request) && isOpenOnI2cDevice(descriptor))
    return orb::sim::controlI2cDevice(descriptor, request, argument);
  return callNext<"ioctl", decltype(::ioctl)>(descriptor, request, argument);
}

ORB_SIM_WRAPPER ssize_t read(int descriptor, void* buffer, size_t size) {
  const ssize_t result = callNext<"read", decltype(::read)>(descriptor, buffer, size);
  return isForI2c(result, descriptor) ? orb::sim::readI2cDevice(descriptor, buffer, size) : result;
}

ORB_SIM_WRAPPER ssize_t write(int descriptor, const void* bytes, size_t size) {
  const ssize_t result = callNext<"write", decltype(::write)>(descriptor, bytes, size);
  return isForI2c(result, descriptor) ? orb::sim::writeI2cDevice(descriptor, bytes, size) : result;
}

ORB_SIM_WRAPPER ssize_t __read(int, void*, size_t) __attribute__((alias("read")));
ORB_SIM_WRAPPER ssize_t __write(int, const void*, size_t) __attribute__((alias("write")));

// What read becomes in a program compiled with _FORTIFY_SOURCE.
ORB_SIM_WRAPPER ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t bufferSize) {
  const ssize_t result = callNext<"__read_chk", ssize_t(int, void*, size_t, size_t)>(
      descriptor, buffer, size, bufferSize);
  return isForI2c(result, descriptor) ? orb::sim::readI2cDevice(descriptor, buffer, size) : result;
}
