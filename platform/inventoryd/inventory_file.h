#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "inventoryd/inventory.h"

namespace orb::inventory {

/// What an inventory file holds, or what is wrong with it.
struct InventoryFile {
  Inventory inventory;

  /// One line for each problem, "FILE:LINE: what is wrong", in the order of the lines. The
  /// inventory is of use only when there is none.
  std::vector<std::string> problems;
};

/// Reads an inventory from a TOML file. A file that cannot be read is a problem too, without a
/// line.
InventoryFile readInventoryFile(const std::string& path);

/// Reads an inventory from TOML text; `path` names it in the problems.
InventoryFile parseInventory(std::string_view text, const std::string& path);

}  // namespace orb::inventory
