#include <algorithm>
#include <string>
#include <vector>

#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

constexpr const char* kQueryMasks = "A0 A1 00 01 2F 2F 0D 0A";
constexpr const char* kQuery =
    "2F 00: Query the values of elevation mask and CNR mask used by GNSS receiver";
constexpr const char* kMasks = "2B 00: Configure values of Elevation and CNR Mask ";

constexpr const char* kSetCnr20 = "A0 A1 00 05 2B 01 05 14 00 3B 0D 0A";
constexpr const char* kSetCnr0 = "A0 A1 00 05 2B 01 05 00 00 2F 0D 0A";
constexpr const char* kSetCnr40 = "A0 A1 00 05 2B 01 05 28 00 07 0D 0A";
constexpr const char* kSetElevation10 = "A0 A1 00 05 2B 01 0A 14 00 34 0D 0A";

Call setMinCNo(int minimum) {
  return calling(&Driver::setMinCNo, static_cast<signed char>(minimum));
}
Call setElevationLimit(int limit) {
  return calling(&Driver::setElevationLimit, static_cast<unsigned char>(limit));
}

/// The masks are queried, one of them is set with mode 1, and they are queried again.
struct Update {
  const char* name;
  int value;
  std::vector<std::string> answers;  ///< bodies of the answers to the queries; empty: none comes
  const char* setting;
  unsigned int result;
};

std::ostream& operator<<(std::ostream& out, const Update& row) { return out << row.name; }

class MaskUpdate : public OperationTest {
 protected:
  /// What is seen, with the line after the first query.
  static Observed seen(const Update& row, const std::vector<std::string>& line) {
    Observed observed{.result = row.result, .line = {"open", kQueryMasks}};
    observed.line.insert(observed.line.end(), line.begin(), line.end());
    const auto silent = static_cast<int>(std::count(row.answers.begin(), row.answers.end(), ""));
    observed.standardError = times(silent, kTimedOut);
    observed.errorLog = times(silent, noReply(kQuery));
    return observed;
  }

  Observed observeUpdate(const Update& row, const Call& call) {
    letWaitsEnd();
    for (std::size_t i = 0; i < row.answers.size(); ++i) {
      if (!row.answers[i].empty()) {
        onPacket(kQueryMasks).nth(i + 1).answer(sim::frame(0xB000, hex(row.answers[i])));
      }
    }
    return observe(call);
  }
};

const auto kUpdateName = [](const auto& info) { return std::string(info.param.name); };

class MinCNo : public MaskUpdate, public testing::WithParamInterface<Update> {};

TEST_P(MinCNo, IsSetBetweenTwoQueries) {
  const std::string exchange = GetParam().setting + std::string(" ") + kQueryMasks;
  EXPECT_EQ(observeUpdate(GetParam(), setMinCNo(GetParam().value)),
            seen(GetParam(), {"open", exchange, "wait 800 ms", "open", kQueryMasks}));
}

// A name, the value, the answers to the queries (before, read back, after 800 ms), what is set, and
// the result. The last answer decides on the ratio alone; what it does not confirm is exactly 1.
// Otherwise the bits of all steps add up.
const Update kMinCNoUpdates[] = {
    {"BesideTheElevation", 20, {"01 05 00", "01 05 14", "01 05 14"}, kSetCnr20, 0},
    {"WithModeOne",
     20,
     {"02 FF 63", "01 FF 14", "01 FF 14"},
     "A0 A1 00 05 2B 01 FF 14 00 C1 0D 0A",
     0},
    {"Lowest", 0, {"01 05 00", "01 05 00", "01 05 00"}, kSetCnr0, 0},
    {"Highest", 40, {"01 05 28", "01 05 28", "01 05 28"}, kSetCnr40, 0},
    {"KeptLate", 20, {"01 05 00", "01 05 00", "01 05 14"}, kSetCnr20, 1},
    {"WithOtherMasksAtLast", 20, {"01 05 00", "01 05 14", "00 63 14"}, kSetCnr20, 0},
    {"ReadBackUnanswered", 20, {"01 05 00", "", "01 05 14"}, kSetCnr20, 5},
    {"ReadBackUnansweredAndNotKept", 20, {"01 05 00", "", "01 05 13"}, kSetCnr20, 1},
    {"LastUnanswered", 20, {"01 05 00", "01 05 14", ""}, kSetCnr20, 1},
    // 0 is what an unanswered query leaves.
    {"ZeroWithLastUnanswered", 0, {"01 05 14", "01 05 00", ""}, kSetCnr0, 4}};

INSTANTIATE_TEST_SUITE_P(Each, MinCNo, testing::ValuesIn(kMinCNoUpdates), kUpdateName);

TEST_F(MaskUpdate, OfTheRatioIsExactlyOneWhenTheDeviceGoesBeforeTheSetting) {
  onPacket(kQueryMasks).nth(1).answer(hex("A0 A1 00 04 B0 01 05 00 B4 0D 0A"));
  when("open", 1, [&] { unplug(); });
  EXPECT_EQ(observe(setMinCNo(20)),
            (Observed{.result = 1,
                      .standardError = times(3, kNoDevice),
                      .errorLog = notSent(kMasks) + notSent(kQuery) + notSent(kQuery),
                      .line = {"open", kQueryMasks, "wait 800 ms"}}));
}

TEST_F(MaskUpdate, OfTheRatioKeepsTheBitsOfASettingThatWasNotSent) {
  onPacket(kQueryMasks).nth(1).answer(hex("A0 A1 00 04 B0 01 05 00 B4 0D 0A"));
  onPacket(kQueryMasks).nth(2).answer(hex("A0 A1 00 04 B0 01 05 14 A0 0D 0A"));
  when("open", 1, [&] { unplug(); });
  when("wait 800 ms", 1, [&] { plugIn(); });
  EXPECT_EQ(observe(setMinCNo(20)),
            (Observed{.result = 9,
                      .standardError = times(2, kNoDevice),
                      .errorLog = notSent(kMasks) + notSent(kQuery),
                      .line = {"open", kQueryMasks, "wait 800 ms", "open", kQueryMasks}}));
}

class ElevationLimit : public MaskUpdate, public testing::WithParamInterface<Update> {};

TEST_P(ElevationLimit, IsSetAfterAQuery) {
  const std::string exchange = GetParam().setting + std::string(" ") + kQueryMasks;
  EXPECT_EQ(observeUpdate(GetParam(), setElevationLimit(GetParam().value)),
            seen(GetParam(), {"wait 100 ms", "open", exchange}));
}

// A name, the value, the answers to the queries (before, read back), what is set after 100 ms, and
// the result.
const Update kElevationUpdates[] = {
    {"BesideTheRatio", 10, {"01 05 14", "01 0A 14"}, kSetElevation10, 0},
    {"WithModeOne", 10, {"00 05 FF", "01 0A FF"}, "A0 A1 00 05 2B 01 0A FF 00 DF 0D 0A", 0},
    {"Lowest", 3, {"01 03 14", "01 03 14"}, "A0 A1 00 05 2B 01 03 14 00 3D 0D 0A", 0},
    {"Highest", 85, {"01 55 14", "01 55 14"}, "A0 A1 00 05 2B 01 55 14 00 6B 0D 0A", 0},
    {"OtherElevation", 10, {"01 05 14", "01 05 14"}, kSetElevation10, 1},
    {"OtherMode", 10, {"01 05 14", "00 0A 14"}, kSetElevation10, 1},
    {"OtherRatio", 10, {"01 05 14", "01 0A 13"}, kSetElevation10, 1},
    {"Unanswered", 10, {"01 05 14", ""}, kSetElevation10, 5}};

INSTANTIATE_TEST_SUITE_P(Each, ElevationLimit, testing::ValuesIn(kElevationUpdates), kUpdateName);

TEST_F(MaskUpdate, OfTheElevationKeepsTheBitsOfASettingThatWasNotSent) {
  onPacket(kQueryMasks).answer(hex("A0 A1 00 04 B0 01 05 14 A0 0D 0A"));
  when("wait 100 ms", 1, [&] { unplug(); });
  EXPECT_EQ(observe(setElevationLimit(10)),
            (Observed{.result = 9,
                      .standardError = times(2, kNoDevice),
                      .errorLog = notSent(kMasks) + notSent(kQuery),
                      .line = {"open", kQueryMasks, "wait 100 ms"}}));
}

TEST_F(MaskUpdate, IsNotTriedWhenTheMasksAreNotKnown) {
  for (const Call& call : {setMinCNo(20), setElevationLimit(10)}) {
    letWaitsEnd();
    EXPECT_EQ(observe(call), (Observed{.result = 4,
                                       .standardError = kTimedOut,
                                       .errorLog = noReply(kQuery),
                                       .line = {"open", kQueryMasks}}));
    EXPECT_EQ(waitsEnded(), 1);
  }
}

TEST_F(MaskUpdate, IsNotTriedWhenTheMasksCannotBeAskedFor) {
  unplug();
  for (const Call& call : {setMinCNo(20), setElevationLimit(10)}) {
    EXPECT_EQ(observe(call),
              (Observed{.result = 8, .standardError = kNoDevice, .errorLog = notSent(kQuery)}));
  }
}

TEST_F(MaskUpdate, IsRejectedOutsideOfItsRangeWithTheDeviceLeftClosed) {
  connectReceiver();
  for (const int minimum : {41, 42, 127, -1, -40, -128}) {
    EXPECT_EQ(observe(setMinCNo(minimum)), Observed{.result = 1}) << minimum;
  }
  for (const int limit : {0, 1, 2, 86, 87, 128, 255}) {
    EXPECT_EQ(observe(setElevationLimit(limit)), Observed{.result = 1}) << limit;
  }
}

// The fix mode, by its number.

class FixMode : public OperationTest {};

TEST_F(FixMode, IsNotSupportedAboveTwoWithTheDeviceLeftClosed) {
  connectReceiver();
  for (int mode = 3; mode <= 255; ++mode) {
    EXPECT_EQ(observe(calling(&Driver::setFixMode, static_cast<unsigned char>(mode))),
              Observed{.result = 256})
        << mode;
  }
}

}  // namespace
}  // namespace orb::test
