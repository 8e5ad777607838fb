#pragma once

#include <string_view>

// i2c-dev's device for the board's I2C bus, which a mapped path leads to. Programs use it by ioctl;
// the kernel refuses to read or write a descriptor of it.
//
// Each open makes a file in memory that keeps the selected address, so that duplicates, children
// and whoever else is handed the descriptor share the address as they share a device's. The
// program's descriptor names that file without opening it (O_PATH). The port expander's registers
// are in a file that every process uses under a lock.
//
// Functions that take a descriptor return -1 and set errno where they fail, as system calls do.

namespace orb::sim {

/// Makes the path `bus` the device's; "`bus`.registers" is the file of the registers. At `bus`
/// should be a file that cannot be opened, such as a socket, so that calls which no wrapper sees
/// fail.
void setI2cBus(std::string_view bus) noexcept;

/// Whether `path`, after mapping, is the device.
bool isI2cDevice(const char* path) noexcept;

/// Opens the device. Of the flags of open, O_CLOEXEC alone matters.
int openI2cDevice(int flags) noexcept;

/// Whether an ioctl is one of i2c-dev's and `descriptor` is open on the device. Leaves errno alone.
bool isI2cRequest(int descriptor, unsigned long request) noexcept;

/// Carries out such a request.
int controlI2cDevice(int descriptor, unsigned long request, void* argument) noexcept;

}  // namespace orb::sim
