#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "orb-gnss/module_driver.h"
#include "support/device_files.h"

namespace {

class Calendar : public testing::Test {
 protected:
  std::string dateOf(int mjd) {
    int year = 0;
    int month = 0;
    int day = 0;
    driver_.MjdToDate(mjd, &year, &month, &day);
    return std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day);
  }

  orb::test::DeviceFiles files_;
  orbController_QN4470T01 driver_;
};

TEST_F(Calendar, KnowsTheDayOfADate) {
  EXPECT_EQ(driver_.DateToMjd(1980, 1, 6), 44244);
  EXPECT_EQ(driver_.DateToMjd(2000, 1, 1), 51544);
  EXPECT_EQ(driver_.DateToMjd(1970, 1, 1), 40587);
  EXPECT_EQ(driver_.DateToMjd(2000, 2, 29), 51603);
  EXPECT_EQ(driver_.DateToMjd(2024, 12, 31), 60675);
}

TEST_F(Calendar, KnowsTheDateOfADay) {
  EXPECT_EQ(dateOf(44244), "1980-1-6");
  EXPECT_EQ(dateOf(51544), "2000-1-1");
  EXPECT_EQ(dateOf(40587), "1970-1-1");
  EXPECT_EQ(dateOf(51603), "2000-2-29");
  EXPECT_EQ(dateOf(60675), "2024-12-31");
}

TEST_F(Calendar, KnowsEveryDayOfTwoCenturies) {
  using namespace std::chrono;
  constexpr int kUnixEpochMjd = 40587;
  for (sys_days date = sys_days(1900y / January / 1); date < sys_days(2101y / January / 1);
       date += days(1)) {
    const year_month_day expected(date);
    const int year = int{expected.year()};
    const int month = static_cast<int>(unsigned{expected.month()});
    const int day = static_cast<int>(unsigned{expected.day()});
    const int mjd = kUnixEpochMjd + static_cast<int>(date.time_since_epoch().count());
    ASSERT_EQ(driver_.DateToMjd(year, month, day), mjd);
    ASSERT_EQ(dateOf(mjd),
              std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day));
  }
}

TEST_F(Calendar, CountsGpsWeeksFromTheEpoch) {
  EXPECT_EQ(driver_.GpsToMjd(0, 0), 44244);
  EXPECT_EQ(driver_.GpsToMjd(1, 0), 44251);
  EXPECT_EQ(driver_.GpsToMjd(1042, 0), 51538);
}

TEST_F(Calendar, CountsWholeDaysOfAWeek) {
  EXPECT_EQ(driver_.GpsToMjd(0, 86399), 44244);
  EXPECT_EQ(driver_.GpsToMjd(0, 86400), 44245);
  EXPECT_EQ(driver_.GpsToMjd(0, 604799), 44250);
  EXPECT_EQ(driver_.GpsToMjd(0, 604800), 44251);
}

TEST_F(Calendar, CountsNegativeSecondsBackFromTheWeek) {
  EXPECT_EQ(driver_.GpsToMjd(1, -1), 44250);
  EXPECT_EQ(driver_.GpsToMjd(1, -604800), 44244);
  EXPECT_EQ(driver_.GpsToMjd(0, -1), 44243);
}

}  // namespace
