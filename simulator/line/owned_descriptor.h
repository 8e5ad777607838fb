#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace orb::sim {

/// Owns a file descriptor, or none (-1), and can be handed on.
class OwnedDescriptor {
 public:
  OwnedDescriptor() = default;
  /// Takes what a system call returned; throws std::system_error, naming `what`, where it failed.
  OwnedDescriptor(int descriptor, const std::string& what) : descriptor_(descriptor) {
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), what);
  }
  OwnedDescriptor(OwnedDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~OwnedDescriptor() { reset(); }

  int get() const noexcept { return descriptor_; }

  void reset() noexcept {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
  }

 private:
  int descriptor_ = -1;
};

/// Both ends of a pipe, closed in programs that this one starts.
class Pipe {
 public:
  Pipe() : Pipe(make()) {}

  OwnedDescriptor reading;
  OwnedDescriptor writing;

 private:
  struct Ends {
    int ends[2];
  };
  explicit Pipe(Ends made) : reading(made.ends[0], "pipe2"), writing(made.ends[1], "pipe2") {}
  static Ends make() {
    Ends made{{-1, -1}};
    if (pipe2(made.ends, O_CLOEXEC) != 0) made = {{-1, -1}};
    return made;
  }
};

}  // namespace orb::sim
