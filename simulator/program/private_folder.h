#pragma once

#include <array>
#include <filesystem>
#include <string>

#include "base/owned_descriptor.h"

namespace orb::sim {

/// A new folder for one run, that only this user can look into. The one who made it and a process
/// forked from it may both remove it; it is not removed by itself, since either may outlive the
/// other.
class PrivateFolder {
 public:
  /// Made in TMPDIR, or in /tmp where TMPDIR is unset or its path does not suit a socket's address
  /// or a list of libraries. Throws Failure.
  PrivateFolder();

  const std::filesystem::path& path() const { return path_; }

  /// Removes the folder and all that is in it, if it is still there.
  void remove() const noexcept;

 private:
  std::filesystem::path path_;
  /// remove() closes them first, so that it can open the folder, and one in it, where the process
  /// has no descriptor left.
  mutable std::array<OwnedDescriptor, 2> spare_;
};

/// Makes a file with this text. Throws Failure where not all of it could be written.
void fillFile(const std::filesystem::path& file, const std::string& text);

}  // namespace orb::sim
