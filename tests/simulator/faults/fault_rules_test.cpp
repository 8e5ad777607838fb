#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "hex.h"
#include "orb-sim/faults.h"
#include "orb-sim/frame.h"
#include "orb-sim/receiver.h"
#include "orb-sim/script.h"

namespace orb::sim::test {
namespace {

using namespace std::chrono_literals;

const Bytes kRateQuery = frame(0x1000);
const Bytes kAcknowledgement = acknowledge(0x1000);
const Bytes kReply = frame(0x8600, {1});
const Bytes kPowerModeQuery = frame(0x1500);

class FaultRules : public testing::Test {
 protected:
  FaultRules() {
    receiver_.change([](State& state) { state.outputType = OutputType::None; });
  }

  /// The occurrences, counted from 1, that a rule falls on among the first `count`.
  std::vector<int> occurrences(FaultRule rule, int count, std::uint64_t seed = 1) {
    rule.kind = FaultKind::NoReply;
    FaultyDevice device(receiver_, {rule}, seed);
    std::vector<int> hit;
    for (int i = 1; i <= count; ++i) {
      if (device.receive(kRateQuery) == kAcknowledgement) {
        hit.push_back(i);
      }
    }
    return hit;
  }

  Receiver receiver_;
};

TEST_F(FaultRules, FallOnEveryMessageUnlessToldOtherwise) {
  EXPECT_EQ(occurrences({}, 4), (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(FaultRules, BeginWithTheFirstOccurrenceThatCounts) {
  FaultRule rule;
  rule.first = 3;
  EXPECT_EQ(occurrences(rule, 5), (std::vector<int>{3, 4, 5}));
}

TEST_F(FaultRules, FallOnEachSoManyth) {
  FaultRule rule;
  rule.first = 2;
  rule.every = 3;
  EXPECT_EQ(occurrences(rule, 10), (std::vector<int>{2, 5, 8}));
}

TEST_F(FaultRules, StopWhenTheyHaveHappenedOftenEnough) {
  FaultRule rule;
  rule.every = 2;
  rule.times = 2;
  EXPECT_EQ(occurrences(rule, 10), (std::vector<int>{1, 3}));
  rule.times = 0;
  EXPECT_EQ(occurrences(rule, 10), std::vector<int>{});
}

TEST_F(FaultRules, HaveTheirChanceTheSameForASeedAndAnotherForAnother) {
  FaultRule rule;
  rule.chance = 0.3;
  const std::vector<int> hit = occurrences(rule, 1000, 1);
  EXPECT_GT(hit.size(), 250U);
  EXPECT_LT(hit.size(), 350U);
  EXPECT_EQ(occurrences(rule, 1000, 1), hit);
  EXPECT_NE(occurrences(rule, 1000, 2), hit);
  rule.chance = 0;
  EXPECT_EQ(occurrences(rule, 1000), std::vector<int>{});
}

// These numbers stand in no other program; they keep scenarios the same from release to release.
TEST_F(FaultRules, DrawTheSameOnEveryMachine) {
  FaultRule rule;
  rule.chance = 0.1;
  EXPECT_EQ(occurrences(rule, 50, 42), (std::vector<int>{2, 6, 22, 41}));
}

TEST_F(FaultRules, CountOnlyTheirMessage) {
  FaultRule rule{FaultKind::NoReply};
  rule.message = 0x1000;
  rule.first = 2;
  FaultyDevice device(receiver_, {rule}, 1);
  const Bytes powerMode = acknowledge(0x1500) + frame(0xB900, {0});
  EXPECT_EQ(device.receive(kPowerModeQuery + kRateQuery + kPowerModeQuery + kRateQuery),
            powerMode + kAcknowledgement + kReply + powerMode + kAcknowledgement);
}

TEST_F(FaultRules, TellSubIdsApart) {
  FaultRule rule{FaultKind::Refusal};
  rule.message = 0x6407;
  FaultyDevice device(receiver_, {rule}, 1);
  EXPECT_EQ(device.receive(frame(0x6418)), acknowledge(0x6418) + frame(0x648B, {0}));
  EXPECT_EQ(device.receive(frame(0x6407)), refuse(0x6407));
}

TEST_F(FaultRules, AreAppliedInTheirOrder) {
  const FaultRule doubled{FaultKind::Doubled};
  FaultRule noise{FaultKind::NmeaBurst};
  noise.length = 1;
  FaultyDevice first(receiver_, {doubled, noise}, 1);
  FaultyDevice second(receiver_, {noise, doubled}, 1);
  Bytes burst = second.receive(kRateQuery);
  burst.erase(burst.begin(), burst.begin() + 9);
  burst.resize(burst.size() - 18);
  EXPECT_EQ(burst.front(), '$');
  EXPECT_EQ(burst.back(), '\n');
  EXPECT_EQ(second.receive(kRateQuery), kAcknowledgement + burst + kReply + kReply);
  EXPECT_EQ(first.receive(kRateQuery), kAcknowledgement + burst + kReply + burst + kReply);
}

TEST_F(FaultRules, TakeWhatAnotherHasLeftOfAFrame) {
  FaultRule cut{FaultKind::CutShort};
  for (cut.length = 0; cut.length <= 9; ++cut.length) {
    FaultRule longer{FaultKind::OverlongLength};
    longer.length = 1;
    FaultyDevice device(receiver_, {cut, {FaultKind::WrongId}, {FaultKind::BadChecksum}, longer},
                        1);
    EXPECT_EQ(device.receive(kRateQuery).size(), kAcknowledgement.size() + cut.length);
  }
}

TEST_F(FaultRules, LeaveTextBetweenTheFramesOfAnAnswerAlone) {
  Script script;
  const Bytes text = hex("24 0D 0A A0");
  script.on(0x1000).answer(text + kAcknowledgement + text + kReply + text);
  FaultyDevice device(script, {{FaultKind::NoReply, FaultTarget::Both}}, 1);
  EXPECT_EQ(device.receive(kRateQuery), text + text + text);
}

TEST_F(FaultRules, ReportWhatTheyFellOn) {
  FaultRule power{FaultKind::NoReply};
  power.message = 0x1500;
  FaultRule second{FaultKind::Doubled};
  second.first = 2;
  FaultyDevice device(receiver_, {power, second}, 1);
  device.receive(kRateQuery + kPowerModeQuery + kRateQuery);
  const std::vector<FaultyDevice::Event> events = device.events();
  ASSERT_EQ(events.size(), 3U);
  EXPECT_EQ(events[0].rule, 0U);
  EXPECT_EQ(events[0].message, 0x1500);
  EXPECT_EQ(events[1].rule, 1U);
  EXPECT_EQ(events[1].message, 0x1500);
  EXPECT_EQ(events[2].rule, 1U);
  EXPECT_EQ(events[2].message, 0x1000);
}

TEST_F(FaultRules, CountAlsoWhatTheReceiverDoesNotHear) {
  FaultRule restart{FaultKind::SlowRestart};
  restart.times = 1;
  restart.delay = 1s;
  FaultRule fourth{FaultKind::NoReply};
  fourth.first = 4;
  FaultyDevice device(receiver_, {restart, fourth}, 1);
  EXPECT_EQ(device.receive(kRateQuery + kRateQuery + kRateQuery), kAcknowledgement + kReply);
  device.tick(1s);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement);
}

TEST_F(FaultRules, AreRejectedWhereTheyMeanNothing) {
  const auto rejects = [&](FaultRule rule) {
    EXPECT_THROW(FaultyDevice(receiver_, {rule}, 1), std::invalid_argument);
  };
  FaultRule rule;
  rule.first = 0;
  rejects(rule);
  rule = {};
  rule.every = 0;
  rejects(rule);
  rule = {};
  rule.chance = 1.01;
  rejects(rule);
  rule.chance = -0.01;
  rejects(rule);
  rule = {};
  rule.delay = -1ms;
  rejects(rule);
  rejects({FaultKind::Pieces});
}

}  // namespace
}  // namespace orb::sim::test
