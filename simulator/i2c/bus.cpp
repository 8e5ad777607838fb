#include "i2c/bus.h"

#include <cerrno>
#include <cstddef>

namespace orb::sim {
namespace {

/// 0, or why i2c-dev refuses the message before anything is carried.
int refusal(const i2c_msg& message) noexcept {
  if (message.len > kLongestMessage) {
    return -EINVAL;
  }
  return (message.flags & ~I2C_M_RD) == 0 ? 0 : -EOPNOTSUPP;
}

/// The bytes of an SMBus transfer after its command.
int access(PortExpander& expander, const i2c_smbus_ioctl_data& request, std::uint8_t* bytes,
           std::size_t count) noexcept {
  expander.select(request.command);
  if (request.read_write == I2C_SMBUS_READ) {
    expander.read(bytes, count);
  } else {
    expander.write(bytes, count);
  }
  return 0;
}

/// Writes a word and reads the one that follows.
int callProcess(PortExpander& expander, const i2c_smbus_ioctl_data& request) noexcept {
  expander.select(request.command);
  expander.write(request.data->block, sizeof request.data->word);
  expander.read(request.data->block, sizeof request.data->word);
  return 0;
}

/// A block's first byte is its length, which only SMBus itself, not I2C, has on the wire.
int accessBlock(PortExpander& expander, const i2c_smbus_ioctl_data& request,
                bool withLength) noexcept {
  std::uint8_t* const block = request.data->block;
  if (block[0] > I2C_SMBUS_BLOCK_MAX) {
    return -EINVAL;
  }
  return withLength ? access(expander, request, block, 1U + block[0])
                    : access(expander, request, block + 1, block[0]);
}

}  // namespace

int transfer(PortExpander& expander, const i2c_msg* messages, unsigned int count) noexcept {
  if (count == 0 || count > I2C_RDWR_IOCTL_MAX_MSGS) {
    return -EINVAL;
  }
  for (unsigned int i = 0; i < count; ++i) {
    if (const int refused = refusal(messages[i]); refused < 0) {
      return refused;
    }
  }
  for (unsigned int i = 0; i < count; ++i) {
    const i2c_msg& message = messages[i];
    if (message.addr != PortExpander::kAddress) {
      return -ENXIO;
    }
    if ((message.flags & I2C_M_RD) != 0) {
      expander.read(message.buf, message.len);
    } else if (message.len > 0) {
      expander.select(message.buf[0]);
      expander.write(message.buf + 1, message.len - std::size_t{1});
    }
  }
  return static_cast<int>(count);
}

// A word goes with its low byte first, as the machines that this runs on keep it in memory.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

int transferSmbus(PortExpander& expander, std::uint16_t address,
                  const i2c_smbus_ioctl_data& request) noexcept {
  const bool isRead = request.read_write == I2C_SMBUS_READ;
  if (address != PortExpander::kAddress) {
    return -ENXIO;
  }
  switch (request.size) {
    case I2C_SMBUS_QUICK:  // the address alone
      return 0;
    case I2C_SMBUS_BYTE:
      isRead ? expander.read(request.data->block, 1) : expander.select(request.command);
      return 0;
    case I2C_SMBUS_BYTE_DATA:
      return access(expander, request, request.data->block, sizeof request.data->byte);
    case I2C_SMBUS_WORD_DATA:
      return access(expander, request, request.data->block, sizeof request.data->word);
    case I2C_SMBUS_PROC_CALL:
      return callProcess(expander, request);
    case I2C_SMBUS_BLOCK_DATA:
      return isRead ? -EOPNOTSUPP : accessBlock(expander, request, true);
    case I2C_SMBUS_I2C_BLOCK_DATA:
    case I2C_SMBUS_I2C_BLOCK_BROKEN:  // what libi2c makes of a read of 32 bytes
      return accessBlock(expander, request, false);
    default:
      return -EOPNOTSUPP;
  }
}

}  // namespace orb::sim
