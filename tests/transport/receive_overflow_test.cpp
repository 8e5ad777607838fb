// More bytes than the receive buffer holds.

#include <gmock/gmock.h>

#include <vector>

#include "channel_fixture.h"

namespace orb::test {
namespace {

using testing::Each;
using testing::Ge;
using testing::Le;

constexpr int kTimeout = 2;
constexpr unsigned long kCapacity = 2048;
constexpr long kReadSize = 1024;

// The longest message of the protocol.
const Bytes kLongest = hex("A0 A1 01 05 64 34") + Bytes(259, 0x00) + hex("50 0D 0A");

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

// A KiB a second; each read asks for the space that is left, and for no more than a KiB.
TEST_F(ReceiveOverflow, ReadsIntoABufferOfItsTime) {
  const struct {
    int timeout;
    std::vector<unsigned long> lengths;  ///< of what is read before the reply
    std::vector<long> asked;
  } rows[] = {{2, {1000, 1000, 48}, {1024, 1024, 48}}, {1, {1000, 23, 1}, {1024, 24, 1}}};
  for (const auto& [timeout, lengths, asked] : rows) {
    calls_.forget();
    for (const unsigned long length : lengths) {
      line_.deliver(noise(length));
    }
    line_.deliver(kAck);
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kAck);
    std::vector<long> sizes = calls_.readSizes();
    ASSERT_EQ(sizes.size(), 4u);
    sizes.pop_back();
    EXPECT_EQ(sizes, asked);
  }
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
    line_.deliver(noise(1024 - 9) + kAck);
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kAck) << timeout;
  }
  EXPECT_EQ(standardError(), "");
}

struct OverflowingWait : ChannelTest, testing::WithParamInterface<Wait> {};

TEST_P(OverflowingWait, HasItsOutcome) { expect(GetParam()); }

const Bytes kFalseHeader = hex("A0 A1 FF FF 83 00");

// A name, the clock, what each read finds, the reply, whether it times out (default: no).
std::vector<Wait> waits() {
  const Bytes kibi = noise(1024);
  return {
      {"AfterMoreThanTheBufferHolds",
       {0, 0},
       {kibi, kibi, kibi, noise(700), noise(56), kAck},
       kAck},
      // A match whose bytes have left the buffer is kept: later rounds list the refusal alone.
      {"OfAMatchThatHasLeft",
       {0, 0, 0, 0, 0, 2},
       {kBadAck + kAck, kibi, noise(kCapacity - 1024 - 18), kRefusal, noise(1)},
       kAck,
       true},
      {"OfTheNewestMatchThatHasLeft",
       {0, 0, 0, 0, 2},
       {kBadAck + kAck + kOtherAck, kibi, noise(kCapacity - 1024 - 27), noise(1)},
       kOtherAck,
       true},
      {"OfAMatchThatReplacesOneThatHasLeft",
       {0, 0, 0, 0, 0, 2},
       {kBadAck + kAck, kibi, noise(kCapacity - 1024 - 18), kOtherAck, kRefusal},
       kOtherAck,
       true},
      // The first reply drops out together with the header. The full buffer does not show the
      // second; the next read does.
      {"AfterAFalseHeaderThatHasLeft",
       {0, 0},
       {kFalseHeader + kAck, kibi, noise(kCapacity - 1024 - 15 - 9) + kOtherAck, noise(1)},
       kOtherAck},
      {"AfterAFalseHeaderUpToTheLimit", {0, 1, 2}, {kFalseHeader, kAck}, kNothing, true},
  };
}

INSTANTIATE_TEST_SUITE_P(ReceiveOverflow, OverflowingWait, testing::ValuesIn(waits()), nameOf);

}  // namespace
}  // namespace orb::test
