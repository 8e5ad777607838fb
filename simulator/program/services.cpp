#include "program/services.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <toml++/toml.h>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <system_error>

#include "line/owned_descriptor.h"
#include "program/failure.h"
#include "program/installation.h"
#include "program/process.h"

namespace orb::sim {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kStartLimit{20'000};

constexpr char kBusConfiguration[] = R"(<busconfig>
  <listen>unix:path=%s</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

OwnedDescriptor openFile(const fs::path& file, int flags) {
  constexpr mode_t kMode = 0600;
  return {open(file.c_str(), flags | O_CLOEXEC, kMode), file.string()};
}

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// Starts a service that says what is wrong in the file `log`.
pid_t startService(ProcessStart start, const fs::path& log) {
  const OwnedDescriptor nothing = openFile("/dev/null", O_RDONLY);
  const OwnedDescriptor said = openFile(log, O_WRONLY | O_CREAT | O_APPEND);
  start.input = nothing.get();
  start.error = said.get();
  if (start.output < 0) start.output = said.get();
  start.onlyThese = true;
  return startProcess(start);
}

/// Waits for a service's first word, which it gives when it is ready. A service that ends instead
/// closes its side of `descriptor`, or is noticed as a child that has ended.
std::string waitForWord(pid_t service, int descriptor, const fs::path& log) {
  using Clock = std::chrono::steady_clock;
  constexpr int kInterval = 20;  // milliseconds between two looks at whether the service lives
  const Clock::time_point end = Clock::now() + kStartLimit;
  const auto fail = [&](const char* how) {
    throw Failure(log.stem().string() + how + "\n" + contentOf(log));
  };
  while (Clock::now() < end) {
    pollfd source{descriptor, POLLIN, 0};
    if (poll(&source, 1, kInterval) > 0) {
      char word[512];
      const ssize_t length = read(descriptor, word, sizeof word);
      if (length > 0) return {word, static_cast<std::size_t>(length)};
      fail(" did not start:");
    }
    if (waitpid(service, nullptr, WNOHANG) == service) fail(" ended at once:");
  }
  fail(" is not ready after 20 seconds:");
  return {};
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
  std::ofstream(file) << inventory << '\n';
}

/// The socket on which a service tells that it is ready, as systemd's do.
OwnedDescriptor readySocket(const fs::path& path) {
  OwnedDescriptor result(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
  if (bind(result.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), path);
  }
  return result;
}

}  // namespace

std::string startBus(const fs::path& folder) {
  const fs::path configuration = folder / "bus.conf";
  const fs::path log = folder / "dbus-daemon.log";
  char text[1024];
  std::snprintf(text, sizeof text, kBusConfiguration, (folder / "bus").c_str());
  std::ofstream(configuration) << text;

  Pipe pipe;
  ProcessStart start;
  start.file = busDaemon();
  start.arguments = {"dbus-daemon", "--config-file=" + configuration.string(), "--nofork",
                     "--print-address"};
  start.variables = environmentWith({});
  start.output = pipe.writing.get();
  const pid_t process = startService(std::move(start), log);
  pipe.writing.reset();
  std::string address = waitForWord(process, pipe.reading.get(), log);
  address.erase(address.find_last_not_of('\n') + 1);
  return address;
}

void startInventory(const fs::path& folder, const std::string& busAddress,
                    const std::optional<std::string>& hardwareId) {
  const fs::path file = folder / "inventory.toml";
  const fs::path ready = folder / "ready";
  const fs::path log = folder / "orb-inventoryd.log";
  writeInventory(file, hardwareId);
  const OwnedDescriptor socket = readySocket(ready);
  ProcessStart start;
  start.file = inventoryService();
  start.arguments = {"orb-inventoryd", "--config", file.string()};
  start.variables =
      environmentWith({"DBUS_SYSTEM_BUS_ADDRESS=" + busAddress, "NOTIFY_SOCKET=" + ready.string()});
  const pid_t process = startService(std::move(start), log);
  waitForWord(process, socket.get(), log);
}

}  // namespace orb::sim
