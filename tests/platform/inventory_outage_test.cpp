#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "base/owned_descriptor.h"
#include "dbus/inventory_interface.h"
#include "dbus/sd_bus_handles.h"
#include "orb-platform/orb-platform.h"
#include "support/environment_variable.h"
#include "support/output_of.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"

/// What the clients report when there is no inventory to be had: nothing, one line, and in time.
namespace orb::test {
namespace {

using std::chrono::steady_clock;
using ::testing::AllOf;
using ::testing::Ge;
using ::testing::IsEmpty;
using ::testing::Lt;

constexpr char kLineStart[] = "orb-platform: ";
constexpr std::chrono::milliseconds kAnswerTimeout{2000};
constexpr std::chrono::milliseconds kTimerGrain{50};
// Nothing but a stuck call takes so long, however busy the machine is.
constexpr std::chrono::seconds kStuck{20};

std::string lineAbout(const std::string& method, const std::string& reason) {
  return kLineStart + method + " of the inventory service org.orb_gnss.Inventory1: " + reason +
         "\n";
}

void expectNoModules(const std::string& reason) {
  EXPECT_EQ(standardErrorOf(
                [] { EXPECT_THAT(GDBusSystemInventoryClient().GetModuleLocations(), IsEmpty()); }),
            lineAbout("GetModuleLocations", reason));
}

/// Every question of a module-resources client gets an empty answer and its line.
void expectNoResources(const std::string& reason) {
  GDBusModuleResourcesClient client;
  client.SetupDeviceAddress(1);
  EXPECT_EQ(standardErrorOf([&] {
              const Record record = client.GetSystemRecord("HardwareSetId");
              EXPECT_EQ(record.GetRecordType(), 0);
              EXPECT_EQ(record.GetRecordData(), "");
            }),
            lineAbout("GetSystemRecord", reason));
  EXPECT_EQ(standardErrorOf([&] { EXPECT_THAT(client.GetBars(), IsEmpty()); }),
            lineAbout("GetBars", reason));
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(client.GetI2CBus(), ""); }),
            lineAbout("GetI2CBus", reason));
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(client.GetSPIDev(), ""); }),
            lineAbout("GetSPIDevice", reason));
}

std::chrono::milliseconds durationOf(const std::function<void()>& action) {
  const auto start = steady_clock::now();
  action();
  return std::chrono::ceil<std::chrono::milliseconds>(steady_clock::now() - start);
}

auto isAboutTheTimeout() { return AllOf(Ge(kAnswerTimeout - kTimerGrain), Lt(kStuck)); }

/// A connection of this process that owns the inventory's name.
BusHandle ownName() {
  sd_bus* bus = nullptr;
  EXPECT_GE(sd_bus_open_system(&bus), 0);
  EXPECT_GE(sd_bus_request_name(bus, inventory::kBusName, 0), 0);
  return BusHandle(bus);
}

constexpr char kNoBus[] = "cannot connect to the system bus: No such file or directory";
constexpr char kNoService[] =
    "org.freedesktop.DBus.Error.ServiceUnknown: The name org.orb_gnss.Inventory1 was not provided "
    "by any .service files";
constexpr char kSilence[] = "no answer within 2 seconds";

class InventoryOutage : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
};

/// A bus where nobody has taken the inventory's name yet.
class InventoryBus : public InventoryOutage {
 protected:
  PrivateBus bus_{folder_.path()};
};

TEST_F(InventoryOutage, WithoutABusThereAreNoModules) {
  const EnvironmentVariable systemBus("DBUS_SYSTEM_BUS_ADDRESS",
                                      "unix:path=" + (folder_ / "no.socket").string());
  expectNoModules(kNoBus);
  expectNoResources(kNoBus);
}

TEST_F(InventoryBus, WithoutTheServiceThereAreNoModules) {
  expectNoModules(kNoService);
  expectNoResources(kNoService);
}

TEST_F(InventoryBus, ASilentServiceIsGivenUpAfterTwoSecondsWhateverSignalsCome) {
  const BusHandle silent = ownName();
  struct sigaction action {};
  action.sa_handler = [](int) {};  // Without SA_RESTART: system calls fail with EINTR.
  struct sigaction earlier {};
  ASSERT_EQ(sigaction(SIGALRM, &action, &earlier), 0);
  const itimerval often{{0, 50'000}, {0, 50'000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  EXPECT_THAT(durationOf([] { expectNoModules(kSilence); }), isAboutTheTimeout());
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &earlier, nullptr);
}

TEST_F(InventoryBus, ASilentServiceIsGivenUpByEveryQuestion) {
  const BusHandle silent = ownName();
  expectNoResources(kSilence);
}

TEST_F(InventoryOutage, ASilentBusIsGivenUpAfterTwoSeconds) {
  const std::string path = (folder_ / "silent.socket").string();
  const OwnedDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path.copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
  ASSERT_EQ(listen(listener.get(), 8), 0);
  const EnvironmentVariable systemBus("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + path);
  EXPECT_THAT(durationOf([] { expectNoModules(kSilence); }), isAboutTheTimeout());
}

/// Answers one call in a thread, as `reply` says, until the object goes.
class OneAnswer {
 public:
  explicit OneAnswer(std::function<int(sd_bus_message*)> reply)
      : reply_(std::move(reply)), bus_(ownName()) {
    sd_bus_add_object(bus_.get(), nullptr, inventory::kObjectPath, answer, this);
    thread_ = std::thread([this] {
      while (!isAnswered_) {
        if (sd_bus_process(bus_.get(), nullptr) == 0) {
          sd_bus_wait(bus_.get(), UINT64_MAX);
        }
      }
      sd_bus_flush(bus_.get());
    });
  }
  ~OneAnswer() { thread_.join(); }

 private:
  static int answer(sd_bus_message* call, void* object, sd_bus_error* /*error*/) {
    auto* self = static_cast<OneAnswer*>(object);
    self->isAnswered_ = true;
    const int result = self->reply_(call);
    return result < 0 ? result : 1;
  }

  std::function<int(sd_bus_message*)> reply_;
  BusHandle bus_;
  bool isAnswered_ = false;  // of the thread alone
  std::thread thread_;
};

TEST_F(InventoryBus, AnAnswerOfOtherTypesCountsAsNone) {
  const OneAnswer service(
      [](sd_bus_message* call) { return sd_bus_reply_method_return(call, "s", "three"); });
  expectNoModules("the answer has the types \"s\", not \"au\"");
}

TEST_F(InventoryBus, AnErrorIsReportedInOneLineOfPlainCharactersAndBoundedLength) {
  for (const auto& [text, reported] :
       {std::pair<std::string, std::string>("out\nof\norder", R"(out\x0aof\x0aorder)"),
        {"\x1b[2J \x7f \xc2\x9b ~", R"(\x1b[2J \x7f \xc2\x9b ~)"},
        {std::string(200, 'x'), std::string(200, 'x')},
        {std::string(100'000, 'x'), std::string(200, 'x') + "..."}}) {
    const OneAnswer service([&text = text](sd_bus_message* call) {
      return sd_bus_reply_method_errorf(call, "org.example.Error.Broken", "%s", text.c_str());
    });
    expectNoModules("org.example.Error.Broken: " + reported);
  }
}

TEST_F(InventoryBus, AnAnswerMayBeHuge) {
  const std::vector<std::uint32_t> many(4'000'000, 7);
  const OneAnswer service([&many](sd_bus_message* call) {
    sd_bus_message* raw = nullptr;
    sd_bus_message_new_method_return(call, &raw);
    const MessageHandle answer(raw);
    sd_bus_message_append_array(answer.get(), 'u', many.data(), many.size() * sizeof many[0]);
    return sd_bus_send(nullptr, answer.get(), nullptr);
  });
  EXPECT_THAT(durationOf([&] {
                EXPECT_EQ(GDBusSystemInventoryClient().GetModuleLocations().size(), many.size());
              }),
              Lt(kStuck));
}

TEST_F(InventoryBus, AServiceThatGoesInMidCallHasNoModules) {
  const OneAnswer service([](sd_bus_message* call) {
    sd_bus_close(sd_bus_message_get_bus(call));
    return 0;
  });
  EXPECT_THAT(durationOf([] {
                expectNoModules(
                    "org.freedesktop.DBus.Error.NoReply: Message recipient disconnected from "
                    "message bus without replying");
              }),
              Lt(kStuck));
}

TEST_F(InventoryBus, AClientFindsTheServiceThatStartedLater) {
  GDBusSystemInventoryClient client;
  EXPECT_NE(standardErrorOf([&] { client.GetModuleLocations(); }), "");
  const InventoryService inventory(bus_, "[[module]]\nlocation = 5\n");
  EXPECT_THAT(client.GetModuleLocations(), ::testing::ElementsAre(5));
}

TEST_F(InventoryOutage, AClientFindsTheBusThatWasRestarted) {
  GDBusSystemInventoryClient client;
  constexpr char kModule[] = "[[module]]\nlocation = 5\n";
  {
    const PrivateBus bus(folder_.path());
    const InventoryService inventory(bus, kModule);
    EXPECT_THAT(client.GetModuleLocations(), ::testing::ElementsAre(5));
  }
  const TemporaryFolder another;
  const PrivateBus bus(another.path());
  const InventoryService inventory(bus, kModule);
  EXPECT_EQ(
      standardErrorOf([&] { EXPECT_THAT(client.GetModuleLocations(), ::testing::ElementsAre(5)); }),
      "");
}

TEST_F(InventoryBus, ANameThatIsNoTextNamesNoRecord) {
  const InventoryService inventory(bus_, "[[module]]\nlocation = 1\n");
  GDBusModuleResourcesClient client;
  client.SetupDeviceAddress(1);
  EXPECT_EQ(
      standardErrorOf([&] { EXPECT_EQ(client.GetSystemRecord("\xFF\xFE").GetRecordType(), 0); }),
      lineAbout("GetSystemRecord", "cannot make the request: Invalid argument"));
}

}  // namespace
}  // namespace orb::test
