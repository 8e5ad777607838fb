#pragma once

#include <unistd.h>

#include <utility>

namespace orb {

/// An owned file descriptor, closed when its owner goes.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    other.close();
    return *this;
  }
  ~FileDescriptor() { close(); }

  bool isOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

  void close() {
    if (isOpen()) {
      ::close(std::exchange(descriptor_, -1));
    }
  }

 private:
  int descriptor_ = -1;
};

}  // namespace orb
