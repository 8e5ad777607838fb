#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <fstream>

#include "base/owned_descriptor.h"
#include "dbus/inventory_interface.h"
#include "dbus/sd_bus_handles.h"
#include "support/environment_variable.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"

/// The program orb-inventoryd: its command line, its start and its end.
namespace orb::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kOneModule[] = "[[module]]\nlocation = 1\n";
constexpr std::chrono::seconds kPatience{30};

class Inventoryd : public ::testing::Test {
 protected:
  /// Runs the program to its end.
  int run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ORB_INVENTORYD);
    std::filesystem::remove(outputFile_);
    ChildProcess process(arguments, outputFile_);
    const auto status = process.wait(kPatience);
    EXPECT_TRUE(status) << "still running";
    return status.value_or(-1);
  }

  std::string output() const { return contentOf(outputFile_); }

  std::string write(const std::string& text) const {
    const std::string path = folder_ / "inventory.toml";
    fill(path, text);
    return path;
  }

  TemporaryFolder folder_;
  std::filesystem::path outputFile_ = folder_ / "output";
};

TEST_F(Inventoryd, TellsItsVersion) {
  EXPECT_EQ(run({"--version"}), 0);
  EXPECT_EQ(output(), "orb-inventoryd " ORB_VERSION "\n");
}

TEST_F(Inventoryd, ExplainsItsOptions) {
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_THAT(output(),
              AllOf(HasSubstr("--config FILE"), HasSubstr("--check FILE"),
                    HasSubstr("/etc/orb-gnss/inventory.toml"), HasSubstr("not with: --config")));
}

TEST_F(Inventoryd, RefusesWhatItDoesNotKnow) {
  EXPECT_EQ(run({"--bogus"}), 2);
  EXPECT_THAT(output(), StartsWith("orb-inventoryd: "));
  EXPECT_EQ(run({"inventory.toml"}), 2);
  EXPECT_EQ(run({"--check"}), 2);
  EXPECT_EQ(run({"--check", "a", "--config", "b"}), 2);
}

TEST_F(Inventoryd, ChecksAFile) {
  const std::string file = write(kOneModule);
  EXPECT_EQ(run({"--check", file}), 0);
  EXPECT_EQ(output(), file + ": correct, 1 module\n");
}

TEST_F(Inventoryd, WarnsOfAnEmptyFile) {
  const std::string file = write("");
  EXPECT_EQ(run({"--check", file}), 0);
  EXPECT_EQ(output(), file + ": correct, 0 modules\n" + file +
                          ": warning: without a module, no receiver is looked for\n");
}

TEST_F(Inventoryd, ChecksItsExample) {
  EXPECT_EQ(run({"--check", ORB_INVENTORY_EXAMPLE}), 0);
  EXPECT_EQ(output(), ORB_INVENTORY_EXAMPLE ": correct, 1 module\n");
}

TEST_F(Inventoryd, ReportsEveryProblemOfAFile) {
  const std::string file = write("[[module]]\nlocation = -1\ni2c-bus = 3\n");
  const std::string problems =
      file + ":2: \"location\" is -1; it has to be from 0 to 4294967295\n" + file +
      ":3: \"i2c-bus\" is an integer; it has to be a text in quotes\n";
  EXPECT_EQ(run({"--check", file}), 1);
  EXPECT_EQ(output(), problems);
  const PrivateBus bus(folder_.path());
  EXPECT_EQ(run({"--config", file}), 1);
  EXPECT_EQ(output(), problems);
}

TEST_F(Inventoryd, EndsWithoutABus) {
  const EnvironmentVariable systemBus("DBUS_SYSTEM_BUS_ADDRESS",
                                      "unix:path=" + (folder_ / "none").string());
  EXPECT_EQ(run({"--config", write(kOneModule)}), 1);
  EXPECT_EQ(output(),
            "orb-inventoryd: cannot connect to the system bus: No such file or directory\n");
}

TEST_F(Inventoryd, LeavesTheNameToTheFirst) {
  const PrivateBus bus(folder_.path());
  const InventoryService first(bus, kOneModule);
  EXPECT_EQ(run({"--config", write(kOneModule)}), 1);
  EXPECT_EQ(output(), "orb-inventoryd: another orb-inventoryd runs on this bus already\n");
}

TEST_F(Inventoryd, EndsWellWhenAsked) {
  const PrivateBus bus(folder_.path());
  for (const int signal : {SIGTERM, SIGINT}) {
    InventoryService service(bus, kOneModule);
    kill(service.process().pid(), signal);
    EXPECT_EQ(service.process().wait(kPatience), 0);
    EXPECT_EQ(service.process().output(), "");
    EXPECT_FALSE(bus.hasOwner(inventory::kBusName));
  }
}

TEST_F(Inventoryd, EndsWellWhenTheBusGoes) {
  PrivateBus bus(folder_.path());
  InventoryService service(bus, kOneModule);
  bus.stop();
  EXPECT_EQ(service.process().wait(kPatience), 0);
  EXPECT_EQ(service.process().output(), "orb-inventoryd: the system bus has gone\n");
}

TEST_F(Inventoryd, TellsTheServiceManagerWhenItIsReady) {
  const std::string path = (folder_ / "notify.socket").string();
  const OwnedDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path.copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(bind(socket.get(), reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
  const auto nextNote = [&] {
    char text[64];
    const ssize_t length = recv(socket.get(), text, sizeof text, 0);
    return std::string(text, length < 0 ? 0 : static_cast<std::size_t>(length));
  };
  const PrivateBus bus(folder_.path());
  const EnvironmentVariable notify("NOTIFY_SOCKET", path);
  InventoryService service(bus, kOneModule);
  EXPECT_EQ(nextNote(), "READY=1");
  EXPECT_EQ(service.stop(), 0);
  EXPECT_EQ(nextNote(), "STOPPING=1");
}

// The shipped activation file, with the built program and this test's inventory in its place.
TEST_F(Inventoryd, IsStartedByTheFirstCall) {
  const std::string program = "@BIN_DIR@/orb-inventoryd";
  std::string activation = contentOf(ORB_ACTIVATION_FILE);
  const std::size_t place = activation.find(program);
  ASSERT_NE(place, std::string::npos);
  activation.replace(place, program.size(), ORB_INVENTORYD " --config " + write(kOneModule));
  fill(folder_ / "org.orb_gnss.Inventory1.service", activation);
  const PrivateBus bus(
      folder_.path(),
      PrivateBus::kOpenPolicy + ("<servicedir>" + folder_.path().string() + "</servicedir>"));
  sd_bus* connection = nullptr;
  ASSERT_GE(sd_bus_open_system(&connection), 0);
  const BusHandle client(connection);
  sd_bus_message* answer = nullptr;
  EXPECT_GE(sd_bus_call_method(connection, inventory::kBusName, inventory::kObjectPath,
                               inventory::kInterface, inventory::kGetModuleLocations, nullptr,
                               &answer, ""),
            0);
  const MessageHandle owned(answer);
  EXPECT_TRUE(bus.hasOwner(inventory::kBusName));
}

TEST_F(Inventoryd, DoesNotOutliveItsTest) {
  const PrivateBus bus(folder_.path());
  const pid_t test = fork();
  ASSERT_GE(test, 0);
  if (test == 0) {
    InventoryService service(bus, kOneModule);
    std::ofstream(folder_ / "pid") << service.process().pid() << std::flush;
    raise(SIGKILL);
  }
  ASSERT_EQ(waitpid(test, nullptr, 0), test);
  const pid_t service = std::stoi(contentOf(folder_ / "pid"));
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (bus.hasOwner(inventory::kBusName) && std::chrono::steady_clock::now() < deadline) {
    usleep(1000);
  }
  EXPECT_FALSE(bus.hasOwner(inventory::kBusName)) << "process " << service << " lives on";
}

}  // namespace
}  // namespace orb::test
