#pragma once

#include <string>

namespace orb::ctl {

/// What the device's inventory says of the module.
struct Inventory {
  std::string hardware;  // its hardware set id; empty where none is known
  std::string problem;   // why the inventory could not be asked; empty where it was
};

constexpr char kAskForService[] =
    "is the inventory service running? systemctl status orb-inventoryd";

/// Asks it. Nothing is printed.
Inventory askInventory();

}  // namespace orb::ctl
