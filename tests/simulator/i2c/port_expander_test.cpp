#include "i2c/port_expander.h"

#include <gtest/gtest.h>

#include "registers.h"
#include "support/hex_text.h"

namespace orb::test {
namespace {

TEST(PortExpander, HasItsRegistersAfterWritesFromARegisterOn) {
  const struct {
    const char* what;
    std::vector<std::pair<std::uint8_t, const char*>> writes;  // from a register on
    const char* registers;  // inputs, outputs, polarity, direction; both ports of each
  } kRows[] = {
      {"at first, pins are inputs and pulled up", {}, "FF FF FF FF 00 00 FF FF"},
      {"both ports in a write", {{2, "12 34"}, {6, "56 78"}}, "56 7C 12 34 00 00 56 78"},
      {"the second port first", {{3, "34 12"}}, "FF FF 12 34 00 00 FF FF"},
      {"it stays in a pair", {{2, "01 02 03 04 05"}}, "FF FF 05 04 00 00 FF FF"},
      {"a number's low three bits", {{0xFA, "12"}}, "FF FF 12 FF 00 00 FF FF"},
      {"outputs show at the inputs", {{2, "AA 00"}, {6, "F0 FE"}}, "FA FE AA 00 00 00 F0 FE"},
      {"inputs are inverted", {{4, "0F 80"}}, "F0 7F FF FF 0F 80 FF FF"},
      {"inputs are kept", {{0, "00 00"}}, "FF FF FF FF 00 00 FF FF"},
  };
  for (const auto& row : kRows) {
    sim::PortExpander expander;
    for (const auto& [first, bytes] : row.writes) {
      set(expander, first, hex(bytes));
    }
    EXPECT_EQ(
        hexText(pair(expander, 0) + pair(expander, 2) + pair(expander, 4) + pair(expander, 6)),
        row.registers)
        << row.what;
  }
}

TEST(PortExpander, FeedsTheAntennaUnlessItsPinIsDrivenLow) {
  sim::PortExpander expander;
  EXPECT_TRUE(expander.feedsAntenna()) << "as after power-up";
  set(expander, 3, {0xFE});
  EXPECT_TRUE(expander.feedsAntenna()) << "an input is pulled up";
  set(expander, 7, {0xFE});
  EXPECT_FALSE(expander.feedsAntenna());
  set(expander, 5, {0x01});
  EXPECT_FALSE(expander.feedsAntenna()) << "the polarity is that of reading";
  set(expander, 3, {0x01});
  EXPECT_TRUE(expander.feedsAntenna());
}

TEST(PortExpander, ContinuesAReadInItsPairWhereTheLastTransferStopped) {
  sim::PortExpander expander;
  set(expander, 2, {0x12, 0x34, 0x12});
  EXPECT_EQ(read(expander, 1), hex("34"));
  EXPECT_EQ(read(expander, 2), hex("12 34"));
  EXPECT_EQ(read(expander, 5), hex("12 34 12 34 12"));
}

}  // namespace
}  // namespace orb::test
