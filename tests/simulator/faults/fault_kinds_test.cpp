#include <gtest/gtest.h>

#include <string>

#include "hex.h"
#include "orb-sim/faults.h"
#include "orb-sim/frame.h"
#include "orb-sim/receiver.h"

namespace orb::sim::test {
namespace {

using namespace std::chrono_literals;

const Bytes kRateQuery = hex("A0 A1 00 01 10 10 0D 0A");
const Bytes kSetRate = hex("A0 A1 00 03 0E 14 00 1A 0D 0A");  // 20 Hz
const Bytes kNavigationModeQuery = hex("A0 A1 00 02 64 18 7C 0D 0A");
const Bytes kSecondBandQuery = hex("A0 A1 00 02 64 51 35 0D 0A");
const Bytes kPowerModeQuery = hex("A0 A1 00 01 15 15 0D 0A");

const Bytes kAcknowledgement = hex("A0 A1 00 02 83 10 93 0D 0A");
const Bytes kReply = hex("A0 A1 00 02 86 01 87 0D 0A");
const Bytes kSetRateAcknowledgement = hex("A0 A1 00 02 83 0E 8D 0D 0A");

Bytes text(const std::string& text) { return Bytes(text.begin(), text.end()); }

/// A quiet receiver to put a fault in front of.
class QuietReceiver : public Receiver {
 public:
  QuietReceiver() {
    change([](State& state) { state.outputType = OutputType::None; });
  }
};

/// The answers of a receiver to messages that a rule falls on.
class FaultKindOf : public testing::Test {
 protected:
  Bytes answerTo(const Bytes& packet, const FaultRule& rule) {
    FaultyDevice device(receiver_, {rule}, kSeed);
    return device.receive(packet);
  }

  static constexpr std::uint64_t kSeed = 7;

  QuietReceiver receiver_;
};

TEST_F(FaultKindOf, NoReplyLeavesTheReplyOut) {
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::NoReply}), kAcknowledgement);
}

TEST_F(FaultKindOf, NoReplyLeavesTheAcknowledgementOut) {
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::NoReply, FaultTarget::Acknowledgement}), kReply);
}

TEST_F(FaultKindOf, NoReplyLeavesTheWholeAnswerOut) {
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::NoReply, FaultTarget::Both}), Bytes{});
}

TEST_F(FaultKindOf, NoReplyLeavesOutTheAcknowledgementThatASettingIsAnsweredWith) {
  EXPECT_EQ(answerTo(kSetRate, {FaultKind::NoReply}), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20);
}

TEST_F(FaultKindOf, LateReplyDelaysTheReplyAlone) {
  FaultRule rule{FaultKind::LateReply};
  rule.delay = 300ms;
  FaultyDevice device(receiver_, {rule}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement);
  EXPECT_EQ(device.untilNextOutput(), 300ms);
  EXPECT_EQ(device.tick(299ms), Bytes{});
  EXPECT_EQ(device.untilNextOutput(), 1ms);
  EXPECT_EQ(device.tick(1ms), kReply);
  EXPECT_EQ(device.tick(10s), Bytes{});
}

TEST_F(FaultKindOf, LateReplyLetsTheReplyOvertakeALateAcknowledgement) {
  FaultRule rule{FaultKind::LateReply, FaultTarget::Acknowledgement};
  rule.delay = 300ms;
  FaultyDevice device(receiver_, {rule}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), kReply);
  EXPECT_EQ(device.tick(300ms), kAcknowledgement);
}

TEST_F(FaultKindOf, RefusalStandsForTheWholeAnswer) {
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::Refusal}), hex("A0 A1 00 02 84 10 94 0D 0A"));
}

TEST_F(FaultKindOf, RefusalLeavesASettingAsItWas) {
  EXPECT_EQ(answerTo(kSetRate, {FaultKind::Refusal}), hex("A0 A1 00 02 84 0E 8A 0D 0A"));
  EXPECT_EQ(receiver_.state().updateRate, 1);
}

TEST_F(FaultKindOf, WrongIdGivesThePowerModesId) {
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::WrongId}),
            kAcknowledgement + hex("A0 A1 00 02 B9 01 B8 0D 0A"));
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::WrongId, FaultTarget::Acknowledgement}),
            hex("A0 A1 00 02 B9 10 A9 0D 0A") + kReply);
}

TEST_F(FaultKindOf, WrongIdGivesTheUpdateRatesIdToThePowerMode) {
  EXPECT_EQ(answerTo(kPowerModeQuery, {FaultKind::WrongId}),
            hex("A0 A1 00 02 83 15 96 0D 0A  A0 A1 00 02 86 00 86 0D 0A"));
}

TEST_F(FaultKindOf, WrongIdKeepsTheFormOfAMessageWithASubId) {
  EXPECT_EQ(answerTo(kSecondBandQuery, {FaultKind::WrongId}),
            hex("A0 A1 00 02 83 64 E7 0D 0A  A0 A1 00 03 64 8B 00 EF 0D 0A"));
  EXPECT_EQ(answerTo(kNavigationModeQuery, {FaultKind::WrongId}),
            hex("A0 A1 00 02 83 64 E7 0D 0A  A0 A1 00 03 64 9F 00 FB 0D 0A"));
}

TEST_F(FaultKindOf, BadChecksumInvertsTheChecksum) {
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::BadChecksum}),
            kAcknowledgement + hex("A0 A1 00 02 86 01 78 0D 0A"));
  EXPECT_EQ(answerTo(kSetRate, {FaultKind::BadChecksum}), hex("A0 A1 00 02 83 0E 72 0D 0A"));
}

TEST_F(FaultKindOf, CutShortLeavesTheFirstBytes) {
  FaultRule rule{FaultKind::CutShort};
  rule.length = 5;
  EXPECT_EQ(answerTo(kRateQuery, rule), kAcknowledgement + hex("A0 A1 00 02 86"));
  rule.length = 0;
  EXPECT_EQ(answerTo(kRateQuery, rule), kAcknowledgement);
  rule.length = 100;
  EXPECT_EQ(answerTo(kRateQuery, rule), kAcknowledgement + kReply);
}

TEST_F(FaultKindOf, OverlongLengthClaimsMoreThanThereIs) {
  FaultRule rule{FaultKind::OverlongLength};
  rule.length = 0x1FF;
  EXPECT_EQ(answerTo(kRateQuery, rule), kAcknowledgement + hex("A0 A1 02 01 86 01 87 0D 0A"));
  rule.length = 1000000;
  EXPECT_EQ(answerTo(kRateQuery, rule), kAcknowledgement + hex("A0 A1 FF FF 86 01 87 0D 0A"));
}

TEST_F(FaultKindOf, DoubledSendsTheFrameTwice) {
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::Doubled}), kAcknowledgement + kReply + kReply);
  EXPECT_EQ(answerTo(kRateQuery, {FaultKind::Doubled, FaultTarget::Both}),
            kAcknowledgement + kAcknowledgement + kReply + kReply);
}

TEST_F(FaultKindOf, PiecesComeApart) {
  FaultRule rule{FaultKind::Pieces};
  rule.length = 4;
  rule.delay = 10ms;
  FaultyDevice device(receiver_, {rule}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + hex("A0 A1 00 02"));
  EXPECT_EQ(device.tick(9ms), Bytes{});
  EXPECT_EQ(device.tick(1ms), hex("86 01 87 0D"));
  EXPECT_EQ(device.tick(9ms), Bytes{});
  EXPECT_EQ(device.tick(1ms), hex("0A"));
  EXPECT_EQ(device.tick(10s), Bytes{});
}

TEST_F(FaultKindOf, PiecesHoldUpTheRestOfTheAnswer) {
  FaultRule rule{FaultKind::Pieces, FaultTarget::Acknowledgement};
  rule.length = 8;
  rule.delay = 10ms;
  FaultyDevice device(receiver_, {rule}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), hex("A0 A1 00 02 83 10 93 0D"));
  EXPECT_EQ(device.tick(10ms), hex("0A") + kReply);
}

TEST_F(FaultKindOf, NoiseBeforeStandsInFrontOfTheFrame) {
  FaultRule rule{FaultKind::NoiseBefore};
  rule.length = 5;
  EXPECT_EQ(answerTo(kRateQuery, rule), kAcknowledgement + hex("96 DA 5E 7E 4F") + kReply);
}

TEST_F(FaultKindOf, NoiseInsideStandsInTheMiddleOfTheFrame) {
  FaultRule rule{FaultKind::NoiseInside};
  rule.length = 5;
  EXPECT_EQ(answerTo(kRateQuery, rule),
            kAcknowledgement + hex("A0 A1 00 02") + hex("96 DA 5E 7E 4F") + hex("86 01 87 0D 0A"));
}

TEST_F(FaultKindOf, NmeaBurstStandsInFrontOfTheFrame) {
  FaultRule rule{FaultKind::NmeaBurst};
  rule.length = 5;
  const Bytes gga =
      text("$GPGGA,120000.000,4822.2740,N,01134.0734,E,1,09,0.9,475.9,M,44.2,M,,0000*58\r\n");
  EXPECT_EQ(answerTo(kRateQuery, rule),
            kAcknowledgement + gga +
                text("$GPRMC,120000.000,A,4822.2740,N,01134.0734,E,000.0,000.0,010324,,,A*63\r\n"
                     "$GPGSA,A,3,02,05,07,09,13,15,20,28,30,,,,1.6,0.9,1.3*3A\r\n"
                     "$GPZDA,120000.000,01,03,2024,00,00*53\r\n") +
                gga + kReply);
}

TEST_F(FaultKindOf, WrongValueKeepsAnotherValueThanTheOneAcknowledged) {
  EXPECT_EQ(answerTo(kSetRate, {FaultKind::WrongValue}), kSetRateAcknowledgement);
  const unsigned int turned = receiver_.state().updateRate ^ 20U;
  EXPECT_NE(turned, 0U);
  EXPECT_EQ(turned & (turned - 1), 0U) << "more than one bit: " << turned;
}

TEST_F(FaultKindOf, WrongValueLeavesTheAttributeByteAlone) {
  for (std::uint64_t seed = 0; seed < 64; ++seed) {
    FaultyDevice device(receiver_, {{FaultKind::WrongValue}}, seed);
    device.receive(frame(0x2B00, {1, 10, 20, 0}));
    const State state = receiver_.state();
    EXPECT_EQ(state.attributes.at(0x2B00), 0);
    EXPECT_NE((Bytes{state.elevationCnrMask.mode, state.elevationCnrMask.elevation,
                     state.elevationCnrMask.cnr}),
              (Bytes{1, 10, 20}));
  }
}

TEST_F(FaultKindOf, WrongValueLeavesQueriesAndOrdersAlone) {
  FaultyDevice device(receiver_, {{FaultKind::WrongValue}}, kSeed);
  const Bytes restart = frame(0x6400 | 0x3F, {1});
  device.receive(frame(0x0200, {1}) + frame(0x0400, {1}) + restart);
  EXPECT_EQ(receiver_.state().lastRestart, Bytes{1});
  EXPECT_TRUE(device.events().empty());
}

TEST_F(FaultKindOf, SilenceLastsForEver) {
  receiver_.change([](State& state) { state.outputType = OutputType::Binary; });
  receiver_.talkFromTheStart();
  FaultRule rule{FaultKind::Silence};
  rule.first = 2;
  FaultyDevice device(receiver_, {rule}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20) << "the message itself is heard";
  EXPECT_EQ(device.tick(10min), Bytes{});
  EXPECT_EQ(device.receive(frame(0x0E00, {5, 0})), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20) << "and nothing after it";
}

TEST_F(FaultKindOf, HangUpDropsTheLineInsteadOfAnAnswer) {
  FaultRule rule{FaultKind::HangUp};
  rule.first = 2;
  rule.times = 1;
  FaultyDevice device(receiver_, {rule}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
  EXPECT_FALSE(device.takeHangUp());
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 20) << "the message itself is heard";
  EXPECT_TRUE(device.takeHangUp());
  EXPECT_FALSE(device.takeHangUp());
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + hex("A0 A1 00 02 86 14 92 0D 0A"));
}

TEST_F(FaultKindOf, HangUpLosesWhatTheClientHasWrittenBehindTheMessage) {
  FaultRule rule{FaultKind::HangUp};
  rule.first = 2;
  rule.times = 1;
  FaultyDevice device(receiver_, {rule}, kSeed);
  const Bytes begun = hex("A0 A1 00 03");
  EXPECT_EQ(device.receive(kRateQuery + kRateQuery + kSetRate + begun), kAcknowledgement + kReply)
      << "the answer that was due comes before the hang-up";
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_TRUE(device.takeHangUp());
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
}

TEST_F(FaultKindOf, HangUpKeepsWhatIsDueLaterForTheNewLine) {
  FaultRule late{FaultKind::LateReply};
  late.first = 1;
  late.times = 1;
  late.delay = 10ms;
  FaultRule hangUp{FaultKind::HangUp};
  hangUp.first = 2;
  FaultyDevice device(receiver_, {late, hangUp}, kSeed);
  EXPECT_EQ(device.receive(kRateQuery + kRateQuery), kAcknowledgement);
  EXPECT_EQ(device.tick(20ms), Bytes{}) << "the line has not yet been told";
  EXPECT_TRUE(device.takeHangUp());
  EXPECT_EQ(device.untilNextOutput(), 0ms);
  EXPECT_EQ(device.tick(0ms), kReply);
}

TEST_F(FaultKindOf, SlowRestartAnswersAndIsGoneForAWhile) {
  receiver_.change([](State& state) { state.outputType = OutputType::Binary; });
  FaultRule rule{FaultKind::SlowRestart};
  rule.message = 0x643F;
  rule.delay = 2500ms;
  FaultyDevice device(receiver_, {rule}, kSeed);
  EXPECT_EQ(device.receive(frame(0x643F, {1})), hex("A0 A1 00 02 83 64 E7 0D 0A"));
  EXPECT_EQ(device.tick(2499ms), Bytes{});
  EXPECT_EQ(device.receive(kSetRate), Bytes{});
  EXPECT_EQ(device.tick(1ms), Bytes{});
  EXPECT_EQ(receiver_.state().updateRate, 1) << "it was not heard";
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
  EXPECT_NE(device.tick(2s), Bytes{}) << "it speaks of its own accord again";
}

TEST_F(FaultKindOf, SlowRestartDoesNotBeginAnewForAMessageThatIsNotHeard) {
  FaultRule rule{FaultKind::SlowRestart};
  rule.message = 0x643F;
  rule.delay = 1000ms;
  FaultyDevice device(receiver_, {rule}, kSeed);
  device.receive(frame(0x643F, {1}));
  device.tick(900ms);
  EXPECT_EQ(device.receive(frame(0x643F, {1})), Bytes{});
  device.tick(100ms);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
}

TEST_F(FaultKindOf, SlowRestartComesAlsoWhereItsAnswerIsLost) {
  FaultRule restart{FaultKind::SlowRestart};
  restart.message = 0x643F;
  restart.delay = 1000ms;
  FaultRule lost{FaultKind::NoReply};
  lost.message = 0x643F;
  FaultyDevice device(receiver_, {lost, restart}, kSeed);
  EXPECT_EQ(device.receive(frame(0x643F, {1})), Bytes{});
  EXPECT_EQ(device.receive(kRateQuery), Bytes{});
  device.tick(1000ms);
  EXPECT_EQ(device.receive(kRateQuery), kAcknowledgement + kReply);
}

TEST_F(FaultKindOf, NoneLetsEveryPacketThroughAsItCame) {
  class Echo : public Device {
   public:
    Bytes receive(const Bytes& bytes) override { return bytes; }
    Bytes tick(std::chrono::milliseconds) override { return {}; }
  };
  Echo echo;
  FaultyDevice device(echo, {}, kSeed);
  const Bytes withoutItsSubId = hex("A0 A1 00 01 64 64 0D 0A");
  EXPECT_EQ(device.receive(withoutItsSubId + kSetRate), withoutItsSubId + kSetRate);
}

}  // namespace
}  // namespace orb::sim::test
