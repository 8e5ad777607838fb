// The functions that open a file. The I2C bus is opened by open and openat alone: the calls that
// the C library makes itself, for a stream for instance, reach no wrapper.

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>

#include <cstdarg>

#include "interpose/i2c_device.h"
#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::isI2cDevice;
using orb::sim::mapped;
using orb::sim::openI2cDevice;

namespace {

/// The mode that follows the flags of an open where a file may be created, else 0.
mode_t modeAfter(int flags, va_list& arguments) {
  const bool creates = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  return creates ? va_arg(arguments, mode_t) : mode_t{0};
}

}  // namespace

ORB_SIM_WRAPPER int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeAfter(flags, arguments);
  va_end(arguments);
  path = mapped(path);
  return isI2cDevice(path) ? openI2cDevice(flags)
                           : callNext<"open", decltype(::open)>(path, flags, mode);
}

ORB_SIM_WRAPPER int openat(int directory, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeAfter(flags, arguments);
  va_end(arguments);
  path = mapped(directory, path);
  return isI2cDevice(path) ? openI2cDevice(flags)
                           : callNext<"openat", decltype(::openat)>(directory, path, flags, mode);
}

// What the calls above become in a program compiled with _FORTIFY_SOURCE.

ORB_SIM_WRAPPER int __open_2(const char* path, int flags) {
  path = mapped(path);
  return isI2cDevice(path) ? openI2cDevice(flags)
                           : callNext<"__open_2", int(const char*, int)>(path, flags);
}

ORB_SIM_WRAPPER int __openat_2(int directory, const char* path, int flags) {
  path = mapped(directory, path);
  return isI2cDevice(path)
             ? openI2cDevice(flags)
             : callNext<"__openat_2", int(int, const char*, int)>(directory, path, flags);
}

ORB_SIM_FORWARD(int, creat, (const char* path, mode_t mode), (mapped(path), mode))
ORB_SIM_FORWARD(FILE*, fopen, (const char* path, const char* mode), (mapped(path), mode))
ORB_SIM_FORWARD(FILE*, freopen, (const char* path, const char* mode, FILE* stream),
                (mapped(path), mode, stream))

// The file is opened later, in the child, by a call within the C library.
ORB_SIM_WRAPPER int posix_spawn_file_actions_addopen(posix_spawn_file_actions_t* actions,
                                                     int descriptor, const char* path, int flags,
                                                     mode_t mode) noexcept {
  return callNext<"posix_spawn_file_actions_addopen", decltype(::posix_spawn_file_actions_addopen)>(
      actions, descriptor, mapped(path), flags, mode);
}

ORB_SIM_WRAPPER int open64(const char*, int, ...) __attribute__((alias("open")));
ORB_SIM_WRAPPER int openat64(int, const char*, int, ...) __attribute__((alias("openat")));
ORB_SIM_WRAPPER int __open(const char*, int, ...) __attribute__((alias("open"), nonnull(1)));
ORB_SIM_WRAPPER int __open64(const char*, int, ...) __attribute__((alias("open"), nonnull(1)));
ORB_SIM_WRAPPER int __open64_2(const char*, int) __attribute__((alias("__open_2")));
ORB_SIM_WRAPPER int __openat64_2(int, const char*, int) __attribute__((alias("__openat_2")));
ORB_SIM_WRAPPER int creat64(const char*, mode_t) __attribute__((alias("creat")));
ORB_SIM_WRAPPER FILE* fopen64(const char*, const char*) __attribute__((alias("fopen")));
ORB_SIM_WRAPPER FILE* freopen64(const char*, const char*, FILE*) __attribute__((alias("freopen")));
