#pragma once

#include <cstdint>

/// The messages that are spoken of outside the table of commands: the id byte, then the sub-id byte
/// or 0. The names are those of the library's table, the numbers are the model's own, here as in
/// the table of commands: a mistake in one of them shows.
namespace orb::sim::message {

using Id = std::uint16_t;

constexpr Id kSetTiming = 0x5400;
constexpr Id kNavigationMode = 0x648B;
constexpr Id kSecondBand = 0x649F;
constexpr Id kAcknowledged = 0x8300;
constexpr Id kRefused = 0x8400;
constexpr Id kUpdateRate = 0x8600;
constexpr Id kNavigationData = 0xA800;
constexpr Id kPowerMode = 0xB900;

}  // namespace orb::sim::message
