#include "program/private_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <system_error>

#include "program/failure.h"

namespace orb::sim {
namespace {

constexpr std::size_t kLongestParent = 80;  // a socket's address has room for 107 characters

/// LD_PRELOAD ends a path at a blank or colon; a bus address has its own meaning for others.
bool suits(const std::string& folder) {
  constexpr char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-";
  return !folder.empty() && folder.front() == '/' && folder.size() <= kLongestParent &&
         folder.find_first_not_of(kPlain) == std::string::npos;
}

std::string parentFolder() {
  const char* const given = std::getenv("TMPDIR");
  return given != nullptr && suits(given) ? given : "/tmp";
}

}  // namespace

PrivateFolder::PrivateFolder() {
  std::string name = parentFolder() + "/orb-sim.XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw Failure("cannot make a folder like " + name + ": " + std::strerror(errno));
  }
  path_ = name;
  for (OwnedDescriptor& spare : spare_) {
    spare = OwnedDescriptor(open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  if (!spare_.back().isOpen()) {
    const int error = errno;
    rmdir(name.c_str());
    throw Failure("cannot open " + name + ": " + std::strerror(error));
  }
}

void PrivateFolder::remove() const noexcept {
  for (OwnedDescriptor& spare : spare_) {
    spare.reset();
  }
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void fillFile(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  if (!stream.flush()) {
    throw Failure("cannot write " + file.string());
  }
}

}  // namespace orb::sim
