#include "orb-gnss/controller.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "facade_parts.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/null_controller.h"
#include "recording_controller.h"
#include "support/fake_board.h"
#include "support/receiver_test.h"

namespace {

using orb::test::chipOf;
using orb::test::contentOf;
using orb::test::controllerOf;
using orb::test::hex;
using orb::test::standardErrorOf;
using orb::test::standardOutputOf;

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

/// A facade on a device with the carrier module and a receiver that answers.
class Facade : public orb::test::ReceiverTest {
 protected:
  orb::test::CarrierBoard board_;
};

/// The same without a receiver on the line.
class FacadeWithoutReceiver : public orb::test::NoReceiverTest {
 protected:
  orb::test::CarrierBoard board_;
};

// A module that is the expected one, and a receiver that answers.

TEST_F(Facade, DrivesTheModuleWhenTheReceiverAnswers) {
  orbController facade;
  EXPECT_TRUE(facade.IsOrbitek());
  EXPECT_EQ(partsOf(facade), "driver, carrier board");
  EXPECT_EQ(sent(), kDetectionQuery);
}

TEST_F(Facade, ResetsTheChipExactlyOnce) {
  EXPECT_EQ(standardOutputOf([] {
              orbController facade;
              facade.restart(true);
            }),
            "reset skipp!\n");
}

TEST_F(Facade, ResetsTheChipAtEveryConstruction) {
  EXPECT_EQ(standardOutputOf([] {
              orbController();
              orbController();
            }),
            "reset skipp!\nreset skipp!\n");
}

TEST_F(Facade, IsSilentOnStandardErrorWhenAllIsWell) {
  EXPECT_EQ(standardErrorOf([] { orbController(); }), "");
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

TEST_F(Facade, PassesOperationsToTheReceiver) {
  orbController facade;
  std::string info;
  EXPECT_EQ(facade.getInfo(info), 0u);
  EXPECT_EQ(info, "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15");
}

TEST_F(Facade, HasTheDriversTimeStamp) {
  orbController facade;
  EXPECT_EQ(facade.timeStamp(), "14:03:27_042: ");
}

TEST_F(Facade, LooksOnTheNamedDeviceAndThenUsesTheDefaultOne) {
  orb::test::ReceiverOnTty other(files_.otherTty);
  orbController facade("/dev/tty_other");
  EXPECT_TRUE(facade.IsOrbitek());
  EXPECT_EQ(facade.restart(true), 0u);
  EXPECT_EQ(other.sent(), kDetectionQuery);
  EXPECT_EQ(sent(), kRestart);
}

// Another module, or none.

TEST_F(Facade, SendsNothingWhenAnotherModuleIsFitted) {
  board_.modules[1].records["HardwareSetId"] = "47205318-002";
  const std::string error = standardErrorOf([] {
    EXPECT_EQ(standardOutputOf([] {
                orbController facade;
                EXPECT_FALSE(facade.IsOrbitek());
                EXPECT_EQ(partsOf(facade), "null controller, no board");
                facade.restart(true);
              }),
              "");
  });
  EXPECT_EQ(error, "");
  EXPECT_EQ(sent(), "");
  EXPECT_EQ(contentOf(files_.errorLog), "(no file)");
}

TEST_F(Facade, SendsNothingWhenTheModuleHasNoHardwareSetId) {
  board_.modules[1].records.clear();
  orbController facade;
  EXPECT_FALSE(facade.IsOrbitek());
  EXPECT_EQ(partsOf(facade), "null controller, no board");
  EXPECT_EQ(sent(), "");
}

TEST_F(Facade, SendsNothingWhenTheModuleIsAtAnotherLocation) {
  board_.modules[2] = board_.modules[1];
  board_.modules.erase(1);
  orbController facade;
  EXPECT_FALSE(facade.IsOrbitek());
  EXPECT_EQ(sent(), "");
}

TEST_F(Facade, SendsNothingWhenOnlyAPartOfThePartNumberIsThere) {
  board_.modules[1].records["HardwareSetId"] = "47205318-00";
  orbController facade;
  EXPECT_FALSE(facade.IsOrbitek());
  EXPECT_EQ(sent(), "");
}

TEST_F(Facade, HasNoTimeStampWithoutModule) {
  board_.modules.clear();
  orbController facade;
  EXPECT_THROW(facade.timeStamp(), std::logic_error);
}

// The right module, but no receiver that acknowledges.

TEST_F(Facade, FallsBackToTheNullControllerWhenNoAcknowledgementComes) {
  gps_.script.on(0x0200).nothing();
  letPass(1);
  const std::string error = standardErrorOf([] {
    EXPECT_EQ(standardOutputOf([] {
                orbController facade;
                EXPECT_FALSE(facade.IsOrbitek());
                EXPECT_EQ(partsOf(facade), "null controller, no board");
              }),
              "");
  });
  EXPECT_EQ(error, orb::test::kTimedOut);
  EXPECT_EQ(sent(), kDetectionQuery);
  EXPECT_EQ(contentOf(files_.errorLog),
            "14:03:28_042:  Did not receive : 02 00: Query revision information of software\n");
}

TEST_F(Facade, ReleasesTheDriverThatDetectedNothing) {
  gps_.script.on(0x0200).answer(hex("A0 A1 00 02 83 03 80 0D 0A"));
  orbController facade;
  EXPECT_EQ(orb::test::descriptorsOf(files_.errorLog), 0);
}

TEST_F(Facade, FallsBackToTheNullControllerWhenTheReceiverRefuses) {
  gps_.script.on(0x0200).refusal();
  letPass(1);
  const std::string error = standardErrorOf([] {
    orbController facade;
    EXPECT_FALSE(facade.IsOrbitek());
    EXPECT_EQ(partsOf(facade), "null controller, no board");
  });
  EXPECT_EQ(error, orb::test::kTimedOut);
  EXPECT_EQ(contentOf(files_.errorLog),
            "14:03:28_042:  Did not receive : 02 00: Query revision information of software\n");
}

TEST_F(Facade, FallsBackToTheNullControllerWhenAnotherMessageIsAcknowledged) {
  gps_.script.on(0x0200).answer(hex("A0 A1 00 02 83 03 80 0D 0A"));
  orbController facade;
  EXPECT_FALSE(facade.IsOrbitek());
  EXPECT_EQ(partsOf(facade), "null controller, no board");
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(FacadeWithoutReceiver, FallsBackToTheNullControllerWhenTheDeviceIsMissing) {
  const std::string error = standardErrorOf([] {
    EXPECT_EQ(standardOutputOf([] {
                orbController facade;
                EXPECT_FALSE(facade.IsOrbitek());
                EXPECT_EQ(partsOf(facade), "null controller, no board");
              }),
              "");
  });
  EXPECT_EQ(error, orb::test::kNoDevice);
  EXPECT_EQ(contentOf(files_.errorLog),
            "14:03:27_042:  Could not send : 02 00: Query revision information of software\n");
}

TEST_F(FacadeWithoutReceiver, LooksForTheReceiverOnTheNamedDeviceAlone) {
  orb::test::ReceiverOnTty gps(files_.tty);
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
  EXPECT_THROW(orbController(), orb::test::BoardFailure);
  EXPECT_THROW(orbController("/dev/tty_gps"), orb::test::BoardFailure);
  EXPECT_EQ(sent(), "");
}

INSTANTIATE_TEST_SUITE_P(, FacadeOfAFailingBoard,
                         testing::Values("inventory client", "locations", "resources client",
                                         "address 1", "record HardwareSetId"));

// The general log.

TEST_F(Facade, MakesTheGeneralLogAndWritesNothingToIt) {
  {
    orbController facade;
    EXPECT_EQ(orb::test::descriptorsOf(files_.generalLog), 1);
    facade.restart(true);
  }
  EXPECT_EQ(contentOf(files_.generalLog), "");
  EXPECT_EQ(orb::test::descriptorsOf(files_.generalLog), 0);
}

TEST_F(Facade, KeepsWhatTheGeneralLogHolds) {
  orb::test::fill(files_.generalLog, "earlier line\n");
  orbController();
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

TEST_F(FacadeWithoutReceiver, ConfiguresNoProtocolsEither) {
  board_.modules.clear();
  orbController facade;
  EXPECT_EQ(facade.configuraProtocolsDefault(), 0u);
}

TEST_F(FacadeWithoutReceiver, GetsTheDefaultInfoFromTheController) {
  board_.modules.clear();
  orbController facade;
  const auto controller = std::make_shared<orb::test::RecordingController>();
  controllerOf(facade) = controller;
  std::string info = "in";
  EXPECT_EQ(facade.getDefaultInfo(info), controller->lastResult);
  EXPECT_EQ(info, "in!");
  EXPECT_EQ(controller->calls, std::vector<std::string>{"getInfo(in)"});
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

TEST_F(FacadeWithoutReceiver, SwitchesNoAntennaWithoutABoard) {
  board_.modules.clear();
  orbController facade;
  board_.calls.clear();
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
