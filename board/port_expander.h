#pragma once

namespace orb {

// The carrier board's I2C port expander: two 8-bit ports with a register pair for each purpose.

constexpr int kPortExpanderAddress = 0x21;
constexpr int kPortCount = 2;

/// First register of the pair that drives the output pins.
constexpr unsigned char kOutputRegister = 2;
/// First register of the pair that sets each pin's direction; a cleared bit makes an output.
constexpr unsigned char kDirectionRegister = 6;

/// A register of either pair after power-on: no pin is an output.
constexpr unsigned char kAfterPowerOn = 0xFF;

/// The pin of port 1 that switches the antenna's supply.
constexpr unsigned char kAntennaSupplyPin = 0x01;

}  // namespace orb
