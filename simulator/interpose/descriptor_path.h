#pragma once

#include <fcntl.h>

#include <climits>
#include <cstdio>

namespace orb::sim {

/// The path of what a descriptor is open on, or of `path` relative to it.
struct DescriptorPath {
  explicit DescriptorPath(int descriptor, const char* path = "") noexcept {
    if (path[0] == '/' || descriptor == AT_FDCWD) {
      std::snprintf(text, sizeof text, "%s", path);
    } else {
      const char* const slash = path[0] != '\0' ? "/" : "";
      std::snprintf(text, sizeof text, "/proc/self/fd/%d%s%s", descriptor, slash, path);
    }
  }
  char text[PATH_MAX];
};

}  // namespace orb::sim
