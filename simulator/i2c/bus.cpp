#include "i2c/bus.h"

#include <cerrno>

namespace orb::sim {
namespace {

/// The flags that a message may have; the last one concerns the kernel's own copy only.
constexpr unsigned int kKnownFlags = I2C_M_RD | I2C_M_TEN | I2C_M_DMA_SAFE;

bool isRefused(const i2c_msg& message) {
  return message.len > kLongestMessage || (message.buf == nullptr && message.len > 0);
}

}  // namespace

int transfer(PortExpander& expander, i2c_msg* messages, unsigned int count) noexcept {
  if (messages == nullptr || count == 0 || count > I2C_RDWR_IOCTL_MAX_MSGS) return -EINVAL;
  for (unsigned int i = 0; i < count; ++i) {
    if (isRefused(messages[i])) return -EINVAL;
    if ((messages[i].flags & ~kKnownFlags) != 0) return -EOPNOTSUPP;
  }
  for (unsigned int i = 0; i < count; ++i) {
    const i2c_msg& message = messages[i];
    const bool hasTenBits = (message.flags & I2C_M_TEN) != 0;
    if (hasTenBits || message.addr != PortExpander::kAddress) return -ENXIO;
    if ((message.flags & I2C_M_RD) != 0) {
      expander.send(message.buf, message.len);
    } else {
      expander.receive(message.buf, message.len);
    }
  }
  return static_cast<int>(count);
}

}  // namespace orb::sim
