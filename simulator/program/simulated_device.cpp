#include "program/simulated_device.h"

#include <sys/stat.h>

#include <cstdlib>
#include <system_error>
#include <utility>

#include "base/checked.h"
#include "i2c/register_text.h"
#include "interpose/program_file.h"
#include "program/failure.h"
#include "program/fed_receiver.h"
#include "program/installation.h"
#include "program/private_folder.h"
#include "program/pulse_file.h"
#include "program/serial_port.h"
#include "program/services.h"

namespace orb::sim {
namespace {

namespace fs = std::filesystem;

constexpr char kLineName[] = "tty_gps";
constexpr char kRegisters[] = "i2c-registers.txt";

/// The files that the library writes; their names are kept in the private folder.
constexpr const char* kWrittenFiles[] = {
    "/var/log/orbset.log",
    "/var/log/orbset-errors.log",
    "/tmp/orbitekChip-info.txt",
};

/// The lock of the line, under both names of its folder.
constexpr const char* kLockFiles[] = {"/run/lock/LCK..tty_gps", "/var/lock/LCK..tty_gps"};

/// What COMMAND finds at the far end of its line; none where there is no line or it is another's.
std::unique_ptr<Device> makeReceiver(const RunOptions& options, const fs::path& files,
                                     std::function<void()> endCommand, PulseFile* pulses) {
  if (!options.tty.empty() || options.scenario.presence == Scenario::Presence::Absent) {
    return nullptr;
  }
  if (options.replay) {
    return options.replay->receiver(std::move(endCommand));
  }
  auto receiver = std::make_unique<FedReceiver>(options.scenario, files / kRegisters);
  if (pulses != nullptr) {
    receiver->listenToPulses([pulses](const PulseEvent& event) { pulses->append(event); });
  }
  return receiver;
}

fs::path makeFilesFolder(const RunOptions& options, const fs::path& folder) {
  const fs::path files = options.keep.empty() ? folder / "files" : fs::absolute(options.keep);
  std::error_code error;
  fs::create_directories(files, error);
  if (error) {
    throw Failure("cannot make the folder " + files.string() + ": " + error.message());
  }
  return files;
}

fs::path linkLibrary(const fs::path& folder) {
  const fs::path link = folder / "liborb-sim-preload.so";
  fs::create_symlink(preloadLibrary(), link);
  return link;
}

/// Makes the I2C bus, and beside it a link to the registers of its port expander, which are as
/// after power-up; the receiver looks at the registers, and so can people. The bus is a socket's
/// name, which nothing can open: the preloaded library alone makes a device of it.
fs::path makeI2cBus(const fs::path& files, const fs::path& folder) {
  const fs::path registers = files / kRegisters;
  fillFile(registers, std::string(RegisterText(PortExpander()).view()));
  const fs::path bus = folder / kI2cBus;
  fs::create_symlink(registers, bus.string() + ".registers");
  checked(mknod(bus.c_str(), S_IFSOCK | S_IRUSR | S_IWUSR, 0), "cannot make " + bus.string());
  return bus;
}

std::string escaped(const std::string& path) {
  std::string result;
  for (const char c : path) {
    if (c == ':' || c == '=' || c == '\\') {
      result += '\\';
    }
    result += c;
  }
  return result;
}

}  // namespace

SimulatedDevice::SimulatedDevice(const RunOptions& options, const fs::path& folder,
                                 std::function<void()> endCommand)
    : files_(makeFilesFolder(options, folder)),
      i2cBus_(makeI2cBus(files_, folder)),
      library_(linkLibrary(folder)),
      tty_(options.tty.empty() ? folder / kLineName : fs::absolute(options.tty)),
      use_(options.tty.empty() ? OwnedDescriptor() : markUse(tty_)),
      pulses_(options.pulses.empty() ? nullptr : std::make_unique<PulseFile>(options.pulses)),
      receiver_(makeReceiver(options, files_, std::move(endCommand), pulses_.get())),
      busAddress_(startBus(folder)) {
  startInventory(folder, busAddress_, options.scenario.hardwareId);
  if (receiver_) {
    line_ = std::make_unique<PtyLine>(*receiver_, tty_);
  }
}

SimulatedDevice::~SimulatedDevice() = default;

std::string SimulatedDevice::pathMap() const {
  // What is not simulated is not there: a mapped path that leads nowhere.
  std::string map = "/dev/tty_gps=" + escaped(tty_);
  map += std::string(":/dev/") + kI2cBus + "=" + escaped(i2cBus_);
  for (const fs::path file : kLockFiles) {
    map += ":" + file.string() + "=" + escaped(i2cBus_.parent_path() / file.filename());
  }
  for (const fs::path file : kWrittenFiles) {
    map += ":" + file.string() + "=" + escaped(files_ / file.filename());
  }
  return map;
}

std::vector<std::string> SimulatedDevice::variablesFor(const fs::path& file) const {
  std::string libraries = inspectProgram(file.c_str()).runtimes;
  libraries += (libraries.empty() ? "" : ":") + library_.string();
  const char* const others = std::getenv("LD_PRELOAD");
  if (others != nullptr && *others != '\0') {
    libraries += std::string(":") + others;
  }
  return {"LD_PRELOAD=" + libraries, "ORB_SIM_PATHS=" + pathMap(),
          "ORB_SIM_I2C=" + i2cBus_.string(), "DBUS_SYSTEM_BUS_ADDRESS=" + busAddress_};
}

}  // namespace orb::sim
