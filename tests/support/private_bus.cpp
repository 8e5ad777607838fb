#include "support/private_bus.h"

#include <sys/un.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>

namespace orb::test {
namespace {

constexpr char kInventoryName[] = "org.orb_gnss.Inventory1";
constexpr std::chrono::seconds kPatience{30};
constexpr std::chrono::milliseconds kLookInterval{5};

std::string socketAddress(const std::filesystem::path& folder) {
  const std::string path = std::filesystem::absolute(folder / "bus.socket").string();
  if (path.size() >= sizeof(sockaddr_un::sun_path)) {
    throw std::runtime_error("too long for the path of a socket: " + path);
  }
  return "unix:path=" + path;
}

/// Waits until a program that was just started is ready for work.
void awaitReady(ChildProcess& process, const std::string& name,
                const std::function<bool()>& isReady) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!isReady()) {
    if (!process.isRunning()) {
      throw std::runtime_error(name + " ended at its start:\n" + process.output());
    }
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error(name + " does not get ready:\n" + process.output());
    }
    std::this_thread::sleep_for(kLookInterval);
  }
}

}  // namespace

PrivateBus::PrivateBus(const std::filesystem::path& folder, const std::string& policy)
    : folder_(folder),
      address_(socketAddress(folder)),
      systemBus_("DBUS_SYSTEM_BUS_ADDRESS", address_) {
  const std::filesystem::path configuration = folder / "bus.conf";
  fill(configuration, "<busconfig><listen>" + address_ + "</listen><auth>EXTERNAL</auth>" + policy +
                          "</busconfig>\n");
  daemon_.emplace(
      std::vector<std::string>{ORB_DBUS_DAEMON, "--config-file=" + configuration.string(),
                               "--nofork", "--nopidfile", "--nosyslog", "--print-address"},
      folder / "bus.log");
  // The daemon prints its address once it listens.
  awaitReady(*daemon_, "dbus-daemon",
             [&] { return daemon_->output().find("unix:path=") != std::string::npos; });
}

bool PrivateBus::hasOwner(const std::string& name) const {
  sd_bus* bus = nullptr;
  sd_bus_message* reply = nullptr;
  int isOwned = 0;
  // Failures leave the answer 0.
  if (sd_bus_open_system(&bus) >= 0 &&
      sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                         "org.freedesktop.DBus", "NameHasOwner", nullptr, &reply, "s",
                         name.c_str()) >= 0) {
    sd_bus_message_read(reply, "b", &isOwned);
  }
  sd_bus_message_unref(reply);
  sd_bus_close_unref(bus);
  return isOwned != 0;
}

InventoryService::InventoryService(const PrivateBus& bus, const std::string& toml) {
  const std::filesystem::path file = bus.folder() / "inventory.toml";
  fill(file, toml);
  process_.emplace(std::vector<std::string>{ORB_INVENTORYD, "--config", file.string()},
                   bus.folder() / "inventory.log");
  awaitReady(*process_, "orb-inventoryd", [&] { return bus.hasOwner(kInventoryName); });
}

}  // namespace orb::test
