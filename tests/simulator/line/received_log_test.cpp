#include "line/received_log.h"
#include "rate_query.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

using namespace std::chrono_literals;

TEST(ReceivedLog, KeepsTheNewestBytesOfALineThatServesForHours) {
  sim::ReceivedLog log;
  log.add(hex("01"));
  log.add(sim::Bytes(sim::ReceivedLog::kMostBytes - 1, 0x55));
  EXPECT_EQ(log.bytes().front(), 0x01);
  log.add(hex("02"));
  EXPECT_EQ(log.bytes().size(), std::size_t{1} << 20);
  EXPECT_EQ(log.bytes().front(), 0x55);
  EXPECT_EQ(log.bytes().back(), 0x02);
}

TEST(ReceivedLog, KeepsTheNewestMessagesOfALineThatServesForHours) {
  sim::ReceivedLog log;
  log.add(sim::frame(0x0200, {1}));
  for (std::size_t i = 1; i < std::size_t{1} << 16; ++i) {
    log.add(sim::frame(0x1000));
  }
  EXPECT_TRUE(log.waitForMessage(0x0200, 1, 0ms));
  log.add(sim::frame(0x1000));
  EXPECT_FALSE(log.waitForMessage(0x0200, 1, 0ms));
  EXPECT_TRUE(log.waitForMessage(0x1000, std::size_t{1} << 16, 0ms));
}

}  // namespace
}  // namespace orb::test
