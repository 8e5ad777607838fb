#include "inventoryd/inventory_service.h"

#include <cerrno>
#include <cinttypes>
#include <exception>
#include <stdexcept>

#include "dbus/inventory_interface.h"

namespace orb::inventory {
namespace {

const Inventory& inventoryOf(void* context) { return *static_cast<const Inventory*>(context); }

/// Reads the location, the first argument of every module method. Sets `module` when it holds one;
/// otherwise returns the error to answer with.
int findModule(sd_bus_message* call, void* context, sd_bus_error* error, const Module*& module) {
  std::uint32_t location = 0;
  const int result = sd_bus_message_read(call, "u", &location);
  if (result < 0) {
    return result;
  }
  const auto found = inventoryOf(context).find(location);
  if (found == inventoryOf(context).end()) {
    return sd_bus_error_setf(error, kNoSuchModule, "location %" PRIu32 " holds no module",
                             location);
  }
  module = &found->second;
  return 0;
}

int getModuleLocations(sd_bus_message* call, void* context, sd_bus_error* /*error*/) {
  std::vector<std::uint32_t> locations;
  for (const auto& [location, module] : inventoryOf(context)) {
    locations.push_back(location);
  }
  sd_bus_message* rawReply = nullptr;
  int result = sd_bus_message_new_method_return(call, &rawReply);
  const MessageHandle reply(rawReply);
  if (result >= 0) {
    result = sd_bus_message_append_array(rawReply, 'u', locations.data(),
                                         locations.size() * sizeof locations[0]);
  }
  return result < 0 ? result : sd_bus_send(nullptr, rawReply, nullptr);
}

int getSystemRecord(sd_bus_message* call, void* context, sd_bus_error* error) {
  const Module* module = nullptr;
  const char* name = nullptr;
  int result = findModule(call, context, error, module);
  if (module == nullptr) {
    return result;
  }
  result = sd_bus_message_read(call, "s", &name);
  if (result < 0) {
    return result;
  }
  const auto record = module->records.find(name);
  if (record == module->records.end()) {
    return sd_bus_reply_method_return(call, "is", 0, "");
  }
  return sd_bus_reply_method_return(call, "is", record->second.type, record->second.data.c_str());
}

int appendBars(sd_bus_message* reply, const std::vector<PcieBar>& bars) {
  int result = sd_bus_message_open_container(reply, SD_BUS_TYPE_ARRAY, "(utt)");
  for (const PcieBar& bar : bars) {
    if (result >= 0) {
      result = sd_bus_message_append(reply, "(utt)", bar.index, bar.address, bar.size);
    }
  }
  return result < 0 ? result : sd_bus_message_close_container(reply);
}

int getBars(sd_bus_message* call, void* context, sd_bus_error* error) {
  const Module* module = nullptr;
  int result = findModule(call, context, error, module);
  if (module == nullptr) {
    return result;
  }
  sd_bus_message* rawReply = nullptr;
  result = sd_bus_message_new_method_return(call, &rawReply);
  const MessageHandle reply(rawReply);
  if (result >= 0) {
    result = appendBars(rawReply, module->bars);
  }
  return result < 0 ? result : sd_bus_send(nullptr, rawReply, nullptr);
}

int replyWithText(sd_bus_message* call, void* context, sd_bus_error* error,
                  std::string Module::*text) {
  const Module* module = nullptr;
  const int result = findModule(call, context, error, module);
  return module == nullptr ? result
                           : sd_bus_reply_method_return(call, "s", (module->*text).c_str());
}

int getI2CBus(sd_bus_message* call, void* context, sd_bus_error* error) {
  return replyWithText(call, context, error, &Module::i2cBus);
}

int getSPIDevice(sd_bus_message* call, void* context, sd_bus_error* error) {
  return replyWithText(call, context, error, &Module::spiDevice);
}

/// The method, without the exception that it may throw: the bus library, which calls it, is of C.
template <int (*kMethod)(sd_bus_message*, void*, sd_bus_error*)>
int guarded(sd_bus_message* call, void* context, sd_bus_error* error) noexcept {
  try {
    return kMethod(call, context, error);
  } catch (const std::exception&) {
    return -ENOMEM;
  }
}

const sd_bus_vtable kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS(kGetModuleLocations, SD_BUS_NO_ARGS, SD_BUS_RESULT("au", locations),
                            guarded<getModuleLocations>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS(kGetSystemRecord, SD_BUS_ARGS("u", location, "s", name),
                            SD_BUS_RESULT("i", type, "s", data), guarded<getSystemRecord>,
                            SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS(kGetBars, SD_BUS_ARGS("u", location), SD_BUS_RESULT("a(utt)", bars),
                            guarded<getBars>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS(kGetI2CBus, SD_BUS_ARGS("u", location), SD_BUS_RESULT("s", bus),
                            guarded<getI2CBus>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_ARGS(kGetSPIDevice, SD_BUS_ARGS("u", location), SD_BUS_RESULT("s", device),
                            guarded<getSPIDevice>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

}  // namespace

InventoryService::InventoryService(sd_bus* bus, const Inventory& inventory) {
  sd_bus_slot* slot = nullptr;
  // sd-bus hands the context back as it got it; the methods read it as const again.
  checkBus(sd_bus_add_object_vtable(bus, &slot, kObjectPath, kInterface, kMethods,
                                    const_cast<Inventory*>(&inventory)),
           "cannot offer the inventory");
  object_.reset(slot);
  const int result = sd_bus_request_name(bus, kBusName, 0);
  if (result == -EEXIST) {
    throw std::runtime_error("another orb-inventoryd runs on this bus already");
  }
  checkBus(result, "cannot take the name org.orb_gnss.Inventory1");
}

}  // namespace orb::inventory
