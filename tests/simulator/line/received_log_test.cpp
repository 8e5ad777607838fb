#include "line/received_log.h"

#include <gtest/gtest.h>

#include "hex.h"

namespace orb::sim::test {
namespace {

const PtyLine::Clock::time_point kNow{};

TEST(ReceivedLog, KeepsTheNewestBytesOfALineThatServesForHours) {
  ReceivedLog log;
  log.add(hex("01"), kNow);
  const Bytes most(PtyLine::kMostReceivedBytes - 1, 0x55);
  log.add(most, kNow);
  EXPECT_EQ(log.bytes().front(), 0x01);
  log.add(hex("02"), kNow);
  EXPECT_EQ(log.bytes().size(), PtyLine::kMostReceivedBytes);
  EXPECT_EQ(log.bytes().front(), 0x55);
  EXPECT_EQ(log.bytes().back(), 0x02);
}

TEST(ReceivedLog, KeepsTheNewestPacketsOfALineThatServesForHours) {
  ReceivedLog log;
  log.add(frame(0x0200, {1}), kNow);
  for (std::size_t i = 0; i < PtyLine::kMostReceivedPackets; ++i) {
    log.add(frame(0x1000), kNow);
  }
  const std::vector<PtyLine::Received> packets = log.packets();
  EXPECT_EQ(packets.size(), PtyLine::kMostReceivedPackets);
  EXPECT_EQ(packets.front().frame.id(), 0x1000);
}

}  // namespace
}  // namespace orb::sim::test
