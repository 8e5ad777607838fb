#include "program/services.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <toml++/toml.h>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "base/owned_descriptor.h"
#include "program/failure.h"
#include "program/installation.h"
#include "program/private_folder.h"
#include "program/process.h"

namespace orb::sim {
namespace {

namespace fs = std::filesystem;

constexpr char kBusConfiguration[] = R"(<busconfig>
  <listen>%s</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The socket on which a service reports that it is ready.
OwnedDescriptor readySocket(const fs::path& path) {
  OwnedDescriptor result(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
  checked(bind(result.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), path);
  return result;
}

/// Waits until something comes on the socket. Throws Failure, with what is in the log, where the
/// service ends instead or takes too long.
void waitUntilReady(pid_t service, const OwnedDescriptor& socket, const fs::path& log) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::seconds kStartLimit{20};
  constexpr int kInterval = 20;  // milliseconds between two looks at whether the service lives
  const Clock::time_point end = Clock::now() + kStartLimit;
  const auto fail = [&](const char* how) {
    throw Failure(log.stem().string() + how + "\n" + contentOf(log));
  };
  pollfd source{socket.get(), POLLIN, 0};
  while (poll(&source, 1, kInterval) <= 0) {
    if (waitpid(service, nullptr, WNOHANG) == service) {
      fail(" ended at once:");
    }
    if (Clock::now() > end) {
      fail(" is not ready after 20 seconds:");
    }
  }
}

/// Starts a service, with its log in `folder`, and waits until it reports over NOTIFY_SOCKET that
/// it is ready, as systemd's services do (sd_notify(3)). Throws Failure where it does not come up.
void startService(const fs::path& folder, const fs::path& file,
                  const std::vector<std::string>& arguments, std::vector<std::string> variables) {
  const std::string name = file.filename();
  const fs::path ready = folder / (name + ".ready");
  const OwnedDescriptor socket = readySocket(ready);
  variables.push_back("NOTIFY_SOCKET=" + ready.string());
  ProcessStart start;
  start.file = file;
  start.arguments = {name};
  start.arguments.insert(start.arguments.end(), arguments.begin(), arguments.end());
  start.variables = environmentWith(variables);
  start.log = folder / (name + ".log");
  waitUntilReady(startProcess(start), socket, start.log);
}

void writeInventory(const fs::path& file, const std::optional<std::string>& hardwareId) {
  toml::table inventory;
  if (hardwareId) {
    inventory.insert("module", toml::array{toml::table{
                                   {"location", 1},
                                   {"i2c-bus", kI2cBus},
                                   {"spi-device", "spidev1.0"},
                                   {"records", toml::table{{"HardwareSetId", *hardwareId}}},
                               }});
  }
  std::ostringstream text;
  text << inventory << '\n';
  fillFile(file, text.str());
}

}  // namespace

std::string startBus(const fs::path& folder) {
  const std::string address = "unix:path=" + (folder / "bus").string();
  const fs::path configuration = folder / "bus.conf";
  char text[1024];
  std::snprintf(text, sizeof text, kBusConfiguration, address.c_str());
  fillFile(configuration, text);
  startService(folder, busDaemon(), {"--config-file=" + configuration.string(), "--nofork"}, {});
  return address;
}

void startInventory(const fs::path& folder, const std::string& busAddress,
                    const std::optional<std::string>& hardwareId) {
  const fs::path file = folder / "inventory.toml";
  writeInventory(file, hardwareId);
  startService(folder, inventoryService(), {"--config", file.string()},
               {"DBUS_SYSTEM_BUS_ADDRESS=" + busAddress});
}

}  // namespace orb::sim
