#pragma once

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "interpose/wrap.h"

namespace orb::sim {

/// Makes a system call that no wrapper sees and at which no thread is cancelled.
template <typename... Arguments>
long systemCall(long number, Arguments... arguments) noexcept {
  return callNext<"syscall", decltype(::syscall)>(number, arguments...);
}

/// Opens a file past the wrappers; returns a descriptor, or -1 and sets errno.
inline int openFile(const char* path, int flags) noexcept {
  return static_cast<int>(systemCall(SYS_openat, AT_FDCWD, path, flags, 0));
}

/// Closes a descriptor at the end, past the wrappers; takes what openFile returned, -1 included.
class ScopedDescriptor {
 public:
  explicit ScopedDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  ScopedDescriptor(const ScopedDescriptor&) = delete;
  ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;
  ~ScopedDescriptor() {
    if (descriptor_ >= 0) {
      systemCall(SYS_close, descriptor_);
    }
  }

  int get() const noexcept { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace orb::sim
