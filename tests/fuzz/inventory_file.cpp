// Inventory files: any text has problems, or describes modules as the bus can carry them. Input:
// the text.

#include <limits>
#include <string>

#include "inventoryd/inventory_file.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

bool canBeCarried(const std::string& text) { return text.find('\0') == std::string::npos; }

void checkModule(const inventory::Module& module) {
  constexpr std::uint64_t kMostBytes = std::numeric_limits<std::int64_t>::max();
  for (const std::string& name : {module.i2cBus, module.spiDevice}) {
    check(canBeCarried(name) && !name.starts_with('/'), "a device has a name below /dev");
  }
  for (const PcieBar& bar : module.bars) {
    check(bar.size > 0 && bar.size <= kMostBytes && bar.address <= kMostBytes, "a BAR's numbers");
  }
  for (const auto& [name, record] : module.records) {
    check(canBeCarried(name) && canBeCarried(record.data) && record.type > 0, "a record");
  }
}

}  // namespace

void tryInput(Input input) {
  const inventory::InventoryFile file = inventory::parseInventory(input.restAsText(), "f");
  for (const std::string& problem : file.problems) {
    check(problem.starts_with("f:"), "each problem names the file: " + problem);
    check(problem.find('\n') == std::string::npos, "a problem is one line: " + problem);
  }
  if (file.problems.empty()) {
    for (const auto& [location, module] : file.inventory) {
      checkModule(module);
    }
  }
}

}  // namespace orb::test
