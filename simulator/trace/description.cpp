#include "trace/description.h"

#include <orb-gnss/catalogue.h>

#include <algorithm>
#include <string_view>

#include "model/packet_layout.h"
#include "trace/fields.h"
#include "trace/hex.h"

namespace orb::sim {
namespace {

/// The catalogue's words for a message, empty for one that it does not have. Length 0: any.
std::string_view catalogueText(const Frame& frame, std::size_t length) {
  const ORBMsgId id{static_cast<unsigned char>(frame.id() >> 8),
                    static_cast<unsigned char>(frame.id() & 0xFF)};
  static const std::string_view kUnknown = orbGetMessageDescription({0xFE, 0}, 0);
  std::string_view text = orbGetMessageDescription(id, static_cast<unsigned short>(length));
  if (text == kUnknown) {
    return {};
  }
  while (!text.empty() && text.back() == ' ') {
    text.remove_suffix(1);
  }
  return text;
}

bool isKnown(const Frame& frame) { return !catalogueText(frame, frame.payload.size()).empty(); }

/// What the fields hold, and the bytes that belong to none of them; empty where none is known.
std::string describeFields(const FieldValues& values) {
  std::string text;
  for (const FieldValue& field : values.named) {
    text += (text.empty() ? "" : ", ") + std::string(field.name) + " " + field.text;
    text += (field.unit.empty() ? "" : " ") + std::string(field.unit);
  }
  if (text.empty()) {
    return text;
  }
  return " (" + text + (values.rest.empty() ? "" : ", and " + toHex(values.rest, " ")) + ")";
}

/// One column for the id, or for what stands in its place.
std::string labelled(std::string label, const std::string& text) {
  constexpr std::size_t kWidth = 7;
  label.resize(std::max(label.size() + 1, kWidth), ' ');
  return label + text;
}

std::string describePacket(const Frame& frame) {
  const bool hasSub = hasSubId(frame.payload[0]) && frame.payload.size() > 1;
  const Bytes id(frame.payload.begin(), frame.payload.begin() + (hasSub ? 2 : 1));
  std::string text(catalogueText(frame));
  if (text.empty()) {
    text = "unknown message";
  } else if (!isKnown(frame)) {
    text += ", of an unknown length";
  }
  const std::string body = toHex(frame.body(), " ");
  return labelled(toHex(id, "/"),
                  body.empty() ? text : text + ": " + body + describeFields(fieldValues(frame)));
}

std::string describeOther(const StreamItem& item) {
  constexpr std::size_t kFewBytes = 16;
  const std::string line = lineOf(item);
  if (!line.empty()) {
    return labelled("text", line);
  }
  const auto shown = static_cast<std::ptrdiff_t>(std::min(kFewBytes, item.bytes.size()));
  std::string text = std::to_string(item.length) + (item.length == 1 ? " byte: " : " bytes: ");
  text += toHex(Bytes(item.bytes.begin(), item.bytes.begin() + shown), " ");
  if (item.length > kFewBytes) {
    text += " ...";
  }
  return labelled("other", text);
}

std::string withTrouble(const StreamItem& item, const std::string& text) {
  return item.trouble.empty() ? text : std::string(item.trouble) + ": " + text;
}

}  // namespace

void StreamCounts::add(const StreamItem& item) {
  switch (item.kind) {
    case StreamItem::Kind::Packet:
      ++(isKnown(frameOf(item.bytes.data())) ? messages : unknown);
      break;
    case StreamItem::Kind::Damaged:
      ++damaged;
      break;
    case StreamItem::Kind::Sentence:
      ++sentences;
      badSentences += item.trouble.empty() ? 0 : 1;
      break;
    case StreamItem::Kind::Other:
      otherBytes += item.length;
      break;
  }
}

std::string StreamCounts::text() const {
  const auto counted = [](std::size_t count, const char* one, const char* several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
  };
  std::string text = counted(messages + unknown, "good packet", "good packets") + " (" +
                     std::to_string(unknown) + " unknown), " +
                     counted(damaged, "bad packet", "bad packets") + ", " +
                     counted(sentences, "sentence", "sentences");
  if (badSentences > 0) {
    text += " (" + std::to_string(badSentences) + " bad)";
  }
  return text + ", " + counted(otherBytes, "other byte", "other bytes");
}

std::string_view catalogueText(const Frame& frame) { return catalogueText(frame, 0); }

std::string lineOf(const StreamItem& item) {
  std::string line(item.bytes.begin(), item.bytes.end());
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
    line.pop_back();
  }
  const bool isLine = item.length == item.bytes.size() &&
                      std::all_of(line.begin(), line.end(),
                                  [](char c) { return isText(static_cast<std::uint8_t>(c)); });
  return isLine ? line : std::string();
}

std::string describe(const StreamItem& item) {
  switch (item.kind) {
    case StreamItem::Kind::Packet:
      return describePacket(frameOf(item.bytes.data()));
    case StreamItem::Kind::Damaged:
      return labelled("bad", withTrouble(item, toHex(item.bytes, " ")));
    case StreamItem::Kind::Sentence:
      return labelled("nmea", withTrouble(item, lineOf(item)));
    case StreamItem::Kind::Other:
      break;
  }
  return describeOther(item);
}

}  // namespace orb::sim
