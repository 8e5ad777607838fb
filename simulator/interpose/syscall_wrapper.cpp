// syscall(2), by which a program makes a system call by its number: those that the wrapped
// functions make are wrapped here too.

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

#include "interpose/wrap.h"

#ifndef SYS_fchmodat2
#define SYS_fchmodat2 452
#endif

using orb::sim::callNext;
using orb::sim::mapped;

namespace {

constexpr int kMostArguments = 6;
constexpr int kNone = -1;

/// Where a system call has a path, and the directory that it is relative to.
struct PathArgument {
  long number;
  int directory;
  int path;
};

constexpr PathArgument kPathArguments[] = {
    {SYS_openat, 0, 1},     {SYS_openat2, 0, 1},      {SYS_newfstatat, 0, 1},
    {SYS_statx, 0, 1},      {SYS_faccessat, 0, 1},    {SYS_faccessat2, 0, 1},
    {SYS_readlinkat, 0, 1}, {SYS_unlinkat, 0, 1},     {SYS_renameat2, 0, 1},
    {SYS_renameat2, 2, 3},  {SYS_renameat, 0, 1},     {SYS_renameat, 2, 3},
    {SYS_linkat, 0, 1},     {SYS_linkat, 2, 3},       {SYS_symlinkat, 1, 2},
    {SYS_fchmodat, 0, 1},   {SYS_fchmodat2, 0, 1},    {SYS_fchownat, 0, 1},
    {SYS_utimensat, 0, 1},  {SYS_truncate, kNone, 0},
#ifdef SYS_open  // the older calls, which newer machines do without
    {SYS_open, kNone, 0},   {SYS_creat, kNone, 0},    {SYS_stat, kNone, 0},
    {SYS_lstat, kNone, 0},  {SYS_access, kNone, 0},   {SYS_unlink, kNone, 0},
    {SYS_rename, kNone, 0}, {SYS_rename, kNone, 1},   {SYS_link, kNone, 0},
    {SYS_link, kNone, 1},   {SYS_symlink, kNone, 1},  {SYS_chmod, kNone, 0},
    {SYS_chown, kNone, 0},  {SYS_lchown, kNone, 0},   {SYS_utimes, kNone, 0},
    {SYS_utime, kNone, 0},  {SYS_readlink, kNone, 0},
#endif
};

/// The arguments of a call, as many as any has; what the caller did not give is of no use.
struct Arguments {
  long at[kMostArguments];

  template <typename T>
  T* pointer(int index) const noexcept {
    return reinterpret_cast<T*>(at[index]);  // NOLINT(performance-no-int-to-ptr): given as a word
  }
  int number(int index) const noexcept { return static_cast<int>(at[index]); }
};

void mapPaths(long number, Arguments& arguments) noexcept {
  for (const PathArgument& place : kPathArguments) {
    if (place.number != number) {
      continue;
    }
    const int directory = place.directory == kNone ? AT_FDCWD : arguments.number(place.directory);
    const char* const path = mapped(directory, arguments.pointer<const char>(place.path));
    arguments.at[place.path] = reinterpret_cast<long>(path);
  }
}

}  // namespace

ORB_SIM_WRAPPER long syscall(long number, ...) noexcept {
  va_list given;
  va_start(given, number);
  Arguments arguments;
  for (long& argument : arguments.at) {
    argument = va_arg(given, long);
  }
  va_end(given);

  switch (number) {
    case SYS_execve:
      return execve(arguments.pointer<const char>(0), arguments.pointer<char*>(1),
                    arguments.pointer<char*>(2));
    case SYS_execveat:
      return execveat(arguments.number(0), arguments.pointer<const char>(1),
                      arguments.pointer<char*>(2), arguments.pointer<char*>(3),
                      arguments.number(4));
    case SYS_ioctl:
      return ioctl(arguments.number(0), static_cast<unsigned long>(arguments.at[1]),
                   arguments.pointer<void>(2));
    case SYS_io_uring_setup:
      // Its ring would carry paths past the wrappers. Programs know kernels without it.
      errno = ENOSYS;
      return -1;
    default:
      break;
  }
  mapPaths(number, arguments);
  const auto& at = arguments.at;
  return callNext<"syscall", decltype(::syscall)>(number, at[0], at[1], at[2], at[3], at[4], at[5]);
}
