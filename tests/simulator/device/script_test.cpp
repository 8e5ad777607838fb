#include "orb-sim/script.h"

#include <gtest/gtest.h>

#include "orb-sim/receiver.h"
#include "rate_query.h"
#include "timeline.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

const sim::Bytes kPowerQuery = sim::frame(0x1500);
const sim::Bytes kPowerAnswer = sim::acknowledge(0x1500) + sim::frame(0xB900, {0});
const sim::Bytes kGarbage = hex("DE AD A0 BE EF");

class ScriptedReceiver : public testing::Test {
 protected:
  // Without output of the receiver's own, what ticks bring is the script's.
  ScriptedReceiver() {
    receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::None; });
  }

  sim::Receiver receiver_;
  sim::Script script_{receiver_};
};

TEST_F(ScriptedReceiver, GivesWayToTheBytesOfARule) {
  script_.on(0x1000).answer(kGarbage);
  EXPECT_EQ(script_.receive(kRateQuery), kGarbage);
  EXPECT_EQ(script_.receive(kPowerQuery), kPowerAnswer) << "there is no rule for it";
}

TEST_F(ScriptedReceiver, DoesNotSeeASettingThatARuleAnswers) {
  script_.on(0x0E00).answer(sim::acknowledge(0x0E00));
  EXPECT_EQ(script_.receive(sim::frame(0x0E00, {20, 0})), sim::acknowledge(0x0E00));
  EXPECT_EQ(receiver_.state().updateRate, 1);
}

TEST_F(ScriptedReceiver, SeesASettingWhoseAnswerIsDelayed) {
  script_.on(0x0E00).after(1s);
  EXPECT_EQ(script_.receive(sim::frame(0x0E00, {20, 0})), sim::Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20);
}

TEST_F(ScriptedReceiver, KeepsSilentOrRefusesByRule) {
  script_.on(0x1000).nothing();
  script_.on(0x6418).refusal();
  script_.on(0x6420).answer([](const sim::Frame& packet) { return packet.payload; });
  EXPECT_EQ(script_.receive(kRateQuery), sim::Bytes{});
  EXPECT_EQ(script_.receive(sim::frame(0x6418)), hex("A0 A1 00 02 84 64 E0 0D 0A"));
  EXPECT_EQ(script_.receive(sim::frame(0x6420)), hex("64 20"));
}

TEST_F(ScriptedReceiver, IsAnsweredForByTheNewestRuleThatApplies) {
  script_.onAny().refusal();
  script_.on(0x1000).answer(hex("01"));
  script_.on(0x1000).nth(2).answer(hex("02"));
  EXPECT_EQ(script_.receive(kRateQuery), hex("01"));
  EXPECT_EQ(script_.receive(kRateQuery), hex("02"));
  EXPECT_EQ(script_.receive(kRateQuery), hex("01"));
  EXPECT_EQ(script_.receive(kPowerQuery), sim::refuse(0x1500));
}

TEST_F(ScriptedReceiver, IsReplacedInSomeOccurrencesOnly) {
  script_.on(0x1000).first(2).nothing();
  script_.on(0x1500).nth(2).nothing();
  EXPECT_EQ(script_.receive(kRateQuery + kRateQuery + kRateQuery), kRateAnswer);
  EXPECT_EQ(script_.receive(kPowerQuery + kPowerQuery + kPowerQuery), kPowerAnswer + kPowerAnswer);
}

TEST_F(ScriptedReceiver, IsReplacedForOneExactPacket) {
  script_.on(sim::frame(0x0E00, {20, 0})).nothing();
  EXPECT_EQ(script_.receive(sim::frame(0x0E00, {20, 0})), sim::Bytes{});
  EXPECT_EQ(script_.receive(sim::frame(0x0E00, {21, 0})), sim::acknowledge(0x0E00));
  EXPECT_EQ(receiver_.state().updateRate, 21);
}

TEST_F(ScriptedReceiver, IsItselfAgainWhenTheRulesAreCleared) {
  script_.onAny().nothing();
  script_.clear();
  sim::Bytes answer;
  for (const std::uint8_t byte : hex("00 A0") + kRateQuery) {
    sim::append(answer, script_.receive({byte}));
  }
  EXPECT_EQ(answer, kRateAnswer) << "also to a packet in pieces";
}

TEST_F(ScriptedReceiver, IsDelayedAndOvertaken) {
  script_.on(0x1000).after(50ms);
  EXPECT_EQ(script_.receive(kRateQuery), sim::Bytes{});
  EXPECT_EQ(script_.untilNextOutput(), 50ms);
  script_.tick(49ms);
  EXPECT_EQ(script_.untilNextOutput(), 1ms);
  EXPECT_EQ(timelineOf(script_, kPowerQuery, 1000),
            (Timeline{{0, kPowerAnswer}, {1, kRateAnswer}}));
}

TEST_F(ScriptedReceiver, IsCutIntoPieces) {
  script_.on(0x1000).answer(hex("01 02 03 04 05")).inPieces(2, 10ms);
  EXPECT_EQ(timelineOf(script_, kRateQuery, 1000),
            (Timeline{{0, hex("01 02")}, {10, hex("03 04")}, {20, hex("05")}}));
  script_.on(0x1000).answer(hex("01 02 03")).after(5ms).inPieces(1, 10ms);
  EXPECT_EQ(timelineOf(script_, kRateQuery, 1000),
            (Timeline{{5, hex("01")}, {15, hex("02")}, {25, hex("03")}}));
}

TEST_F(ScriptedReceiver, StillSendsItsOwnOutput) {
  receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::Binary; });
  receiver_.talkFromTheStart();
  EXPECT_EQ(script_.untilNextOutput(), 1000ms);
  EXPECT_EQ(script_.tick(1000ms).size(), 66U);
}

TEST(Script, IsSilentWithoutADevice) {
  sim::Script script;
  EXPECT_EQ(script.receive(kRateQuery), sim::Bytes{});
  EXPECT_EQ(script.tick(10000ms), sim::Bytes{});
  EXPECT_EQ(script.untilNextOutput(), sim::Device::kNever);
  script.on(0x1000).answer(kGarbage);
  EXPECT_EQ(script.receive(kRateQuery), kGarbage);
}

TEST(Script, TakesARuleIntoForceWhenItIsWhole) {
  sim::Script script;
  {
    sim::Script::Rule rule = script.on(0x1000);
    rule.answer(kGarbage);
    EXPECT_EQ(script.receive(kRateQuery), sim::Bytes{});
  }
  EXPECT_EQ(script.receive(kRateQuery), kGarbage);
}

}  // namespace
}  // namespace orb::test
