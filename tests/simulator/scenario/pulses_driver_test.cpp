#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "orb-gnss/controller.h"
#include "orb-sim/scenario.h"
#include "support/fake_board.h"
#include "support/receiver_fixture.h"

// What a client of the library has configured is what comes out of the timing outputs.

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using sim::PulseEvent;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::Field;
using ::testing::SizeIs;

struct Pulse {
  std::chrono::nanoseconds start;  ///< after the second of UTC that is nearest
  std::chrono::nanoseconds width;
};

/// The pulses of a device whose clock runs fast, so that nobody has to wait for seconds.
class TimingOutputs : public ::testing::Test {
 protected:
  static sim::Scenario fast() {
    sim::Scenario scenario;
    scenario.state.clockRate = 100;
    return scenario;
  }

  TimingOutputs() {
    device_.listenToPulses([this](const PulseEvent& event) {
      const std::lock_guard lock(mutex_);
      if (event.kind == PulseEvent::Kind::Frequency) {
        frequency_ = event.frequency;
      } else if (!edges_.empty() || event.kind == PulseEvent::Kind::Rising) {  // whole pulses
        edges_.push_back(event);
      }
      arrived_.notify_all();
    });
  }

  /// The next three pulses; fewer where they do not come.
  std::vector<Pulse> nextPulses() {
    edgesCome(6, kLimit);
    const std::lock_guard lock(mutex_);
    std::vector<Pulse> pulses;
    for (std::size_t i = 0; i + 1 < std::min<std::size_t>(edges_.size(), 6); i += 2) {
      EXPECT_EQ(edges_[i].kind, PulseEvent::Kind::Rising);
      EXPECT_EQ(edges_[i + 1].kind, PulseEvent::Kind::Falling);
      const auto second = std::chrono::round<std::chrono::seconds>(edges_[i].utc);
      pulses.push_back({edges_[i].utc - second, edges_[i + 1].utc - edges_[i].utc});
    }
    return pulses;
  }

  /// Whether so many edges come within the limit.
  bool edgesCome(std::size_t count, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    edges_.clear();
    return arrived_.wait_for(lock, limit, [&] { return edges_.size() >= count; });
  }

  std::uint32_t frequency() {
    const std::lock_guard lock(mutex_);
    return frequency_;
  }

  static auto arePulses(std::chrono::nanoseconds start, std::chrono::nanoseconds width) {
    return AllOf(SizeIs(3), Each(AllOf(Field(&Pulse::start, start), Field(&Pulse::width, width))));
  }

  static constexpr std::chrono::milliseconds kLimit{20'000};

  DeviceFiles files_;
  WallClock clock_;
  CarrierBoard board_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<PulseEvent> edges_;
  std::uint32_t frequency_ = ~0U;
  sim::ScenarioDevice device_{fast()};
  sim::PtyLine line_{device_, files_.tty};
};

TEST_F(TimingOutputs, SendWhatTheControllerHasSet) {
  orbController facade;
  orbController_QN4470T01 driver;
  ASSERT_TRUE(facade.IsOrbitek());
  EXPECT_THAT(nextPulses(), arePulses(-7ns, 1ms));

  standardOutputOf([&] {
    EXPECT_EQ(facade.setAntennaDelay(28), 0);
    EXPECT_EQ(facade.setTimeReference("UTC"), 0);
    EXPECT_EQ(driver.gpsObtTimePulseConfigure(20'000), 0);
  });
  EXPECT_THAT(nextPulses(), arePulses(-28ns, 20ms));

  EXPECT_EQ(frequency(), 0U);
  standardOutputOf([&] { EXPECT_EQ(driver.gpsObtFreqOutputConfigure(10'000'000), 0); });
  EXPECT_EQ(frequency(), 10'000'000U);
}

TEST_F(TimingOutputs, AreStillWithoutAFixWhereTheControllerHasAskedForOne) {
  constexpr unsigned char kWithAFix = 1;
  constexpr unsigned char kAlways = 0;
  orbController facade;
  ASSERT_TRUE(facade.IsOrbitek());
  standardOutputOf([&] { EXPECT_EQ(facade.configTimePulse(0, kWithAFix, true), 0); });
  EXPECT_TRUE(edgesCome(10, kLimit));
  EXPECT_EQ(facade.setElevationLimit(85), 0);  // no satellite stands so high
  EXPECT_FALSE(edgesCome(1, 300ms)) << "a while for the clock of the receiver";
  standardOutputOf([&] { EXPECT_EQ(facade.configTimePulse(0, kAlways, true), 0); });
  EXPECT_TRUE(edgesCome(10, kLimit));
}

}  // namespace
}  // namespace orb::test
