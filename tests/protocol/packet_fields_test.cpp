#include "protocol/packet_fields.h"

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/guarded_bytes.h"

namespace orb::test {
namespace {

TEST(PacketFields, ReadTheLengthHighByteFirst) {
  GuardedBytes field({0x12, 0x34});
  EXPECT_EQ(lengthAt(field.data()), 0x1234);
}

TEST(PacketFields, ReadTheSubIdWhereTheIdCarriesOne) {
  for (const unsigned char id : Bytes{0x62, 0x6F}) {
    const unsigned char field[] = {id, 0x81};
    EXPECT_EQ(idAt(field).id, id);
    EXPECT_EQ(idAt(field).subId, 0x81);
  }
  for (const unsigned char id : Bytes{0x00, 0x61, 0x70, 0xFF}) {
    GuardedBytes field({id});
    EXPECT_EQ(idAt(field.data()).id, id);
    EXPECT_EQ(idAt(field.data()).subId, 0);
  }
}

TEST(PacketFields, ConvertAnIdentityToOneNumberAndBack) {
  EXPECT_EQ(typeOf({0x65, 0x01}), 0x6501);
  EXPECT_EQ(idOf(0x6501).id, 0x65);
  EXPECT_EQ(idOf(0x6501).subId, 0x01);
}

// Every number of bytes up to three words of eight, ending at an inaccessible page.
TEST(PacketFields, FoldEveryByteOnceAndReadNoOther) {
  for (unsigned long length = 0; length <= 24; ++length) {
    for (unsigned long odd = 0; odd < length; ++odd) {
      Bytes bytes(length, 0x00);
      bytes[odd] = 0xA5;
      GuardedBytes guarded(bytes);
      EXPECT_EQ(exclusiveOr(guarded.data(), length), 0xA5) << length << ", " << odd;
    }
    GuardedBytes guarded(Bytes(length, 0x3C));
    EXPECT_EQ(exclusiveOr(guarded.data(), length), length % 2 == 0 ? 0 : 0x3C);
  }
}

}  // namespace
}  // namespace orb::test
