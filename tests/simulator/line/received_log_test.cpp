#include "line/received_log.h"
#include "rate_query.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

const sim::PtyLine::Clock::time_point kNow{};

TEST(ReceivedLog, KeepsTheNewestBytesAndPacketsOfALineThatServesForHours) {
  sim::ReceivedLog log;
  log.add(sim::frame(0x0200, {1}), kNow);
  for (std::size_t i = 0; i < sim::PtyLine::kMostReceivedPackets; ++i) {
    log.add(sim::frame(0x1000), kNow);
  }
  const std::vector<sim::PtyLine::Received> packets = log.packets();
  EXPECT_EQ(packets.size(), sim::PtyLine::kMostReceivedPackets);
  EXPECT_EQ(packets.front().frame.id(), 0x1000);

  log.add(sim::Bytes(sim::PtyLine::kMostReceivedBytes - 1, 0x55), kNow);
  EXPECT_EQ(log.bytes().front(), 0x0A) << "the last byte of the last packet";
  log.add(hex("02"), kNow);
  EXPECT_EQ(log.bytes().size(), sim::PtyLine::kMostReceivedBytes);
  EXPECT_EQ(log.bytes().front(), 0x55);
  EXPECT_EQ(log.bytes().back(), 0x02);
}

}  // namespace
}  // namespace orb::test
