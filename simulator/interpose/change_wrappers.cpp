// The functions that make, remove, rename or alter a file by its name.

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#include <utime.h>

#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::mapped;

ORB_SIM_WRAPPER int unlink(const char* path) noexcept {
  return callNext<"unlink", decltype(::unlink)>(mapped(path));
}

ORB_SIM_WRAPPER int unlinkat(int directory, const char* path, int flags) noexcept {
  return callNext<"unlinkat", decltype(::unlinkat)>(directory, mapped(directory, path), flags);
}

ORB_SIM_WRAPPER int remove(const char* path) noexcept {
  return callNext<"remove", decltype(::remove)>(mapped(path));
}

ORB_SIM_WRAPPER int rename(const char* from, const char* to) noexcept {
  return callNext<"rename", decltype(::rename)>(mapped(from), mapped(to));
}

ORB_SIM_WRAPPER int renameat(int fromDirectory, const char* from, int toDirectory,
                             const char* to) noexcept {
  return callNext<"renameat", decltype(::renameat)>(fromDirectory, mapped(fromDirectory, from),
                                                    toDirectory, mapped(toDirectory, to));
}

ORB_SIM_WRAPPER int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to,
                              unsigned int flags) noexcept {
  return callNext<"renameat2", decltype(::renameat2)>(fromDirectory, mapped(fromDirectory, from),
                                                      toDirectory, mapped(toDirectory, to), flags);
}

ORB_SIM_WRAPPER int link(const char* from, const char* to) noexcept {
  return callNext<"link", decltype(::link)>(mapped(from), mapped(to));
}

ORB_SIM_WRAPPER int linkat(int fromDirectory, const char* from, int toDirectory, const char* to,
                           int flags) noexcept {
  return callNext<"linkat", decltype(::linkat)>(fromDirectory, mapped(fromDirectory, from),
                                                toDirectory, mapped(toDirectory, to), flags);
}

// What a symbolic link holds is a text; only its own name is a path that is used here.

ORB_SIM_WRAPPER int symlink(const char* text, const char* path) noexcept {
  return callNext<"symlink", decltype(::symlink)>(text, mapped(path));
}

ORB_SIM_WRAPPER int symlinkat(const char* text, int directory, const char* path) noexcept {
  return callNext<"symlinkat", decltype(::symlinkat)>(text, directory, mapped(directory, path));
}

ORB_SIM_WRAPPER int truncate(const char* path, off_t length) noexcept {
  return callNext<"truncate", decltype(::truncate)>(mapped(path), length);
}

ORB_SIM_WRAPPER int truncate64(const char*, off64_t) noexcept __attribute__((alias("truncate")));

ORB_SIM_WRAPPER int chmod(const char* path, mode_t mode) noexcept {
  return callNext<"chmod", decltype(::chmod)>(mapped(path), mode);
}

ORB_SIM_WRAPPER int fchmodat(int directory, const char* path, mode_t mode, int flags) noexcept {
  return callNext<"fchmodat", decltype(::fchmodat)>(directory, mapped(directory, path), mode,
                                                    flags);
}

ORB_SIM_WRAPPER int chown(const char* path, uid_t owner, gid_t group) noexcept {
  return callNext<"chown", decltype(::chown)>(mapped(path), owner, group);
}

ORB_SIM_WRAPPER int lchown(const char* path, uid_t owner, gid_t group) noexcept {
  return callNext<"lchown", decltype(::lchown)>(mapped(path), owner, group);
}

ORB_SIM_WRAPPER int fchownat(int directory, const char* path, uid_t owner, gid_t group,
                             int flags) noexcept {
  return callNext<"fchownat", decltype(::fchownat)>(directory, mapped(directory, path), owner,
                                                    group, flags);
}

ORB_SIM_WRAPPER int utimensat(int directory, const char* path, const timespec times[2],
                              int flags) noexcept {
  return callNext<"utimensat", decltype(::utimensat)>(directory, mapped(directory, path), times,
                                                      flags);
}

ORB_SIM_WRAPPER int utimes(const char* path, const timeval times[2]) noexcept {
  return callNext<"utimes", decltype(::utimes)>(mapped(path), times);
}

ORB_SIM_WRAPPER int utime(const char* path, const utimbuf* times) noexcept {
  return callNext<"utime", decltype(::utime)>(mapped(path), times);
}
