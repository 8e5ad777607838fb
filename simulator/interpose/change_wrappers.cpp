// The functions that make, remove, rename or alter a file by its name.

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#include <utime.h>

#include "interpose/wrap.h"

using orb::sim::mapped;

ORB_SIM_FORWARD(int, unlink, (const char* path) noexcept, (mapped(path)))
ORB_SIM_FORWARD(int, unlinkat, (int directory, const char* path, int flags) noexcept,
                (directory, mapped(directory, path), flags))
ORB_SIM_FORWARD(int, remove, (const char* path) noexcept, (mapped(path)))
ORB_SIM_FORWARD(int, rename, (const char* from, const char* to) noexcept,
                (mapped(from), mapped(to)))
ORB_SIM_FORWARD(int, renameat,
                (int fromDirectory, const char* from, int toDirectory, const char* to) noexcept,
                (fromDirectory, mapped(fromDirectory, from), toDirectory, mapped(toDirectory, to)))
ORB_SIM_FORWARD(int, renameat2,
                (int fromDirectory, const char* from, int toDirectory, const char* to,
                 unsigned int flags) noexcept,
                (fromDirectory, mapped(fromDirectory, from), toDirectory, mapped(toDirectory, to),
                 flags))
ORB_SIM_FORWARD(int, link, (const char* from, const char* to) noexcept, (mapped(from), mapped(to)))
ORB_SIM_FORWARD(int, linkat,
                (int fromDirectory, const char* from, int toDirectory, const char* to,
                 int flags) noexcept,
                (fromDirectory, mapped(fromDirectory, from), toDirectory, mapped(toDirectory, to),
                 flags))

// What a symbolic link holds is a text; only its own name is a path that is used here.
ORB_SIM_FORWARD(int, symlink, (const char* text, const char* path) noexcept, (text, mapped(path)))
ORB_SIM_FORWARD(int, symlinkat, (const char* text, int directory, const char* path) noexcept,
                (text, directory, mapped(directory, path)))

ORB_SIM_FORWARD(int, truncate, (const char* path, off_t length) noexcept, (mapped(path), length))
ORB_SIM_WRAPPER int truncate64(const char*, off64_t) noexcept __attribute__((alias("truncate")));
ORB_SIM_FORWARD(int, chmod, (const char* path, mode_t mode) noexcept, (mapped(path), mode))
ORB_SIM_FORWARD(int, fchmodat, (int directory, const char* path, mode_t mode, int flags) noexcept,
                (directory, mapped(directory, path), mode, flags))
ORB_SIM_FORWARD(int, chown, (const char* path, uid_t owner, gid_t group) noexcept,
                (mapped(path), owner, group))
ORB_SIM_FORWARD(int, lchown, (const char* path, uid_t owner, gid_t group) noexcept,
                (mapped(path), owner, group))
ORB_SIM_FORWARD(int, fchownat,
                (int directory, const char* path, uid_t owner, gid_t group, int flags) noexcept,
                (directory, mapped(directory, path), owner, group, flags))
ORB_SIM_FORWARD(int, utimensat,
                (int directory, const char* path, const timespec times[2], int flags) noexcept,
                (directory, mapped(directory, path), times, flags))
ORB_SIM_FORWARD(int, utimes, (const char* path, const timeval times[2]) noexcept,
                (mapped(path), times))
ORB_SIM_FORWARD(int, utime, (const char* path, const utimbuf* times) noexcept,
                (mapped(path), times))
