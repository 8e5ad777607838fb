// Each system call and each allocation of an operation fails once, in every way that it can.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "orb-gnss/controller.h"
#include "orb-gnss/hardware_discovery.h"
#include "orb-sim/path_map.h"
#include "orb-sim/receiver.h"
#include "reliability/system_faults.h"
#include "support/allocations.h"
#include "support/captured_output.h"
#include "support/device_files.h"
#include "support/private_bus.h"
#include "support/simulated_line.h"
#include "support/simulated_sleep.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

constexpr const char* kModule = R"(
[[module]]
location = 1
i2c-bus = "i2c-3"
[module.records]
HardwareSetId = "47205318-001"
)";

// Rejected or read back otherwise, no reply, not sent.
constexpr unsigned int kResultBits = 1 | 4 | 8;

// With sanitizers, each third fault, since they take most of the time.
constexpr int kStride = ORB_IS_SANITIZED ? 3 : 1;
constexpr int kLeastStride = ORB_IS_SANITIZED ? 4 : 1;  // not all kinds fall on each call

// Longer than any operation takes that comes to an end.
constexpr std::chrono::minutes kForEver{10};

/// The device around one operation: its files, its line, and a facade where the operation needs
/// one.
class Device {
 public:
  Device() {
    // What the receiver and the line do is not the client's.
    const auto pass = SimulatedSleep::current()->onSleep;
    SimulatedSleep::current()->onSleep = [pass](std::chrono::nanoseconds duration) {
      const Undisturbed undisturbed;
      const UndisturbedAllocations undisturbedAllocations;
      pass(duration);
    };
    line_.setLimit(kForEver);
    std::ofstream(files_.folder / "i2c-3").flush();
    sim::mapPath("/dev/i2c-3", (files_.folder / "i2c-3").string());
  }

  std::optional<orbController> facade;
  const DeviceFiles& files() const { return files_; }
  void allowTime() { line_.setLimit(kForEver); }

 private:
  DeviceFiles files_;
  sim::Receiver receiver_;
  SimulatedLine line_{receiver_, files_.tty};
};

struct Act {
  std::string name;
  bool needsFacade;
  /// So many faults can fall on it; those of the bus depend on when its answers come.
  int systemFaultsAtLeast;
  int failedAllocationsAtLeast;
  std::function<unsigned int(Device&)> carryOut;
  /// Of its system calls, each so many-th fails: a sequence of exchanges repeats one.
  std::size_t stride = 1;
};

void PrintTo(const Act& act, std::ostream* out) { *out << act.name; }

const std::vector<Act>& acts() {
  static const std::vector<Act> kActs{
      {"construct", false, 120, 34,
       [](Device& device) {
         device.facade.emplace();
         return 0U;
       }},
      {"query", true, 45, 20,
       [](Device& device) {
         signed char minimum = 0;
         return device.facade->getMinCNo(minimum);
       }},
      {"setting", true, 145, 68, [](Device& device) { return device.facade->setMinCNo(12); }},
      {"defaults", true, 340, 420,
       [](Device& device) { return device.facade->resetFactoryDefaults(); }, 3},
      {"identity file", true, 65, 32,
       [](Device& device) {
         device.facade->saveorbitekChipInfo();
         return 0U;
       }},
      {"antenna power", true, 110, 8,
       [](Device& device) {
         return static_cast<unsigned int>(device.facade->setAntennaPower("ON"));
       }},
      {"inventory question", false, 80, 6,
       [](Device&) {
         getModuleHardwareID(1);
         return 0U;
       }},
  };
  return kActs;
}

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

std::string contentOf(const std::filesystem::path& file) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  return content.str();
}

class EveryFault : public testing::TestWithParam<Act> {
 protected:
  static void SetUpTestSuite() {
    folder_.emplace();
    bus_.emplace(folder_->path());
    inventory_.emplace(*bus_, kModule);
    const CapturedOutput standardOutput(1);
    Device().facade.emplace();  // what libraries allocate once stays
    std::fflush(stdout);
  }
  static void TearDownTestSuite() {
    inventory_.reset();
    bus_.reset();
    folder_.reset();
  }

  /// Carries the act out with the disturbance that `disturb` makes, and checks what has to hold
  /// whatever it is.
  template <typename Disturb>
  void carryOutWith(Disturb disturb) {
    std::vector<std::string> problems;
    const std::ptrdiff_t descriptors = openDescriptors();
    const long blocks = liveAllocations();
    {
      const CapturedOutput standardOutput(1);
      const CapturedOutput standardError(2);
      Device device;
      if (GetParam().needsFacade && !succeedsInTime([&] { return hasReceiver(device); })) {
        problems.push_back("no receiver before the fault");
      }
      unsigned int result = 0;
      try {
        const auto disturbance = disturb();
        result = GetParam().carryOut(device);
      } catch (const std::bad_alloc&) {
      } catch (const WaitsForEver&) {
      }
      if ((result & ~kResultBits) != 0) {
        problems.push_back("result " + std::to_string(result));
      }
      device.allowTime();
      checkLog(device, problems);
      checkThatAllWorksNow(device, problems);
      std::fflush(stdout);
    }
    EXPECT_THAT(problems, testing::IsEmpty());
    EXPECT_EQ(openDescriptors(), descriptors);
    problems = {};
    EXPECT_EQ(liveAllocations(), blocks);
  }

  /// A log has whole lines, each of which begins with its time; the last may be cut by the fault.
  static void checkLog(const Device& device, std::vector<std::string>& problems) {
    const testing::Matcher<const std::string&> kLine =
        testing::MatchesRegex("14:.*: .*(send|receive) : .*");
    std::istringstream log(contentOf(device.files().errorLog));
    for (std::string line; std::getline(log, line) && !log.eof();) {
      if (!testing::Matches(kLine)(line)) {
        problems.push_back("in the log: " + line);
      }
    }
  }

  /// What the kernel takes to hand bytes through a pty is not simulated: on a busy machine a reply
  /// can come after a simulated time-out, so that nothing has failed before it has done so often.
  template <typename Attempt>
  static bool succeedsInTime(Attempt attempt) {
    constexpr int kAttempts = 50;
    constexpr int kPause = 10;  // milliseconds, which are real ones
    for (int number = 0; number < kAttempts; ++number) {
      if (attempt()) {
        return true;
      }
      ::poll(nullptr, 0, kPause);
    }
    return false;
  }

  static bool hasReceiver(Device& device) {
    device.allowTime();
    if (!device.facade || !device.facade->IsOrbitek()) {
      device.facade.emplace();  // a null controller stays one
    }
    return device.facade->IsOrbitek();
  }

  static void checkThatAllWorksNow(Device& device, std::vector<std::string>& problems) {
    const auto works = [&] {
      signed char minimum = 0;
      return hasReceiver(device) && device.facade->setMinCNo(17) == 0 &&
             device.facade->getMinCNo(minimum) == 0 && minimum == 17;
    };
    if (!succeedsInTime(works)) {
      problems.push_back("the next operations fail");
    }
  }

  /// The calls that the act makes. Of looks at the line that find nothing, one after the other, the
  /// first stands for all.
  std::vector<std::size_t> callsToFail() {
    carryOutWith([] { return SystemFaults(); });
    const std::span<const SystemFaults::Call> calls = SystemFaults::calls();
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < calls.size(); ++i) {
      const bool repeats = i > 0 && calls[i].foundNothing && calls[i - 1].foundNothing;
      if (!repeats) {
        numbers.push_back(i + 1);
      }
    }
    return numbers;
  }

  /// Where all happens, but for the disturbances, in the test's own memory.
  template <typename Disturbance>
  struct Noted {
    template <typename... Arguments>
    explicit Noted(bool& happened, Arguments... arguments)
        : disturbance(arguments...), happened(happened) {}
    Noted(const Noted&) = delete;
    Noted& operator=(const Noted&) = delete;
    ~Noted() { happened = disturbance.hasHappened(); }

    Disturbance disturbance;
    bool& happened;
  };

 private:
  static std::optional<TemporaryFolder> folder_;
  static std::optional<PrivateBus> bus_;
  static std::optional<InventoryService> inventory_;
};

std::optional<TemporaryFolder> EveryFault::folder_;
std::optional<PrivateBus> EveryFault::bus_;
std::optional<InventoryService> EveryFault::inventory_;

TEST_P(EveryFault, OfASystemCall) {
  int faults = 0;
  const std::vector<std::size_t> calls = callsToFail();
  for (int kind = 0; kind < kSystemFaults; ++kind) {
    const std::size_t stride = kStride * GetParam().stride;
    for (std::size_t i = static_cast<std::size_t>(kind) % stride; i < calls.size(); i += stride) {
      bool hasHappened = false;
      SCOPED_TRACE("call " + std::to_string(calls[i]) + ", fault " + std::to_string(kind));
      carryOutWith([&] {
        return Noted<SystemFaults>(hasHappened, calls[i], static_cast<SystemFault>(kind));
      });
      faults += hasHappened ? 1 : 0;
    }
  }
  EXPECT_GE(faults, GetParam().systemFaultsAtLeast / kLeastStride);
}

TEST_P(EveryFault, OfAnAllocation) {
  using Later = FailingAllocation::Later;
  int faults = 0;
  for (const Later later : {Later::kSucceed, Later::kFail}) {
    bool hasHappened = true;
    for (int number = 1; hasHappened; number += kStride) {
      SCOPED_TRACE("allocation " + std::to_string(number));
      carryOutWith([&] { return Noted<FailingAllocation>(hasHappened, number, later); });
      faults += hasHappened ? 1 : 0;
    }
  }
  EXPECT_GE(faults, GetParam().failedAllocationsAtLeast / kLeastStride);
}

TEST(EveryFaultPage, TellsTheirNumber) {
  int faults = 0;
  for (const Act& act : acts()) {
    faults += act.systemFaultsAtLeast + act.failedAllocationsAtLeast;
  }
  EXPECT_THAT(contentOf(ORB_RELIABILITY_PAGE),
              testing::HasSubstr("at least " + std::to_string(faults) + " faults"));
}

INSTANTIATE_TEST_SUITE_P(In, EveryFault, testing::ValuesIn(acts()), [](const auto& act) {
  std::string name = act.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

}  // namespace
}  // namespace orb::test
