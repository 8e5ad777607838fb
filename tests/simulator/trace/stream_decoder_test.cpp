#include "trace/stream_decoder.h"
#include "rate_query.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orb::test {
namespace {

using Kind = sim::StreamItem::Kind;
using testing::ElementsAre;

const sim::Bytes kQuery = hex("A0 A1 00 02 02 01 03 0D 0A");

sim::Bytes text(const std::string& text) { return {text.begin(), text.end()}; }

std::vector<sim::StreamItem> decode(const std::vector<sim::Bytes>& pieces) {
  std::vector<sim::StreamItem> items;
  sim::StreamDecoder decoder([&](const sim::StreamItem& item) { items.push_back(item); });
  for (const sim::Bytes& piece : pieces) {
    decoder.push(piece);
  }
  decoder.finish();
  EXPECT_FALSE(decoder.isMidItem());
  return items;
}

sim::StreamItem item(Kind kind, std::uint64_t offset, const sim::Bytes& bytes,
                     std::string_view trouble = "") {
  return {kind, offset, bytes, bytes.size(), trouble};
}

TEST(StreamDecoder, FindsPacketsAndSentencesAndTellsTheRest) {
  const sim::Bytes sentence = text("$GPZDA*48\r\n");
  EXPECT_THAT(
      decode({hex("00 01") + kQuery + sentence + text("hello\r\n") + kQuery}),
      ElementsAre(item(Kind::Other, 0, hex("00 01")), item(Kind::Packet, 2, kQuery),
                  item(Kind::Sentence, 11, sentence), item(Kind::Other, 22, text("hello\r\n")),
                  item(Kind::Packet, 29, kQuery)));
}

TEST(StreamDecoder, FindsTheSameHoweverTheStreamIsCut) {
  const sim::Bytes stream = hex("0A A0 A1 A0") + kQuery + text("$GP*00\r\n$X\n$") +
                            hex("A0 A1 00 02 02 01 04 0D 0A A0 A1 FF FF") + kQuery +
                            hex("A0 A1 00 10 01");
  const std::vector<sim::StreamItem> whole = decode({stream});
  for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
    const auto middle = stream.begin() + static_cast<std::ptrdiff_t>(cut);
    EXPECT_EQ(decode({sim::Bytes(stream.begin(), middle), sim::Bytes(middle, stream.end())}), whole)
        << "cut at " << cut;
  }
}

TEST(StreamDecoder, TellsWhatIsWrongWithAPacket) {
  const sim::Bytes checksum = hex("A0 A1 00 02 02 01 04 0D 0A");
  const sim::Bytes end = hex("A0 A1 00 02 02 01 03 0D 0D");
  const sim::Bytes empty = hex("A0 A1 00 00");
  const sim::Bytes longer = hex("A0 A1 01 06");
  const sim::Bytes cut = hex("A0 A1 00 05 01 02");
  EXPECT_THAT(decode({checksum + end + empty + longer + cut}),
              ElementsAre(item(Kind::Damaged, 0, checksum, "wrong checksum"),
                          item(Kind::Damaged, 9, end, "wrong end bytes"),
                          item(Kind::Damaged, 18, empty, "impossible length"),
                          item(Kind::Damaged, 22, longer, "impossible length"),
                          item(Kind::Damaged, 26, cut, "cut short")));
}

TEST(StreamDecoder, FindsAGoodPacketInsideADamagedOne) {
  EXPECT_THAT(
      decode({hex("A0 A1 00 10 55") + kQuery + sim::Bytes(20, 0x77)}),
      ElementsAre(item(Kind::Damaged, 0, hex("A0 A1 00 10 55"), "wrong checksum"),
                  item(Kind::Packet, 5, kQuery), item(Kind::Other, 14, sim::Bytes(20, 0x77))));
}

TEST(StreamDecoder, TellsASentenceWithAWrongChecksum) {
  for (const char* const bad : {"$GPZDA*49\r\n", "$GPZDA*4\r\n", "$GPZDA*048\r\n", "$GPZDA*\r\n"}) {
    EXPECT_THAT(decode({text(bad)}),
                ElementsAre(item(Kind::Sentence, 0, text(bad), "wrong checksum")));
  }
  for (const char* const good : {"$GPZDA*48\n", "$GPZDA\r\n"}) {
    EXPECT_THAT(decode({text(good)}), ElementsAre(item(Kind::Sentence, 0, text(good))));
  }
}

TEST(StreamDecoder, TakesADollarThatBeginsNoSentenceForOther) {
  const sim::Bytes tooLong =
      text("$" + std::string(sim::StreamDecoder::kLongestSentence, 'x') + "\r\n");
  for (const sim::Bytes& stream : {text("$GP"), text("$G\r"), text("$G\rP"), text("$G\x01\r\n")}) {
    EXPECT_THAT(decode({stream}), ElementsAre(item(Kind::Other, 0, stream)));
  }
  for (const sim::StreamItem& found : decode({tooLong})) {
    EXPECT_EQ(found.kind, Kind::Other);
  }
}

// Looking for the end of each as far as the stream goes would take the time of the square.
TEST(StreamDecoder, LooksForTheEndOfASentenceNoFurtherThanItCanBe) {
  constexpr std::size_t kCount = 1'000'000;
  std::size_t length = 0;
  sim::StreamDecoder decoder([&](const sim::StreamItem& found) { length += found.length; });
  decoder.push(sim::Bytes(kCount, '$'));
  decoder.finish();
  EXPECT_EQ(length, kCount);
}

TEST(StreamDecoder, KeepsOnlyTheBeginningOfWhatItDoesNotKnow) {
  const std::vector<sim::StreamItem> items = decode({sim::Bytes(10'000, 0x55)});
  std::size_t length = 0;
  for (const sim::StreamItem& found : items) {
    EXPECT_EQ(found.kind, Kind::Other);
    EXPECT_EQ(found.bytes.size(), sim::StreamItem::kShownBytes);
    length += found.length;
  }
  EXPECT_EQ(length, 10'000U);
}

TEST(StreamDecoder, HandsAnItemOnWhenItIsComplete) {
  std::size_t count = 0;
  sim::StreamDecoder decoder([&](const sim::StreamItem&) { ++count; });
  for (std::size_t index = 0; index < kQuery.size(); ++index) {
    EXPECT_EQ(count, 0U);
    decoder.push({kQuery[index]});
  }
  EXPECT_EQ(count, 1U);
  decoder.push(text("text\n"));
  EXPECT_EQ(count, 2U);
  EXPECT_FALSE(decoder.isMidItem());
  decoder.push(text("t"));
  EXPECT_TRUE(decoder.isMidItem());
}

TEST(StreamDecoder, GoesOnAfterWhatWasIncomplete) {
  std::vector<sim::StreamItem> items;
  sim::StreamDecoder decoder([&](const sim::StreamItem& found) { items.push_back(found); });
  decoder.push(hex("A0 A1 00 05"));
  decoder.finish();
  decoder.push(kQuery);
  EXPECT_THAT(items, ElementsAre(item(Kind::Damaged, 0, hex("A0 A1 00 05"), "cut short"),
                                 item(Kind::Packet, 4, kQuery)));
}

}  // namespace
}  // namespace orb::test
