#pragma once

#include <unistd.h>

#include <string>
#include <utility>

#include "base/checked.h"

namespace orb {

/// Owns a file descriptor, or none (-1), and closes it when it goes. Can be moved, not copied; what
/// has been moved from owns none.
class OwnedDescriptor {
 public:
  OwnedDescriptor() = default;

  /// Takes what a system call has returned; where the call failed, there is none.
  explicit OwnedDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}

  /// The same, but throws std::system_error with errno and `what` where the call failed.
  OwnedDescriptor(int descriptor, const std::string& what)
      : descriptor_(checked(descriptor, what)) {}

  OwnedDescriptor(OwnedDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    other.reset();
    return *this;
  }
  ~OwnedDescriptor() { reset(); }

  bool isOpen() const noexcept { return descriptor_ >= 0; }
  int get() const noexcept { return descriptor_; }

  /// Gives it away, to be closed by the caller.
  int release() noexcept { return std::exchange(descriptor_, -1); }

  /// Closes it now.
  void reset() noexcept {
    if (isOpen()) {
      ::close(std::exchange(descriptor_, -1));
    }
  }

 private:
  int descriptor_ = -1;
};

}  // namespace orb
