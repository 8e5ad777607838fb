#include "orb-platform/module_resources_client.h"

#include <cstdint>

#include "client/inventory_connection.h"
#include "dbus/inventory_interface.h"

struct GDBusModuleResourcesClient::Impl {
  orb::InventoryConnection connection;
  unsigned int location = 0;

  /// Calls a method whose only argument is the location.
  bool ask(const char* method, const char* answerTypes,
           const orb::InventoryConnection::MessageStep& readAnswer) {
    return connection.call(
        method,
        [this](sd_bus_message* request) { return sd_bus_message_append(request, "u", location); },
        answerTypes, readAnswer);
  }

  std::string askText(const char* method) {
    std::string text;
    ask(method, "s", [&](sd_bus_message* answer) {
      const char* value = "";
      const int result = sd_bus_message_read(answer, "s", &value);
      text = value;
      return result;
    });
    return text;
  }
};

GDBusModuleResourcesClient::GDBusModuleResourcesClient() : impl_(std::make_shared<Impl>()) {}

GDBusModuleResourcesClient::~GDBusModuleResourcesClient() = default;

void GDBusModuleResourcesClient::SetupDeviceAddress(unsigned int location) {
  impl_->location = location;
}

Record GDBusModuleResourcesClient::GetSystemRecord(std::string name) {
  Record record(0, "");
  if (name.find('\0') != std::string::npos) {
    return record;  // The bus would cut the name there and find another record.
  }
  impl_->connection.call(
      orb::inventory::kGetSystemRecord,
      [&](sd_bus_message* request) {
        return sd_bus_message_append(request, "us", impl_->location, name.c_str());
      },
      "is",
      [&](sd_bus_message* answer) {
        std::int32_t type = 0;
        const char* data = "";
        const int result = sd_bus_message_read(answer, "is", &type, &data);
        if (result > 0) {
          record = Record(type, data);
        }
        return result;
      });
  return record;
}

std::vector<PcieBar> GDBusModuleResourcesClient::GetBars() {
  std::vector<PcieBar> bars;
  const bool answered = impl_->ask(orb::inventory::kGetBars, "a(utt)", [&](sd_bus_message* answer) {
    int result = sd_bus_message_enter_container(answer, SD_BUS_TYPE_ARRAY, "(utt)");
    PcieBar bar;
    while (result > 0) {
      result = sd_bus_message_read(answer, "(utt)", &bar.index, &bar.address, &bar.size);
      if (result > 0) {
        bars.push_back(bar);
      }
    }
    return result;
  });
  return answered ? bars : std::vector<PcieBar>();
}

std::string GDBusModuleResourcesClient::GetI2CBus() {
  return impl_->askText(orb::inventory::kGetI2CBus);
}

std::string GDBusModuleResourcesClient::GetSPIDev() {
  return impl_->askText(orb::inventory::kGetSPIDevice);
}
