#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orb::sim {

/// The carrier board's I2C port expander: two 8-bit ports, and four pairs of registers for them.
///
/// A transfer selects a register; each byte that is written or read after that selects the other
/// register of the pair, so that two bytes carry both ports. A read that selects none starts at the
/// register where the last transfer stopped.
class PortExpander {
 public:
  static constexpr std::uint16_t kAddress = 0x21;

  /// The first registers of the pairs; the second register is port 1's.
  enum Register : std::uint8_t {
    kInput = 0,      ///< the level of the pins, or its opposite; not to be written
    kOutput = 2,     ///< what the output pins are driven to
    kPolarity = 4,   ///< a set bit inverts the input bit
    kDirection = 6,  ///< a set bit makes the pin an input
  };

  /// The pin of port 1 that switches the antenna's supply.
  static constexpr std::uint8_t kAntennaSupplyPin = 0x01;

  std::uint8_t get(unsigned int number) const noexcept;

  /// Whether the antenna has its supply: not while the pin is driven low. A pin that nobody drives,
  /// as after power-up, is pulled up.
  bool feedsAntenna() const noexcept;

  /// Sets a register; the input registers stay as their pins are.
  void set(unsigned int number, std::uint8_t value) noexcept;

  /// The register that the next byte is written to or read from.
  std::uint8_t selected() const noexcept { return selected_; }

  /// Selects a register by the low three bits of its number.
  void select(std::uint8_t number) noexcept { selected_ = number % kRegisterCount; }

  void write(const std::uint8_t* bytes, std::size_t count) noexcept;
  void read(std::uint8_t* bytes, std::size_t count) noexcept;

  static constexpr unsigned int kRegisterCount = 8;

 private:
  unsigned int level(unsigned int port) const noexcept;
  std::uint8_t input(unsigned int port) const noexcept;
  void selectOtherPort() noexcept { selected_ ^= 1; }

  // As after power-up: every pin is an input, and the output registers are set.
  std::array<std::uint8_t, kRegisterCount> registers_{0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF};
  std::uint8_t selected_ = 0;
};

}  // namespace orb::sim
