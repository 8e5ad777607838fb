#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "support/child_process.h"
#include "support/environment_variable.h"

namespace orb::test {

/// A D-Bus daemon of the test's own, which takes the place of the system bus for this process and
/// the programs that it starts (DBUS_SYSTEM_BUS_ADDRESS, set back at the end).
///
///     TemporaryFolder folder;
///     PrivateBus bus(folder.path());
///     InventoryService inventory(bus, "[[module]]\nlocation = 1\n");
///
/// It needs no privileges, and neither it nor the service outlives the test, even one that crashes.
class PrivateBus {
 public:
  /// Everybody may own any name and call everything.
  static constexpr char kOpenPolicy[] =
      "<policy context=\"default\">"
      "<allow own=\"*\"/><allow send_destination=\"*\"/><allow receive_sender=\"*\"/>"
      "</policy>";

  /// Starts the daemon and returns when it takes connections. Its socket, configuration and output
  /// ("bus.log") are put into `folder`. `policy` are elements of the daemon's configuration; see
  /// dbus-daemon(1). Throws std::runtime_error with the daemon's output when it does not start.
  explicit PrivateBus(const std::filesystem::path& folder, const std::string& policy = kOpenPolicy);

  const std::string& address() const { return address_; }
  const std::filesystem::path& folder() const { return folder_; }

  /// What the daemon has written.
  std::string output() const { return daemon_->output(); }

  /// True when some connection owns the name.
  bool hasOwner(const std::string& name) const;

  /// Stops the daemon, as if the bus went away. The address stays set.
  void stop() { daemon_->stop(); }

 private:
  std::filesystem::path folder_;
  std::string address_;
  EnvironmentVariable systemBus_;  // before the daemon, for the services that it starts itself
  std::optional<ChildProcess> daemon_;
};

/// The inventory service on a private bus.
class InventoryService {
 public:
  /// Starts orb-inventoryd with an inventory in TOML and returns when it answers on the bus. Throws
  /// std::runtime_error with the service's output when it ends instead.
  InventoryService(const PrivateBus& bus, const std::string& toml);

  /// Asks it to end; returns its exit status. The destructor does so too.
  int stop() { return process_->stop(); }

  ChildProcess& process() { return *process_; }

 private:
  std::optional<ChildProcess> process_;
};

}  // namespace orb::test
