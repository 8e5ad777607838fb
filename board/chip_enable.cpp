#include "orb-gnss/chip_enable.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <utility>

#include "board/expected_module.h"
#include "board/port_expander.h"
#include "orb-gnss/hardware_discovery.h"
#include "orb-platform/orb-platform.h"

namespace {

std::string toUpper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// Sets the antenna supply's bit of a register pair to `value`; the other bits keep theirs.
// Port 0 is written back as it was read, since the expander takes both ports in one transfer. What
// cannot be read counts as after power-on, so that no other pin becomes an output.
void setSupplyBit(I2CDev& expander, unsigned char firstRegister, bool value) {
  unsigned char ports[orb::kPortCount] = {orb::kAfterPowerOn, orb::kAfterPowerOn};
  expander.read(ports, orb::kPortCount, &firstRegister, 1);
  const auto cleared = static_cast<unsigned char>(ports[1] & ~orb::kAntennaSupplyPin);
  const unsigned char port1 =
      value ? static_cast<unsigned char>(cleared | orb::kAntennaSupplyPin) : cleared;
  const unsigned char transfer[] = {firstRegister, ports[0], port1};
  expander.write(transfer, static_cast<int>(sizeof transfer));
}

}  // namespace

OrbChipEnableInterface::~OrbChipEnableInterface() = default;
BrdOrbChipInterface::~BrdOrbChipInterface() = default;
NullChipInterface::~NullChipInterface() = default;

int BrdOrbChipInterface::resetOrbChip() {
  std::printf("reset skipp!\n");
  return 0;
}

int BrdOrbChipInterface::antennaPowerEnable(std::string state) {
  I2CDev expander("/dev/" + getSolutionI2C(orb::kModuleLocation));
  const std::string wanted = toUpper(std::move(state));
  if (expander.open(orb::kPortExpanderAddress) < 0) {
    return 0;
  }
  setSupplyBit(expander, orb::kDirectionRegister, false);
  if (wanted == "ON") {
    setSupplyBit(expander, orb::kOutputRegister, true);
    return 0;
  }
  if (wanted == "OFF") {
    setSupplyBit(expander, orb::kOutputRegister, false);
    return 0;
  }
  return 1;
}

int NullChipInterface::resetOrbChip() { return 0; }

int NullChipInterface::antennaPowerEnable(std::string /*state*/) { return 0; }
