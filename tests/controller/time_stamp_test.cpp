#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <clocale>
#include <ctime>
#include <filesystem>
#include <string>
#include <tuple>

#include "orb-gnss/module_driver.h"
#include "support/device_files.h"
#include "support/replacement.h"
#include "support/wall_clock.h"

namespace {

/// What strftime() was asked last.
struct {
  std::string format;
  std::size_t room = 0;
  bool fits = true;  ///< else it leaves what it has written, as the C library does
} asked;

}  // namespace

ORB_TEST_REPLACEMENT std::size_t strftime(char* text, std::size_t room, const char* format,
                                          const tm* moment) noexcept {
  static const auto original =
      reinterpret_cast<decltype(&strftime)>(::dlsym(RTLD_NEXT, "strftime"));
  asked.format = format;
  asked.room = room;
  const std::size_t length = original(text, room, format, moment);
  return asked.fits ? length : 0;
}

namespace orb::test {
namespace {

constexpr std::time_t kMorning = 1710493507;  // 2024-03-15 09:05:07 UTC

class TimeStamp : public testing::Test {
 protected:
  ~TimeStamp() override { std::setlocale(LC_ALL, "C"); }

  DeviceFiles files_;
  WallClock clock_;
  orbController_QN4470T01 driver_;
};

TEST_F(TimeStamp, IsLocalTimeAndMillisecondsPaddedAndCutOff) {
  const std::tuple<std::time_t, long, const char*> rows[] = {
      {WallClock::kStart, 42'000, "14:03:27_042: "},
      {kMorning, 3'000, "09:05:07_003: "},
      {kMorning, 999'999, "09:05:07_999: "},
      {kMorning, 999, "09:05:07_000: "},
      {kMorning, 0, "09:05:07_000: "}};
  for (const auto& [seconds, microseconds, stamp] : rows) {
    clock_.standAt(seconds, microseconds);
    EXPECT_EQ(driver_.timeStamp(), stamp);
  }
}

TEST_F(TimeStamp, FollowsTheTimeZone) {
  clock_.standAt(kMorning, 0);
  ::setenv("TZ", "TEST-05:30", 1);
  ::tzset();
  EXPECT_EQ(driver_.timeStamp(), "14:35:07_000: ");
}

TEST_F(TimeStamp, AsksForTheTimeOfTheLocale) {
  driver_.timeStamp();
  EXPECT_EQ(asked.format, "%X");
  EXPECT_EQ(asked.room, 100u);
}

TEST_F(TimeStamp, HasNoClockTextWhereTheLocalesIsTooLong) {
  asked.fits = false;
  EXPECT_EQ(driver_.timeStamp(), "_042: ");
  asked.fits = true;
}

TEST_F(TimeStamp, FollowsTheLocaleOfTheProcess) {
  const std::string compile = "localedef --no-archive -i en_US -f UTF-8 " +
                              (files_.folder / "twelve_hours").string() + " >/dev/null 2>&1";
  if (std::system(compile.c_str()) != 0) {
    GTEST_SKIP() << "needs localedef and the locale sources (packages libc-bin, locales)";
  }
  ::setenv("LOCPATH", files_.folder.c_str(), 1);
  ASSERT_NE(std::setlocale(LC_TIME, "twelve_hours"), nullptr);
  clock_.standAt(kMorning, 3'000);
  EXPECT_EQ(driver_.timeStamp(), "09:05:07 AM_003: ");
  clock_.standAt(WallClock::kStart, 42'000);
  EXPECT_EQ(driver_.timeStamp(), "02:03:27 PM_042: ");
}

}  // namespace
}  // namespace orb::test
