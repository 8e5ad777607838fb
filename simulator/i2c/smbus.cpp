// SMBus transfers as the messages that they are on a plain I2C bus.

#include <algorithm>
#include <cerrno>

#include "i2c/bus.h"

namespace orb::sim {
namespace {

/// What goes over the bus for one transfer: a write, a read, or one after the other.
class SmbusTransfer {
 public:
  explicit SmbusTransfer(const i2c_smbus_ioctl_data& request) noexcept
      : request_(request), written_{request.command} {}

  /// Settles what is written and how much is read. Returns 0 or a negative error number.
  int prepare() noexcept;

  int run(PortExpander& expander, std::uint16_t address) noexcept;

  /// Hands what was read to the caller.
  void deliver() const noexcept;

 private:
  bool isRead() const noexcept { return request_.read_write == I2C_SMBUS_READ; }
  int prepareQuick() noexcept;
  int prepareByte() noexcept;
  int prepareData(unsigned int count) noexcept;
  int prepareProcessCall() noexcept;
  int prepareBlock(bool withLength) noexcept;

  /// Appends the bytes of the caller's data, of which a word goes with its low byte first, as the
  /// machines that this runs on keep it.
  void write(unsigned int first, unsigned int count) noexcept {
    std::copy_n(request_.data->block + first, count, written_ + writtenCount_);
    writtenCount_ = static_cast<std::uint16_t>(writtenCount_ + count);
  }
  void read(unsigned int count) noexcept {
    reads_ = true;
    readCount_ = static_cast<std::uint16_t>(count);
  }

  const i2c_smbus_ioctl_data& request_;
  std::uint8_t written_[2 + I2C_SMBUS_BLOCK_MAX];  // the command, a length, the data
  std::uint8_t readBytes_[I2C_SMBUS_BLOCK_MAX]{};
  std::uint16_t writtenCount_ = 1;
  std::uint16_t readCount_ = 0;
  bool writes_ = true;
  bool reads_ = false;
};

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

int SmbusTransfer::prepare() noexcept {
  if (request_.read_write != I2C_SMBUS_READ && request_.read_write != I2C_SMBUS_WRITE) {
    return -EINVAL;
  }
  const bool isDataless =
      request_.size == I2C_SMBUS_QUICK || (request_.size == I2C_SMBUS_BYTE && !isRead());
  if (!isDataless && request_.data == nullptr) return -EINVAL;
  switch (request_.size) {
    case I2C_SMBUS_QUICK:
      return prepareQuick();
    case I2C_SMBUS_BYTE:
      return prepareByte();
    case I2C_SMBUS_BYTE_DATA:
      return prepareData(1);
    case I2C_SMBUS_WORD_DATA:
      return prepareData(2);
    case I2C_SMBUS_PROC_CALL:
      return prepareProcessCall();
    case I2C_SMBUS_BLOCK_DATA:
      return isRead() ? -EOPNOTSUPP : prepareBlock(true);
    case I2C_SMBUS_I2C_BLOCK_DATA:
    case I2C_SMBUS_I2C_BLOCK_BROKEN:
      return prepareBlock(false);
    case I2C_SMBUS_BLOCK_PROC_CALL:
      return -EOPNOTSUPP;
    default:
      return -EINVAL;
  }
}

/// The address alone, with the direction bit as the one bit of data.
int SmbusTransfer::prepareQuick() noexcept {
  writtenCount_ = 0;
  if (isRead()) {
    writes_ = false;
    read(0);
  }
  return 0;
}

/// The command alone, or one byte from wherever the device is.
int SmbusTransfer::prepareByte() noexcept {
  if (isRead()) {
    writes_ = false;
    read(1);
  }
  return 0;
}

int SmbusTransfer::prepareData(unsigned int count) noexcept {
  isRead() ? read(count) : write(0, count);
  return 0;
}

int SmbusTransfer::prepareProcessCall() noexcept {
  write(0, 2);
  read(2);
  return 0;
}

int SmbusTransfer::prepareBlock(bool withLength) noexcept {
  std::uint8_t& length = request_.data->block[0];
  // Programs built for the oldest kernels leave the length of a read open.
  if (isRead() && request_.size == I2C_SMBUS_I2C_BLOCK_BROKEN) length = I2C_SMBUS_BLOCK_MAX;
  if (length > I2C_SMBUS_BLOCK_MAX) return -EINVAL;
  if (isRead()) {
    read(length);
  } else {
    withLength ? write(0, 1U + length) : write(1, length);
  }
  return 0;
}

int SmbusTransfer::run(PortExpander& expander, std::uint16_t address) noexcept {
  i2c_msg messages[2];
  unsigned int count = 0;
  if (writes_) messages[count++] = {address, 0, writtenCount_, written_};
  if (reads_) messages[count++] = {address, I2C_M_RD, readCount_, readBytes_};
  return transfer(expander, messages, count);
}

void SmbusTransfer::deliver() const noexcept {
  const bool isBlock =
      request_.size == I2C_SMBUS_I2C_BLOCK_DATA || request_.size == I2C_SMBUS_I2C_BLOCK_BROKEN;
  if (readCount_ > 0) std::copy_n(readBytes_, readCount_, request_.data->block + (isBlock ? 1 : 0));
}

}  // namespace

int transferSmbus(PortExpander& expander, std::uint16_t address,
                  const i2c_smbus_ioctl_data& request) noexcept {
  SmbusTransfer smbus(request);
  const int refused = smbus.prepare();
  if (refused < 0) return refused;
  const int carried = smbus.run(expander, address);
  if (carried < 0) return carried;
  smbus.deliver();
  return 0;
}

}  // namespace orb::sim
