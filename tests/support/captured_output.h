#pragma once

#include <string>

#include "base/owned_descriptor.h"

namespace orb::test {

/// While it exists, what the process writes to a file descriptor ends here. The descriptor is put
/// back afterwards.
class CapturedOutput {
 public:
  /// 1 is standard output, 2 is standard error.
  explicit CapturedOutput(int descriptor);
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;
  ~CapturedOutput();

  /// What has been written since the last take().
  std::string text() const;

  /// The same, and the next call starts after it.
  std::string take();

 private:
  int descriptor_;
  OwnedDescriptor original_;
  OwnedDescriptor file_;
  long taken_ = 0;
};

}  // namespace orb::test
