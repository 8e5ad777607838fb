#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orb::sim {

/// The carrier board's I2C bus, as the inventory names it.
inline constexpr char kI2cBus[] = "i2c-3";

/// Starts a D-Bus daemon with its socket and files in `folder`, and waits until it takes
/// connections. Returns its address, as DBUS_SYSTEM_BUS_ADDRESS takes it. Throws Failure, with what
/// the daemon said, where it does not come up.
std::string startBus(const std::filesystem::path& folder);

/// Starts the inventory service on the bus, with a module of this hardware set identifier at
/// location 1, or with none, and waits until it answers. Throws Failure, with what the service
/// said, where it does not come up.
void startInventory(const std::filesystem::path& folder, const std::string& busAddress,
                    const std::optional<std::string>& hardwareId);

}  // namespace orb::sim
