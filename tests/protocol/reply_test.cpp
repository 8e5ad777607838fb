#include "protocol/reply.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/bytes.h"

namespace orb::test {
namespace {

/// A message whose payload is C2 and these bytes.
class ReplyOf {
 public:
  explicit ReplyOf(const Bytes& body) : message_(0xC200, body.size() + 1, nullptr) {
    for (unsigned long i = 0; i < body.size(); ++i) {
      message_.setByte(i, body[i]);
    }
  }
  const Reply* operator->() const { return &reply_; }

 private:
  ORBMessage message_;
  Reply reply_{message_};
};

TEST(Reply, BeginsWithTheId) { EXPECT_EQ(ReplyOf({0x11})->u8(0), 0xC2); }

TEST(Reply, HasTheHighByteFirst) {
  const ReplyOf reply({0x81, 0x02, 0x03, 0x84, 0x05});
  EXPECT_EQ(reply->u8(1), 0x81);
  EXPECT_EQ(reply->u16(1), 0x8102);
  EXPECT_EQ(reply->u32(1), 0x81020384U);
  EXPECT_EQ(reply->u32(2), 0x02038405U);
}

TEST(Reply, HoldsTheBitsOfFloatingPointNumbers) {
  EXPECT_EQ(ReplyOf({0xC0, 0x20, 0x00, 0x00})->f32(1), -2.5F);
  EXPECT_EQ(ReplyOf({0x3F, 0xD5, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55})->f64(1), 1.0 / 3.0);
  EXPECT_TRUE(std::isnan(ReplyOf({0x7F, 0xC0, 0x00, 0x00})->f32(1)));
}

// The checksum and the end bytes follow the payload in the packet; they are not read.
TEST(Reply, ReadsZeroBeyondThePayload) {
  const ReplyOf reply({0x12, 0x34});
  EXPECT_EQ(reply->u8(2), 0x34);
  EXPECT_EQ(reply->u8(3), 0);
  EXPECT_EQ(reply->u16(2), 0x3400);
  EXPECT_EQ(reply->u32(1), 0x12340000U);
  EXPECT_EQ(reply->u32(3), 0U);
  EXPECT_EQ(reply->u8(1000000), 0);
}

TEST(Reply, ReadsTheZerosOfAShortFloatingPointNumber) {
  EXPECT_EQ(ReplyOf({0x3F, 0xC0})->f32(1), 1.5F);
  EXPECT_EQ(ReplyOf({0x3F, 0xF8})->f64(1), 1.5);
}

}  // namespace
}  // namespace orb::test
