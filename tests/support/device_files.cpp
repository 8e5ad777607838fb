#include "support/device_files.h"

#include "orb-sim/path_map.h"

namespace orb::test {

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
