// A mapped terminal keeps the bytes that its client has written: a flush discards input only.

#include <sys/ioctl.h>
#include <termios.h>

#include <cstdarg>
#include <cstdint>

#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::isMappedTerminal;

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
  return callNext<"ioctl", decltype(::ioctl)>(descriptor, request, argument);
}
