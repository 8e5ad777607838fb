#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orb::test {

/// An I2C adapter without hardware.
///
/// It answers to `open`, `ioctl` and `close` of this program for one device path, as i2c-dev does
/// for a real adapter, and passes every other call to the kernel. Slaves with 256 byte-wide
/// registers, whose pointer moves on with each byte, are on its bus.
class FakeI2CAdapter {
 public:
  enum class Kind { kPlain, kSmbusOnly, kSmbusWithoutBlocks };
  using Registers = std::array<std::uint8_t, 256>;

  FakeI2CAdapter(std::string path, Kind kind);
  ~FakeI2CAdapter();

  FakeI2CAdapter(const FakeI2CAdapter&) = delete;
  FakeI2CAdapter& operator=(const FakeI2CAdapter&) = delete;

  /// Puts a slave on the bus, and names its registers to set and check.
  Registers& addSlave(std::uint16_t address) { return slaves_[address]; }

  int addressOfDriver = -1;           ///< a slave that a kernel driver has taken
  bool isBroken = false;              ///< the adapter fails every transfer
  bool stopsAfterOneMessage = false;  ///< combined transfers end after their first message

  /// What went over the bus, in the notation of the bus: S start, Sr repeated start, address with W
  /// or R, the bytes in hexadecimal, those of the slave in brackets, P stop. "N" for no
  /// acknowledgement.
  std::vector<std::string> transfers;

  /// Descriptors of the device that are open.
  int openCount() const { return static_cast<int>(selected_.size()); }

  // The system calls of the device.
  int open();
  bool owns(int descriptor) const { return selected_.count(descriptor) != 0; }
  void forget(int descriptor) { selected_.erase(descriptor); }
  int ioctl(int descriptor, unsigned long request, void* argument);
  bool isAt(const char* path) const { return path_ == path; }

 private:
  int select(int descriptor, std::uintptr_t address);
  unsigned long functions() const;
  int transferMessages(void* argument);
  int transferSmbus(int descriptor, void* argument);
  Registers* slaveFor(std::uint16_t address, const std::string& trace);

  std::string path_;
  Kind kind_;
  std::map<std::uint16_t, Registers> slaves_;
  std::map<int, std::uint16_t> selected_;  // slave address by descriptor
  std::uint8_t registerPointer_ = 0;
};

}  // namespace orb::test
