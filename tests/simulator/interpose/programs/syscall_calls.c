/* Uses one path by system calls that are made through syscall(2). Says which call did not do its
 * work on standard error.
 *
 *     syscall_calls PATH OTHER_PATH
 *
 * Neither path exists before or after. */

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "check.h"

static const char* path;
static const char* other;

static void openTheFile(void) {
  checkDescriptor(syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_EXCL, 0600), "openat");
  struct open_how how = {.flags = O_RDONLY};
  const long descriptor = syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof how);
  check(descriptor >= 0 || errno == ENOSYS || errno == EPERM, "openat2");
  if (descriptor >= 0) {
    close((int)descriptor);
  }
#ifdef SYS_open
  checkDescriptor(syscall(SYS_open, path, O_RDONLY), "open");
  checkDescriptor(syscall(SYS_creat, path, 0600), "creat");
#endif
}

static void lookAtTheFile(void) {
  struct stat status;
  char text[8];
  check(syscall(SYS_newfstatat, AT_FDCWD, path, &status, 0) == 0, "newfstatat");
  check(syscall(SYS_faccessat, AT_FDCWD, path, R_OK) == 0, "faccessat");
  check(syscall(SYS_readlinkat, AT_FDCWD, path, text, sizeof text) == -1 && errno == EINVAL,
        "readlinkat");
#ifdef SYS_stat
  check(syscall(SYS_stat, path, &status) == 0, "stat");
  check(syscall(SYS_access, path, R_OK) == 0, "access");
#endif
}

static void moveAndRemoveTheFile(void) {
  check(syscall(SYS_renameat2, AT_FDCWD, path, AT_FDCWD, other, 0) == 0, "renameat2");
  check(syscall(SYS_linkat, AT_FDCWD, other, AT_FDCWD, path, 0) == 0, "linkat");
  check(syscall(SYS_unlinkat, AT_FDCWD, path, 0) == 0, "unlinkat");
  check(syscall(SYS_symlinkat, "text", AT_FDCWD, path) == 0, "symlinkat");
  check(syscall(SYS_unlinkat, AT_FDCWD, path, 0) == 0, "unlinkat of a link");
  check(syscall(SYS_unlinkat, AT_FDCWD, other, 0) == 0, "unlinkat of the other path");
}

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  path = arguments[1];
  other = arguments[2];
  openTheFile();
  lookAtTheFile();
  moveAndRemoveTheFile();
  check(syscall(SYS_io_uring_setup, 1, NULL) == -1 && errno == ENOSYS, "io_uring_setup");
  check(syscall(SYS_getpid) == getpid(), "getpid");
  return failures != 0;
}
