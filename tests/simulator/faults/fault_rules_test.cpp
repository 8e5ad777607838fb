#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "orb-sim/faults.h"
#include "orb-sim/frame.h"
#include "orb-sim/receiver.h"
#include "orb-sim/script.h"
#include "rate_query.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using sim::FaultKind;
using sim::FaultTarget;

const Bytes kAcknowledgement = sim::acknowledge(0x1000);
const Bytes kReply = sim::frame(0x8600, {1});
const Bytes kPowerModeQuery = sim::frame(0x1500);

class FaultRules : public testing::Test {
 protected:
  FaultRules() {
    receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::None; });
  }

  /// The occurrences, counted from 1, that a rule falls on among the first `count`.
  std::vector<int> occurrences(sim::FaultRule rule, int count, std::uint64_t seed = 1) {
    rule.kind = FaultKind::NoReply;
    sim::FaultyDevice device(receiver_, {rule}, seed);
    std::vector<int> hit;
    for (int i = 1; i <= count; ++i) {
      if (device.receive(kRateQuery) == kAcknowledgement) {
        hit.push_back(i);
      }
    }
    return hit;
  }

  sim::Receiver receiver_;
};

TEST_F(FaultRules, FallOnTheOccurrencesThatTheyName) {
  const struct {
    sim::FaultRule rule;
    std::vector<int> occurrences;
  } kRows[] = {
      {{}, {1, 2, 3, 4, 5, 6}},           {{.first = 3}, {3, 4, 5, 6}},
      {{.first = 2, .every = 3}, {2, 5}}, {{.every = 2, .times = 2}, {1, 3}},
      {{.every = 2, .times = 0}, {}},     {{.chance = 0}, {}},
  };
  for (const auto& [rule, expected] : kRows) {
    EXPECT_EQ(occurrences(rule, 6), expected);
  }
}

TEST_F(FaultRules, HaveTheirChanceTheSameForASeedAndAnotherForAnother) {
  const sim::FaultRule rule{.chance = 0.3};
  const std::vector<int> hit = occurrences(rule, 1000, 1);
  EXPECT_GT(hit.size(), 250U);
  EXPECT_LT(hit.size(), 350U);
  EXPECT_EQ(occurrences(rule, 1000, 1), hit);
  EXPECT_NE(occurrences(rule, 1000, 2), hit);
}

// These numbers stand in no other program; they keep scenarios the same from release to release.
TEST_F(FaultRules, DrawTheSameOnEveryMachine) {
  EXPECT_EQ(occurrences({.chance = 0.1}, 50, 42), (std::vector<int>{2, 6, 22, 41}));
}

TEST_F(FaultRules, CountOnlyTheirMessage) {
  sim::FaultyDevice device(receiver_, {{.kind = FaultKind::NoReply, .message = 0x1000, .first = 2}},
                           1);
  const Bytes powerMode = sim::acknowledge(0x1500) + sim::frame(0xB900, {0});
  EXPECT_EQ(device.receive(kPowerModeQuery + kRateQuery + kPowerModeQuery + kRateQuery),
            powerMode + kRateAnswer + powerMode + kAcknowledgement);
}

TEST_F(FaultRules, TellSubIdsApart) {
  sim::FaultyDevice device(receiver_, {{.kind = FaultKind::Refusal, .message = 0x6407}}, 1);
  EXPECT_EQ(device.receive(sim::frame(0x6418)), sim::acknowledge(0x6418) + sim::frame(0x648B, {0}));
  EXPECT_EQ(device.receive(sim::frame(0x6407)), sim::refuse(0x6407));
}

TEST_F(FaultRules, AreAppliedInTheirOrder) {
  const sim::FaultRule doubled{FaultKind::Doubled};
  sim::FaultRule noise{.kind = FaultKind::NmeaBurst, .length = 1};
  sim::FaultyDevice first(receiver_, {doubled, noise}, 1);
  sim::FaultyDevice second(receiver_, {noise, doubled}, 1);
  Bytes burst = second.receive(kRateQuery);
  burst.erase(burst.begin(), burst.begin() + 9);
  burst.resize(burst.size() - 18);
  EXPECT_EQ(burst.front(), '$');
  EXPECT_EQ(burst.back(), '\n');
  EXPECT_EQ(second.receive(kRateQuery), kAcknowledgement + burst + kReply + kReply);
  EXPECT_EQ(first.receive(kRateQuery), kAcknowledgement + burst + kReply + burst + kReply);
}

TEST_F(FaultRules, TakeWhatAnotherHasLeftOfAFrame) {
  sim::FaultRule cut{FaultKind::CutShort};
  for (cut.length = 0; cut.length <= 9; ++cut.length) {
    sim::FaultRule longer{.kind = FaultKind::OverlongLength, .length = 1};
    sim::FaultyDevice device(receiver_,
                             {cut, {FaultKind::WrongId}, {FaultKind::BadChecksum}, longer}, 1);
    EXPECT_EQ(device.receive(kRateQuery).size(), kAcknowledgement.size() + cut.length);
  }
}

TEST_F(FaultRules, LeaveTextBetweenTheFramesOfAnAnswerAlone) {
  sim::Script script;
  const Bytes text = hex("24 0D 0A A0");
  script.on(0x1000).answer(text + kAcknowledgement + text + kReply + text);
  sim::FaultyDevice device(script, {{FaultKind::NoReply, FaultTarget::Both}}, 1);
  EXPECT_EQ(device.receive(kRateQuery), text + text + text);
}

TEST_F(FaultRules, ReportWhatTheyFellOn) {
  sim::FaultRule power{.kind = FaultKind::NoReply, .message = 0x1500};
  sim::FaultRule second{.kind = FaultKind::Doubled, .first = 2};
  sim::FaultyDevice device(receiver_, {power, second}, 1);
  device.receive(kRateQuery + kPowerModeQuery + kRateQuery);
  const std::vector<sim::FaultyDevice::Event> events = device.events();
  ASSERT_EQ(events.size(), 3U);
  EXPECT_EQ(events[0].rule, 0U);
  EXPECT_EQ(events[0].message, 0x1500);
  EXPECT_EQ(events[1].rule, 1U);
  EXPECT_EQ(events[1].message, 0x1500);
  EXPECT_EQ(events[2].rule, 1U);
  EXPECT_EQ(events[2].message, 0x1000);
}

TEST_F(FaultRules, ForgetTheOldestOfMuchThatTheyFellOn) {
  sim::FaultRule first{.kind = FaultKind::Doubled, .times = 1};
  sim::FaultRule later{.kind = FaultKind::Doubled, .first = 2};
  sim::FaultyDevice device(receiver_, {first, later}, 1);
  for (std::size_t i = 0; i < sim::FaultyDevice::kMostEvents; ++i) {
    device.receive(kRateQuery);
  }
  EXPECT_EQ(device.events().front().rule, 0U);
  EXPECT_EQ(device.events().size(), sim::FaultyDevice::kMostEvents);
  device.receive(kRateQuery);
  EXPECT_EQ(device.events().front().rule, 1U);
  EXPECT_EQ(device.events().size(), sim::FaultyDevice::kMostEvents);
}

TEST_F(FaultRules, CountAlsoWhatTheReceiverDoesNotHear) {
  sim::FaultRule restart{.kind = FaultKind::SlowRestart, .times = 1, .delay = 1s};
  sim::FaultRule fourth{.kind = FaultKind::NoReply, .first = 4};
  sim::FaultyDevice device(receiver_, {restart, fourth}, 1);
  EXPECT_EQ(device.receive(kRateQuery + kRateQuery + kRateQuery), kAcknowledgement + kReply);
  device.tick(1s);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement);
}

TEST_F(FaultRules, AreRejectedWhereTheyMeanNothing) {
  for (const sim::FaultRule& rule : {
           sim::FaultRule{.first = 0},
           sim::FaultRule{.every = 0},
           sim::FaultRule{.chance = 1.01},
           sim::FaultRule{.chance = -0.01},
           sim::FaultRule{.delay = -1ms},
           sim::FaultRule{FaultKind::Pieces},
       }) {
    EXPECT_THROW(sim::FaultyDevice(receiver_, {rule}, 1), std::invalid_argument);
  }
}

}  // namespace
}  // namespace orb::test
