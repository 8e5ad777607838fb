#pragma once

#include "dbus/sd_bus_handles.h"
#include "inventoryd/inventory.h"

namespace orb::inventory {

/// Offers an inventory on a bus until the object goes.
class InventoryService {
 public:
  /// Takes the service's name on the bus; the bus and the inventory outlive the object. Throws
  /// std::runtime_error while another service owns the name, and std::system_error when it cannot
  /// be had otherwise: EACCES when the bus's policy forbids it.
  InventoryService(sd_bus* bus, const Inventory& inventory);

 private:
  SlotHandle object_;
};

}  // namespace orb::inventory
