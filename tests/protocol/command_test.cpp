#include "protocol/command.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/bytes.h"

namespace orb::test {
namespace {

constexpr Request kWithoutSubId{0x5500, 4, 0xC300};
constexpr Request kWithSubId{0x6501, 7};
constexpr Request kLong{0x5400, 12};

Bytes packet(Command&& command) { return packetOf(command.message()); }

TEST(Command, HasWhatWasAppendedAfterItsIdAndSubIdAndThenZeros) {
  const std::pair<Bytes, const char*> rows[] = {
      {packet(Command(kWithoutSubId)), "A0 A1 00 04 55 00 00 00 55 0D 0A"},
      {packet(Command(kWithoutSubId).u8(1).u8(2).u8(3)), "A0 A1 00 04 55 01 02 03 55 0D 0A"},
      {packet(Command(kWithSubId).u32(0x00012345).u8(0)),
       "A0 A1 00 07 65 01 00 01 23 45 00 03 0D 0A"},
      // The high byte first.
      {packet(Command(kLong).u16(0x0102).u32(0x03040506).u8(7)),
       "A0 A1 00 0C 54 01 02 03 04 05 06 07 00 00 00 00 54 0D 0A"},
      // Wide values are cut to their low bytes.
      {packet(Command(kWithoutSubId).u8(0x1FF).u16(0xABC0102)), "A0 A1 00 04 55 FF 01 02 A9 0D 0A"},
      // The bits of floating-point numbers.
      {packet(Command(kLong).f32(-2.5F).u8(0xEE)),
       "A0 A1 00 0C 54 C0 20 00 00 EE 00 00 00 00 00 00 5A 0D 0A"},
      {packet(Command(kLong).f64(1.0 / 3.0).u8(0xEE)),
       "A0 A1 00 0C 54 3F D5 55 55 55 55 55 55 EE 00 00 50 0D 0A"},
      // A byte, repeated.
      {packet(Command(kWithoutSubId).repeated(2, 9).u8(1)), "A0 A1 00 04 55 09 09 01 54 0D 0A"},
      {packet(Command(kWithoutSubId).repeated(0, 9).u8(1)), "A0 A1 00 04 55 01 00 00 54 0D 0A"}};
  for (const auto& [found, expected] : rows) {
    EXPECT_EQ(found, hex(expected));
  }
}

TEST(Command, NamesTheReplyOfItsRequest) {
  EXPECT_EQ(Command(kWithoutSubId).reply(), 0xC300);
  EXPECT_EQ(Command(kWithSubId).reply(), 0);
}

}  // namespace
}  // namespace orb::test
