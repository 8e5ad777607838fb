#pragma once

#include <filesystem>

namespace orb::sim {

/// A symbolic link that lives as long as this object.
class StableLink {
 public:
  /// Makes `link` point to `target`; an empty `link` makes none. Replaces a symbolic link that is
  /// already there, in one step; throws std::filesystem::filesystem_error for anything else.
  StableLink(std::filesystem::path link, const std::filesystem::path& target);
  StableLink(const StableLink&) = delete;
  StableLink& operator=(const StableLink&) = delete;

  /// Removes the link, unless it has come to point elsewhere.
  ~StableLink();

  /// Makes the link point to another target, in one step. Throws as the constructor does.
  void pointTo(const std::filesystem::path& target);

 private:
  std::filesystem::path link_;
  std::filesystem::path target_;
};

}  // namespace orb::sim
