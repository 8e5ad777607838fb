#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orb-platform/pcie_bar.h"

namespace orb::inventory {

/// One EEPROM record of a module.
struct ModuleRecord {
  std::int32_t type = 1;  ///< never 0, which stands for a missing record
  std::string data;
};

/// What one populated location holds.
struct Module {
  std::string i2cBus;     ///< device name below /dev, or empty
  std::string spiDevice;  ///< device name below /dev, or empty
  std::vector<PcieBar> bars;
  std::map<std::string, ModuleRecord> records;
};

/// The modules of the device by their locations.
using Inventory = std::map<std::uint32_t, Module>;

}  // namespace orb::inventory
