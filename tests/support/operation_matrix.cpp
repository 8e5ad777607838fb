#include "support/operation_matrix.h"

namespace orb::test {

namespace {

using namespace std::chrono_literals;

// Long enough to be looked for in vain many times, short enough not to be waited for.
constexpr auto kLate = 40ms;
constexpr std::size_t kPieceLength = 3;
constexpr auto kGap = 1ms;

/// The same packet with a wrong checksum.
sim::Bytes corrupted(sim::Bytes packet) {
  constexpr std::size_t kChecksumFromEnd = 3;
  packet[packet.size() - kChecksumFromEnd] ^= 0x10;
  return packet;
}

/// The acknowledgement (83) or refusal (84) of a message, by the packet's id byte.
sim::Bytes responseTo(std::uint8_t response, const std::string& packet) {
  const std::uint8_t id = bytes(packet)[4];
  return {0xA0, 0xA1, 0x00, 0x02, response, id, static_cast<std::uint8_t>(response ^ id),
          0x0D, 0x0A};
}

sim::Bytes acknowledgementOf(const Sent& message) { return responseTo(0x83, message.packet); }
sim::Bytes refusalOf(const Sent& message) { return responseTo(0x84, message.packet); }

sim::Bytes operator+(sim::Bytes first, const sim::Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::string logLine(const std::string& failure, const Sent& message) {
  return failure.empty() ? "" : "STAMP:  " + failure + message.description + "\n";
}

}  // namespace

// Queries.

Observed QueryOutcome::answered() const {
  return {.result = row().answer.result,
          .outputs = row().answer.outputs,
          .standardOutput = row().answer.printed,
          .line = {"open", row().sends.packet}};
}

Observed QueryOutcome::unanswered() const {
  return {.result = row().noReply.result,
          .outputs = row().untouched,
          .standardOutput = row().noReply.printed,
          .standardError = kTimedOut,
          .errorLog = logLine(row().noReplyLog, row().sends),
          .line = {"open", row().sends.packet}};
}

TEST_P(QueryOutcome, Succeeds) {
  onQuery().answer(bytes(row().reply));
  EXPECT_EQ(call(), answered());
}

TEST_P(QueryOutcome, SucceedsBehindTheAcknowledgement) {
  onQuery().answer(acknowledgementOf(row().sends) + bytes(row().reply));
  EXPECT_EQ(call(), answered());
}

TEST_P(QueryOutcome, SucceedsWithALateReply) {
  stayWithinTheLimit();
  onQuery().answer(bytes(row().reply)).after(kLate);
  EXPECT_EQ(call(), answered());
}

TEST_P(QueryOutcome, SucceedsWithAReplyInPieces) {
  onQuery().answer(bytes(row().reply)).inPieces(kPieceLength, kGap);
  EXPECT_EQ(call(), answered());
}

TEST_P(QueryOutcome, SucceedsAtTheLimitWhenACorruptReplyIsRepeated) {
  letWaitsEnd();
  onQuery().answer(corrupted(bytes(row().reply)) + bytes(row().reply));
  Observed expected = answered();
  expected.standardError = kTimedOut;
  EXPECT_EQ(call(), expected);
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(QueryOutcome, ReadsWhatAShortReplyLacksAsZero) {
  onQuery().answer(bytes(row().shortReply));
  Observed expected = answered();
  expected.result = row().shortAnswer.result;
  expected.outputs = row().shortAnswer.outputs;
  expected.standardOutput = row().shortAnswer.printed;
  EXPECT_EQ(call(), expected);
}

TEST_P(QueryOutcome, TimesOutWithoutReply) {
  letWaitsEnd();
  EXPECT_EQ(call(), unanswered());
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(QueryOutcome, TimesOutWhenRefused) {
  letWaitsEnd();
  onQuery().answer(refusalOf(row().sends));
  EXPECT_EQ(call(), unanswered());
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(QueryOutcome, TimesOutOnACorruptReply) {
  letWaitsEnd();
  onQuery().answer(corrupted(bytes(row().reply)));
  EXPECT_EQ(call(), unanswered());
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(QueryOutcome, FailsWithoutDevice) {
  unplug();
  EXPECT_EQ(call(), (Observed{.result = row().noDevice.result,
                              .outputs = row().untouched,
                              .standardOutput = row().noDevice.printed,
                              .standardError = kNoDevice,
                              .errorLog = logLine(row().noDeviceLog, row().sends)}));
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(QueryOutcome);

// Settings.

Observed SettingOutcome::seen(const Answer& answer) const {
  Observed observed{.result = answer.result,
                    .outputs = answer.outputs,
                    .standardOutput = answer.printed,
                    .line = {"open", row().sends.packet}};
  if (row().settle == 0ms) {
    observed.line.back() += " " + row().reads.packet;
  } else {
    observed.line.push_back("wait " + std::to_string(row().settle.count()) + " ms");
    observed.line.push_back("open");
    observed.line.push_back(row().reads.packet);
  }
  return observed;
}

Observed SettingOutcome::unanswered() const {
  Observed observed = seen(row().noReply);
  observed.standardError = kTimedOut;
  observed.errorLog = logLine("Did not receive : ", row().reads);
  return observed;
}

TEST_P(SettingOutcome, Succeeds) {
  onReadBack().answer(bytes(row().reply));
  EXPECT_EQ(call(), kept());
}

TEST_P(SettingOutcome, SucceedsBehindTheAcknowledgements) {
  onSetting().answer(acknowledgementOf(row().sends));
  onReadBack().answer(acknowledgementOf(row().reads) + bytes(row().reply));
  EXPECT_EQ(call(), kept());
}

TEST_P(SettingOutcome, SucceedsWithALateReply) {
  stayWithinTheLimit();
  onReadBack().answer(bytes(row().reply)).after(kLate);
  EXPECT_EQ(call(), kept());
}

TEST_P(SettingOutcome, SucceedsWithAReplyInPieces) {
  onReadBack().answer(bytes(row().reply)).inPieces(kPieceLength, kGap);
  EXPECT_EQ(call(), kept());
}

TEST_P(SettingOutcome, SucceedsAtTheLimitWhenACorruptReplyIsRepeated) {
  letWaitsEnd();
  onReadBack().answer(corrupted(bytes(row().reply)) + bytes(row().reply));
  Observed expected = kept();
  expected.standardError = kTimedOut;
  EXPECT_EQ(call(), expected);
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(SettingOutcome, ReportsAnotherValue) {
  onReadBack().answer(bytes(row().otherReply));
  EXPECT_EQ(call(), seen(row().other));
}

// The refusal itself goes unseen.
TEST_P(SettingOutcome, ReportsAnotherValueWhenRefused) {
  onSetting().answer(refusalOf(row().sends));
  onReadBack().answer(bytes(row().otherReply));
  EXPECT_EQ(call(), seen(row().other));
}

TEST_P(SettingOutcome, ReadsWhatAShortReplyLacksAsZero) {
  onReadBack().answer(bytes(row().shortReply));
  EXPECT_EQ(call(), seen(row().shortAnswer));
}

TEST_P(SettingOutcome, TimesOutWithoutReply) {
  letWaitsEnd();
  EXPECT_EQ(call(), unanswered());
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(SettingOutcome, TimesOutWhenTheReadBackIsRefused) {
  letWaitsEnd();
  onReadBack().answer(refusalOf(row().reads));
  EXPECT_EQ(call(), unanswered());
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(SettingOutcome, TimesOutOnACorruptReply) {
  letWaitsEnd();
  onReadBack().answer(corrupted(bytes(row().reply)));
  EXPECT_EQ(call(), unanswered());
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(SettingOutcome, TriesBothMessagesWithoutDevice) {
  constexpr unsigned int kNoReply = 4;
  constexpr unsigned int kNotSent = 8;
  unplug();
  Observed expected = seen(row().noReply);
  expected.result = (row().noReply.result & ~kNoReply) | kNotSent;
  expected.standardError = std::string(kNoDevice) + kNoDevice;
  expected.errorLog =
      logLine("Could not send : ", row().sends) + logLine("Could not send : ", row().reads);
  expected.line.clear();
  if (row().settle != 0ms) {
    expected.line.push_back("wait " + std::to_string(row().settle.count()) + " ms");
  }
  EXPECT_EQ(call(), expected);
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SettingOutcome);

// Orders.

Observed OrderOutcome::done() const { return {.line = {"open", row().sends.packet}}; }

TEST_P(OrderOutcome, SucceedsWhenSent) { EXPECT_EQ(call(), done()); }

TEST_P(OrderOutcome, SucceedsEvenWhenRefused) {
  onPacket(row().sends.packet).answer(refusalOf(row().sends));
  EXPECT_EQ(call(), done());
}

TEST_P(OrderOutcome, FailsWithoutDevice) {
  unplug();
  EXPECT_EQ(call(), (Observed{.result = 8,
                              .standardError = kNoDevice,
                              .errorLog = logLine("Could not send : ", row().sends)}));
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(OrderOutcome);

}  // namespace orb::test
