#include <string>
#include <utility>
#include <vector>

#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

std::vector<std::string> operator+(std::vector<std::string> first,
                                   const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// Navigation mode and position fix together. Model 2 is mode 1.
class DynamicModel : public OperationTest {
 protected:
  Observed set(int model, int fixMode) {
    return observe([&](auto& driver) {
      return Outcome(driver.setDynamicModel(static_cast<unsigned char>(model),
                                            static_cast<unsigned char>(fixMode)));
    });
  }

  Observed get() {
    return observe([](auto& driver) {
      unsigned char model = 77;
      unsigned char fixMode = 78;
      const unsigned int result = driver.getDynamicModel(model, fixMode);
      return Outcome(result, model, fixMode);
    });
  }

  void answerMode(const std::string& reply) { onPacket(mode_.reads.packet).answer(hex(reply)); }
  void answerFix(const std::string& reply) { onPacket(fix_.reads.packet).answer(hex(reply)); }

  const Setting& mode_ = setting("ChangeDynamicMode");
  const Setting& modeZero_ = setting("ChangeDynamicModeToZero");
  const Setting& fix_ = setting("FixNavConfigureTo3D3D");

  /// What the line sees of the setting of mode and fix.
  const std::vector<std::string> modeLine_ = lineOf(mode_, mode_.sends.packet);
  const std::vector<std::string> fixLine_ =
      std::vector<std::string>{"wait 100 ms"} + lineOf(fix_, fix_.sends.packet);
};

TEST_F(DynamicModel, SetsTheNavigationModeAndAfterAWaitTheFix) {
  connectReceiver();
  for (const auto& [fixMode, packet] : {std::pair{0, "A0 A1 00 05 64 11 01 01 00 75 0D 0A"},
                                        {1, "A0 A1 00 05 64 11 00 00 00 75 0D 0A"},
                                        {2, "A0 A1 00 05 64 11 00 01 00 74 0D 0A"}}) {
    EXPECT_EQ(set(2, fixMode),
              (Observed{.line = modeLine_ + std::vector<std::string>{"wait 100 ms"} +
                                lineOf(fix_, packet)}))
        << "fix mode " << fixMode;
  }
}

TEST_F(DynamicModel, IsModeZeroForAModelThatThereIsNot) {
  connectReceiver();
  for (const int model : {9, 10, 128, 255}) {
    set(2, 0);
    EXPECT_EQ(set(model, 0).line.at(1), modeZero_.sends.packet) << model;
    EXPECT_EQ(gps_.receiver.state().navigationMode, 0) << model;
  }
}

TEST_F(DynamicModel, IsNotSupportedWithAnotherFixModeOnceTheNavigationModeIsSent) {
  connectReceiver();
  for (const int fixMode : {3, 4, 128, 255}) {
    EXPECT_EQ(set(2, fixMode), (Observed{.result = 256, .line = modeLine_})) << fixMode;
  }
  EXPECT_EQ(gps_.receiver.state().navigationMode, 1);
}

TEST_F(DynamicModel, IsSimplyNotSupportedWithAnotherFixModeWhateverBecameOfTheNavigationMode) {
  answerMode(mode_.otherReply.packet);
  EXPECT_EQ(set(2, 3).result, 256u);
  unplug();
  EXPECT_EQ(set(2, 3), (Observed{.result = 256,
                                 .standardError = times(2, kNoDevice),
                                 .errorLog = notSent(mode_.sends.description) +
                                             notSent(mode_.reads.description),
                                 .line = {"wait 100 ms"}}));
}

TEST_F(DynamicModel, GoesOnToTheFixWhenTheNavigationModeIsNotKept) {
  answerMode(mode_.otherReply.packet);
  answerFix(fix_.reply.packet);
  EXPECT_EQ(set(2, 1), (Observed{.result = 1, .line = modeLine_ + fixLine_}));
}

TEST_F(DynamicModel, AddsUpWhatBothHalvesComeTo) {
  answerFix(fix_.otherReply.packet);
  letWaitsEnd();
  EXPECT_EQ(set(8, 1),  // mode 0 is also what an unanswered read-back leaves
            (Observed{.result = 4 | 1,
                      .standardError = kTimedOut,
                      .errorLog = noReply(mode_.reads.description),
                      .line = lineOf(modeZero_, modeZero_.sends.packet) + fixLine_}));
}

TEST_F(DynamicModel, IsReadFromTheFixFirstAndThenFromTheNavigationMode) {
  answerFix("A0 A1 00 04 64 88 00 01 ED 0D 0A");
  answerMode("A0 A1 00 03 64 8B FF 10 0D 0A");
  EXPECT_EQ(get(), (Observed{.outputs = "255, 2",
                             .line = {"open", fix_.reads.packet, "open", mode_.reads.packet}}));
}

// Fix modes 0 and 1 are exchanged in comparison with those that are set, on purpose.
TEST_F(DynamicModel, HasTheFixModeThatBothHalvesOfTheFixAgreeOn) {
  answerMode(mode_.reply.packet);
  for (const auto& [reply, outputs] : {std::pair{"A0 A1 00 04 64 88 01 01 EC 0D 0A", "1, 1"},
                                       {"A0 A1 00 04 64 88 00 00 EC 0D 0A", "1, 0"},
                                       {"A0 A1 00 04 64 88 00 01 ED 0D 0A", "1, 2"},
                                       {"A0 A1 00 04 64 88 01 00 ED 0D 0A", "1, 2"},
                                       {"A0 A1 00 04 64 88 02 02 EC 0D 0A", "1, 2"},
                                       {"A0 A1 00 04 64 88 01 02 EF 0D 0A", "1, 2"},
                                       {"A0 A1 00 04 64 88 02 00 EE 0D 0A", "1, 2"},
                                       {"A0 A1 00 04 64 88 FF FF EC 0D 0A", "1, 2"}}) {
    answerFix(reply);
    EXPECT_EQ(get().outputs, outputs) << reply;
  }
}

TEST_F(DynamicModel, IsLeftAloneWhenOneOfTheTwoIsNotTold) {
  answerMode(mode_.reply.packet);
  letWaitsEnd();
  Observed expected{.result = 4,
                    .outputs = "77, 78",
                    .standardError = kTimedOut,
                    .errorLog = noReply(fix_.reads.description),
                    .line = {"open", fix_.reads.packet}};
  EXPECT_EQ(get(), expected);

  answerFix(fix_.reply.packet);
  onPacket(mode_.reads.packet).nothing();
  letWaitsEnd();
  expected.errorLog = noReply(mode_.reads.description);
  expected.line.insert(expected.line.end(), {"open", mode_.reads.packet});
  EXPECT_EQ(get(), expected);
}

TEST_F(DynamicModel, IsLeftAloneWhenTheDeviceIsMissingOrGoesAfterTheFix) {
  answerFix(fix_.reply.packet);
  when("open", 1, [&] { unplug(); });
  Observed expected{.result = 8,
                    .outputs = "77, 78",
                    .standardError = kNoDevice,
                    .errorLog = notSent(mode_.reads.description),
                    .line = {"open", fix_.reads.packet}};
  EXPECT_EQ(get(), expected);

  expected.errorLog = notSent(fix_.reads.description);
  expected.line.clear();
  EXPECT_EQ(get(), expected);
}

}  // namespace
}  // namespace orb::test
