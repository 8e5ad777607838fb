#include "transport/receive_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <numeric>

namespace {

using orb::ReceiveBuffer;

/// Appends `count` bytes that count on from `first`.
void append(ReceiveBuffer& buffer, unsigned long count, unsigned char first) {
  std::iota(buffer.end(), buffer.end() + count, first);
  buffer.append(count);
}

TEST(ReceiveBuffer, HasAKibibyteForEachSecond) {
  EXPECT_EQ(ReceiveBuffer(1).space(), 1024u);
  EXPECT_EQ(ReceiveBuffer(5).space(), 5120u);
}

TEST(ReceiveBuffer, HasNoLessThanAKibibyte) {
  EXPECT_EQ(ReceiveBuffer(0).space(), 1024u);
  EXPECT_EQ(ReceiveBuffer(-7).space(), 1024u);
}

TEST(ReceiveBuffer, WrapsTimesWhoseBytesDoNotFit) {
  EXPECT_EQ(ReceiveBuffer(1 << 21).space(), 1024u) << "negative in 32 bits";
  EXPECT_EQ(ReceiveBuffer((1 << 22) + 3).space(), 3072u);
  EXPECT_EQ(ReceiveBuffer(INT_MAX).space(), 1024u);
}

TEST(ReceiveBuffer, KeepsBytesInTheOrderTheyCame) {
  ReceiveBuffer buffer(1);
  append(buffer, 3, 10);
  append(buffer, 2, 40);
  ASSERT_EQ(buffer.size(), 5u);
  EXPECT_EQ(std::string(buffer.data(), buffer.data() + 5), "\x0A\x0B\x0C\x28\x29");
  EXPECT_EQ(buffer.space(), 1019u);
}

TEST(ReceiveBuffer, DropsNothingWhileThereIsRoom) {
  ReceiveBuffer buffer(1);
  append(buffer, 1023, 0);
  buffer.makeRoom();
  EXPECT_EQ(buffer.size(), 1023u);
  EXPECT_EQ(buffer.space(), 1u);
}

// 268 bytes is the longest packet.
TEST(ReceiveBuffer, KeepsTheNewestBytesWhenItIsFull) {
  ReceiveBuffer buffer(1);
  append(buffer, 1024, 0);
  const std::string newest(buffer.end() - 268, buffer.end());
  buffer.makeRoom();
  ASSERT_EQ(buffer.size(), 268u);
  EXPECT_EQ(std::string(buffer.data(), buffer.data() + 268), newest);
  EXPECT_EQ(buffer.space(), 756u);
}

}  // namespace
