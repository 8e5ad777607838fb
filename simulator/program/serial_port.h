#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/owned_descriptor.h"

namespace orb::sim {

/// Opens a serial port for raw bytes, without blocking. Its speed is set, or stays as it is. Throws
/// std::system_error where it cannot be opened, and Failure where it is no terminal or does not
/// know the speed.
OwnedDescriptor openSerialPort(const std::filesystem::path& device,
                               std::optional<unsigned int> baud);

/// Whether a program may find a terminal at `path`: false where what is there is something else.
/// One that cannot be opened may be a terminal. Leaves pseudo-terminals unopened.
bool mayBeTerminal(const std::filesystem::path& path);

/// Opens a terminal that another program is to use, and keeps a mark on it while it is open. Says
/// on standard error which process has marked it already.
OwnedDescriptor markUse(const std::filesystem::path& tty);

}  // namespace orb::sim
