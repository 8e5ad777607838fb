#include "orbctl/reply_fields.h"

#include <fmt/format.h>

#include <bit>
#include <cstdint>
#include <map>

namespace orb::ctl {
namespace {

/// A version is three numbers; text and bytes are all that is left.
enum class Type { U8, U16, U32, I32, F32, F64, Version, Text, Bytes };
using enum Type;

struct Field {
  const char* name;  // null: not shown
  Type type;
  const char* unit = "";
};

/// The fields that follow id and sub-id.
const std::map<std::string, std::vector<Field>, std::less<>>& layouts() {
  static const std::map<std::string, std::vector<Field>, std::less<>> kLayouts = {
      {"\x62\x80", {{"enabled", U8}}},
      {"\x62\x81", {{"enabled", U8}}},
      {"\x64\x81", {{"interval", U8}}},
      {"\x64\x83", {{"detection", U8}, {"status", U8}}},
      {"\x64\x88", {{"first fix", U8}, {"later fixes", U8}}},
      {"\x64\x8B", {{"mode", U8}}},
      {"\x64\x8C", {{"constellations", U16}}},
      {"\x64\x8E",
       {{"time of week", U32, "ms"},
        {"below a millisecond", U32, "ns"},
        {"week", U16},
        {"leap seconds", U8, "s"},
        {"next leap seconds", U8, "s"},
        {"valid", U8}}},
      {"\x64\x98", {{"interval", U8}}},
      {"\x64\x9F", {{"enabled", U8}}},
      {"\x64\xFE", {{"version", Text}}},
      {"\x65\x80", {{"width", U32, "us"}}},
      {"\x65\x81", {{"frequency", U32, "Hz"}}},
      {"\x80",
       {{nullptr, U16},
        {"kernel", Version},
        {nullptr, U8},
        {"odm", Version},
        {nullptr, U8},
        {"revision", Version}}},
      {"\x83", {{"message", Bytes}}},
      {"\x84", {{"message", Bytes}}},
      {"\x86", {{"rate", U8, "Hz"}}},
      {"\xA8",
       {{"fix", U8},
        {"satellites", U8},
        {"week", U16},
        {"time of week", U32, "cs"},
        {"latitude", I32, "1e-7 degrees"},
        {"longitude", I32, "1e-7 degrees"},
        {"ellipsoid altitude", I32, "cm"},
        {"sea level altitude", I32, "cm"}}},
      {"\xAF", {{"mode", U8}, {"first limit", U16}, {"second limit", U16}, {"third limit", U16}}},
      {"\xB0", {{"mode", U8}, {"elevation", U8, "degrees"}, {"cnr", U8, "dB-Hz"}}},
      {"\xB9", {{"mode", U8}}},
      {"\xBB", {{"delay", I32, "0.01 ns"}}},
      {"\xC2",
       {{"mode", U8},
        {"survey length", U32, "s"},
        {"deviation", U32},
        {"latitude", F64, "degrees"},
        {"longitude", F64, "degrees"},
        {"altitude", F32, "m"},
        {"present mode", U8},
        {"surveyed", U32, "s"}}},
      {"\xC3", {{"mode", U8}, {"alignment", U8}}},
  };
  return kLayouts;
}

/// How many bytes such a field has, of so many that are left.
std::size_t sizeOf(Type type, std::size_t left) {
  constexpr std::size_t kSizes[] = {1, 2, 4, 4, 4, 8, 3};
  return type == Text || type == Bytes ? left : kSizes[static_cast<std::size_t>(type)];
}

std::string valueOf(Type type, std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) {
    number = number << 8 | static_cast<unsigned char>(byte);
  }
  switch (type) {
    case I32:
      return fmt::format("{}", static_cast<std::int32_t>(number));
    case F32:
      return fmt::format("{}", std::bit_cast<float>(static_cast<std::uint32_t>(number)));
    case F64:
      return fmt::format("{}", std::bit_cast<double>(number));
    case Version:
      return fmt::format("{}.{}.{}", number >> 16, number >> 8 & 0xFF, number & 0xFF);
    case Text:
      return std::string(bytes.substr(0, bytes.find('\0')));
    case Bytes:
      return hex(bytes);
    default:
      return fmt::format("{}", number);
  }
}

}  // namespace

std::string hex(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += fmt::format("{}{:02X}", text.empty() ? "" : " ", static_cast<unsigned char>(byte));
  }
  return text;
}

std::vector<ReplyField> fieldsOf(std::string_view payload) {
  auto layout = layouts().find(payload.substr(0, 2));
  layout = layout == layouts().end() ? layouts().find(payload.substr(0, 1)) : layout;
  std::vector<ReplyField> fields;
  if (layout == layouts().end()) {
    return fields;
  }
  payload.remove_prefix(layout->first.size());
  for (const Field& field : layout->second) {
    const std::size_t size = sizeOf(field.type, payload.size());
    if (size > payload.size()) {
      break;
    }
    if (field.name != nullptr) {
      fields.push_back({field.name, valueOf(field.type, payload.substr(0, size)), field.unit});
    }
    payload.remove_prefix(size);
  }
  return fields;
}

}  // namespace orb::ctl
