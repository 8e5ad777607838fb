#include "orb-gnss/module_driver.h"

namespace {

constexpr int kGpsEpochMjd = 44244;  // 1980-01-06
constexpr int kDaysPerWeek = 7;
constexpr int kSecondsPerDay = 86400;
constexpr int kSecondsPerWeek = kDaysPerWeek * kSecondsPerDay;

// The formulas hold for dates of the Gregorian calendar; 64 bits keep them defined for any other
// input. All divisions truncate toward zero.
using Wide = long long;

}  // namespace

int orbController_QN4470T01::DateToMjd(int year, int month, int day) {
  const Wide y = year;
  const Wide m = month;
  return static_cast<int>(367 * y - 7 * (y + (m + 9) / 12) / 4 -
                          3 * ((y + (m - 9) / 7) / 100 + 1) / 4 + 275 * m / 9 + day - 678972);
}

void orbController_QN4470T01::MjdToDate(int mjd, int* year, int* month, int* day) {
  Wide l = Wide{mjd} + 2468570;
  const Wide n = 4 * l / 146097;
  l -= (146097 * n + 3) / 4;
  const Wide i = 4000 * (l + 1) / 1461001;
  l = l - 1461 * i / 4 + 31;
  const Wide j = 80 * l / 2447;
  const Wide k = j / 11;
  *day = static_cast<int>(l - 2447 * j / 80);
  *month = static_cast<int>(j + 2 - 12 * k);
  *year = static_cast<int>(100 * (n - 49) + i + k);
}

int orbController_QN4470T01::GpsToMjd(int week, int seconds) {
  Wide w = week;
  Wide s = seconds;
  if (s < 0) {
    w -= 1;
    s += kSecondsPerWeek;
  }
  return static_cast<int>(s / kSecondsPerDay + kDaysPerWeek * w + kGpsEpochMjd);
}
