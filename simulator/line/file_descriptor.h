#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace orb::sim {

/// Owns a file descriptor.
class FileDescriptor {
 public:
  /// Takes what a system call returned; throws std::system_error, naming `call`, where it failed.
  FileDescriptor(int descriptor, const char* call) : descriptor_(descriptor) {
    if (descriptor < 0) {
      throw std::system_error(errno, std::generic_category(), call);
    }
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { ::close(descriptor_); }

  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace orb::sim
