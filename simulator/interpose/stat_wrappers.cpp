// The functions that look at a file without opening it.

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::mapped;

ORB_SIM_WRAPPER int stat(const char* path, struct stat* result) noexcept {
  return callNext<"stat", decltype(::stat)>(mapped(path), result);
}

ORB_SIM_WRAPPER int lstat(const char* path, struct stat* result) noexcept {
  return callNext<"lstat", decltype(::lstat)>(mapped(path), result);
}

ORB_SIM_WRAPPER int fstatat(int directory, const char* path, struct stat* result,
                            int flags) noexcept {
  return callNext<"fstatat", decltype(::fstatat)>(directory, mapped(directory, path), result,
                                                  flags);
}

ORB_SIM_WRAPPER int statx(int directory, const char* path, int flags, unsigned int mask,
                          struct statx* result) noexcept {
  return callNext<"statx", decltype(::statx)>(directory, mapped(directory, path), flags, mask,
                                              result);
}

ORB_SIM_WRAPPER int stat64(const char*, struct stat64*) noexcept __attribute__((alias("stat")));
ORB_SIM_WRAPPER int lstat64(const char*, struct stat64*) noexcept __attribute__((alias("lstat")));
ORB_SIM_WRAPPER int fstatat64(int, const char*, struct stat64*, int) noexcept
    __attribute__((alias("fstatat")));

// What stat and its kin are in programs that were linked before glibc 2.33.

ORB_SIM_WRAPPER int __xstat(int version, const char* path, struct stat* result) {
  return callNext<"__xstat", int(int, const char*, struct stat*)>(version, mapped(path), result);
}

ORB_SIM_WRAPPER int __lxstat(int version, const char* path, struct stat* result) {
  return callNext<"__lxstat", int(int, const char*, struct stat*)>(version, mapped(path), result);
}

ORB_SIM_WRAPPER int __fxstatat(int version, int directory, const char* path, struct stat* result,
                               int flags) {
  return callNext<"__fxstatat", int(int, int, const char*, struct stat*, int)>(
      version, directory, mapped(directory, path), result, flags);
}

ORB_SIM_WRAPPER int __xstat64(int, const char*, struct stat*) __attribute__((alias("__xstat")));
ORB_SIM_WRAPPER int __lxstat64(int, const char*, struct stat*) __attribute__((alias("__lxstat")));
ORB_SIM_WRAPPER int __fxstatat64(int, int, const char*, struct stat*, int)
    __attribute__((alias("__fxstatat")));

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

ORB_SIM_WRAPPER int euidaccess(const char*, int) noexcept __attribute__((alias("eaccess")));

ORB_SIM_WRAPPER ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
  return callNext<"readlink", decltype(::readlink)>(mapped(path), buffer, size);
}

ORB_SIM_WRAPPER ssize_t readlinkat(int directory, const char* path, char* buffer,
                                   size_t size) noexcept {
  return callNext<"readlinkat", decltype(::readlinkat)>(directory, mapped(directory, path), buffer,
                                                        size);
}

ORB_SIM_WRAPPER ssize_t __readlink_chk(const char* path, char* buffer, size_t size,
                                       size_t bufferSize) {
  return callNext<"__readlink_chk", ssize_t(const char*, char*, size_t, size_t)>(
      mapped(path), buffer, size, bufferSize);
}

ORB_SIM_WRAPPER ssize_t __readlinkat_chk(int directory, const char* path, char* buffer, size_t size,
                                         size_t bufferSize) {
  return callNext<"__readlinkat_chk", ssize_t(int, const char*, char*, size_t, size_t)>(
      directory, mapped(directory, path), buffer, size, bufferSize);
}

ORB_SIM_WRAPPER char* realpath(const char* path, char* resolved) noexcept {
  return callNext<"realpath", decltype(::realpath)>(mapped(path), resolved);
}

ORB_SIM_WRAPPER char* __realpath_chk(const char* path, char* resolved, size_t size) {
  return callNext<"__realpath_chk", char*(const char*, char*, size_t)>(mapped(path), resolved,
                                                                       size);
}

ORB_SIM_WRAPPER char* canonicalize_file_name(const char* path) noexcept {
  return callNext<"canonicalize_file_name", decltype(::canonicalize_file_name)>(mapped(path));
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
