#include "orbctl/device_users.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/plain_text.h"
#include "orbctl/session.h"

namespace orb::ctl {
namespace {

namespace fs = std::filesystem;

/// As far as this user may see. A process may end meanwhile, and its folder with it.
std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator it(folder, error); !error && it != fs::directory_iterator();
       it.increment(error)) {
    entries.push_back(it->path());
  }
  return entries;
}

/// Whether a descriptor cannot take what comes.
bool isForWritingOnly(const fs::path& process, const fs::path& descriptor) {
  std::ifstream info(process / "fdinfo" / descriptor);
  for (std::string key, value; info >> key >> value;) {
    if (key == "flags:") {
      constexpr int kOctal = 8;
      return (std::strtoul(value.c_str(), nullptr, kOctal) & O_ACCMODE) == O_WRONLY;
    }
  }
  return false;
}

/// What a process has open for reading.
std::vector<fs::path> filesOf(const fs::path& process) {
  std::vector<fs::path> files;
  for (const fs::path& descriptor : entriesOf(process / "fd")) {
    std::error_code ignored;
    if (!isForWritingOnly(process, descriptor.filename())) {
      files.push_back(fs::read_symlink(descriptor, ignored));
    }
  }
  return files;
}

}  // namespace

std::vector<std::string> usersOfDevice() {
  std::vector<std::string> users;
  std::error_code error;
  const fs::path device = fs::canonical(kDevice, error);
  if (device.empty()) {
    return users;
  }
  for (const fs::path& process : entriesOf("/proc")) {
    const std::string id = process.filename();
    if (id.find_first_not_of("0123456789") != std::string::npos ||
        id == std::to_string(::getpid())) {
      continue;
    }
    const std::vector<fs::path> files = filesOf(process);
    const auto has = [&](const fs::path& file) {
      return std::find(files.begin(), files.end(), file) != files.end();
    };
    if (has(device) && !has("/dev/ptmx") && !has("/dev/pts/ptmx")) {
      std::ifstream name(process / "comm");
      std::string command;
      std::getline(name, command);
      users.push_back(fmt::format("{} ({})", id, plain(command)));
    }
  }
  return users;
}

}  // namespace orb::ctl
