// The functions that open a file.

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include "interpose/i2c_device.h"
#include "interpose/wrap.h"

namespace {

/// The mode that follows the flags of an open where a file may be created, else 0.
mode_t modeAfter(int flags, va_list& arguments) {
  const bool creates = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  return creates ? va_arg(arguments, mode_t) : mode_t{0};
}

/// The flags of open that the mode of fopen stands for, of those that matter to a device.
int openFlags(const char* mode) {
  const int closes = std::strchr(mode, 'e') != nullptr ? O_CLOEXEC : 0;
  if (std::strchr(mode, '+') != nullptr) return O_RDWR | closes;
  return (mode[0] == 'r' ? O_RDONLY : O_WRONLY) | closes;
}

/// A stream on the I2C bus's device. It is for its descriptor's ioctl calls: what the C library
/// itself reads and writes for a stream fails, since no wrapper sees it.
FILE* openI2cStream(const char* mode) {
  const int descriptor = orb::sim::openI2cDevice(openFlags(mode));
  return descriptor < 0 ? nullptr : fdopen(descriptor, mode);
}

/// What the C library would open by itself is not opened at all where it is the I2C bus.
FILE* refusedStream() {
  errno = EOPNOTSUPP;
  return nullptr;
}

}  // namespace

using orb::sim::callNext;
using orb::sim::isI2cDevice;
using orb::sim::mapped;
using orb::sim::openI2cDevice;

ORB_SIM_WRAPPER int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeAfter(flags, arguments);
  va_end(arguments);
  path = mapped(path);
  if (isI2cDevice(path)) return openI2cDevice(flags);
  return callNext<"open", decltype(::open)>(path, flags, mode);
}

ORB_SIM_WRAPPER int openat(int directory, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeAfter(flags, arguments);
  va_end(arguments);
  path = mapped(directory, path);
  if (isI2cDevice(path)) return openI2cDevice(flags);
  return callNext<"openat", decltype(::openat)>(directory, path, flags, mode);
}

ORB_SIM_WRAPPER int open64(const char*, int, ...) __attribute__((alias("open")));
ORB_SIM_WRAPPER int __open(const char*, int, ...) __attribute__((alias("open"), nonnull(1)));
ORB_SIM_WRAPPER int __open64(const char*, int, ...) __attribute__((alias("open"), nonnull(1)));
ORB_SIM_WRAPPER int openat64(int, const char*, int, ...) __attribute__((alias("openat")));

ORB_SIM_WRAPPER int creat(const char* path, mode_t mode) {
  path = mapped(path);
  if (isI2cDevice(path)) return openI2cDevice(O_WRONLY);
  return callNext<"creat", decltype(::creat)>(path, mode);
}

ORB_SIM_WRAPPER int creat64(const char* path, mode_t mode) {
  path = mapped(path);
  if (isI2cDevice(path)) return openI2cDevice(O_WRONLY);
  return callNext<"creat64", decltype(::creat64)>(path, mode);
}

// What the calls above become in a program compiled with _FORTIFY_SOURCE.

ORB_SIM_WRAPPER int __open_2(const char* path, int flags) {
  path = mapped(path);
  if (isI2cDevice(path)) return openI2cDevice(flags);
  return callNext<"__open_2", int(const char*, int)>(path, flags);
}

ORB_SIM_WRAPPER int __open64_2(const char* path, int flags) {
  path = mapped(path);
  if (isI2cDevice(path)) return openI2cDevice(flags);
  return callNext<"__open64_2", int(const char*, int)>(path, flags);
}

ORB_SIM_WRAPPER int __openat_2(int directory, const char* path, int flags) {
  path = mapped(directory, path);
  if (isI2cDevice(path)) return openI2cDevice(flags);
  return callNext<"__openat_2", int(int, const char*, int)>(directory, path, flags);
}

ORB_SIM_WRAPPER int __openat64_2(int directory, const char* path, int flags) {
  path = mapped(directory, path);
  if (isI2cDevice(path)) return openI2cDevice(flags);
  return callNext<"__openat64_2", int(int, const char*, int)>(directory, path, flags);
}

ORB_SIM_WRAPPER FILE* fopen(const char* path, const char* mode) {
  path = mapped(path);
  if (isI2cDevice(path)) return openI2cStream(mode);
  return callNext<"fopen", decltype(::fopen)>(path, mode);
}

ORB_SIM_WRAPPER FILE* fopen64(const char* path, const char* mode) {
  path = mapped(path);
  if (isI2cDevice(path)) return openI2cStream(mode);
  return callNext<"fopen64", decltype(::fopen64)>(path, mode);
}

ORB_SIM_WRAPPER FILE* freopen(const char* path, const char* mode, FILE* stream) {
  path = mapped(path);
  if (isI2cDevice(path)) return refusedStream();
  return callNext<"freopen", decltype(::freopen)>(path, mode, stream);
}

ORB_SIM_WRAPPER FILE* freopen64(const char* path, const char* mode, FILE* stream) {
  path = mapped(path);
  if (isI2cDevice(path)) return refusedStream();
  return callNext<"freopen64", decltype(::freopen64)>(path, mode, stream);
}

// The file is opened later, in the child, by a call within the C library.

ORB_SIM_WRAPPER int posix_spawn_file_actions_addopen(posix_spawn_file_actions_t* actions,
                                                     int descriptor, const char* path, int flags,
                                                     mode_t mode) noexcept {
  path = mapped(path);
  if (isI2cDevice(path)) return EOPNOTSUPP;
  return callNext<"posix_spawn_file_actions_addopen", decltype(::posix_spawn_file_actions_addopen)>(
      actions, descriptor, path, flags, mode);
}
