#include "inventoryd/inventory_service.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <new>
#include <string>

#include "dbus/inventory_interface.h"
#include "dbus/sd_bus_handles.h"
#include "inventoryd/inventory_file.h"
#include "support/allocations.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

BusHandle openBus() {
  sd_bus* bus = nullptr;
  EXPECT_GE(sd_bus_open_system(&bus), 0);
  return BusHandle(bus);
}

int keepError(sd_bus_message* answer, void* kept, sd_bus_error* /*error*/) {
  const sd_bus_error* const error = sd_bus_message_get_error(answer);
  *static_cast<std::string*>(kept) = error != nullptr ? error->name : "(none)";
  return 1;
}

// The bus library allocates by other means, so that the failure falls on the method's own.
TEST(InventoryService, AnswersThatThereIsNoMemory) {
  const TemporaryFolder folder;
  const PrivateBus privateBus(folder.path());
  const inventory::InventoryFile file = inventory::parseInventory("[[module]]\nlocation = 1", "f");
  const BusHandle serving = openBus();
  const inventory::InventoryService service(serving.get(), file.inventory);
  const BusHandle asking = openBus();
  const auto errorOf = [&](const char* method, auto... arguments) {
    std::string error;
    sd_bus_slot* slot = nullptr;
    EXPECT_GE(
        sd_bus_call_method_async(asking.get(), &slot, inventory::kBusName, inventory::kObjectPath,
                                 inventory::kInterface, method, keepError, &error, arguments...),
        0);
    const SlotHandle owned(slot);
    while (error.empty()) {
      sd_bus_process(asking.get(), nullptr);
      const FailingAllocation failing(1);
      EXPECT_NO_THROW(sd_bus_process(serving.get(), nullptr));
    }
    return error;
  };
  EXPECT_EQ(errorOf(inventory::kGetModuleLocations, ""), "org.freedesktop.DBus.Error.NoMemory");
  EXPECT_EQ(errorOf(inventory::kGetSystemRecord, "us", 1U, "a name of more than a few characters"),
            "org.freedesktop.DBus.Error.NoMemory");
  EXPECT_EQ(errorOf(inventory::kGetI2CBus, "u", 1U), "(none)") << "asks for no memory";
}

}  // namespace
}  // namespace orb::test
