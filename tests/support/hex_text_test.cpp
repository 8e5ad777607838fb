#include "support/hex_text.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

const Bytes kBytes{0xA0, 0x0A, 0x00, 0xFF};

TEST(HexText, SpellsBytesWithAndWithoutBlanks) {
  EXPECT_EQ(hex("A0 0A 00 FF"), kBytes);
  EXPECT_EQ(hex("A00a\n00fF "), kBytes);
  EXPECT_EQ(hex(""), Bytes{});
}

TEST(HexText, TakesNothingButPairsOfDigits) {
  for (const char* const text : {"A", "A0 1", "G0", "0G", "A 0", "0x10", "-1", " 1"}) {
    EXPECT_THROW(hex(text), std::invalid_argument) << text;
  }
}

TEST(HexText, IsSpeltInUpperCaseWithASeparator) {
  EXPECT_EQ(hexText(kBytes), "A0 0A 00 FF");
  EXPECT_EQ(hexText(kBytes, ""), "A00A00FF");
  EXPECT_EQ(hexText({}), "");
}

}  // namespace
}  // namespace orb::test
