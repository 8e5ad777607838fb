#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "device/echo_device.h"
#include "orb-sim/faults.h"
#include "orb-sim/frame.h"
#include "orb-sim/receiver.h"
#include "timeline.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using sim::FaultKind;
using sim::FaultTarget;

const Bytes kRateQuery = hex("A0 A1 00 01 10 10 0D 0A");
const Bytes kSetRate = hex("A0 A1 00 03 0E 14 00 1A 0D 0A");  // 20 Hz
const Bytes kNavigationModeQuery = hex("A0 A1 00 02 64 18 7C 0D 0A");
const Bytes kSecondBandQuery = hex("A0 A1 00 02 64 51 35 0D 0A");
const Bytes kPowerModeQuery = hex("A0 A1 00 01 15 15 0D 0A");

const Bytes kAcknowledgement = hex("A0 A1 00 02 83 10 93 0D 0A");
const Bytes kReply = hex("A0 A1 00 02 86 01 87 0D 0A");
const Bytes kSetRateAcknowledgement = hex("A0 A1 00 02 83 0E 8D 0D 0A");

Bytes text(const std::string& text) { return Bytes(text.begin(), text.end()); }

sim::FaultRule length(FaultKind kind, std::size_t length) {
  return {.kind = kind, .length = length};
}

/// A receiver that says nothing of its own accord.
class QuietReceiver : public sim::Receiver {
 public:
  QuietReceiver() {
    change([](sim::State& state) { state.outputType = sim::OutputType::None; });
  }
};

/// The answers of a receiver to messages that a rule falls on.
class FaultKindOf : public testing::Test {
 protected:
  Bytes answerTo(const Bytes& packet, const sim::FaultRule& rule) {
    sim::FaultyDevice device(receiver_, {rule}, kSeed);
    return device.receive(packet);
  }

  static constexpr std::uint64_t kSeed = 7;

  QuietReceiver receiver_;
};

constexpr FaultTarget kAcknowledgementOnly = FaultTarget::Acknowledgement;
constexpr char kGga[] =
    "$GPGGA,120000.000,4822.2740,N,01134.0734,E,1,09,0.9,475.9,M,44.2,M,,0000*58\r\n";
constexpr char kRmcGsaZda[] =
    "$GPRMC,120000.000,A,4822.2740,N,01134.0734,E,000.0,000.0,010324,,,A*63\r\n"
    "$GPGSA,A,3,02,05,07,09,13,15,20,28,30,,,,1.6,0.9,1.3*3A\r\n"
    "$GPZDA,120000.000,01,03,2024,00,00*53\r\n";

TEST_F(FaultKindOf, EachFrameFaultSpoilsTheFramesThatItIsMeantFor) {
  const Bytes noise = hex("96 DA 5E 7E 4F");
  const struct {
    Bytes packet;
    sim::FaultRule rule;
    Bytes answer;
  } kRows[] = {
      {kRateQuery, {FaultKind::NoReply}, kAcknowledgement},
      {kRateQuery, {FaultKind::NoReply, kAcknowledgementOnly}, kReply},
      {kRateQuery, {FaultKind::NoReply, FaultTarget::Both}, {}},
      {kRateQuery, {FaultKind::Refusal}, hex("A0 A1 00 02 84 10 94 0D 0A")},
      // The power mode's id; the update rate's in its place. With a sub-id, the navigation mode's;
      // the second band's in its place.
      {kRateQuery, {FaultKind::WrongId}, kAcknowledgement + hex("A0 A1 00 02 B9 01 B8 0D 0A")},
      {kRateQuery,
       {FaultKind::WrongId, kAcknowledgementOnly},
       hex("A0 A1 00 02 B9 10 A9 0D 0A") + kReply},
      {kPowerModeQuery,
       {FaultKind::WrongId},
       hex("A0 A1 00 02 83 15 96 0D 0A  A0 A1 00 02 86 00 86 0D 0A")},
      {kSecondBandQuery,
       {FaultKind::WrongId},
       hex("A0 A1 00 02 83 64 E7 0D 0A  A0 A1 00 03 64 8B 00 EF 0D 0A")},
      {kNavigationModeQuery,
       {FaultKind::WrongId},
       hex("A0 A1 00 02 83 64 E7 0D 0A  A0 A1 00 03 64 9F 00 FB 0D 0A")},
      {kRateQuery, {FaultKind::BadChecksum}, kAcknowledgement + hex("A0 A1 00 02 86 01 78 0D 0A")},
      {kSetRate, {FaultKind::BadChecksum}, hex("A0 A1 00 02 83 0E 72 0D 0A")},
      {kRateQuery, length(FaultKind::CutShort, 5), kAcknowledgement + hex("A0 A1 00 02 86")},
      {kRateQuery, length(FaultKind::CutShort, 0), kAcknowledgement},
      {kRateQuery, length(FaultKind::CutShort, 100), kAcknowledgement + kReply},
      {kRateQuery, length(FaultKind::OverlongLength, 0x1FF),
       kAcknowledgement + hex("A0 A1 02 01 86 01 87 0D 0A")},
      {kRateQuery, length(FaultKind::OverlongLength, 1000000),
       kAcknowledgement + hex("A0 A1 FF FF 86 01 87 0D 0A")},
      {kRateQuery, {FaultKind::Doubled}, kAcknowledgement + kReply + kReply},
      {kRateQuery,
       {FaultKind::Doubled, FaultTarget::Both},
       kAcknowledgement + kAcknowledgement + kReply + kReply},
      {kRateQuery, length(FaultKind::Pieces, 4), kAcknowledgement + kReply},  // without a delay
      {kRateQuery, length(FaultKind::NoiseBefore, 5), kAcknowledgement + noise + kReply},
      {kRateQuery, length(FaultKind::NoiseInside, 5),
       kAcknowledgement + hex("A0 A1 00 02") + noise + hex("86 01 87 0D 0A")},
      {kRateQuery, length(FaultKind::NmeaBurst, 5),
       kAcknowledgement + text(std::string(kGga) + kRmcGsaZda + kGga) + kReply},
  };
  for (const auto& [packet, rule, answer] : kRows) {
    QuietReceiver receiver;
    sim::FaultyDevice device(receiver, {rule}, kSeed);
    EXPECT_EQ(device.receive(packet), answer)
        << "kind " << static_cast<int>(rule.kind) << ", length " << rule.length;
  }
}

TEST_F(FaultKindOf, NoReplyLetsASettingTakeEffectAndRefusalDoesNot) {
  EXPECT_EQ(answerTo(kSetRate, {FaultKind::Refusal}), hex("A0 A1 00 02 84 0E 8A 0D 0A"));
  EXPECT_EQ(receiver_.state().updateRate, 1);
  EXPECT_EQ(answerTo(kSetRate, {FaultKind::NoReply}), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20);
}

TEST_F(FaultKindOf, EachDelayHoldsUpTheFramesThatItIsMeantForAndWhatIsTiedToThem) {
  const auto late = [](FaultTarget target) {
    return sim::FaultRule{.kind = FaultKind::LateReply, .target = target, .delay = 300ms};
  };
  const auto pieces = [](FaultTarget target, std::size_t length) {
    return sim::FaultRule{
        .kind = FaultKind::Pieces, .target = target, .delay = 10ms, .length = length};
  };
  const struct {
    sim::FaultRule rule;
    Timeline answer;
  } kRows[] = {
      {late(FaultTarget::Reply), {{0, kAcknowledgement}, {300, kReply}}},
      {late(kAcknowledgementOnly), {{0, kReply}, {300, kAcknowledgement}}},
      {pieces(FaultTarget::Reply, 4),
       {{0, kAcknowledgement + hex("A0 A1 00 02")}, {10, hex("86 01 87 0D")}, {20, hex("0A")}}},
      {pieces(kAcknowledgementOnly, 8),
       {{0, hex("A0 A1 00 02 83 10 93 0D")}, {10, hex("0A") + kReply}}},
  };
  for (const auto& [rule, answer] : kRows) {
    sim::FaultyDevice device(receiver_, {rule}, kSeed);
    EXPECT_EQ(timelineOf(device, kRateQuery, 1000), answer);
  }
}

TEST_F(FaultKindOf, LateReplyIsAwaited) {
  sim::FaultyDevice device(receiver_, {{.kind = FaultKind::LateReply, .delay = 300ms}}, kSeed);
  device.receive(kRateQuery);
  EXPECT_EQ(device.untilNextOutput(), 300ms);
  device.tick(299ms);
  EXPECT_EQ(device.untilNextOutput(), 1ms);
}

TEST_F(FaultKindOf, WrongValueKeepsAnotherValueThanTheOneAcknowledged) {
  EXPECT_EQ(answerTo(kSetRate, {FaultKind::WrongValue}), kSetRateAcknowledgement);
  EXPECT_EQ(std::popcount(receiver_.state().updateRate ^ 20U), 1) << "one bit is turned";
}

TEST_F(FaultKindOf, WrongValueLeavesTheAttributeByteAlone) {
  for (std::uint64_t seed = 0; seed < 64; ++seed) {
    sim::FaultyDevice device(receiver_, {{FaultKind::WrongValue}}, seed);
    device.receive(sim::frame(0x2B00, {1, 10, 20, 0}));
    const sim::State state = receiver_.state();
    EXPECT_EQ(state.attributes.at(0x2B00), 0);
    EXPECT_NE((Bytes{state.elevationCnrMask.mode, state.elevationCnrMask.elevation,
                     state.elevationCnrMask.cnr}),
              (Bytes{1, 10, 20}));
  }
}

TEST_F(FaultKindOf, WrongValueLeavesQueriesAndOrdersAlone) {
  sim::FaultyDevice device(receiver_, {{FaultKind::WrongValue}}, kSeed);
  const Bytes restart = sim::frame(0x6400 | 0x3F, {1});
  device.receive(sim::frame(0x0200, {1}) + sim::frame(0x0400, {1}) + restart);
  EXPECT_EQ(receiver_.state().lastRestart, Bytes{1});
  EXPECT_TRUE(device.events().empty());
}

TEST_F(FaultKindOf, SilenceLastsForEver) {
  receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::Binary; });
  receiver_.talkFromTheStart();
  sim::FaultyDevice device(receiver_, {{.kind = FaultKind::Silence, .first = 2}}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20) << "the message itself is heard";
  EXPECT_EQ(device.tick(10min), Bytes{});
  EXPECT_EQ(device.receive(sim::frame(0x0E00, {5, 0})), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20) << "and nothing after it";
}

TEST_F(FaultKindOf, HangUpDropsTheLineInsteadOfAnAnswer) {
  sim::FaultyDevice device(receiver_, {{.kind = FaultKind::HangUp, .first = 2, .times = 1}}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
  EXPECT_FALSE(device.takeHangUp());
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20) << "the message itself is heard";
  EXPECT_TRUE(device.takeHangUp());
  EXPECT_FALSE(device.takeHangUp());
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + hex("A0 A1 00 02 86 14 92 0D 0A"));
}

TEST_F(FaultKindOf, HangUpLosesWhatTheClientHasWrittenAfterTheMessage) {
  sim::FaultyDevice device(receiver_, {{.kind = FaultKind::HangUp, .first = 2, .times = 1}}, kSeed);
  const Bytes begun = hex("A0 A1 00 03");
  EXPECT_EQ(device.receive(kRateQuery + kRateQuery + kSetRate + begun), kAcknowledgement + kReply)
      << "the answer that was due comes before the hang-up";
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_TRUE(device.takeHangUp());
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
}

TEST_F(FaultKindOf, HangUpKeepsWhatIsDueLaterForTheNewLine) {
  sim::FaultRule late{.kind = FaultKind::LateReply, .first = 1, .times = 1, .delay = 10ms};
  sim::FaultRule hangUp{.kind = FaultKind::HangUp, .first = 2};
  sim::FaultyDevice device(receiver_, {late, hangUp}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery + kRateQuery), kAcknowledgement);
  EXPECT_EQ(device.tick(20ms), Bytes{}) << "the line has not yet been told";
  EXPECT_TRUE(device.takeHangUp());
  EXPECT_EQ(device.untilNextOutput(), 0ms);
  EXPECT_EQ(device.tick(0ms), kReply);
}

TEST_F(FaultKindOf, SlowRestartAnswersAndIsGoneForAWhile) {
  receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::Binary; });
  sim::FaultyDevice device(
      receiver_, {{.kind = FaultKind::SlowRestart, .message = 0x643F, .delay = 2500ms}}, kSeed);
  EXPECT_EQ(device.receive(sim::frame(0x643F, {1})), hex("A0 A1 00 02 83 64 E7 0D 0A"));
  EXPECT_EQ(device.tick(2499ms), Bytes{});
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_EQ(device.tick(1ms), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 1) << "it was not heard";
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
  EXPECT_NE(device.tick(2s), Bytes{}) << "it speaks of its own accord again";
}

const Bytes kRestart = sim::frame(0x643F, {1});
const sim::FaultRule kSlowRestart{
    .kind = FaultKind::SlowRestart, .message = 0x643F, .delay = 1000ms};

TEST_F(FaultKindOf, SlowRestartDoesNotBeginAnewForAMessageThatIsNotHeard) {
  sim::FaultyDevice device(receiver_, {kSlowRestart}, kSeed);
  device.receive(kRestart);
  device.tick(900ms);
  EXPECT_EQ(device.receive(kRestart), Bytes{});
  device.tick(100ms);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
}

TEST_F(FaultKindOf, SlowRestartComesAlsoWhereItsAnswerIsLost) {
  const sim::FaultRule lost{.kind = FaultKind::NoReply, .message = 0x643F};
  sim::FaultyDevice device(receiver_, {lost, kSlowRestart}, kSeed);
  EXPECT_EQ(device.receive(kRestart), Bytes{});
  EXPECT_EQ(device.receive(kRateQuery), Bytes{});
  device.tick(1000ms);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
}

TEST_F(FaultKindOf, NoneLetsEveryPacketThroughAsItCame) {
  EchoDevice echo;
  sim::FaultyDevice device(echo, {}, kSeed);
  const Bytes withoutItsSubId = hex("A0 A1 00 01 64 64 0D 0A");
  EXPECT_EQ(device.receive(withoutItsSubId + kSetRate), withoutItsSubId + kSetRate);
}

}  // namespace
}  // namespace orb::test
