// The stream decoder: cuts any bytes into items. Input: the lengths of seven pieces, the bytes.

#include "trace/stream_decoder.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "orb-sim/frame.h"
#include "support/check.h"
#include "support/input.h"
#include "trace/description.h"
#include "trace/listing.h"

namespace orb::test {
namespace {

using Items = std::vector<sim::StreamItem>;

constexpr std::size_t kPieces = 7;

Items decode(const std::vector<Bytes>& pieces) {
  Items items;
  sim::StreamDecoder decoder([&](const sim::StreamItem& item) { items.push_back(item); });
  for (const Bytes& piece : pieces) {
    decoder.push(piece);
  }
  decoder.finish();
  check(!decoder.isMidItem(), "nothing is incomplete at the end");
  return items;
}

bool isPrintableLine(const std::string& text) {
  for (const char character : text) {
    // The catalogue's texts have bytes above 0x7F.
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
      return false;
    }
  }
  return !text.empty();
}

void checkItem(const sim::StreamItem& item, const Bytes& stream, std::uint64_t offset) {
  using Kind = sim::StreamItem::Kind;
  check(item.offset == offset && item.length > 0, "each byte is in one item");
  check(offset + item.length <= stream.size(), "items end with the stream");
  const bool isShownWhole = item.kind != Kind::Other;
  check(item.bytes.size() ==
            (isShownWhole ? item.length
                          : std::min<std::size_t>(item.length, sim::StreamItem::kShownBytes)),
        "an item has its bytes");
  check(std::equal(item.bytes.begin(), item.bytes.end(),
                   stream.begin() + static_cast<std::ptrdiff_t>(offset)),
        "an item's bytes are the stream's");
  check(item.kind != Kind::Packet || item.trouble.empty(), "a packet is whole");
  check(item.kind != Kind::Damaged || !item.trouble.empty(), "what is damaged has its trouble");
  check(isPrintableLine(sim::describe(item)), "an item is described on one printable line");
  std::ostringstream object;
  sim::Listing(object, {.json = true}).add(item);
  check(nlohmann::json::accept(object.str()), "an item is an object of JSON");
}

void compareWithReader(const Items& items, const Bytes& stream) {
  std::vector<Bytes> expected;
  sim::FrameReader reader;
  const auto take = [&](const std::vector<sim::Frame>& frames) {
    for (const sim::Frame& frame : frames) {
      expected.push_back(frame.packet());
    }
  };
  take(reader.push(stream));
  while (reader.midFrame()) {
    take(reader.abandon());
  }
  std::vector<Bytes> found;
  for (const sim::StreamItem& item : items) {
    if (item.kind == sim::StreamItem::Kind::Packet) {
      found.push_back(item.bytes);
    }
  }
  check(found == expected, "the same packets as the receiver finds");
}

}  // namespace

void tryInput(Input input) {
  const Bytes lengths = input.bytes(kPieces);
  const Bytes stream = input.rest();
  const Items items = decode({stream});

  std::uint64_t offset = 0;
  sim::StreamCounts counts;
  for (const sim::StreamItem& item : items) {
    checkItem(item, stream, offset);
    offset += item.length;
    counts.add(item);
  }
  check(offset == stream.size(), "every byte is in an item");
  compareWithReader(items, stream);

  const Items again = decode(inPieces(stream, lengths));
  check(items.size() == again.size(), "pieces make no difference");
  sim::StreamCounts countsAgain;
  for (std::size_t i = 0; i < items.size(); ++i) {
    check(items[i].kind == again[i].kind && items[i].bytes == again[i].bytes &&
              items[i].length == again[i].length && items[i].trouble == again[i].trouble,
          "pieces make no difference to an item");
    countsAgain.add(again[i]);
  }
  checkEqual(countsAgain.text(), counts.text(), "the counts");
}

}  // namespace orb::test
