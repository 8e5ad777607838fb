#include "base/toml/duration.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

TEST(Duration, IsANumberWithItsUnit) {
  EXPECT_DOUBLE_EQ(secondsOf("250ms").value(), 0.25);
  EXPECT_DOUBLE_EQ(secondsOf("1.5s").value(), 1.5);
  EXPECT_DOUBLE_EQ(secondsOf("-12.5ns").value(), -12.5e-9);
  EXPECT_DOUBLE_EQ(secondsOf("7us").value(), 7e-6);
  EXPECT_DOUBLE_EQ(secondsOf("2min").value(), 120);
  EXPECT_DOUBLE_EQ(secondsOf("0.5h").value(), 1800);
}

TEST(Duration, IsNothingElse) {
  for (const char* text : {"", "5", "ms", "5 ms", "5m", "5sec", "+5s", "1e3s", "0x10s", "infs",
                           "nans", "--5s", "5s5s", "5s ", " 5s", "1,5s"}) {
    EXPECT_EQ(secondsOf(text), std::nullopt) << text;
  }
}

TEST(Duration, CountsInWholeUnits) {
  EXPECT_EQ(wholeUnits(0.25, 1e-3), 250);
  EXPECT_EQ(wholeUnits(0.1 + 0.2, 1e-3), 300);
  EXPECT_EQ(wholeUnits(-12.5e-9, 1e-11), -1250);
  EXPECT_EQ(wholeUnits(8784 * 3600.0, 1e-3), 31'622'400'000);
  EXPECT_EQ(wholeUnits(1209599.999, 1e-3), 1'209'599'999);
  EXPECT_EQ(wholeUnits(0.0005, 1e-3), std::nullopt);
  EXPECT_EQ(wholeUnits(1e300, 1e-3), std::nullopt);
}

TEST(Duration, IsWrittenInItsLargestUnit) {
  EXPECT_EQ(durationText(3600), "1h");
  EXPECT_EQ(durationText(90 * 60), "90min");
  EXPECT_EQ(durationText(1.5), "1500ms");
  EXPECT_EQ(durationText(-5e-6), "-5us");
  EXPECT_EQ(durationText(1e-11), "0.01ns");
  EXPECT_EQ(durationText(0), "0s");
}

}  // namespace
}  // namespace orb::test
