#include "i2c/port_expander.h"

namespace orb::sim {
namespace {

// What is connected to the pins pulls them up, and nothing pulls them down.
constexpr unsigned int kOutsideLevel = 0xFF;

}  // namespace

std::uint8_t PortExpander::get(unsigned int number) const noexcept {
  return number < kOutput ? input(number) : registers_[number];
}

void PortExpander::set(unsigned int number, std::uint8_t value) noexcept {
  if (number >= kOutput) {
    registers_[number] = value;
  }
}

bool PortExpander::feedsAntenna() const noexcept {
  constexpr unsigned int kPort = 1;
  return (level(kPort) & kAntennaSupplyPin) != 0;
}

unsigned int PortExpander::level(unsigned int port) const noexcept {
  const unsigned int direction = registers_[kDirection + port];
  return (registers_[kOutput + port] & ~direction) | (kOutsideLevel & direction);
}

std::uint8_t PortExpander::input(unsigned int port) const noexcept {
  return static_cast<std::uint8_t>(level(port) ^ registers_[kPolarity + port]);
}

void PortExpander::write(const std::uint8_t* bytes, std::size_t count) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    set(selected_, bytes[i]);
    selectOtherPort();
  }
}

void PortExpander::read(std::uint8_t* bytes, std::size_t count) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = get(selected_);
    selectOtherPort();
  }
}

}  // namespace orb::sim
