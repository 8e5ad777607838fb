/* Uses one path through each function of the C library that takes one, in the order in which a file
 * is made, looked at, altered and removed, and then through system calls that are made by
 * syscall(2). Says which call did not do its work on standard error.
 *
 *     file_calls PATH OTHER_PATH
 *
 * Neither path exists before or after. */

#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <linux/openat2.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <utime.h>

#include "check.h"

/* What fortified headers make of calls whose arguments are not known at compile time. */
int __open_2(const char* path, int flags);
int __open64_2(const char* path, int flags);
int __openat_2(int directory, const char* path, int flags);
int __openat64_2(int directory, const char* path, int flags);
ssize_t __readlink_chk(const char* path, char* buffer, size_t size, size_t bufferSize);
ssize_t __readlinkat_chk(int directory, const char* path, char* buffer, size_t size,
                         size_t bufferSize);
char* __realpath_chk(const char* path, char* resolved, size_t size);

static const char* path;
static const char* other;

static void checkStream(FILE* stream, const char* call) {
  check(stream != NULL, call);
  if (stream != NULL) {
    fclose(stream);
  }
}

static void openTheFile(void) {
  struct stat status = {0};
  check(stat(path, &status) == -1 && errno == ENOENT, "stat of no file");
  checkDescriptor(open(path, O_WRONLY | O_CREAT | O_EXCL, 0600), "open");
  check(stat(path, &status) == 0 && (status.st_mode & 0777) == 0600, "open's mode");
  checkDescriptor(open64(path, O_RDWR | O_CREAT, 0600), "open64");
  checkDescriptor(openat(AT_FDCWD, path, O_RDWR | O_CREAT, 0600), "openat");
  checkDescriptor(openat64(AT_FDCWD, path, O_RDWR | O_CREAT, 0600), "openat64");
  checkDescriptor(creat(path, 0600), "creat");
  checkDescriptor(creat64(path, 0600), "creat64");
  checkDescriptor(open(path, O_RDONLY), "open with flags only");
  checkDescriptor(open64(path, O_RDONLY), "open64 with flags only");
  checkDescriptor(openat(AT_FDCWD, path, O_RDONLY), "openat with flags only");
  checkDescriptor(openat64(AT_FDCWD, path, O_RDONLY), "openat64 with flags only");
  checkDescriptor(__open_2(path, O_RDONLY), "__open_2");
  checkDescriptor(__open64_2(path, O_RDONLY), "__open64_2");
  checkDescriptor(__openat_2(AT_FDCWD, path, O_RDONLY), "__openat_2");
  checkDescriptor(__openat64_2(AT_FDCWD, path, O_RDONLY), "__openat64_2");
  checkStream(fopen(path, "r+"), "fopen");
  checkStream(fopen64(path, "r+"), "fopen64");
  checkStream(freopen(path, "r", fopen("/dev/null", "r")), "freopen");
  checkStream(freopen64(path, "r", fopen("/dev/null", "r")), "freopen64");
}

/* What stat was in programs linked before glibc 2.33; later ones cannot link it any more. */
#ifdef __x86_64__
enum { kStatVersion = 1 };
#else
enum { kStatVersion = 0 };
#endif

static void checkVersioned(const char* name) {
  int (*function)(int, const char*, struct stat*);
  int (*functionAt)(int, int, const char*, struct stat*, int);
  struct stat status = {0};
  *(void**)&function = *(void**)&functionAt = dlsym(RTLD_DEFAULT, name);
  const int result = strncmp(name, "__fxstatat", 10) == 0
                         ? functionAt(kStatVersion, AT_FDCWD, path, &status, 0)
                         : function(kStatVersion, path, &status);
  check(result == 0 && S_ISREG(status.st_mode), name);
}

static void lookAtTheFile(void) {
  struct stat status;
  struct stat64 status64;
  struct statx statusX;
  char text[PATH_MAX];
  check(stat(path, &status) == 0, "stat");
  check(stat64(path, &status64) == 0, "stat64");
  check(lstat(path, &status) == 0, "lstat");
  check(lstat64(path, &status64) == 0, "lstat64");
  check(fstatat(AT_FDCWD, path, &status, 0) == 0, "fstatat");
  check(fstatat64(AT_FDCWD, path, &status64, 0) == 0, "fstatat64");
  check(statx(AT_FDCWD, path, 0, STATX_SIZE, &statusX) == 0, "statx");
  check(getxattr(path, "user.none", NULL, 0) < 0 && errno != ENOENT, "getxattr");
  check(lgetxattr(path, "user.none", NULL, 0) < 0 && errno != ENOENT, "lgetxattr");
  check(listxattr(path, NULL, 0) >= 0, "listxattr");
  check(llistxattr(path, NULL, 0) >= 0, "llistxattr");
  checkVersioned("__xstat");
  checkVersioned("__xstat64");
  checkVersioned("__lxstat");
  checkVersioned("__lxstat64");
  checkVersioned("__fxstatat");
  checkVersioned("__fxstatat64");
  check(access(path, R_OK) == 0, "access");
  check(faccessat(AT_FDCWD, path, R_OK, 0) == 0, "faccessat");
  check(eaccess(path, R_OK) == 0, "eaccess");
  check(euidaccess(path, R_OK) == 0, "euidaccess");
  check(realpath(path, text) == text, "realpath");
  check(__realpath_chk(path, text, sizeof text) == text, "__realpath_chk");
  char* const canonical = canonicalize_file_name(path);
  check(canonical != NULL && strcmp(canonical, text) == 0, "canonicalize_file_name");
  free(canonical);
}

static void alterTheFile(void) {
  const struct timespec times[2] = {{1000, 0}, {1000, 0}};
  const struct timeval timevals[2] = {{2000, 0}, {2000, 0}};
  const struct utimbuf both = {3000, 3000};
  check(truncate(path, 10) == 0, "truncate");
  check(truncate64(path, 20) == 0, "truncate64");
  check(chmod(path, 0640) == 0, "chmod");
  check(fchmodat(AT_FDCWD, path, 0600, 0) == 0, "fchmodat");
  check(chown(path, getuid(), getgid()) == 0, "chown");
  check(lchown(path, getuid(), getgid()) == 0, "lchown");
  check(fchownat(AT_FDCWD, path, getuid(), getgid(), 0) == 0, "fchownat");
  check(utimensat(AT_FDCWD, path, times, 0) == 0, "utimensat");
  check(utimes(path, timevals) == 0, "utimes");
  check(utime(path, &both) == 0, "utime");
  struct stat status = {0};
  check(stat(path, &status) == 0 && status.st_size == 20 && status.st_mtime == 3000 &&
            (status.st_mode & 0777) == 0600,
        "what was altered");
}

static void moveTheFile(void) {
  check(rename(path, other) == 0 && access(path, F_OK) != 0, "rename");
  check(renameat(AT_FDCWD, other, AT_FDCWD, path) == 0 && access(other, F_OK) != 0, "renameat");
  check(renameat2(AT_FDCWD, path, AT_FDCWD, other, 0) == 0 && access(path, F_OK) != 0, "renameat2");
  check(link(other, path) == 0, "link");
  check(unlink(path) == 0 && access(path, F_OK) != 0, "unlink");
  check(linkat(AT_FDCWD, other, AT_FDCWD, path, 0) == 0, "linkat");
  check(unlinkat(AT_FDCWD, other, 0) == 0 && access(other, F_OK) != 0, "unlinkat");
  check(remove(path) == 0 && access(path, F_OK) != 0, "remove");
}

static void linkTheFile(void) {
  char text[PATH_MAX] = "";
  check(symlink("where", path) == 0, "symlink");
  check(readlink(path, text, sizeof text) == 5 && memcmp(text, "where", 5) == 0, "readlink");
  check(__readlink_chk(path, text, 3, sizeof text) == 3, "__readlink_chk");
  check(unlink(path) == 0, "unlink of a link");
  check(symlinkat("there", AT_FDCWD, path) == 0, "symlinkat");
  check(readlinkat(AT_FDCWD, path, text, sizeof text) == 5 && memcmp(text, "there", 5) == 0,
        "readlinkat");
  check(__readlinkat_chk(AT_FDCWD, path, text, 3, sizeof text) == 3, "__readlinkat_chk");
  check(unlink(path) == 0, "unlink of a link");
}

static void openBySyscall(void) {
  checkDescriptor(syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_EXCL, 0600),
                  "SYS_openat");
  struct open_how how = {.flags = O_RDONLY};
  const long descriptor = syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof how);
  check(descriptor >= 0 || errno == ENOSYS || errno == EPERM, "SYS_openat2");
  if (descriptor >= 0) {
    close((int)descriptor);
  }
#ifdef SYS_open
  checkDescriptor(syscall(SYS_open, path, O_RDONLY), "SYS_open");
  checkDescriptor(syscall(SYS_creat, path, 0600), "SYS_creat");
#endif
}

static void lookBySyscall(void) {
  struct stat status;
  char text[8];
  check(syscall(SYS_newfstatat, AT_FDCWD, path, &status, 0) == 0, "SYS_newfstatat");
  check(syscall(SYS_faccessat, AT_FDCWD, path, R_OK) == 0, "SYS_faccessat");
  check(syscall(SYS_readlinkat, AT_FDCWD, path, text, sizeof text) == -1 && errno == EINVAL,
        "SYS_readlinkat");
#ifdef SYS_stat
  check(syscall(SYS_stat, path, &status) == 0, "SYS_stat");
  check(syscall(SYS_access, path, R_OK) == 0, "SYS_access");
#endif
}

static void moveAndRemoveBySyscall(void) {
  check(syscall(SYS_renameat2, AT_FDCWD, path, AT_FDCWD, other, 0) == 0, "SYS_renameat2");
  check(syscall(SYS_linkat, AT_FDCWD, other, AT_FDCWD, path, 0) == 0, "SYS_linkat");
  check(syscall(SYS_unlinkat, AT_FDCWD, path, 0) == 0, "SYS_unlinkat");
  check(syscall(SYS_symlinkat, "text", AT_FDCWD, path) == 0, "SYS_symlinkat");
  check(syscall(SYS_unlinkat, AT_FDCWD, path, 0) == 0, "SYS_unlinkat of a link");
  check(syscall(SYS_unlinkat, AT_FDCWD, other, 0) == 0, "SYS_unlinkat of the other path");
  check(syscall(SYS_io_uring_setup, 1, NULL) == -1 && errno == ENOSYS, "SYS_io_uring_setup");
  check(syscall(SYS_getpid) == getpid(), "SYS_getpid");
}

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  path = argv[1];
  other = argv[2];
  openTheFile();
  lookAtTheFile();
  alterTheFile();
  moveTheFile();
  linkTheFile();
  openBySyscall();
  lookBySyscall();
  moveAndRemoveBySyscall();
  return failures == 0 ? 0 : 1;
}
