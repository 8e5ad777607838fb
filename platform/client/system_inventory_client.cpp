#include "orb-platform/system_inventory_client.h"

#include "client/inventory_connection.h"
#include "dbus/inventory_interface.h"

struct GDBusSystemInventoryClient::Impl {
  orb::InventoryConnection connection;
};

GDBusSystemInventoryClient::GDBusSystemInventoryClient() : impl_(std::make_shared<Impl>()) {}

GDBusSystemInventoryClient::~GDBusSystemInventoryClient() = default;

std::vector<unsigned int> GDBusSystemInventoryClient::GetModuleLocations() {
  std::vector<unsigned int> locations;
  impl_->connection.call(
      orb::inventory::kGetModuleLocations, [](sd_bus_message*) { return 0; }, "au",
      [&](sd_bus_message* answer) {
        const void* numbers = nullptr;
        std::size_t bytes = 0;
        const int result = sd_bus_message_read_array(answer, 'u', &numbers, &bytes);
        if (result > 0) {
          const auto* first = static_cast<const unsigned int*>(numbers);
          locations.assign(first, first + bytes / sizeof *first);
        }
        return result;
      });
  return locations;
}
