#include "orb-sim/frame.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/hex_text.h"

namespace orb::test {
namespace {

TEST(Frame, IsBuiltWithLengthChecksumAndEndBytesAndTheSubIdOfIdsThatHaveOne) {
  EXPECT_EQ(sim::frame(0x0200, {0x01}), hex("A0 A1 00 02 02 01 03 0D 0A"));
  EXPECT_EQ(sim::frame(0x6201, {0xAA}), hex("A0 A1 00 03 62 01 AA C9 0D 0A"));
  EXPECT_EQ(sim::frame(0x6F03), hex("A0 A1 00 02 6F 03 6C 0D 0A"));
  EXPECT_EQ(sim::frame(0x6105), hex("A0 A1 00 01 61 61 0D 0A"));
  EXPECT_EQ(sim::frame(0x7005), hex("A0 A1 00 01 70 70 0D 0A"));
}

TEST(Frame, PutsTheHighByteOfTheLengthFirst) {
  const Bytes packet = sim::frame(0x6434, Bytes(259, 0x00));
  EXPECT_EQ(packet.size(), 268U);
  EXPECT_EQ(Bytes(packet.begin(), packet.begin() + 6), hex("A0 A1 01 05 64 34"));
}

TEST(Frame, IsRefusedWhenTheLengthFieldCannotHoldIt) {
  EXPECT_NO_THROW(sim::frame(0x0100, Bytes(0xFFFE)));
  EXPECT_THROW(sim::frame(0x0100, Bytes(0xFFFF)), std::length_error);
}

TEST(Frame, TellsItsIdAndBody) {
  const struct {
    Bytes payload;
    std::uint16_t id;
    Bytes body;
  } kRows[] = {
      {hex("64 30 07 08"), 0x6430, hex("07 08")},
      {hex("10 07"), 0x1000, hex("07")},
      {hex("64"), 0x6400, {}},  // it ends before its sub-id
  };
  for (const auto& [payload, id, body] : kRows) {
    EXPECT_EQ(sim::Frame{payload}.id(), id);
    EXPECT_EQ(sim::Frame{payload}.body(), body);
  }
  EXPECT_EQ(sim::Frame{hex("64")}.packet(), hex("A0 A1 00 01 64 64 0D 0A"));
}

TEST(Frame, AcknowledgementAndRefusalNameTheIdByteAlone) {
  EXPECT_EQ(sim::acknowledge(0x0200), hex("A0 A1 00 02 83 02 81 0D 0A"));
  EXPECT_EQ(sim::acknowledge(0x6501), hex("A0 A1 00 02 83 65 E6 0D 0A"));
  EXPECT_EQ(sim::refuse(0x0300), hex("A0 A1 00 02 84 03 87 0D 0A"));
  EXPECT_EQ(sim::refuse(0x6401), hex("A0 A1 00 02 84 64 E0 0D 0A"));
}

}  // namespace
}  // namespace orb::test
