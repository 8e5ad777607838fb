// More bytes than the receive buffer holds.

#include <gmock/gmock.h>

#include <vector>

#include "channel_test.h"

namespace orb::test {
namespace {

using testing::Each;
using testing::Ge;
using testing::Le;

constexpr int kTimeout = 2;
constexpr unsigned long kCapacity = 2048;
constexpr long kReadSize = 1024;

// The longest message of the protocol.
const Bytes kLongest =
    join({{0xA0, 0xA1, 0x01, 0x05, 0x64, 0x34}, Bytes(259, 0x00), {0x50, 0x0D, 0x0A}});

class ReceiveOverflow : public ChannelTest {
 protected:
  ReceiveOverflow() { calls_.forget(); }

  // Delivers noise that fills the buffer up to the last `free` bytes.
  void fillBufferExcept(unsigned long free) {
    line_.deliver(noise(kReadSize));
    line_.deliver(noise(kCapacity - kReadSize - free));
  }

  orbIO channel_;
};

TEST_F(ReceiveOverflow, ReadsIntoABufferOf2048BytesForTwoSeconds) {
  line_.deliver(noise(1000));
  line_.deliver(noise(1000));
  line_.deliver(noise(48));
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x8300, 2), kAck);
  const std::vector<long> sizes = calls_.readSizes();
  ASSERT_EQ(sizes.size(), 4u);
  EXPECT_EQ(sizes[0], 1024);
  EXPECT_EQ(sizes[1], 1024);
  EXPECT_EQ(sizes[2], 48) << "the space that is left";
}

TEST_F(ReceiveOverflow, ReadsIntoABufferOf1024BytesForOneSecond) {
  line_.deliver(noise(1000));
  line_.deliver(noise(23));
  line_.deliver(noise(1));
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x8300, 1), kAck);
  const std::vector<long> sizes = calls_.readSizes();
  ASSERT_EQ(sizes.size(), 4u);
  EXPECT_EQ(sizes[0], 1024);
  EXPECT_EQ(sizes[1], 24);
  EXPECT_EQ(sizes[2], 1);
}

TEST_F(ReceiveOverflow, NeverReadsIntoAFullBuffer) {
  for (int i = 0; i < 40; ++i) {
    line_.deliver(noise(1024));
  }
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x8300, 1), kAck);
  EXPECT_THAT(calls_.readSizes(), Each(Ge(1)));
  EXPECT_THAT(calls_.readSizes(), Each(Le(kReadSize)));
}

TEST_F(ReceiveOverflow, FindsAReplyAfterMoreBytesThanTheBufferHolds) {
  for (int i = 0; i < 5; ++i) {
    line_.deliver(noise(1024));
  }
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x8300, kTimeout), kAck);
  EXPECT_TRUE(line_.isOver());
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveOverflow, FindsAReplyTornByTheEndOfTheBuffer) {
  for (long split = 1; split <= 7; ++split) {
    fillBufferExcept(static_cast<unsigned long>(split));
    deliverInTwo(kAck, split);
    EXPECT_EQ(receive(channel_, 0x8300, kTimeout), kAck) << "torn after " << split << " bytes";
    EXPECT_TRUE(line_.isOver());
  }
}

TEST_F(ReceiveOverflow, FindsTheLongestReplyTornByTheEndOfTheBuffer) {
  ASSERT_EQ(kLongest.size(), 268u);
  for (const long split : {1l, 100l, 266l}) {
    fillBufferExcept(static_cast<unsigned long>(split));
    deliverInTwo(kLongest, split);
    EXPECT_EQ(receive(channel_, 0x6434, kTimeout), kLongest) << "torn after " << split << " bytes";
  }
}

TEST_F(ReceiveOverflow, FindsAReplyInEverySmallerBufferToo) {
  for (const int timeout : {-1, 0, 1}) {
    line_.deliver(join({noise(1024 - 9), kAck}));
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kAck) << timeout;
  }
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveOverflow, KeepsAMatchWhoseBytesHaveLeftTheBuffer) {
  clock_.passSeconds({0, 0, 0, 0, 0, 2});
  line_.deliver(join({kBadAck, kAck}));
  line_.deliver(noise(1024));
  line_.deliver(noise(kCapacity - 1024 - 18));
  line_.deliver(kRefusal);
  line_.deliver(noise(1));
  EXPECT_EQ(receive(channel_, 0x8300, kTimeout), kAck) << "later rounds list the refusal alone";
  EXPECT_TRUE(line_.isOver());
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveOverflow, KeepsTheNewestOfTheMatchesWhoseBytesHaveLeftTheBuffer) {
  clock_.passSeconds({0, 0, 0, 0, 2});
  line_.deliver(join({kBadAck, kAck, kOtherAck}));
  line_.deliver(noise(1024));
  line_.deliver(noise(kCapacity - 1024 - 27));
  line_.deliver(noise(1));
  EXPECT_EQ(receive(channel_, 0x8300, kTimeout), kOtherAck);
  EXPECT_TRUE(line_.isOver());
}

TEST_F(ReceiveOverflow, ReplacesAMatchWhoseBytesHaveLeftTheBuffer) {
  clock_.passSeconds({0, 0, 0, 0, 0, 2});
  line_.deliver(join({kBadAck, kAck}));
  line_.deliver(noise(1024));
  line_.deliver(noise(kCapacity - 1024 - 18));
  line_.deliver(kOtherAck);
  line_.deliver(kRefusal);
  EXPECT_EQ(receive(channel_, 0x8300, kTimeout), kOtherAck);
}

TEST_F(ReceiveOverflow, SeesNothingAfterAFalseHeaderUntilThatDropsOut) {
  const Bytes falseHeader{0xA0, 0xA1, 0xFF, 0xFF, 0x83, 0x00};
  line_.deliver(join({falseHeader, kAck}));
  line_.deliver(noise(1024));
  line_.deliver(join({noise(kCapacity - 1024 - 15 - 9), kOtherAck}));
  line_.deliver(noise(1));
  EXPECT_EQ(receive(channel_, 0x8300, kTimeout), kOtherAck)
      << "the first reply has dropped out together with the header";
  EXPECT_TRUE(line_.isOver()) << "the full buffer did not show the reply; the next read did";
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveOverflow, EndsAtTheLimitAfterAFalseHeader) {
  clock_.passSeconds({0, 1, 2});
  line_.deliver({0xA0, 0xA1, 0xFF, 0xFF, 0x83, 0x00});
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x8300, kTimeout), kNothing);
  EXPECT_EQ(standardError(), kTimedOut);
}

}  // namespace
}  // namespace orb::test
