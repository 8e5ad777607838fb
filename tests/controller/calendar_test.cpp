#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "orb-gnss/module_driver.h"
#include "support/device_files.h"

namespace orb::test {
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

  DeviceFiles files_;
  orbController_QN4470T01 driver_;
};

TEST_F(Calendar, KnowsEveryDayOfTwoCenturies) {
  using std::chrono::sys_days;
  constexpr int kUnixEpochMjd = 40587;
  const sys_days end(std::chrono::year(2101) / 1 / 1);
  for (sys_days date(std::chrono::year(1900) / 1 / 1); date < end; date += std::chrono::days(1)) {
    const std::chrono::year_month_day expected(date);
    const int year = int{expected.year()};
    const int month = static_cast<int>(unsigned{expected.month()});
    const int day = static_cast<int>(unsigned{expected.day()});
    const int mjd = kUnixEpochMjd + static_cast<int>(date.time_since_epoch().count());
    ASSERT_EQ(driver_.DateToMjd(year, month, day), mjd);
    ASSERT_EQ(dateOf(mjd),
              std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day));
  }
}

TEST_F(Calendar, CountsGpsWeeksAndSecondsFromTheEpoch) {
  const struct {
    int week;
    int second;
    int mjd;
  } kRows[] = {{0, 0, 44244},       {1, 0, 44251},      {1042, 0, 51538},   {0, 86399, 44244},
               {0, 86400, 44245},   {0, 604799, 44250}, {0, 604800, 44251}, {1, -1, 44250},
               {1, -604800, 44244}, {0, -1, 44243}};
  for (const auto& [week, second, mjd] : kRows) {
    EXPECT_EQ(driver_.GpsToMjd(week, second), mjd) << week << ' ' << second;
  }
}

}  // namespace
}  // namespace orb::test
