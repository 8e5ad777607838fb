#include "faults/pacer.h"

#include <gtest/gtest.h>

#include "orb-sim/device.h"
#include "support/hex_text.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

TEST(Pacer, LetsEverythingPassAtOnceWithoutARate) {
  sim::Pacer pacer(0);
  EXPECT_EQ(pacer.untilNext(), sim::Device::kNever);
  pacer.add(hex("01 02"));
  EXPECT_EQ(pacer.untilNext(), 0ms);
  EXPECT_EQ(pacer.take(0ms), hex("01 02"));
}

TEST(Pacer, LetsAByteThroughWhenItsTenBitsHavePassed) {
  sim::Pacer pacer(9600);  // a byte takes 1.042 ms
  pacer.add(hex("01 02"));
  EXPECT_EQ(pacer.untilNext(), 2ms);
  EXPECT_EQ(pacer.take(1ms), Bytes{});
  EXPECT_EQ(pacer.untilNext(), 1ms);
  EXPECT_EQ(pacer.take(1ms), hex("01"));
  EXPECT_EQ(pacer.take(1ms), hex("02"));
}

TEST(Pacer, CarriesTheRateExactlyInTheLongRun) {
  for (const unsigned int baud : {4800U, 9600U, 57600U, 115200U, 921600U}) {
    sim::Pacer pacer(baud);
    pacer.add(Bytes(100000));
    std::size_t passed = 0;
    for (int ms = 0; ms < 1000; ++ms) {
      passed += pacer.take(1ms).size();
    }
    EXPECT_EQ(passed, baud / 10);
  }
}

TEST(Pacer, SavesNothingUpWhileItIsIdle) {
  sim::Pacer pacer(9600);
  EXPECT_EQ(pacer.take(10s), Bytes{});
  pacer.add(Bytes(10));
  EXPECT_EQ(pacer.take(5ms).size(), 4U);
}

}  // namespace
}  // namespace orb::test
