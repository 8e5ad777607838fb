#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "device/echo_device.h"
#include "orb-sim/faults.h"
#include "orb-sim/frame.h"
#include "orb-sim/line_conditions.h"
#include "orb-sim/receiver.h"
#include "support/hex_text.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using sim::FaultKind;
using std::chrono::milliseconds;

/// What a client does: it writes bytes at a time.
struct Writing {
  milliseconds at;
  Bytes bytes;
};

/// Every kind that a line can go on after, at random.
std::vector<sim::FaultRule> mixedRules() {
  std::vector<sim::FaultRule> rules;
  for (int kind = 0; kind <= static_cast<int>(FaultKind::SlowRestart); ++kind) {
    sim::FaultRule rule{static_cast<sim::FaultKind>(kind), static_cast<sim::FaultTarget>(kind % 3)};
    if (rule.kind == FaultKind::Silence || rule.kind == FaultKind::HangUp) {
      continue;
    }
    rule.chance = 0.15;
    rule.delay = milliseconds{1 + 7 * kind};
    rule.length = static_cast<std::size_t>(1 + kind % 5);
    rules.push_back(rule);
  }
  return rules;
}

std::vector<Writing> session() {
  std::vector<Writing> writings;
  milliseconds at{3};
  for (std::uint8_t i = 0; i < 100; ++i) {
    Bytes bytes =
        i % 3 == 0 ? sim::frame(0x1000) : sim::frame(0x0E00, {static_cast<std::uint8_t>(i % 8), 0});
    sim::append(bytes, i % 4 == 0 ? hex("00 A0 FF") : i % 7 == 0 ? sim::frame(0x6407) : Bytes{});
    writings.push_back({at, bytes});
    at += milliseconds{17 + i % 40};
  }
  return writings;
}

struct Talk {
  Bytes said;
  std::size_t events = 0;
  sim::State state;
};

/// Lets a faulty, slow receiver go through a session, calling it as the generator has it.
Talk talk(const sim::LineConditions& conditions, std::mt19937& random, int longestTick) {
  sim::Receiver receiver;
  receiver.talkFromTheStart();
  sim::FaultyDevice faulty(receiver, mixedRules(), 11);
  sim::LineShaper line(faulty, conditions, 11);
  Talk talk;
  milliseconds now{0};
  const auto passUntil = [&](milliseconds end) {
    while (now < end) {
      const milliseconds step{1 + static_cast<int>(random() % static_cast<unsigned>(longestTick))};
      sim::append(talk.said, line.tick(std::min(step, end - now)));
      now = std::min(now + step, end);
    }
  };
  for (const Writing& writing : session()) {
    passUntil(writing.at);
    for (std::size_t begin = 0; begin < writing.bytes.size();) {
      const std::size_t end = std::min<std::size_t>(begin + 1 + random() % 9, writing.bytes.size());
      const auto at = [&](std::size_t i) {
        return writing.bytes.begin() + static_cast<std::ptrdiff_t>(i);
      };
      sim::append(talk.said, line.receive(Bytes(at(begin), at(end))));
      begin = end;
    }
  }
  passUntil(now + 20s);
  talk.events = faulty.events().size();
  talk.state = receiver.state();
  return talk;
}

class CutAndTicked : public testing::TestWithParam<sim::LineConditions> {};

TEST_P(CutAndTicked, AnywhereALineSaysTheSame) {
  std::mt19937 random(5);
  const Talk first = talk(GetParam(), random, 1);
  EXPECT_GT(first.events, 100U);
  EXPECT_GT(first.said.size(), 5000U);
  for (const int longestTick : {1, 2, 10, 100, 1000, 1000, 1000}) {
    const Talk again = talk(GetParam(), random, longestTick);
    EXPECT_EQ(again.events, first.events);
    EXPECT_EQ(again.state.updateRate, first.state.updateRate);
    EXPECT_EQ(again.said, first.said) << "with ticks of up to " << longestTick << " ms";
  }
}

INSTANTIATE_TEST_SUITE_P(
    Conditions, CutAndTicked,
    testing::Values(sim::LineConditions{}, sim::LineConditions{.latency = 30ms, .spread = 40ms},
                    sim::LineConditions{.baud = 38400},
                    sim::LineConditions{
                        .latency = 5ms, .spread = 9ms, .baud = 115200, .chatterInterval = 13ms}));

class OutputOfTheReceiversOwn : public testing::Test {
 protected:
  OutputOfTheReceiversOwn() {
    receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::Binary; });
    receiver_.talkFromTheStart();
  }

  sim::Receiver receiver_;
};

TEST_F(OutputOfTheReceiversOwn, PassesUnchangedAndIsAwaited) {
  sim::Receiver other(receiver_.state());
  other.talkFromTheStart();
  sim::FaultyDevice device(receiver_, mixedRules(), 1);
  EXPECT_EQ(device.untilNextOutput(), receiver_.untilNextOutput());
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(device.tick(100ms), other.tick(100ms));
  }
}

TEST_F(OutputOfTheReceiversOwn, WaitsUntilTheLastPieceOfAnAnswerIsOut) {
  sim::FaultyDevice device(receiver_, {{.kind = FaultKind::Pieces, .delay = 1500ms, .length = 8}},
                           1);
  device.receive(sim::frame(0x1000));
  EXPECT_EQ(device.tick(1499ms), Bytes{});
  const Bytes said = device.tick(1ms);
  EXPECT_EQ(said.at(0), 0x0A);
  EXPECT_EQ(said.size(), 1U + 66U);
}

TEST(FaultyDevice, GivesUpAFrameThatStaysIncompleteAsTheReceiverDoes) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.outputType = sim::OutputType::None; });
  sim::FaultyDevice device(receiver, {}, 1);
  EXPECT_EQ(device.receive(hex("A0 A1 00 FF") + sim::frame(0x1000)), Bytes{});
  EXPECT_EQ(device.untilNextOutput(), sim::Receiver::kFrameTimeout);
  EXPECT_EQ(device.tick(sim::Receiver::kFrameTimeout),
            sim::acknowledge(0x1000) + sim::frame(0x8600, {1}));
}

TEST(FaultyDevice, HandsOnAHangUpOfItsDevice) {
  EchoDevice unplugged;
  sim::FaultyDevice device(unplugged, {}, 1);
  EXPECT_FALSE(device.takeHangUp());
  unplugged.drop();
  EXPECT_TRUE(device.takeHangUp());
}

}  // namespace
}  // namespace orb::test
