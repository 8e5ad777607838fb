#pragma once

#include <sys/types.h>

#include <string_view>

// i2c-dev's device for the board's I2C bus, which a mapped path leads to.
//
// An open descriptor is a socket that is never connected. What the device keeps for each open is
// kept in the socket itself, so that duplicates, children and whoever else is handed the descriptor
// share it as they share a device's; the kernel refuses to read or write such a socket, so that the
// wrappers of read and write have something to do only where a call has failed. What the bus itself
// keeps, the port expander's registers, is a file that every process uses under a lock.
//
// Functions that take a descriptor return -1 and set errno where they fail, as the system calls do.

namespace orb::sim {

/// Makes `bus` the bus: a link to the file of its registers, so that the device, which every path
/// that is mapped to the link is, and the file can both be used by their names.
void setI2cBus(std::string_view bus) noexcept;

/// Whether `path`, after mapping, is the device.
bool isI2cDevice(const char* path) noexcept;

/// Opens the device, with the flags of open.
int openI2cDevice(int flags) noexcept;

/// Whether `descriptor` is open on the device. Leaves errno alone.
bool isOpenOnI2cDevice(int descriptor) noexcept;

/// Whether `request` is one of i2c-dev's.
bool isI2cRequest(unsigned long request) noexcept;

int controlI2cDevice(int descriptor, unsigned long request, void* argument) noexcept;
ssize_t readI2cDevice(int descriptor, void* buffer, size_t size) noexcept;
ssize_t writeI2cDevice(int descriptor, const void* bytes, size_t size) noexcept;

}  // namespace orb::sim
