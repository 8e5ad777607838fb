#pragma once

#include <memory>
#include <string>

#include "orb-platform/export.h"

/// One slave on an I2C bus of Linux, reached through the bus's device file (/dev/i2c-N).
///
/// A plain I2C adapter carries each call as one transfer of any length up to 8192 bytes. An adapter
/// that offers SMBus alone carries it as an I2C block transfer: one register byte and up to 32 data
/// bytes. Every call returns `-errno` on failure: -EBADF on a device that is not open, -EINVAL for
/// bytes that the adapter cannot carry (nothing is sent then), -ENXIO or -EREMOTEIO, as the
/// adapter's driver has it, for a slave that does not acknowledge. An object is used from one
/// thread at a time.
class ORB_PLATFORM_EXPORT I2CDev {
 public:
  /// Remembers the path; opens nothing.
  I2CDev(const std::string& path);

  /// Closes the device.
  ~I2CDev();

  I2CDev(const I2CDev&) = delete;
  I2CDev& operator=(const I2CDev&) = delete;

  /// Opens the bus and selects the slave at a 7-bit address; a device already open is closed first.
  ///
  /// Returns 0, or a negative value: among others -ENOENT without such a bus, -EBUSY for a slave
  /// that a kernel driver has taken, -EOPNOTSUPP for an adapter with neither kind of transfer.
  int open(int address);

  /// Writes the register bytes and, after a repeated start, reads `count` bytes.
  ///
  /// Without register bytes it only reads, which SMBus cannot. Returns the number of bytes read; a
  /// count of 0 returns 0 and sends nothing.
  int read(unsigned char* buffer, int count, const unsigned char* registerBytes, int registerCount);

  /// Writes the bytes as one transfer; on SMBus the first of them is the command.
  ///
  /// Returns the number of bytes written; a count of 0 returns 0 and sends nothing. After a read
  /// that failed or came short, until another succeeds or the device is opened anew, it returns
  /// -EIO and sends nothing: what it would put back was never read.
  int write(const unsigned char* buffer, int count);

 private:
  struct Impl;
  // Shared, not unique: a library or a test that defines the members above need not define Impl.
  [[maybe_unused]] std::shared_ptr<Impl> impl_;
};
