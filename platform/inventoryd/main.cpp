#include <systemd/sd-daemon.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <utility>

#include "base/man_page.h"
#include "dbus/sd_bus_handles.h"
#include "inventoryd/inventory_file.h"
#include "inventoryd/inventory_service.h"

namespace {

using orb::checkBus;
using orb::inventory::Inventory;
using orb::inventory::InventoryFile;
using orb::inventory::InventoryService;

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr char kProgram[] = "orb-inventoryd";
constexpr char kDefaultConfig[] = "/etc/orb-gnss/inventory.toml";

int onBusGone(sd_bus_message* /*signal*/, void* event, sd_bus_error* /*error*/) {
  std::cerr << kProgram << ": the system bus has gone\n";
  return sd_event_exit(static_cast<sd_event*>(event), EXIT_SUCCESS);
}

/// What is offered, and the file that it comes from.
struct Offer {
  std::string path;
  Inventory inventory;
};

void printProblems(const InventoryFile& file) {
  for (const std::string& problem : file.problems) {
    std::cerr << problem << '\n';
  }
}

/// For the event loop, which is of C, and asks a handler that has failed once no more.
int onReload(sd_event_source* /*source*/, const signalfd_siginfo* /*signal*/, void* data) noexcept {
  try {
    auto& offer = *static_cast<Offer*>(data);
    InventoryFile file = orb::inventory::readInventoryFile(offer.path);
    printProblems(file);
    if (file.problems.empty()) {
      offer.inventory = std::move(file.inventory);
      return 0;
    }
  } catch (const std::exception& error) {
    std::cerr << kProgram << ": " << error.what() << '\n';
  }
  std::cerr << kProgram << ": the inventory stays as it was\n";
  return 0;
}

orb::EventHandle makeEventLoop(Offer& offer) {
  sd_event* event = nullptr;
  checkBus(sd_event_new(&event), "cannot make an event loop");
  orb::EventHandle loop(event);
  // Without a handler of ours, both signals end the loop with success.
  checkBus(
      sd_event_add_signal(event, nullptr, SIGTERM | SD_EVENT_SIGNAL_PROCMASK, nullptr, nullptr),
      "cannot handle SIGTERM");
  checkBus(sd_event_add_signal(event, nullptr, SIGINT | SD_EVENT_SIGNAL_PROCMASK, nullptr, nullptr),
           "cannot handle SIGINT");
  checkBus(sd_event_add_signal(event, nullptr, SIGHUP | SD_EVENT_SIGNAL_PROCMASK, onReload, &offer),
           "cannot handle SIGHUP");
  return loop;
}

orb::BusHandle connect(sd_event* event) {
  sd_bus* raw = nullptr;
  checkBus(sd_bus_open_system(&raw), "cannot connect to the system bus");
  orb::BusHandle bus(raw);
  checkBus(sd_bus_attach_event(raw, event, SD_EVENT_PRIORITY_NORMAL),
           "cannot watch the system bus");
  checkBus(
      sd_bus_match_signal(raw, nullptr, "org.freedesktop.DBus.Local", "/org/freedesktop/DBus/Local",
                          "org.freedesktop.DBus.Local", "Disconnected", onBusGone, event),
      "cannot watch the system bus");
  return bus;
}

int serve(Offer offer) {
  std::signal(SIGPIPE, SIG_IGN);  // whoever read standard error may have gone
  const orb::EventHandle event = makeEventLoop(offer);
  const orb::BusHandle bus = connect(event.get());
  const InventoryService service(bus.get(), offer.inventory);
  sd_notify(0, "READY=1");
  const int result = sd_event_loop(event.get());
  sd_notify(0, "STOPPING=1");
  checkBus(result, "the event loop failed");
  return result;
}

int run(const std::string& path, bool onlyCheck) {
  InventoryFile file = orb::inventory::readInventoryFile(path);
  printProblems(file);
  if (!file.problems.empty()) {
    return kExitFailure;
  }
  if (onlyCheck) {
    const std::size_t count = file.inventory.size();
    std::cout << path << ": correct, " << count << (count == 1 ? " module" : " modules") << '\n';
    if (count == 0) {
      std::cerr << path << ": warning: without a module, no receiver is looked for\n";
    }
    return EXIT_SUCCESS;
  }
  return serve({path, std::move(file.inventory)});
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app(
      "Offers the inventory of this device on the system bus, from a file.\n\n"
      "On SIGHUP it reads the file anew; where that is wrong, it says so and goes on with what\n"
      "it has.",
      kProgram);
  std::string configPath = kDefaultConfig;
  std::string checkedPath;
  auto* config = app.add_option("--config", configPath, "Inventory to offer")
                     ->type_name("FILE")
                     ->capture_default_str();
  auto* checked = app.add_option("--check", checkedPath, "Only check an inventory, offer nothing")
                      ->type_name("FILE")
                      ->excludes(config);
  app.get_formatter()->label("Excludes", "not with");
  app.failure_message([](const CLI::App* /*app*/, const CLI::Error& error) {
    return std::string(kProgram) + ": " + error.what() + "\nRun " + kProgram +
           " --help for help.\n";
  });
  app.set_version_flag("--version", std::string(kProgram) + " " ORB_VERSION);
  if (orb::printManPage(app, 8, argc, argv)) {
    return EXIT_SUCCESS;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : kExitUsage;
  }
  try {
    return *checked ? run(checkedPath, true) : run(configPath, false);
  } catch (const std::exception& error) {
    std::cerr << kProgram << ": " << error.what() << '\n';
    return kExitFailure;
  }
}
