#include "orb-gnss/controller.h"

#include <gmock/gmock.h>

#include <memory>
#include <new>
#include <optional>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "facade_parts.h"
#include "operations/recording.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/null_controller.h"
#include "support/allocations.h"
#include "support/closed_standard_streams.h"
#include "support/fake_board.h"
#include "support/receiver_fixture.h"

namespace orb::test {
namespace {

using testing::ElementsAre;
using testing::Truly;

constexpr const char* kDetectionQuery = "A0 A1 00 02 02 01 03 0D 0A";
constexpr const char* kRestart = "A0 A1 00 03 64 3F 01 5A 0D 0A";

/// Which controller and which chip interface a facade holds.
std::string partsOf(orbController& facade) {
  const auto& controller = *controllerOf(facade);
  const auto& chip = *chipOf(facade);
  std::string parts = typeid(controller) == typeid(orbController_QN4470T01) ? "driver"
                      : typeid(controller) == typeid(orbController_null)    ? "null controller"
                                                                            : "(other)";
  parts += typeid(chip) == typeid(BrdOrbChipInterface) ? ", carrier board"
           : typeid(chip) == typeid(NullChipInterface) ? ", no board"
                                                       : ", (other)";
  return parts;
}

template <typename ReceiverOrNot>
class FacadeOn : public ReceiverOrNot {
 protected:
  /// Expects that a facade finds no receiver to drive. Returns what it writes to standard error.
  std::string fallBack() {
    return standardErrorOf([this] {
      EXPECT_EQ(standardOutputOf([this] {
                  orbController facade;
                  EXPECT_FALSE(facade.IsOrbitek());
                  EXPECT_EQ(partsOf(facade), "null controller, no board");
                  EXPECT_EQ(descriptorsOf(this->files_.generalLog), 1);
                  facade.restart(true);
                }),
                "");
    });
  }

  CarrierBoard board_;
};

/// A facade on a device with the carrier module and a receiver that answers.
using Facade = FacadeOn<ReceiverTest>;
/// The same without a receiver on the line.
using FacadeWithoutReceiver = FacadeOn<NoReceiverTest>;

// A module that is the expected one, and a receiver that answers.

TEST_F(Facade, DrivesTheModuleWhenTheReceiverAnswers) {
  orbController facade;
  EXPECT_TRUE(facade.IsOrbitek());
  EXPECT_EQ(partsOf(facade), "driver, carrier board");
  EXPECT_EQ(sent(), kDetectionQuery);
}

TEST_F(Facade, ResetsTheChipExactlyOnceAtEachConstruction) {
  const std::string error = standardErrorOf([] {
    EXPECT_EQ(standardOutputOf([] {
                orbController().restart(true);
                orbController();
              }),
              "reset skipp!\nreset skipp!\n");
  });
  EXPECT_EQ(error, "");
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(Facade, AsksForTheModuleAtLocationOne) {
  orbController facade;
  EXPECT_EQ(board_.calls,
            (std::vector<std::string>{"inventory client", "locations", "end of inventory client",
                                      "resources client", "address 1", "record HardwareSetId",
                                      "end of resources client"}));
}

TEST_F(Facade, FindsThePartNumberInsideALongerText) {
  board_.modules[1].records["HardwareSetId"] = "rev B 47205318-001/7 (spare)";
  orbController facade;
  EXPECT_TRUE(facade.IsOrbitek());
}

TEST_F(Facade, PassesOperationsToTheDriverAndTheReceiver) {
  orbController facade;
  std::string info;
  EXPECT_EQ(facade.getInfo(info), 0u);
  EXPECT_EQ(info, "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15");
  EXPECT_EQ(facade.timeStamp(), "14:03:27_042: ");
}

TEST_F(Facade, LooksOnTheNamedDeviceAndThenUsesTheDefaultOne) {
  ReceiverOnTty other(files_.otherTty);
  orbController facade("/dev/tty_other");
  EXPECT_TRUE(facade.IsOrbitek());
  EXPECT_EQ(facade.restart(true), 0u);
  EXPECT_EQ(other.sent(), kDetectionQuery);
  EXPECT_EQ(sent(), kRestart);
}

// Another module, or none.

TEST_F(Facade, SendsNothingWithoutTheCarrierAtLocationOne) {
  using Modules = decltype(board_.modules);
  const FakeBoard::Module carrier = board_.modules[1];
  for (const Modules& modules : {Modules{}, Modules{{2, carrier}}, Modules{{1, {}}},
                                 Modules{{1, {.records = {{"HardwareSetId", "47205318-002"}}}}},
                                 Modules{{1, {.records = {{"HardwareSetId", "47205318-00"}}}}}}) {
    board_.modules = modules;
    EXPECT_EQ(fallBack(), "");
    EXPECT_EQ(sent(), "");
    EXPECT_EQ(contentOf(files_.errorLog), "(no file)");
  }
}

TEST_F(Facade, HasNoTimeStampWithoutModule) {
  board_.modules.clear();
  orbController facade;
  EXPECT_THROW(facade.timeStamp(), std::logic_error);
}

// The right module, but no receiver that acknowledges.

constexpr const char* kNoReplyLine =
    "14:03:28_042:  Did not receive : 02 00: Query revision information of software\n";

TEST_F(Facade, FallsBackToTheNullControllerWhenNoAcknowledgementComes) {
  gps_.script.on(0x0200).nothing();
  letPass(1);
  EXPECT_EQ(fallBack(), kTimedOut);
  EXPECT_EQ(sent(), kDetectionQuery);
  EXPECT_EQ(contentOf(files_.errorLog), kNoReplyLine);
}

TEST_F(Facade, FallsBackToTheNullControllerWhenAnotherMessageIsAcknowledged) {
  gps_.script.on(0x0200).answer(hex("A0 A1 00 02 83 03 80 0D 0A"));
  EXPECT_EQ(fallBack(), "");
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(Facade, ReleasesTheDriverThatDetectedNothing) {
  gps_.script.on(0x0200).answer(hex("A0 A1 00 02 83 03 80 0D 0A"));
  orbController facade;
  EXPECT_EQ(descriptorsOf(files_.errorLog), 0);
}

TEST_F(FacadeWithoutReceiver, FallsBackToTheNullControllerWhenTheDeviceIsMissing) {
  EXPECT_EQ(fallBack(), kNoDevice);
  EXPECT_EQ(contentOf(files_.errorLog),
            "14:03:27_042:  Could not send : 02 00: Query revision information of software\n");
}

TEST_F(FacadeWithoutReceiver, LooksForTheReceiverOnTheNamedDeviceAlone) {
  ReceiverOnTty gps(files_.tty);
  standardErrorOf([] {
    orbController facade("/dev/tty_other");
    EXPECT_FALSE(facade.IsOrbitek());
  });
  EXPECT_EQ(gps.sent(), "");
}

// Choosing anew.

TEST_F(Facade, ChoosesAnewWhenItIsCreatedAnew) {
  orbController facade;
  board_.modules.clear();
  facade.CreateOrbitek("/dev/tty_gps");
  EXPECT_FALSE(facade.IsOrbitek());
  EXPECT_EQ(partsOf(facade), "null controller, no board");
}

// Each allocation fails once. Without a receiver, the driver is only built to look for one.
TEST_F(FacadeWithoutReceiver, StaysAsItIsWhenItCannotBeCreatedAnew) {
  constexpr int kMoreThanItAllocates = 100;
  fill(files_.errorLog, "");
  orbController facade;
  int failures = 0;
  standardErrorOf([&] {
    for (int number = 1; number <= kMoreThanItAllocates; ++number) {
      const auto controller = controllerOf(facade);
      const auto chip = chipOf(facade);
      try {
        const FailingAllocation failing(number);
        facade.CreateOrbitek("/dev/tty_gps");
      } catch (const std::bad_alloc&) {
        ++failures;
        EXPECT_EQ(controllerOf(facade), controller) << number;
        EXPECT_EQ(chipOf(facade), chip) << number;
      }
      EXPECT_EQ(partsOf(facade), "null controller, no board") << number;
      EXPECT_EQ(descriptorsOf(files_.errorLog), 0) << number;
      EXPECT_EQ(descriptorsOf(files_.generalLog), 1) << number;
    }
  });
  EXPECT_GT(failures, 10);
}

TEST_F(Facade, ReleasesWhatItHeldBefore) {
  orbController facade;
  const std::weak_ptr<ORBControlInterface> controller = controllerOf(facade);
  const std::weak_ptr<OrbChipEnableInterface> chip = chipOf(facade);
  facade.CreateOrbitek("/dev/tty_gps");
  EXPECT_TRUE(controller.expired());
  EXPECT_TRUE(chip.expired());
  EXPECT_EQ(partsOf(facade), "driver, carrier board");
}

TEST_F(Facade, LeavesAControllerThatSomebodyElseSharesAlive) {
  std::shared_ptr<ORBControlInterface> controller;
  {
    orbController facade;
    controller = controllerOf(facade);
  }
  EXPECT_EQ(controller->restart(true), 0u);
}

// What goes wrong in the platform classes.

class FacadeOfAFailingBoard : public Facade, public testing::WithParamInterface<const char*> {};

TEST_P(FacadeOfAFailingBoard, PassesTheExceptionOn) {
  board_.failingCall = GetParam();
  EXPECT_THROW(orbController(), BoardFailure);
  EXPECT_EQ(contentOf(files_.generalLog), "") << "it was made before";
  EXPECT_EQ(descriptorsOf(files_.generalLog), 0);
  EXPECT_THROW(orbController("/dev/tty_gps"), BoardFailure);
  EXPECT_EQ(sent(), "");
}

INSTANTIATE_TEST_SUITE_P(, FacadeOfAFailingBoard,
                         testing::Values("inventory client", "locations", "resources client",
                                         "address 1", "record HardwareSetId"));

// The general log.

TEST_F(Facade, MakesTheGeneralLogAndWritesNothingToIt) {
  {
    orbController facade;
    EXPECT_EQ(descriptorsOf(files_.generalLog), 1);
    facade.restart(true);
  }
  EXPECT_EQ(contentOf(files_.generalLog), "");
  EXPECT_EQ(descriptorsOf(files_.generalLog), 0);
}

TEST_F(FacadeWithoutReceiver, KeepsTheGeneralLogToItself) {
  board_.modules.clear();
  std::optional<ClosedStandardStreams> closed(std::in_place);
  const orbController facade;
  closed.reset();
  const orbController another;
  EXPECT_THAT(descriptorsOn(files_.generalLog), ElementsAre(Truly(isPrivate), Truly(isPrivate)));
}

TEST_F(Facade, KeepsWhatTheGeneralLogHolds) {
  fill(files_.generalLog, "earlier line\n");
  const orbController facade;
  EXPECT_EQ(contentOf(files_.generalLog), "earlier line\n");
}

TEST_F(Facade, DoesWithoutAGeneralLog) {
  files_.makeUnusable("/var/log/orbset.log");
  orbController facade;
  EXPECT_TRUE(facade.IsOrbitek());
  EXPECT_EQ(facade.restart(true), 0u);
}

// Operations of the facade's own.

TEST_F(Facade, HoldsAnyVersionValidWhenThereIsAReceiver) {
  const orbController facade;
  EXPECT_TRUE(facade.isVersionValid(""));
  EXPECT_TRUE(facade.isVersionValid("0.0.0"));
}

TEST_F(FacadeWithoutReceiver, HoldsNoVersionValid) {
  board_.modules.clear();
  const orbController facade;
  EXPECT_FALSE(facade.isVersionValid(""));
  EXPECT_FALSE(facade.isVersionValid("1.0.12"));
}

TEST_F(Facade, ConfiguresNoProtocols) {
  orbController facade;
  EXPECT_EQ(facade.configuraProtocolsDefault(), 0u);
  EXPECT_EQ(sent(), kDetectionQuery);
}

TEST_F(FacadeWithoutReceiver, GetsTheDefaultInfoFromTheController) {
  board_.modules.clear();
  orbController facade;
  const auto controller = std::make_shared<RecordingController>();
  controller->resultOf = [](std::size_t) { return 77U; };
  controllerOf(facade) = controller;
  std::string info = "in";
  EXPECT_EQ(facade.getDefaultInfo(info), 77U);
  EXPECT_EQ(info, "in!");
  EXPECT_EQ(controller->calls, std::vector<std::string>{"getInfo(\"in\")"});
}

TEST_F(FacadeWithoutReceiver, GetsTheDefaultInfoThroughItsOwnVirtualOperation) {
  struct OtherInfo : orbController {
    unsigned int getInfo(std::string& info) override {
      info += " and more";
      return 42;
    }
  };
  board_.modules.clear();
  OtherInfo facade;
  std::string info = "info";
  EXPECT_EQ(facade.getDefaultInfo(info), 42u);
  EXPECT_EQ(info, "info and more");
}

TEST_F(FacadeWithoutReceiver, NeitherConfiguresNorSwitchesAnything) {
  board_.modules.clear();
  orbController facade;
  board_.calls.clear();
  EXPECT_EQ(facade.configuraProtocolsDefault(), 0u);
  EXPECT_EQ(facade.setAntennaPower("ON"), 0);
  EXPECT_EQ(facade.setAntennaPower("standby"), 0);
  EXPECT_TRUE(board_.calls.empty());
}

TEST_F(Facade, SwitchesTheAntennaOnTheCarrierBoard) {
  orbController facade;
  EXPECT_EQ(facade.setAntennaPower("ON"), 0);
  EXPECT_EQ(board_.registers[3], 0x01);
  EXPECT_EQ(facade.setAntennaPower("standby"), 1);
}

// A chip interface and a controller that say when they are released.

struct WatchedChip : NullChipInterface {
  WatchedChip(std::vector<std::string>& events) : events_(events) {}
  ~WatchedChip() override { events_.emplace_back("chip interface"); }
  int antennaPowerEnable(std::string state) override {
    events_.push_back("antenna " + state);
    return -77;
  }
  std::vector<std::string>& events_;
};

struct WatchedController : orbController_null {
  WatchedController(std::vector<std::string>& events) : events_(events) {}
  ~WatchedController() override { events_.emplace_back("controller"); }
  std::vector<std::string>& events_;
};

TEST_F(FacadeWithoutReceiver, ReleasesTheChipInterfaceAndThenTheController) {
  board_.modules.clear();
  std::vector<std::string> events;
  {
    orbController facade;
    controllerOf(facade) = std::make_shared<WatchedController>(events);
    chipOf(facade) = std::make_shared<WatchedChip>(events);
  }
  EXPECT_EQ(events, (std::vector<std::string>{"chip interface", "controller"}));
}

TEST_F(FacadeWithoutReceiver, HandsTheAntennasStateAndTheChipInterfacesAnswerOver) {
  board_.modules.clear();
  std::vector<std::string> events;
  orbController facade;
  chipOf(facade) = std::make_shared<WatchedChip>(events);
  EXPECT_EQ(facade.setAntennaPower("as it is"), -77);
  EXPECT_EQ(events, std::vector<std::string>{"antenna as it is"});
}

}  // namespace
}  // namespace orb::test
