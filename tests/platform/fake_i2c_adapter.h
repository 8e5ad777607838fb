#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// An I2C adapter without hardware.
///
/// It answers to `open`, `ioctl` and `close` of this program for one device path, as i2c-dev does
/// for a real adapter, and hands every other call on to the kernel. Slaves with 256 byte-wide
/// registers, whose pointer moves on with each byte, stand behind it.
class FakeI2CAdapter {
 public:
  enum class Kind { kPlain, kSmbusOnly, kSmbusWithoutBlocks };

  FakeI2CAdapter(std::string path, Kind kind);
  ~FakeI2CAdapter();

  FakeI2CAdapter(const FakeI2CAdapter&) = delete;
  FakeI2CAdapter& operator=(const FakeI2CAdapter&) = delete;

  /// Puts a slave on the bus, and names its registers to set and check.
  std::array<std::uint8_t, 256>& addSlave(std::uint16_t address) { return slaves_[address]; }

  /// The slave belongs to a kernel driver from now on.
  void takeByDriver(std::uint16_t address) { taken_[address] = true; }

  /// The adapter itself fails every transfer from now on.
  void breakDown() { isBroken_ = true; }

  /// It ends combined transfers after their first message from now on.
  void stopAfterOneMessage() { stopsEarly_ = true; }

  /// What went over the bus, in the notation of the bus: S start, Sr repeated start, address with W
  /// or R, the bytes in hexadecimal, those of the slave in brackets, P stop. "N" for no
  /// acknowledgement.
  const std::vector<std::string>& transfers() const { return transfers_; }

  /// Descriptors of the device that are open.
  int openCount() const { return static_cast<int>(selected_.size()); }

  // The system calls of the device.
  int open(const char* path);
  bool owns(int descriptor) const { return selected_.count(descriptor) != 0; }
  void forget(int descriptor) { selected_.erase(descriptor); }
  int ioctl(int descriptor, unsigned long request, void* argument);
  bool isAt(const char* path) const { return path_ == path; }

 private:
  int select(int descriptor, std::uintptr_t address);
  unsigned long functions() const;
  int transferMessages(void* argument);
  int transferSmbus(int descriptor, void* argument);

  std::string path_;
  Kind kind_;
  std::map<std::uint16_t, std::array<std::uint8_t, 256>> slaves_;
  std::map<std::uint16_t, bool> taken_;
  std::map<int, std::uint16_t> selected_;  // slave address by descriptor
  std::vector<std::string> transfers_;
  std::uint8_t registerPointer_ = 0;
  bool isBroken_ = false;
  bool stopsEarly_ = false;
};
