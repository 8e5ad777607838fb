#include "trace/listing.h"
#include "rate_query.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "trace/utc_time.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

sim::Bytes text(const std::string& text) { return {text.begin(), text.end()}; }

const sim::Bytes kDamaged = hex("A0 A1 00 02 02 01 04 0D 0A");
const sim::Bytes kEverything = kRateQuery + text("$GPZDA*48\r\n") + kDamaged + hex("FF") +
                               text("$GPZDA*49\r\n") + text("more\r\n") + sim::acknowledge(0x1000);

/// What is printed of a stream that a receiver says; of plain bytes where `from` is nothing.
std::string listed(const sim::Bytes& stream, const sim::ListingForm& form,
                   std::optional<sim::Speaker> from = sim::Speaker::Receiver) {
  std::ostringstream output;
  sim::Listing listing(output, form);
  listing.setStart(sim::parseUtc("2026-11-21T23:59:59.5Z").value());
  sim::StreamDecoder decoder([&](const sim::StreamItem& item) {
    from ? listing.add(item, *from, 1500ms) : listing.add(item);
  });
  decoder.push(stream);
  decoder.finish();
  listing.conclude("the end");
  return output.str();
}

TEST(Listing, PutsOffsetsOrTimesInFront) {
  EXPECT_EQ(listed(text("more\r\n"), {}, std::nullopt), "         0  text   more\nthe end\n");
  EXPECT_EQ(listed(text("more\r\n"), {}), "    1.500000  receiver  text   more\nthe end\n");
  EXPECT_EQ(listed(text("more\r\n"), {.wallClock = true}, sim::Speaker::Client),
            "2026-11-22T00:00:01.000000Z  client    text   more\nthe end\n");
}

TEST(Listing, PrintsObjects) {
  EXPECT_EQ(
      listed(kEverything, {.json = true}, std::nullopt),
      R"({"offset":0,"kind":"message","id":"0x1000","message":"query-update-rate",)"
      R"("description":"Query the position update rate of GNSS system","fields":{},)"
      R"("bytes":"A0A1000110100D0A"})"
      "\n"
      R"({"offset":8,"kind":"sentence","text":"$GPZDA*48","bytes":"2447505A44412A34380D0A"})"
      "\n"
      R"({"offset":19,"kind":"damaged","trouble":"wrong checksum","bytes":"A0A100020201040D0A"})"
      "\n"
      R"({"offset":28,"kind":"other","bytes":"FF"})"
      "\n"
      R"({"offset":29,"kind":"sentence","trouble":"wrong checksum","text":"$GPZDA*49",)"
      R"("bytes":"2447505A44412A34390D0A"})"
      "\n"
      R"({"offset":40,"kind":"other","text":"more","bytes":"6D6F72650D0A"})"
      "\n"
      R"({"offset":46,"kind":"message","id":"0x8300","message":"acknowledged",)"
      R"("description":"Message Acknowledged","fields":{"message":"0x10"},)"
      R"("bytes":"A0A100028310930D0A"})"
      "\n");
  EXPECT_EQ(listed(hex("FF"), {.json = true}),
            R"({"time":1.5,"from":"receiver","kind":"other","bytes":"FF"})"
            "\n");
  EXPECT_EQ(listed(hex("FF"), {.json = true, .wallClock = true}),
            R"({"time":1.5,"clock":"2026-11-22T00:00:01.000000Z","from":"receiver",)"
            R"("kind":"other","bytes":"FF"})"
            "\n");
}

TEST(Listing, PrintsFieldsAsNumbersAndTexts) {
  const auto fields = [](sim::message::Id id, const char* body) {
    const std::string line = listed(sim::frame(id, hex(body)), {.json = true});
    const std::size_t begin = line.find("\"fields\":");
    return line.substr(begin, line.find(R"(,"bytes")") - begin);
  };
  EXPECT_EQ(fields(0x2B00, "01 05 0C 00"),
            R"("fields":{"mode":"on","elevation_mask":5,"CNR_mask":12,"attribute":0})");
  EXPECT_EQ(fields(0x2B00, "02 05 0C"), R"("fields":{"mode":2,"elevation_mask":5,"CNR_mask":12})");
  EXPECT_EQ(
      fields(0x2B00, "01 05 0C 00 AA BB"),
      R"("fields":{"mode":"on","elevation_mask":5,"CNR_mask":12,"attribute":0},"rest":"AABB")");
  EXPECT_EQ(fields(0xBB00, "FF FF FF 6A"), R"("fields":{"cable_delay":-1.5})");
  EXPECT_EQ(fields(0xC200,
                   "02 00 00 00 00 00 00 00 00 7F F8 00 00 00 00 00 00 FF F0 00 00 00 00 00 00 "
                   "44 02 07 AE"),
            R"("fields":{"mode":"static","survey_length":0,"standard_deviation":0,)"
            R"("latitude":null,"longitude":null,"altitude":520.12})");
  EXPECT_EQ(fields(0x7000, "01"), R"("fields":{},"rest":"01")");
}

TEST(Listing, SaysHowMuchThereIsOfWhatIsNotShownWhole) {
  EXPECT_NE(listed(sim::Bytes(200, 0xFF), {.json = true}).find(R"("length":200,"bytes":"FFFF)"),
            std::string::npos);
}

TEST(Listing, LeavesOutWhatIsNotWanted) {
  const std::string query =
      "    1.500000  receiver  10     Query the position update rate of GNSS "
      "system\n";
  const std::string acknowledged =
      "    1.500000  receiver  83     Message Acknowledged: 10 (message 0x10)\n";
  const std::string others =
      "    1.500000  receiver  bad    wrong checksum: A0 A1 00 02 02 01 04 0D 0A\n"
      "    1.500000  receiver  other  1 byte: FF\n"
      "    1.500000  receiver  text   more\n";
  EXPECT_EQ(listed(kEverything, {.withoutSentences = true}),
            query + others + acknowledged + "the end\n");
  EXPECT_EQ(listed(kEverything, {.only = {0x8300}}), acknowledged + "the end\n");
  EXPECT_EQ(listed(kEverything, {.only = {0x8300, 0x1000}}), query + acknowledged + "the end\n");
  EXPECT_EQ(listed(kEverything, {.only = {0x7000}}), "the end\n");
}

TEST(Listing, HasColours) {
  const auto colours = [](const sim::Bytes& stream, sim::Speaker from) {
    const std::string line = listed(stream, {.colour = true}, from);
    const std::string shown = line.substr(0, line.find('\n'));
    const bool ends = shown.ends_with("\033[0m");
    return shown.front() == '\033' && ends ? shown.substr(1, shown.find('m')) : "";
  };
  EXPECT_EQ(colours(kRateQuery, sim::Speaker::Client), "[36m");
  EXPECT_EQ(colours(sim::acknowledge(0x1000), sim::Speaker::Receiver), "");
  EXPECT_EQ(colours(kDamaged, sim::Speaker::Client), "[31m");
  EXPECT_EQ(colours(text("$GPZDA*49\r\n"), sim::Speaker::Receiver), "[31m");
  EXPECT_EQ(colours(text("$GPZDA*48\r\n"), sim::Speaker::Receiver), "[2m");
  EXPECT_EQ(colours(hex("FF"), sim::Speaker::Receiver), "[2m");
  EXPECT_EQ(listed(kEverything, {.json = true, .colour = true}),
            listed(kEverything, {.json = true}));
}

}  // namespace
}  // namespace orb::test
