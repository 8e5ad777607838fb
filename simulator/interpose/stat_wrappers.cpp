// The functions that look at a file without opening it.

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "interpose/wrap.h"

using orb::sim::mapped;

ORB_SIM_FORWARD(int, stat, (const char* path, struct stat* result) noexcept, (mapped(path), result))
ORB_SIM_FORWARD(int, lstat, (const char* path, struct stat* result) noexcept,
                (mapped(path), result))
ORB_SIM_FORWARD(int, fstatat,
                (int directory, const char* path, struct stat* result, int flags) noexcept,
                (directory, mapped(directory, path), result, flags))
ORB_SIM_FORWARD(int, statx,
                (int directory, const char* path, int flags, unsigned int mask,
                 struct statx* result) noexcept,
                (directory, mapped(directory, path), flags, mask, result))
ORB_SIM_WRAPPER int stat64(const char*, struct stat64*) noexcept __attribute__((alias("stat")));
ORB_SIM_WRAPPER int lstat64(const char*, struct stat64*) noexcept __attribute__((alias("lstat")));
ORB_SIM_WRAPPER int fstatat64(int, const char*, struct stat64*, int) noexcept
    __attribute__((alias("fstatat")));

// What stat and its kin are in programs that were linked before glibc 2.33.
ORB_SIM_FORWARD(int, __xstat, (int version, const char* path, struct stat* result),
                (version, mapped(path), result))
ORB_SIM_FORWARD(int, __lxstat, (int version, const char* path, struct stat* result),
                (version, mapped(path), result))
ORB_SIM_FORWARD(int, __fxstatat,
                (int version, int directory, const char* path, struct stat* result, int flags),
                (version, directory, mapped(directory, path), result, flags))
ORB_SIM_WRAPPER int __xstat64(int, const char*, struct stat*) __attribute__((alias("__xstat")));
ORB_SIM_WRAPPER int __lxstat64(int, const char*, struct stat*) __attribute__((alias("__lxstat")));
ORB_SIM_WRAPPER int __fxstatat64(int, int, const char*, struct stat*, int)
    __attribute__((alias("__fxstatat")));

ORB_SIM_FORWARD(int, access, (const char* path, int mode) noexcept, (mapped(path), mode))
ORB_SIM_FORWARD(int, faccessat, (int directory, const char* path, int mode, int flags) noexcept,
                (directory, mapped(directory, path), mode, flags))
ORB_SIM_FORWARD(int, eaccess, (const char* path, int mode) noexcept, (mapped(path), mode))
ORB_SIM_WRAPPER int euidaccess(const char*, int) noexcept __attribute__((alias("eaccess")));

ORB_SIM_FORWARD(ssize_t, readlink, (const char* path, char* buffer, size_t size) noexcept,
                (mapped(path), buffer, size))
ORB_SIM_FORWARD(ssize_t, readlinkat,
                (int directory, const char* path, char* buffer, size_t size) noexcept,
                (directory, mapped(directory, path), buffer, size))
ORB_SIM_FORWARD(ssize_t, __readlink_chk,
                (const char* path, char* buffer, size_t size, size_t bufferSize),
                (mapped(path), buffer, size, bufferSize))
ORB_SIM_FORWARD(ssize_t, __readlinkat_chk,
                (int directory, const char* path, char* buffer, size_t size, size_t bufferSize),
                (directory, mapped(directory, path), buffer, size, bufferSize))
ORB_SIM_FORWARD(char*, realpath, (const char* path, char* resolved) noexcept,
                (mapped(path), resolved))
ORB_SIM_FORWARD(char*, __realpath_chk, (const char* path, char* resolved, size_t size),
                (mapped(path), resolved, size))
ORB_SIM_FORWARD(char*, canonicalize_file_name, (const char* path) noexcept, (mapped(path)))
ORB_SIM_FORWARD(ssize_t, getxattr,
                (const char* path, const char* name, void* value, size_t size) noexcept,
                (mapped(path), name, value, size))
ORB_SIM_FORWARD(ssize_t, lgetxattr,
                (const char* path, const char* name, void* value, size_t size) noexcept,
                (mapped(path), name, value, size))
ORB_SIM_FORWARD(ssize_t, listxattr, (const char* path, char* list, size_t size) noexcept,
                (mapped(path), list, size))
ORB_SIM_FORWARD(ssize_t, llistxattr, (const char* path, char* list, size_t size) noexcept,
                (mapped(path), list, size))
