#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "line/owned_descriptor.h"

namespace orb::sim {

/// Opens a serial port for raw bytes, without blocking. Its speed is set, or stays as it is. Throws
/// Failure where it cannot be opened, is no terminal or does not know the speed.
OwnedDescriptor openSerialPort(const std::filesystem::path& device,
                               std::optional<unsigned int> baud);

}  // namespace orb::sim
