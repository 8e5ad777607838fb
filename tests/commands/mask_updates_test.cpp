#include <gtest/gtest.h>

#include <string>

#include "orb-sim/frame.h"
#include "support/operation_test.h"

namespace {

using orb::test::bytes;
using orb::test::Call;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;

constexpr const char* kQueryMasks = "A0 A1 00 01 2F 2F 0D 0A";

const std::string kQueryNotSent =
    "STAMP:  Could not send : "
    "2F 00: Query the values of elevation mask and CNR mask used by GNSS receiver\n";
const std::string kNoMasks =
    "STAMP:  Did not receive : "
    "2F 00: Query the values of elevation mask and CNR mask used by GNSS receiver\n";
const std::string kMasksNotSent =
    "STAMP:  Could not send : 2B 00: Configure values of Elevation and CNR Mask \n";

// Nothing is sent, and the device is not opened.
const Observed kRejected{.result = 1};

class MaskUpdate : public OperationTest {
 protected:
  /// The n-th query of the masks is answered with this body.
  void answerQuery(std::size_t n, const std::string& body) {
    onPacket(kQueryMasks).nth(n).answer(orb::sim::frame(0xB000, bytes(body)));
  }
  void answerEveryQuery(const std::string& body) {
    onPacket(kQueryMasks).answer(orb::sim::frame(0xB000, bytes(body)));
  }
};

// Minimum carrier-to-noise ratio: the masks are queried, set with mode 1, and queried again.

class MinCNo : public MaskUpdate {
 protected:
  static Call set(int minimum) {
    return
        [=](auto& driver) { return Outcome(driver.setMinCNo(static_cast<signed char>(minimum))); };
  }

  static Observed seen(unsigned int result, const std::string& setting) {
    return {.result = result,
            .line = {"open", kQueryMasks, "open", setting + " " + kQueryMasks, "wait 800 ms",
                     "open", kQueryMasks}};
  }
};

constexpr const char* kSetCnr20 = "A0 A1 00 05 2B 01 05 14 00 3B 0D 0A";
constexpr const char* kSetCnr0 = "A0 A1 00 05 2B 01 05 00 00 2F 0D 0A";
constexpr const char* kSetCnr40 = "A0 A1 00 05 2B 01 05 28 00 07 0D 0A";

TEST_F(MinCNo, IsSetBesideTheCurrentElevation) {
  answerQuery(1, "01 05 00");
  answerQuery(2, "01 05 14");
  answerQuery(3, "01 05 14");
  EXPECT_EQ(observe(set(20)), seen(0, kSetCnr20));
}

TEST_F(MinCNo, SwitchesTheMasksToModeOne) {
  answerQuery(1, "02 FF 63");
  answerQuery(2, "01 FF 14");
  answerQuery(3, "01 FF 14");
  EXPECT_EQ(observe(set(20)), seen(0, "A0 A1 00 05 2B 01 FF 14 00 C1 0D 0A"));
}

TEST_F(MinCNo, IsAtLeastZero) {
  answerEveryQuery("01 05 00");
  EXPECT_EQ(observe(set(0)), seen(0, kSetCnr0));
}

TEST_F(MinCNo, IsAtMostForty) {
  answerEveryQuery("01 05 28");
  EXPECT_EQ(observe(set(40)), seen(0, kSetCnr40));
}

TEST_F(MinCNo, IsRejectedOutsideOfTheRange) {
  letWaitsEnd();  // of what is sent by mistake
  for (const int minimum : {41, 42, 127, -1, -40, -128}) {
    EXPECT_EQ(observe(set(minimum)), kRejected) << minimum;
  }
}

TEST_F(MinCNo, IsNotSetWhenTheMasksAreNotKnown) {
  letWaitsEnd();
  EXPECT_EQ(observe(set(20)), (Observed{.result = 4,
                                        .standardError = kTimedOut,
                                        .errorLog = kNoMasks,
                                        .line = {"open", kQueryMasks}}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_F(MinCNo, IsNotSetWhenTheMasksCannotBeAskedFor) {
  unplug();
  EXPECT_EQ(observe(set(20)),
            (Observed{.result = 8, .standardError = kNoDevice, .errorLog = kQueryNotSent}));
}

TEST_F(MinCNo, HasTheResultOfTheSettingWhereTheLastQueryIsRight) {
  answerQuery(1, "01 05 00");
  answerQuery(2, "01 05 00");
  answerQuery(3, "01 05 14");
  EXPECT_EQ(observe(set(20)), seen(1, kSetCnr20));
}

TEST_F(MinCNo, DoesNotCareForTheElevationInTheLastQuery) {
  answerQuery(1, "01 05 00");
  answerQuery(2, "01 05 14");
  answerQuery(3, "00 63 14");
  EXPECT_EQ(observe(set(20)), seen(0, kSetCnr20));
}

TEST_F(MinCNo, KeepsTheBitsOfAnUnansweredReadBack) {
  letWaitsEnd();
  answerQuery(1, "01 05 00");
  answerQuery(3, "01 05 14");
  Observed expected = seen(5, kSetCnr20);
  expected.standardError = kTimedOut;
  expected.errorLog = kNoMasks;
  EXPECT_EQ(observe(set(20)), expected);
}

TEST_F(MinCNo, IsExactlyOneOnAMismatchWhateverElseWentWrong) {
  letWaitsEnd();
  answerQuery(1, "01 05 00");
  answerQuery(3, "01 05 13");
  Observed expected = seen(1, kSetCnr20);
  expected.standardError = kTimedOut;
  expected.errorLog = kNoMasks;
  EXPECT_EQ(observe(set(20)), expected);
}

TEST_F(MinCNo, IsExactlyOneWhenTheLastQueryIsNotAnswered) {
  letWaitsEnd();
  answerQuery(1, "01 05 00");
  answerQuery(2, "01 05 14");
  Observed expected = seen(1, kSetCnr20);
  expected.standardError = kTimedOut;
  expected.errorLog = kNoMasks;
  EXPECT_EQ(observe(set(20)), expected);
}

// 0 is what an unanswered query leaves.
TEST_F(MinCNo, OfZeroKeepsTheBitsOfTheLastQuery) {
  letWaitsEnd();
  answerQuery(1, "01 05 14");
  answerQuery(2, "01 05 00");
  Observed expected = seen(4, kSetCnr0);
  expected.standardError = kTimedOut;
  expected.errorLog = kNoMasks;
  EXPECT_EQ(observe(set(0)), expected);
}

TEST_F(MinCNo, IsExactlyOneWhenTheDeviceGoesBeforeTheSetting) {
  answerQuery(1, "01 05 00");
  when("open", 1, [&] { unplug(); });
  EXPECT_EQ(observe(set(20)),
            (Observed{.result = 1,
                      .standardError = std::string(kNoDevice) + kNoDevice + kNoDevice,
                      .errorLog = kMasksNotSent + kQueryNotSent + kQueryNotSent,
                      .line = {"open", kQueryMasks, "wait 800 ms"}}));
}

TEST_F(MinCNo, KeepsTheBitsOfASettingThatWasNotSent) {
  answerQuery(1, "01 05 00");
  answerQuery(2, "01 05 14");
  when("open", 1, [&] { unplug(); });
  when("wait 800 ms", 1, [&] { plugIn(); });
  EXPECT_EQ(observe(set(20)),
            (Observed{.result = 9,
                      .standardError = std::string(kNoDevice) + kNoDevice,
                      .errorLog = kMasksNotSent + kQueryNotSent,
                      .line = {"open", kQueryMasks, "wait 800 ms", "open", kQueryMasks}}));
}

// Elevation limit: the masks are queried, and set with mode 1 after a wait.

class ElevationLimit : public MaskUpdate {
 protected:
  static Call set(unsigned char limit) {
    return [=](auto& driver) { return Outcome(driver.setElevationLimit(limit)); };
  }

  static Observed seen(unsigned int result, const std::string& setting) {
    return {.result = result,
            .line = {"open", kQueryMasks, "wait 100 ms", "open", setting + " " + kQueryMasks}};
  }
};

constexpr const char* kSetElevation10 = "A0 A1 00 05 2B 01 0A 14 00 34 0D 0A";

TEST_F(ElevationLimit, IsSetBesideTheCurrentCarrierToNoiseRatio) {
  answerQuery(1, "01 05 14");
  answerQuery(2, "01 0A 14");
  EXPECT_EQ(observe(set(10)), seen(0, kSetElevation10));
}

TEST_F(ElevationLimit, SwitchesTheMasksToModeOne) {
  answerQuery(1, "00 05 FF");
  answerQuery(2, "01 0A FF");
  EXPECT_EQ(observe(set(10)), seen(0, "A0 A1 00 05 2B 01 0A FF 00 DF 0D 0A"));
}

TEST_F(ElevationLimit, IsAtLeastThree) {
  answerEveryQuery("01 03 14");
  EXPECT_EQ(observe(set(3)), seen(0, "A0 A1 00 05 2B 01 03 14 00 3D 0D 0A"));
}

TEST_F(ElevationLimit, IsAtMostEightyFive) {
  answerEveryQuery("01 55 14");
  EXPECT_EQ(observe(set(85)), seen(0, "A0 A1 00 05 2B 01 55 14 00 6B 0D 0A"));
}

TEST_F(ElevationLimit, IsRejectedOutsideOfTheRange) {
  letWaitsEnd();  // of what is sent by mistake
  constexpr unsigned char kOutside[] = {0, 1, 2, 86, 87, 128, 255};
  for (const unsigned char limit : kOutside) {
    EXPECT_EQ(observe(set(limit)), kRejected) << unsigned{limit};
  }
}

TEST_F(ElevationLimit, IsNotSetWhenTheMasksAreNotKnown) {
  letWaitsEnd();
  EXPECT_EQ(observe(set(10)), (Observed{.result = 4,
                                        .standardError = kTimedOut,
                                        .errorLog = kNoMasks,
                                        .line = {"open", kQueryMasks}}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_F(ElevationLimit, IsNotSetWhenTheMasksCannotBeAskedFor) {
  unplug();
  EXPECT_EQ(observe(set(10)),
            (Observed{.result = 8, .standardError = kNoDevice, .errorLog = kQueryNotSent}));
}

TEST_F(ElevationLimit, MustBeReadBackRightInEveryField) {
  for (const char* body : {"01 05 14", "00 0A 14", "01 0A 13"}) {
    answerQuery(1, "01 05 14");
    answerQuery(2, body);
    EXPECT_EQ(observe(set(10)), seen(1, kSetElevation10)) << body;
  }
}

TEST_F(ElevationLimit, KeepsTheBitsOfAnUnansweredReadBack) {
  letWaitsEnd();
  answerQuery(1, "01 05 14");
  Observed expected = seen(5, kSetElevation10);
  expected.standardError = kTimedOut;
  expected.errorLog = kNoMasks;
  EXPECT_EQ(observe(set(10)), expected);
}

TEST_F(ElevationLimit, KeepsTheBitsOfASettingThatWasNotSent) {
  answerQuery(1, "01 05 14");
  when("wait 100 ms", 1, [&] { unplug(); });
  EXPECT_EQ(observe(set(10)), (Observed{.result = 9,
                                        .standardError = std::string(kNoDevice) + kNoDevice,
                                        .errorLog = kMasksNotSent + kQueryNotSent,
                                        .line = {"open", kQueryMasks, "wait 100 ms"}}));
}

}  // namespace
