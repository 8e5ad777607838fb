#include "support/device_files.h"

#include <fstream>
#include <iterator>

#include "orb-sim/path_map.h"

namespace orb::test {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    return "(no file)";
  }
  return {std::istreambuf_iterator<char>(stream), {}};
}

void fill(const fs::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

int descriptorsOf(const fs::path& file) {
  const fs::path wanted = fs::canonical(file);
  int count = 0;
  for (const fs::directory_entry& descriptor : fs::directory_iterator("/proc/self/fd")) {
    std::error_code closedMeanwhile;
    count += fs::read_symlink(descriptor, closedMeanwhile) == wanted ? 1 : 0;
  }
  return count;
}

DeviceFiles::DeviceFiles() {
  sim::mapPath("/dev/tty_gps", tty.string());
  sim::mapPath("/dev/tty_other", otherTty.string());
  sim::mapPath("/var/log/orbset-errors.log", errorLog.string());
  sim::mapPath("/var/log/orbset.log", generalLog.string());
  sim::mapPath("/tmp/orbitekChip-info.txt", identityFile.string());
}

DeviceFiles::~DeviceFiles() { sim::clearPathMap(); }

void DeviceFiles::makeUnusable(const std::string& devicePath) {
  sim::mapPath(devicePath, (folder / "missing" / "file").string());
}

}  // namespace orb::test
