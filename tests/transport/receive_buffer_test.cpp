#include "transport/receive_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <numeric>
#include <string>
#include <utility>

namespace orb::test {
namespace {

/// Appends `count` bytes that count on from `first`.
void append(ReceiveBuffer& buffer, unsigned long count, unsigned char first) {
  std::iota(buffer.end(), buffer.end() + count, first);
  buffer.append(count);
}

TEST(ReceiveBuffer, HasAKibibyteForEachSecondAndNoLessThanOne) {
  // The last ones have a number of bytes that does not fit into 32 bits.
  const std::pair<int, unsigned long> rows[] = {
      {1, 1024},      {5, 5120}, {0, 1024}, {-7, 1024}, {1 << 21, 1024}, {(1 << 22) + 3, 3072},
      {INT_MAX, 1024}};
  for (const auto& [seconds, space] : rows) {
    EXPECT_EQ(ReceiveBuffer(seconds).space(), space) << seconds;
  }
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
}  // namespace orb::test
