#pragma once

#include <filesystem>
#include <string>

#include "support/files.h"
#include "support/temporary_folder.h"

namespace orb::test {

/// The device's fixed paths, mapped for this process to a temporary folder, which goes with the
/// object. At first the folder is empty: no receiver is plugged in.
class DeviceFiles {
  TemporaryFolder temporary_;

 public:
  DeviceFiles();
  DeviceFiles(const DeviceFiles&) = delete;
  DeviceFiles& operator=(const DeviceFiles&) = delete;
  ~DeviceFiles();

  const std::filesystem::path folder = temporary_.path();
  const std::filesystem::path tty = folder / "tty_gps";             ///< /dev/tty_gps
  const std::filesystem::path otherTty = folder / "tty_other";      ///< /dev/tty_other
  const std::filesystem::path errorLog = folder / "errors.log";     ///< /var/log/orbset-errors.log
  const std::filesystem::path generalLog = folder / "general.log";  ///< /var/log/orbset.log
  const std::filesystem::path identityFile =
      folder / "identity.txt";  ///< /tmp/orbitekChip-info.txt

  /// From now on this file cannot be opened or made: the folder that it is to be in is missing.
  void makeUnusable(const std::string& devicePath);
};

}  // namespace orb::test
