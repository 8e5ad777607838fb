// The simulated I2C bus: transfers of any kind, and the text that its registers are kept in. Input:
// an address, then transfers: kind, direction, command, data. What is left is read as a text.

#include <algorithm>
#include <cstring>
#include <string>

#include "i2c/bus.h"
#include "i2c/register_text.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

constexpr std::size_t kMostTransfers = 16;

void checkText(const sim::PortExpander& expander) {
  const sim::RegisterText text(expander);
  sim::PortExpander read;
  check(sim::RegisterText::read(std::string(text.view()).c_str(), read), "the text can be read");
  for (unsigned int i = 0; i < sim::PortExpander::kRegisterCount; ++i) {
    check(read.get(i) == expander.get(i), "the text has the registers");
  }
  check(read.selected() == expander.selected(), "the text has the next register");
}

void transferSmbus(sim::PortExpander& expander, std::uint16_t address, Input& input) {
  constexpr std::uint32_t kSizes = 12;  // a few more than there are
  const std::uint8_t direction = input.byte() % 2;
  const std::uint8_t command = input.byte();
  const std::uint32_t size = input.byte() % kSizes;
  i2c_smbus_data data{};
  const Bytes bytes = input.bytes(sizeof data.block);
  std::copy(bytes.begin(), bytes.end(), data.block);
  const int result = sim::transferSmbus(expander, address, {direction, command, size, &data});
  check(result <= 0, "a transfer has taken place, or an error number");
  check(result < 0 || address == sim::PortExpander::kAddress, "no other device answers");
}

void transferPlain(sim::PortExpander& expander, std::uint16_t address, Input& input) {
  Bytes written = input.bytes(input.byte());
  Bytes read(input.byte());
  i2c_msg messages[2] = {{address, 0, static_cast<std::uint16_t>(written.size()), written.data()},
                         {address, I2C_M_RD, static_cast<std::uint16_t>(read.size()), read.data()}};
  const int count = sim::transfer(expander, messages, 2);
  check(count == 2 || count < 0, "both messages are carried, or an error number");
}

}  // namespace

void tryInput(Input input) {
  const std::uint16_t address =
      input.byte() % 8 == 7 ? input.byte() : std::uint16_t{sim::PortExpander::kAddress};
  sim::PortExpander expander;
  for (std::size_t i = input.byte() % kMostTransfers; i > 0; --i) {
    if (input.byte() % 2 == 0) {
      transferSmbus(expander, address, input);
    } else {
      transferPlain(expander, address, input);
    }
    checkText(expander);
  }
  const std::string text(input.restAsText());
  if (sim::RegisterText::read(text.c_str(), expander)) {
    checkText(expander);
  }
}

}  // namespace orb::test
