#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <optional>
#include <string>

#include "orb-gnss/controller.h"
#include "ready_scenario.h"
#include "support/fake_board.h"
#include "support/receiver_fixture.h"

// What the ready scenarios promise to a client of the library.

namespace orb::test {
namespace {

using namespace std::chrono_literals;

constexpr int kReplyTimeoutSeconds = 5;
constexpr std::uint16_t kSetSecondBand = 0x6450;

/// A driver, and at the far end of its line the device of a scenario. Time-outs pass only where
/// letAWaitEnd() lets them.
class ReadyScenario : public ::testing::Test {
 protected:
  void plugIn(const sim::Scenario& scenario) {
    board_.modules[1].records["HardwareSetId"] = scenario.hardwareId.value_or("");
    device_.emplace(scenario);
    line_.emplace(*device_, files_.tty);
  }

  /// The next wait for a reply ends as soon as a dozen portions of bytes have come without it.
  void letAWaitEnd() {
    constexpr int kPortions = 12;
    std::vector<int> looks(kPortions, kReplyTimeoutSeconds - 1);
    looks.front() = 0;
    looks.push_back(kReplyTimeoutSeconds);
    clock_.passSeconds(looks);
  }

  unsigned int rateOf(unsigned char& rate) {
    unsigned int result = 0;
    standardOutputOf([&] { result = driver_.gpsOrbGetCfgRate(rate); });
    return result;
  }

  DeviceFiles files_;
  WallClock clock_;
  CarrierBoard board_;
  std::optional<sim::ScenarioDevice> device_;
  std::optional<ChattyLine> line_;
  StampedDriver driver_;
};

TEST_F(ReadyScenario, HealthyIsDrivenByTheFacade) {
  plugIn(readyScenario("healthy"));
  orbController facade;
  EXPECT_TRUE(facade.IsOrbitek());
  std::string info;
  EXPECT_EQ(facade.getInfo(info), 0);
  EXPECT_EQ(info, "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15");
  EXPECT_EQ(facade.setElevationLimit(10), 0);
  EXPECT_EQ(device_->state().elevationCnrMask.elevation, 10);
}

TEST_F(ReadyScenario, NoisyLineLosesNoAnswer) {
  plugIn(readyScenario("noisy-line"));
  for (int i = 0; i < 40; ++i) {
    unsigned char rate = 0;
    EXPECT_EQ(rateOf(rate), 0);
    EXPECT_EQ(rate, 1);
  }
  EXPECT_EQ(driver_.gpsObtCableDelayConfig(28), 0);
  EXPECT_GT(device_->events().size(), 40) << "answers were disturbed";
}

TEST_F(ReadyScenario, WrongModuleIsLeftAlone) {
  plugIn(readyScenario("wrong-module"));
  orbController facade;
  EXPECT_FALSE(facade.IsOrbitek());
  std::string info;
  facade.getInfo(info);
  EXPECT_EQ(info, "");
  EXPECT_EQ(line_->received(), sim::Bytes{});
}

TEST_F(ReadyScenario, OldFirmwareHasItsSecondBandSwitched) {
  plugIn(readyScenario("old-firmware"));
  std::string info;
  EXPECT_EQ(driver_.getInfo(info), 0);
  EXPECT_EQ(info, "KernelVersion 0.9.31: ODMVersion 1.0.4: Revision 2021.9.8");
  EXPECT_EQ(driver_.gpsObtL2BandConfigure(true), 0);
  EXPECT_TRUE(line_->waitForMessage(kSetSecondBand));
  EXPECT_EQ(device_->state().secondBand, 1);
}

TEST_F(ReadyScenario, OldFirmwareRefusesWhatCameLater) {
  plugIn(readyScenario("old-firmware"));
  line_->startChatter(2ms);
  letAWaitEnd();
  EXPECT_EQ(driver_.gpsObtGetFwVersionString(""), 4);
  letAWaitEnd();
  EXPECT_EQ(driver_.gpsObtFreqOutputConfigure(10), 5);
  EXPECT_EQ(device_->state().pps2Frequency, 0);
  EXPECT_EQ(device_->events().size(), 3);
}

TEST_F(ReadyScenario, FlakyCableFailsAClientThatAsksOnceAndNotOneThatAsksAgain) {
  constexpr int kTries = 3;
  sim::Scenario scenario = readyScenario("flaky-cable");
  scenario.state.updateRate = 50;  // a time-out needs bytes to end
  plugIn(scenario);
  int failures = 0;
  for (int query = 0; query < 30; ++query) {
    unsigned int result = 4;
    for (int attempt = 0; result != 0 && attempt < kTries; ++attempt) {
      unsigned char rate = 0;
      letAWaitEnd();
      result = rateOf(rate);
      failures += result == 4 ? 1 : 0;
      EXPECT_EQ(rate, result == 0 ? 50 : 0);
    }
    EXPECT_EQ(result, 0) << "query " << query;
  }
  EXPECT_GE(failures, 3);
}

TEST_F(ReadyScenario, SilentLetsACallWaitUntilBytesComeAfterAll) {
  plugIn(readyScenario("silent"));
  letAWaitEnd();
  std::string info;
  auto call = std::async(std::launch::async, [&] { return driver_.getInfo(info); });
  EXPECT_EQ(call.wait_for(300ms), std::future_status::timeout);
  line_->startChatter(2ms);
  EXPECT_EQ(call.get(), 4);
  EXPECT_EQ(info, "");
}

}  // namespace
}  // namespace orb::test
