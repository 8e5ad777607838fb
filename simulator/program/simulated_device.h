#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/owned_descriptor.h"
#include "orb-sim/pty_line.h"
#include "program/run.h"

namespace orb::sim {

class PulseFile;

/// The device that a COMMAND sees: the receiver on its line, the inventory on the system bus, the
/// port expander on the I2C bus, and private files in the places of the real ones.
class SimulatedDevice {
 public:
  /// Sets everything up in `folder`; everything answers when this returns. `endCommand` is called
  /// where a replayed trace is to end the command. Throws Failure.
  SimulatedDevice(const RunOptions& options, const std::filesystem::path& folder,
                  std::function<void()> endCommand);
  ~SimulatedDevice();

  /// The variables that make a program see the device: LD_PRELOAD for the program `file`, the path
  /// map, the I2C bus and the system bus's address.
  std::vector<std::string> variablesFor(const std::filesystem::path& file) const;

 private:
  std::string pathMap() const;

  const std::filesystem::path files_;    ///< where the log and identity files are
  const std::filesystem::path i2cBus_;   ///< as the preloaded library takes it
  const std::filesystem::path library_;  ///< a link, whose path LD_PRELOAD can take
  const std::filesystem::path tty_;      ///< what COMMAND finds at /dev/tty_gps
  const OwnedDescriptor use_;            ///< of a line that others may use as well
  std::unique_ptr<PulseFile> pulses_;
  std::unique_ptr<Device> receiver_;
  std::unique_ptr<PtyLine> line_;
  const std::string busAddress_;
};

}  // namespace orb::sim
