#pragma once

#include <sys/types.h>

#include "base/owned_descriptor.h"

namespace orb {

/// A child process that is to be ended. Known by a descriptor where the kernel has one for it: once
/// others of this program have waited for the child, its number may become another process's.
class ChildHandle {
 public:
  explicit ChildHandle(pid_t process);

  /// Whether it has ended, or somebody else has waited for it; is waited for, then.
  bool hasEnded() const;

  void kill() const;

 private:
  pid_t process_;
  OwnedDescriptor descriptor_;
};

}  // namespace orb
