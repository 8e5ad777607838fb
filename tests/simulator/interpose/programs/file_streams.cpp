// Writes, reads and examines one path through the C++ library.
//
//     file_streams PATH
//
// Appends "stream" and a newline. The exit status is 0 where everything worked.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  const std::filesystem::path path = argv[1];
  std::ofstream(path, std::ios::app | std::ios::ate) << "stream" << std::endl;
  std::string first;
  std::ifstream(path) >> first;
  // The address sanitizer's runtime has to be at work.
  const auto kept = std::make_unique<std::string>(first);
  return !kept->empty() && std::filesystem::exists(path) ? 0 : 1;
}
