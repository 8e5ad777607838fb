#pragma once

#include <linux/i2c-dev.h>
#include <linux/i2c.h>

#include <cstdint>

#include "i2c/port_expander.h"

// The bus with the port expander on it, as Linux's i2c-dev offers an adapter that carries plain
// messages. Each function returns a negative error number where i2c-dev fails with it; no device
// acknowledges any other address (ENXIO).

namespace orb::sim {

/// What the adapter can do, as I2C_FUNCS reports it.
inline constexpr unsigned long kBusFunctions =
    I2C_FUNC_I2C | (I2C_FUNC_SMBUS_EMUL & ~static_cast<unsigned long>(I2C_FUNC_SMBUS_PEC));

/// The longest message; longer ones are refused.
inline constexpr unsigned int kLongestMessage = 8192;

/// Carries the messages of one I2C_RDWR; returns how many. Messages before one that no device
/// acknowledges have been carried.
int transfer(PortExpander& expander, const i2c_msg* messages, unsigned int count) noexcept;

/// Carries one I2C_SMBUS to the device at `address`; returns 0.
int transferSmbus(PortExpander& expander, std::uint16_t address,
                  const i2c_smbus_ioctl_data& request) noexcept;

}  // namespace orb::sim
