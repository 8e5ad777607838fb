#include "trace/listing.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "model/nmea_format.h"
#include "model/packet_layout.h"
#include "trace/description.h"
#include "trace/fields.h"
#include "trace/hex.h"
#include "trace/utc_time.h"

namespace orb::sim {
namespace {

using Json = nlohmann::ordered_json;
using Kind = StreamItem::Kind;

constexpr char kPlain[] = "\033[0m";
constexpr char kRed[] = "\033[31m";
constexpr char kCyan[] = "\033[36m";
constexpr char kFaint[] = "\033[2m";

/// A number that is none is null.
Json jsonOf(const FieldValue& field) {
  if (!field.isNumber) {
    return field.text;
  }
  Json number = Json::parse(field.text, nullptr, false);
  return number.is_discarded() ? Json() : number;
}

Json fieldsAsJson(const FieldValues& values) {
  Json fields = Json::object();
  for (const FieldValue& field : values.named) {
    std::string key(field.name);
    std::replace(key.begin(), key.end(), ' ', '_');
    fields[key] = jsonOf(field);
  }
  return fields;
}

void addMessage(Json& object, const Frame& frame) {
  const auto setUnlessEmpty = [&object](const char* key, const std::string& text) {
    if (!text.empty()) {
      object[key] = text;
    }
  };
  const FieldValues values = fieldValues(frame);
  object["id"] = format("0x%04X", unsigned{frame.id()});
  setUnlessEmpty("message", std::string(messageName(frame.id())));
  setUnlessEmpty("description", std::string(catalogueText(frame)));
  object["fields"] = fieldsAsJson(values);
  setUnlessEmpty("rest", toHex(values.rest));
}

}  // namespace

void Listing::add(const StreamItem& item) { print(item, nullptr); }

void Listing::add(const StreamItem& item, Speaker from, std::chrono::microseconds at) {
  const Said said{from, at};
  print(item, &said);
}

void Listing::conclude(const std::string& line) {
  if (!form_.json) {
    output_ << line << '\n';
  }
}

void Listing::print(const StreamItem& item, const Said* said) {
  if (!isWanted(item)) {
    return;
  }
  if (form_.json) {
    output_ << json(item, said) << '\n';
    return;
  }
  const char* const chosen = form_.colour ? colour(item, said) : nullptr;
  const std::string line = prefix(item, said) + describe(item);
  output_ << (chosen == nullptr ? line : chosen + line + kPlain) << '\n';
}

bool Listing::isWanted(const StreamItem& item) const {
  if (!form_.only.empty()) {
    return item.kind == Kind::Packet && form_.only.contains(frameOf(item.bytes.data()).id());
  }
  return item.kind != Kind::Sentence || !form_.withoutSentences;
}

std::optional<WallTime> Listing::wallTime(const Said* said) const {
  return form_.wallClock && start_ && said != nullptr ? std::optional(*start_ + said->at)
                                                      : std::nullopt;
}

/// The columns in front of an item's description.
std::string Listing::prefix(const StreamItem& item, const Said* said) const {
  if (said == nullptr) {
    return format("%10llu  ", static_cast<unsigned long long>(item.offset));
  }
  const auto time = wallTime(said);
  const double seconds = std::chrono::duration<double>(said->at).count();
  return (time ? utcText(*time) : format("%12.6f", seconds)) +
         format("  %-8s  ", nameOf(said->from));
}

std::string Listing::json(const StreamItem& item, const Said* said) const {
  constexpr const char* kKinds[] = {"message", "damaged", "sentence", "other"};
  Json object;
  if (said == nullptr) {
    object["offset"] = item.offset;
  } else {
    object["time"] = std::chrono::duration<double>(said->at).count();
    if (const auto time = wallTime(said)) {
      object["clock"] = utcText(*time);
    }
    object["from"] = nameOf(said->from);
  }
  object["kind"] = kKinds[static_cast<std::size_t>(item.kind)];
  if (!item.trouble.empty()) {
    object["trouble"] = std::string(item.trouble);
  }
  if (item.kind == Kind::Packet) {
    addMessage(object, frameOf(item.bytes.data()));
  }
  const std::string text = lineOf(item);
  if (!text.empty()) {
    object["text"] = text;
  }
  if (item.length != item.bytes.size()) {
    object["length"] = item.length;
  }
  object["bytes"] = toHex(item.bytes);
  return object.dump();
}

/// Null for none.
const char* Listing::colour(const StreamItem& item, const Said* said) const {
  if (!item.trouble.empty()) {
    return kRed;
  }
  if (item.kind != Kind::Packet) {
    return kFaint;
  }
  return said != nullptr && said->from == Speaker::Client ? kCyan : nullptr;
}

}  // namespace orb::sim
