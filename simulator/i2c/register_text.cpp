#include "i2c/register_text.h"

#include <cstdint>
#include <cstdio>

namespace orb::sim {
namespace {

const char* antennaSupply(const PortExpander& expander) noexcept {
  constexpr unsigned int kPort = 1;
  constexpr unsigned int kPin = PortExpander::kAntennaSupplyPin;
  if ((expander.get(PortExpander::kDirection + kPort) & kPin) != 0) {
    return "not driven";
  }
  return expander.feedsAntenna() ? "on" : "off";
}

}  // namespace

RegisterText::RegisterText(const PortExpander& expander) noexcept {
  const auto value = [&](unsigned int number) { return unsigned{expander.get(number)}; };
  std::snprintf(text_, sizeof text_,
                "port expander at 0x21   port 0   port 1\n"
                "0 1  input                  %02x       %02x\n"
                "2 3  output                 %02x       %02x\n"
                "4 5  polarity               %02x       %02x\n"
                "6 7  direction              %02x       %02x\n"
                "next register                         %u\n"
                "antenna supply%25s\n",
                value(0), value(1), value(2), value(3), value(4), value(5), value(6), value(7),
                expander.selected() % PortExpander::kRegisterCount, antennaSupply(expander));
}

bool RegisterText::read(const char* text, PortExpander& expander) noexcept {
  constexpr unsigned int kFirst = PortExpander::kOutput;
  unsigned int values[PortExpander::kRegisterCount - kFirst];
  unsigned int selected = PortExpander::kRegisterCount;
  int matched = 0;
  std::sscanf(text,
              "port expander at 0x21 port 0 port 1 0 1 input %*2x %*2x 2 3 output %2x %2x "
              "4 5 polarity %2x %2x 6 7 direction %2x %2x next register %1u antenna supply%n",
              &values[0], &values[1], &values[2], &values[3], &values[4], &values[5], &selected,
              &matched);
  if (matched == 0 || selected >= PortExpander::kRegisterCount) {
    return false;
  }
  for (unsigned int number = kFirst; number < PortExpander::kRegisterCount; ++number) {
    expander.set(number, static_cast<std::uint8_t>(values[number - kFirst]));
  }
  expander.select(static_cast<std::uint8_t>(selected));
  return true;
}

}  // namespace orb::sim
