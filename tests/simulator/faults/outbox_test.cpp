#include "faults/outbox.h"

#include <gtest/gtest.h>

#include "support/hex_text.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

TEST(Outbox, HasNothingToSayAtFirst) {
  sim::Outbox outbox;
  EXPECT_EQ(outbox.next(), sim::Device::kNever);
  EXPECT_EQ(outbox.take(10s), Bytes{});
  outbox.add(0ms, {});
  EXPECT_EQ(outbox.next(), sim::Device::kNever);
}

TEST(Outbox, SaysWhatIsDueInTheOrderOfTimeAndThenOfComing) {
  sim::Outbox outbox;
  outbox.add(20ms, {hex("03")});
  outbox.add(10ms, {hex("01")});
  outbox.add(10ms, {hex("02")});
  EXPECT_EQ(outbox.next(), 10ms);
  EXPECT_EQ(outbox.take(9ms), Bytes{});
  EXPECT_EQ(outbox.take(10ms), hex("01 02"));
  EXPECT_EQ(outbox.next(), 20ms);
  EXPECT_EQ(outbox.take(30ms), hex("03"));
}

TEST(Outbox, LetsNothingComeBetweenPieces) {
  sim::Outbox outbox;
  outbox.add(0ms, {hex("01 02 03 04 05"), 2, 10ms});
  outbox.add(5ms, {hex("FF")});
  EXPECT_EQ(outbox.take(0ms), hex("01 02"));
  EXPECT_EQ(outbox.next(), 10ms);
  EXPECT_EQ(outbox.take(5ms), Bytes{});
  EXPECT_EQ(outbox.take(10ms), hex("03 04"));
  EXPECT_EQ(outbox.take(20ms), hex("05 FF"));
  EXPECT_EQ(outbox.next(), sim::Device::kNever);
}

TEST(Outbox, JoinsPiecesWithoutAGap) {
  sim::Outbox outbox;
  outbox.add(0ms, {hex("01 02 03"), 1, 0ms});
  EXPECT_EQ(outbox.take(0ms), hex("01 02 03"));
}

}  // namespace
}  // namespace orb::test
