#include "trace/description.h"
#include "rate_query.h"

#include <gtest/gtest.h>

#include <string>

namespace orb::test {
namespace {

/// The lines that a stream is described by.
std::string described(const sim::Bytes& stream) {
  std::string lines;
  sim::StreamDecoder decoder(
      [&](const sim::StreamItem& item) { lines += sim::describe(item) + "\n"; });
  decoder.push(stream);
  decoder.finish();
  return lines;
}

std::string countsOf(const sim::Bytes& stream) {
  sim::StreamCounts counts;
  sim::StreamDecoder decoder([&](const sim::StreamItem& item) { counts.add(item); });
  decoder.push(stream);
  decoder.finish();
  return counts.text();
}

sim::Bytes text(const std::string& text) { return {text.begin(), text.end()}; }

TEST(Description, HasTheCataloguesWords) {
  EXPECT_EQ(described(sim::frame(0x0200, hex("01"))),
            "02     Query revision information of software: 01 (type 1)\n");
  EXPECT_EQ(described(sim::frame(0x1000)),
            "10     Query the position update rate of GNSS system\n");
  EXPECT_EQ(described(sim::frame(0x649F, hex("01"))),
            "64/9F  Second band status of GNSS receiver: 01 (second band on)\n");
  EXPECT_EQ(described(sim::acknowledge(0x0200)),
            "83     Message Acknowledged: 02 (message 0x02)\n");
}

TEST(Description, TellsMessagesThatTheCatalogueDoesNotHave) {
  EXPECT_EQ(described(sim::frame(0x7000, hex("01 02"))), "70     unknown message: 01 02\n");
  EXPECT_EQ(described(sim::frame(0x643F)), "64/3F  unknown message\n");
  EXPECT_EQ(described(sim::frame(0x8300, hex("02 03"))),
            "83     Message Acknowledged, of an unknown length: 02 03 (message 0x02, and 03)\n");
}

TEST(Description, TellsDamage) {
  EXPECT_EQ(described(hex("A0 A1 00 02 02 01 04 0D 0A")),
            "bad    wrong checksum: A0 A1 00 02 02 01 04 0D 0A\n");
}

TEST(Description, ShowsTextAsText) {
  EXPECT_EQ(described(text("$GPZDA*48\r\n")), "nmea   $GPZDA*48\n");
  EXPECT_EQ(described(text("$GPZDA*49\r\n")), "nmea   wrong checksum: $GPZDA*49\n");
  EXPECT_EQ(described(text("chatter\r\nmore")), "text   chatter\ntext   more\n");
}

TEST(Description, ShowsTheFirstOfOtherBytes) {
  EXPECT_EQ(described(hex("01")), "other  1 byte: 01\n");
  EXPECT_EQ(described(hex("1B 5B 41")), "other  3 bytes: 1B 5B 41\n") << "no control characters";
  EXPECT_EQ(described(sim::Bytes(17, 0xFF)),
            "other  17 bytes: FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF ...\n");
}

TEST(StreamCounts, CountsWhatThereIs) {
  EXPECT_EQ(countsOf({}), "0 good packets (0 unknown), 0 bad packets, 0 sentences, 0 other bytes");
  EXPECT_EQ(countsOf(hex("01") + sim::frame(0x0200, hex("01")) + sim::frame(0x7000) +
                     hex("A0 A1 00 02 02 01 04 0D 0A") + text("$GPZDA*48\r\n$GPZDA*49\r\n")),
            "2 good packets (1 unknown), 1 bad packet, 2 sentences (1 bad), 1 other byte");
}

}  // namespace
}  // namespace orb::test
