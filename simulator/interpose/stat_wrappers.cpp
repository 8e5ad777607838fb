// The functions that look at a file without opening it.

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "interpose/i2c_device.h"
#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::isI2cDevice;
using orb::sim::mapped;

namespace {

constexpr unsigned int kI2cMajor = 89;  // as in Linux's list of devices
constexpr unsigned int kI2cMinor = 3;
constexpr mode_t kI2cMode = S_IFCHR | S_IRUSR | S_IWUSR;

/// Makes the status of the I2C bus that of its device: a character device.
template <typename Status>
void becomeDevice(Status& status) noexcept {
  status.st_mode = kI2cMode;
  status.st_rdev = makedev(kI2cMajor, kI2cMinor);
  status.st_size = 0;
  status.st_blocks = 0;
}

void becomeDevice(struct statx& status) noexcept {
  status.stx_mode = kI2cMode;
  status.stx_rdev_major = kI2cMajor;
  status.stx_rdev_minor = kI2cMinor;
  status.stx_size = 0;
  status.stx_blocks = 0;
}

/// The result of a call that looked at `path`, which is mapped.
template <typename Status>
int lookedAt(const char* path, int result, Status* status) noexcept {
  if (result == 0 && isI2cDevice(path)) becomeDevice(*status);
  return result;
}

/// The result of a call that looked at what `descriptor` is open on.
template <typename Status>
int lookedAt(int descriptor, int result, Status* status) noexcept {
  const bool isSocket = result == 0 && S_ISSOCK(status->st_mode);
  if (isSocket && orb::sim::isOpenOnI2cDevice(descriptor)) becomeDevice(*status);
  return result;
}

/// What a link of a name that leads to the I2C bus holds: the device is no link.
ssize_t readNoLink() noexcept {
  errno = EINVAL;
  return -1;
}

/// The path of the I2C bus in the caller's room, or in new room where there is none.
char* copyOf(const char* path, char* resolved) noexcept {
  return resolved != nullptr ? std::strcpy(resolved, path) : strdup(path);
}

}  // namespace

ORB_SIM_WRAPPER int stat(const char* path, struct stat* result) noexcept {
  path = mapped(path);
  return lookedAt(path, callNext<"stat", decltype(::stat)>(path, result), result);
}

ORB_SIM_WRAPPER int stat64(const char* path, struct stat64* result) noexcept {
  path = mapped(path);
  return lookedAt(path, callNext<"stat64", decltype(::stat64)>(path, result), result);
}

ORB_SIM_WRAPPER int lstat(const char* path, struct stat* result) noexcept {
  path = mapped(path);
  return lookedAt(path, callNext<"lstat", decltype(::lstat)>(path, result), result);
}

ORB_SIM_WRAPPER int lstat64(const char* path, struct stat64* result) noexcept {
  path = mapped(path);
  return lookedAt(path, callNext<"lstat64", decltype(::lstat64)>(path, result), result);
}

ORB_SIM_WRAPPER int fstatat(int directory, const char* path, struct stat* result,
                            int flags) noexcept {
  path = mapped(directory, path);
  return lookedAt(path, callNext<"fstatat", decltype(::fstatat)>(directory, path, result, flags),
                  result);
}

ORB_SIM_WRAPPER int fstatat64(int directory, const char* path, struct stat64* result,
                              int flags) noexcept {
  path = mapped(directory, path);
  return lookedAt(
      path, callNext<"fstatat64", decltype(::fstatat64)>(directory, path, result, flags), result);
}

ORB_SIM_WRAPPER int fstat(int descriptor, struct stat* result) noexcept {
  return lookedAt(descriptor, callNext<"fstat", decltype(::fstat)>(descriptor, result), result);
}

ORB_SIM_WRAPPER int fstat64(int descriptor, struct stat64* result) noexcept {
  return lookedAt(descriptor, callNext<"fstat64", decltype(::fstat64)>(descriptor, result), result);
}

ORB_SIM_WRAPPER int statx(int directory, const char* path, int flags, unsigned int mask,
                          struct statx* result) noexcept {
  path = mapped(directory, path);
  return lookedAt(path, callNext<"statx", decltype(::statx)>(directory, path, flags, mask, result),
                  result);
}

// What stat and its kin are in programs that were linked before glibc 2.33.

ORB_SIM_WRAPPER int __xstat(int version, const char* path, struct stat* result) {
  path = mapped(path);
  return lookedAt(path,
                  callNext<"__xstat", int(int, const char*, struct stat*)>(version, path, result),
                  result);
}

ORB_SIM_WRAPPER int __xstat64(int version, const char* path, struct stat64* result) {
  path = mapped(path);
  return lookedAt(
      path, callNext<"__xstat64", int(int, const char*, struct stat64*)>(version, path, result),
      result);
}

ORB_SIM_WRAPPER int __lxstat(int version, const char* path, struct stat* result) {
  path = mapped(path);
  return lookedAt(path,
                  callNext<"__lxstat", int(int, const char*, struct stat*)>(version, path, result),
                  result);
}

ORB_SIM_WRAPPER int __lxstat64(int version, const char* path, struct stat64* result) {
  path = mapped(path);
  return lookedAt(
      path, callNext<"__lxstat64", int(int, const char*, struct stat64*)>(version, path, result),
      result);
}

ORB_SIM_WRAPPER int __fxstat(int version, int descriptor, struct stat* result) {
  return lookedAt(descriptor,
                  callNext<"__fxstat", int(int, int, struct stat*)>(version, descriptor, result),
                  result);
}

ORB_SIM_WRAPPER int __fxstat64(int version, int descriptor, struct stat64* result) {
  return lookedAt(
      descriptor,
      callNext<"__fxstat64", int(int, int, struct stat64*)>(version, descriptor, result), result);
}

ORB_SIM_WRAPPER int __fxstatat(int version, int directory, const char* path, struct stat* result,
                               int flags) {
  path = mapped(directory, path);
  return lookedAt(path,
                  callNext<"__fxstatat", int(int, int, const char*, struct stat*, int)>(
                      version, directory, path, result, flags),
                  result);
}

ORB_SIM_WRAPPER int __fxstatat64(int version, int directory, const char* path,
                                 struct stat64* result, int flags) {
  path = mapped(directory, path);
  return lookedAt(path,
                  callNext<"__fxstatat64", int(int, int, const char*, struct stat64*, int)>(
                      version, directory, path, result, flags),
                  result);
}

ORB_SIM_WRAPPER int access(const char* path, int mode) noexcept {
  return callNext<"access", decltype(::access)>(mapped(path), mode);
}

ORB_SIM_WRAPPER int faccessat(int directory, const char* path, int mode, int flags) noexcept {
  return callNext<"faccessat", decltype(::faccessat)>(directory, mapped(directory, path), mode,
                                                      flags);
}

ORB_SIM_WRAPPER int eaccess(const char* path, int mode) noexcept {
  return callNext<"eaccess", decltype(::eaccess)>(mapped(path), mode);
}

ORB_SIM_WRAPPER int euidaccess(const char* path, int mode) noexcept {
  return callNext<"euidaccess", decltype(::euidaccess)>(mapped(path), mode);
}

ORB_SIM_WRAPPER ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
  path = mapped(path);
  if (isI2cDevice(path)) return readNoLink();
  return callNext<"readlink", decltype(::readlink)>(path, buffer, size);
}

ORB_SIM_WRAPPER ssize_t readlinkat(int directory, const char* path, char* buffer,
                                   size_t size) noexcept {
  path = mapped(directory, path);
  if (isI2cDevice(path)) return readNoLink();
  return callNext<"readlinkat", decltype(::readlinkat)>(directory, path, buffer, size);
}

ORB_SIM_WRAPPER ssize_t __readlink_chk(const char* path, char* buffer, size_t size,
                                       size_t bufferSize) {
  path = mapped(path);
  if (isI2cDevice(path)) return readNoLink();
  return callNext<"__readlink_chk", ssize_t(const char*, char*, size_t, size_t)>(path, buffer, size,
                                                                                 bufferSize);
}

ORB_SIM_WRAPPER ssize_t __readlinkat_chk(int directory, const char* path, char* buffer, size_t size,
                                         size_t bufferSize) {
  path = mapped(directory, path);
  if (isI2cDevice(path)) return readNoLink();
  return callNext<"__readlinkat_chk", ssize_t(int, const char*, char*, size_t, size_t)>(
      directory, path, buffer, size, bufferSize);
}

ORB_SIM_WRAPPER char* realpath(const char* path, char* resolved) noexcept {
  path = mapped(path);
  if (isI2cDevice(path)) return copyOf(path, resolved);
  return callNext<"realpath", decltype(::realpath)>(path, resolved);
}

ORB_SIM_WRAPPER char* canonicalize_file_name(const char* path) noexcept {
  path = mapped(path);
  if (isI2cDevice(path)) return copyOf(path, nullptr);
  return callNext<"canonicalize_file_name", decltype(::canonicalize_file_name)>(path);
}

ORB_SIM_WRAPPER char* __realpath_chk(const char* path, char* resolved, size_t size) {
  path = mapped(path);
  if (isI2cDevice(path)) return copyOf(path, resolved);
  return callNext<"__realpath_chk", char*(const char*, char*, size_t)>(path, resolved, size);
}

ORB_SIM_WRAPPER ssize_t getxattr(const char* path, const char* name, void* value,
                                 size_t size) noexcept {
  return callNext<"getxattr", decltype(::getxattr)>(mapped(path), name, value, size);
}

ORB_SIM_WRAPPER ssize_t lgetxattr(const char* path, const char* name, void* value,
                                  size_t size) noexcept {
  return callNext<"lgetxattr", decltype(::lgetxattr)>(mapped(path), name, value, size);
}

ORB_SIM_WRAPPER ssize_t listxattr(const char* path, char* list, size_t size) noexcept {
  return callNext<"listxattr", decltype(::listxattr)>(mapped(path), list, size);
}

ORB_SIM_WRAPPER ssize_t llistxattr(const char* path, char* list, size_t size) noexcept {
  return callNext<"llistxattr", decltype(::llistxattr)>(mapped(path), list, size);
}
