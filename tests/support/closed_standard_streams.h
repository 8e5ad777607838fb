#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace orb::test {

/// While it exists, descriptors 0, 1 and 2 are free, so that the files opened next get them.
class ClosedStandardStreams {
 public:
  ClosedStandardStreams() {
    for (int stream = 0; stream < kCount; ++stream) {
      kept_[stream] = ::fcntl(stream, F_DUPFD_CLOEXEC, kCount);
      ::close(stream);
    }
  }
  ClosedStandardStreams(const ClosedStandardStreams&) = delete;
  ClosedStandardStreams& operator=(const ClosedStandardStreams&) = delete;
  ~ClosedStandardStreams() {
    for (int stream = 0; stream < kCount; ++stream) {
      ::dup2(kept_[stream], stream);
      ::close(kept_[stream]);
    }
  }

 private:
  static constexpr int kCount = 3;
  int kept_[kCount];
};

}  // namespace orb::test
