#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

namespace orb::test {

/// The content of a file; "(no file)" when there is none.
inline std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    return "(no file)";
  }
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// Gives a file this content; throws std::runtime_error where that cannot be.
inline void fill(const std::filesystem::path& file, const std::string& content) {
  std::ofstream stream(file, std::ios::binary);
  if (!(stream << content).flush()) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

/// How many descriptors this process has open on a file. Links are followed.
inline int descriptorsOf(const std::filesystem::path& file) {
  const std::filesystem::path wanted = std::filesystem::canonical(file);
  int count = 0;
  for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code closedMeanwhile;
    count += std::filesystem::read_symlink(descriptor, closedMeanwhile) == wanted ? 1 : 0;
  }
  return count;
}

}  // namespace orb::test
