#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

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

/// The descriptors that this process has open on a file. Links are followed.
inline std::vector<int> descriptorsOn(const std::filesystem::path& file) {
  const std::filesystem::path wanted = std::filesystem::canonical(file);
  std::vector<int> found;
  for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code closedMeanwhile;
    if (std::filesystem::read_symlink(descriptor, closedMeanwhile) == wanted) {
      found.push_back(std::stoi(descriptor.path().filename()));
    }
  }
  return found;
}

/// How many they are.
inline int descriptorsOf(const std::filesystem::path& file) {
  return static_cast<int>(descriptorsOn(file).size());
}

/// Whether a descriptor neither reaches a program that this one starts nor is a standard stream.
inline bool isPrivate(int descriptor) {
  return descriptor > STDERR_FILENO && (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}

}  // namespace orb::test
