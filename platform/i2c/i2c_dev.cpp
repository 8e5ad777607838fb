#include "orb-platform/i2c_dev.h"

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "base/owned_descriptor.h"

namespace {

constexpr int kHighestAddress = 0x7F;
constexpr int kLongestMessage = 8192;  // i2c-dev's own limit for one message
constexpr int kLongestBlock = I2C_SMBUS_BLOCK_MAX;

bool isValid(const unsigned char* bytes, int count, int longest) {
  return count >= 0 && count <= longest && (bytes != nullptr || count == 0);
}

int smbusTransfer(int device, std::uint8_t direction, std::uint8_t command, std::uint32_t kind,
                  i2c_smbus_data* data) {
  i2c_smbus_ioctl_data transfer{direction, command, kind, data};
  return ::ioctl(device, I2C_SMBUS, &transfer) < 0 ? -errno : 0;
}

}  // namespace

struct I2CDev::Impl {
  std::string path;
  orb::OwnedDescriptor device;
  std::uint16_t address = 0;
  bool isSmbusOnly = false;
  bool lastReadFailed = false;

  i2c_msg message(std::uint16_t flags, const unsigned char* bytes, int count) const;
  int transfer(i2c_msg* messages, unsigned int messageCount) const;
  int read(unsigned char* buffer, int count, const unsigned char* registerBytes,
           int registerCount) const;
  int readCombined(unsigned char* buffer, int count, const unsigned char* registerBytes,
                   int registerCount) const;
  int readBlock(unsigned char* buffer, int count, std::uint8_t registerByte) const;
  int writeBlock(const unsigned char* buffer, int count) const;
};

i2c_msg I2CDev::Impl::message(std::uint16_t flags, const unsigned char* bytes, int count) const {
  // The kernel takes one type for both directions and leaves the bytes of a write alone.
  return {address, flags, static_cast<std::uint16_t>(count), const_cast<unsigned char*>(bytes)};
}

int I2CDev::Impl::transfer(i2c_msg* messages, unsigned int messageCount) const {
  i2c_rdwr_ioctl_data combined{messages, messageCount};
  const int done = ::ioctl(device.get(), I2C_RDWR, &combined);
  if (done < 0) {
    return -errno;
  }
  return static_cast<unsigned int>(done) == messageCount ? 0 : -EIO;
}

int I2CDev::Impl::read(unsigned char* buffer, int count, const unsigned char* registerBytes,
                       int registerCount) const {
  if (!device.isOpen()) {
    return -EBADF;
  }
  const int longest = isSmbusOnly ? kLongestBlock : kLongestMessage;
  if (!isValid(buffer, count, longest) || !isValid(registerBytes, registerCount, longest) ||
      (isSmbusOnly && registerCount != 1)) {
    return -EINVAL;
  }
  if (count == 0) {
    return 0;
  }
  return isSmbusOnly ? readBlock(buffer, count, registerBytes[0])
                     : readCombined(buffer, count, registerBytes, registerCount);
}

int I2CDev::Impl::readCombined(unsigned char* buffer, int count, const unsigned char* registerBytes,
                               int registerCount) const {
  i2c_msg messages[] = {message(0, registerBytes, registerCount), message(I2C_M_RD, buffer, count)};
  const int result = registerCount > 0 ? transfer(messages, 2) : transfer(messages + 1, 1);
  return result < 0 ? result : count;
}

int I2CDev::Impl::readBlock(unsigned char* buffer, int count, std::uint8_t registerByte) const {
  i2c_smbus_data data{};
  data.block[0] = static_cast<std::uint8_t>(count);
  const int result =
      smbusTransfer(device.get(), I2C_SMBUS_READ, registerByte, I2C_SMBUS_I2C_BLOCK_DATA, &data);
  if (result < 0) {
    return result;
  }
  const int received = std::min<int>(data.block[0], count);
  std::copy_n(data.block + 1, received, buffer);
  return received;
}

int I2CDev::Impl::writeBlock(const unsigned char* buffer, int count) const {
  i2c_smbus_data data{};
  data.block[0] = static_cast<std::uint8_t>(count - 1);
  std::copy(buffer + 1, buffer + count, data.block + 1);
  // A lone command byte is SMBus's "send byte": a block may not be empty.
  const int result =
      count == 1 ? smbusTransfer(device.get(), I2C_SMBUS_WRITE, buffer[0], I2C_SMBUS_BYTE, nullptr)
                 : smbusTransfer(device.get(), I2C_SMBUS_WRITE, buffer[0], I2C_SMBUS_I2C_BLOCK_DATA,
                                 &data);
  return result < 0 ? result : count;
}

I2CDev::I2CDev(const std::string& path) : impl_(std::make_shared<Impl>()) { impl_->path = path; }

I2CDev::~I2CDev() = default;

int I2CDev::open(int address) {
  impl_->device.reset();
  impl_->lastReadFailed = false;
  if (address < 0 || address > kHighestAddress) {
    return -EINVAL;
  }
  orb::OwnedDescriptor device(::open(impl_->path.c_str(), O_RDWR | O_CLOEXEC));
  unsigned long functions = 0;
  if (!device.isOpen() || ::ioctl(device.get(), I2C_SLAVE, static_cast<long>(address)) < 0 ||
      ::ioctl(device.get(), I2C_FUNCS, &functions) < 0) {
    return -errno;
  }
  impl_->isSmbusOnly = (functions & I2C_FUNC_I2C) == 0;
  if (impl_->isSmbusOnly && (functions & I2C_FUNC_SMBUS_I2C_BLOCK) != I2C_FUNC_SMBUS_I2C_BLOCK) {
    return -EOPNOTSUPP;
  }
  impl_->address = static_cast<std::uint16_t>(address);
  impl_->device = std::move(device);
  return 0;
}

int I2CDev::read(unsigned char* buffer, int count, const unsigned char* registerBytes,
                 int registerCount) {
  const int result = impl_->read(buffer, count, registerBytes, registerCount);
  if (result != 0) {
    impl_->lastReadFailed = result < count;
  }
  return result;
}

int I2CDev::write(const unsigned char* buffer, int count) {
  if (!impl_->device.isOpen()) {
    return -EBADF;
  }
  if (!isValid(buffer, count, impl_->isSmbusOnly ? 1 + kLongestBlock : kLongestMessage)) {
    return -EINVAL;
  }
  if (count == 0) {
    return 0;
  }
  if (impl_->lastReadFailed) {
    return -EIO;
  }
  if (impl_->isSmbusOnly) {
    return impl_->writeBlock(buffer, count);
  }
  i2c_msg message = impl_->message(0, buffer, count);
  const int result = impl_->transfer(&message, 1);
  return result < 0 ? result : count;
}
