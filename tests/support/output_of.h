#pragma once

#include <gtest/gtest.h>

#include <string>

namespace orb::test {

/// What `action` writes to standard output.
template <typename Action>
std::string standardOutputOf(Action action) {
  ::testing::internal::CaptureStdout();
  action();
  return ::testing::internal::GetCapturedStdout();
}

/// What `action` writes to standard error.
template <typename Action>
std::string standardErrorOf(Action action) {
  ::testing::internal::CaptureStderr();
  action();
  return ::testing::internal::GetCapturedStderr();
}

}  // namespace orb::test
