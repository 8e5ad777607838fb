#include "interpose/shared_registers.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>

#include <cerrno>

#include "i2c/register_text.h"
#include "interpose/system_call.h"

namespace orb::sim {

SharedRegisters::SharedRegisters(const char* path) noexcept {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &signalsBefore_);
  descriptor_ = static_cast<int>(systemCall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC, 0));
  error_ = descriptor_ < 0 ? -errno : load();
}

SharedRegisters::~SharedRegisters() {
  if (descriptor_ >= 0) systemCall(SYS_close, descriptor_);  // the lock goes with it
  pthread_sigmask(SIG_SETMASK, &signalsBefore_, nullptr);
}

int SharedRegisters::load() noexcept {
  if (systemCall(SYS_flock, descriptor_, LOCK_EX) < 0) return -errno;
  char text[RegisterText::kSize];
  const long length = systemCall(SYS_pread64, descriptor_, text, sizeof text, off_t{0});
  return length == sizeof text && RegisterText::read({text, sizeof text}, expander_) ? 0 : -EIO;
}

int SharedRegisters::store() noexcept {
  const RegisterText text(expander_);
  const long length =
      systemCall(SYS_pwrite64, descriptor_, text.view().data(), text.view().size(), off_t{0});
  return length == static_cast<long>(text.view().size()) ? 0 : -EIO;
}

}  // namespace orb::sim
