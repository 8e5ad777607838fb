#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace orb {

/// Returns what a system call has returned. Throws std::system_error with errno and `what` where
/// that is negative.
inline int checked(int result, const std::string& what) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category(), what);
  }
  return result;
}

}  // namespace orb
