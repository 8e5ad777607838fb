#pragma once

#include "dbus/sd_bus_handles.h"
#include "inventoryd/inventory.h"

namespace orb::inventory {

/// Offers an inventory on a bus until the object goes.
class InventoryService {
 public:
  /// Takes the service's name on the bus; the bus and the inventory outlive the object. Throws
  /// std::system_error when the name is not to be had: EEXIST while another service owns it,
  /// EACCES when the bus's policy forbids it.
  InventoryService(sd_bus* bus, const Inventory& inventory);

 private:
  SlotHandle object_;
};

}  // namespace orb::inventory
