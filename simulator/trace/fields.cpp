#include "trace/fields.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <iterator>
#include <span>

#include "model/commands.h"
#include "model/nmea_format.h"
#include "trace/hex.h"
#include "trace/stream_decoder.h"

namespace orb::sim {
namespace {

enum class FieldType : std::uint8_t {
  Heading,  // no field: those of the message of this name follow, up to the next heading
  U8,
  U16,
  U32,
  S32,
  F32,
  F64,
  IdByte,        // the id byte of a message
  VersionGroup,  // a byte that says nothing, and three numbers
  DateGroup,     // a byte that says nothing, year of the century, month, day
  HexBytes,
  TextBytes,
};
using enum FieldType;

struct Field {
  std::string_view name;
  FieldType type = U8;
  std::size_t width = 0;  ///< bytes
  std::string_view unit = {};
  int decimals = 0;  ///< the number counts tenths, hundredths, ... of the unit
  /// What a value is called, from 0 on, or where `areBits`, what a bit is; empty: not known.
  std::span<const std::string_view> words = {};
  bool areBits = false;
  bool isInSetting = true;  ///< else the report alone has it
  message::Id id = 0;       ///< of a heading: the report's, where no query asks for it
};

constexpr std::size_t widthOf(FieldType type) {
  constexpr std::size_t kWidths[] = {0, 1, 2, 4, 4, 4, 8, 1, 4, 4};
  return kWidths[static_cast<std::size_t>(type)];
}

constexpr Field number(std::string_view name, FieldType type, std::string_view unit = {},
                       int decimals = 0) {
  return {.name = name, .type = type, .width = widthOf(type), .unit = unit, .decimals = decimals};
}

constexpr Field number(std::string_view name, std::string_view unit = {}) {
  return number(name, U8, unit);
}

constexpr Field word(std::string_view name, std::span<const std::string_view> words,
                     std::string_view unit = {}) {
  return {.name = name, .type = U8, .width = 1, .unit = unit, .words = words};
}

constexpr Field bits(std::string_view name, FieldType type,
                     std::span<const std::string_view> words) {
  return {.name = name, .type = type, .width = widthOf(type), .words = words, .areBits = true};
}

constexpr Field bytes(std::string_view name, FieldType type, std::size_t width) {
  return {.name = name, .type = type, .width = width};
}

// Words are those of scenarios.
constexpr std::string_view kSwitch[] = {"off", "on"};
constexpr std::string_view kStarts[] = {"", "hot", "warm", "cold"};
constexpr std::string_view kSpeeds[] = {"4800", "9600", "19200", "38400", "57600", "115200"};
constexpr std::string_view kOutputs[] = {"none", "nmea", "binary"};
constexpr std::string_view kPowerModes[] = {"normal", "power-saving"};
constexpr std::string_view kRequiredFixes[] = {"3d", "2d"};
constexpr std::string_view kFixes[] = {"none", "2d", "3d", "3d-differential"};
constexpr std::string_view kInterference[] = {"unknown", "none", "some", "critical"};
constexpr std::string_view kConstellations[] = {"gps", "glonass", "galileo", "beidou"};
constexpr std::string_view kValidity[] = {"time-of-week", "week", "leap-seconds"};
constexpr std::string_view kTimingModes[] = {"dynamic", "survey", "static"};
constexpr std::string_view kPulseConditions[] = {"always", "with-a-fix", "with-a-satellite"};
constexpr std::string_view kTimeReferences[] = {"gnss", "utc"};

constexpr Field inReport(Field field) {
  field.isInSetting = false;
  return field;
}

/// An order or a query; or a setting and the report that answers its query, without "set-" or
/// "query-"; or another report.
constexpr Field heading(std::string_view name, message::Id report = 0) {
  return {.name = name, .type = Heading, .id = report};
}

constexpr Field kFields[] = {
    heading("soft-reset"),
    word("start", kStarts),
    number("year", U16),
    number("month"),
    number("day"),
    number("hour"),
    number("minute"),
    number("second"),
    bytes("hints", HexBytes, 6),

    heading("set-factory-defaults"),
    number("type"),

    heading("restart"),
    word("forget", kSwitch),

    heading("query-software-revision"),
    number("type"),

    heading("software-revision"),
    number("type"),
    number("kernel version", VersionGroup),
    number("ODM version", VersionGroup),
    number("revision", DateGroup),

    heading("version-extension"),
    bytes("version extension", TextBytes, 32),

    heading("serial-port"),
    number("port"),
    word("speed", kSpeeds, "baud"),

    heading("output-type"),
    word("output", kOutputs),

    heading("power-mode"),
    word("power mode", kPowerModes),

    heading("update-rate"),
    number("update rate", "Hz"),

    heading("dop-mask"),
    word("mode", kSwitch),
    number("position DOP", U16, "", 1),
    number("horizontal DOP", U16, "", 1),
    number("geometric DOP", U16, "", 1),

    heading("elevation-cnr-mask"),
    word("mode", kSwitch),
    number("elevation mask", "degrees"),
    number("CNR mask", "dB-Hz"),

    heading("cable-delay"),
    number("cable delay", S32, "ns", 2),

    heading("timing"),
    word("mode", kTimingModes),
    number("survey length", U32, "s"),
    number("standard deviation", U32),
    number("latitude", F64, "degrees"),
    number("longitude", F64, "degrees"),
    number("altitude", F32, "m"),
    inReport(word("running mode", kTimingModes)),
    inReport(number("surveyed", U32, "s")),

    heading("pps-output"),
    word("pulses", kPulseConditions),
    word("time reference", kTimeReferences),

    heading("sbas"),
    word("SBAS", kSwitch),
    bytes("parameters", HexBytes, 5),

    heading("qzss"),
    word("QZSS", kSwitch),
    bytes("parameters", HexBytes, 1),

    heading("nmea-intervals"),
    number("GGA", "epochs"),
    number("GSA", "epochs"),
    number("GSV", "epochs"),
    number("GLL", "epochs"),
    number("RMC", "epochs"),
    number("VTG", "epochs"),
    number("ZDA", "epochs"),
    bytes("others", HexBytes, 5),

    heading("interference-detection"),
    word("detection", kSwitch),
    inReport(word("interference", kInterference)),

    heading("fix-mask"),
    word("first fix", kRequiredFixes),
    word("later fixes", kRequiredFixes),

    heading("navigation-mode"),
    number("navigation mode"),

    heading("constellations"),
    bits("constellations", U16, kConstellations),

    heading("gps-time"),
    number("time of week", U32, "s", 3),
    number("fraction", U32, "ns"),
    number("week", U16),
    number("leap seconds"),
    number("next leap seconds"),
    bits("valid", U8, kValidity),

    heading("navigation-interval"),
    number("interval", "epochs"),

    heading("second-band"),
    word("second band", kSwitch),

    heading("pps-pulse-width"),
    number("pulse width", U32, "us"),

    heading("pps2-frequency"),
    number("frequency", U32, "Hz"),

    heading("acknowledged", message::kAcknowledged),
    number("message", IdByte),

    heading("refused", message::kRefused),
    number("message", IdByte),

    heading("navigation-data", message::kNavigationData),
    word("fix", kFixes),
    number("satellites"),
    number("week", U16),
    number("time of week", U32, "s", 2),
    number("latitude", S32, "degrees", 7),
    number("longitude", S32, "degrees", 7),
    number("ellipsoid altitude", S32, "m", 2),
    number("sea level altitude", S32, "m", 2),
    number("geometric DOP", U16, "", 2),
    number("position DOP", U16, "", 2),
    number("horizontal DOP", U16, "", 2),
    number("vertical DOP", U16, "", 2),
    number("time DOP", U16, "", 2),
    number("x", S32, "m", 2),
    number("y", S32, "m", 2),
    number("z", S32, "m", 2),
    number("x velocity", S32, "m/s", 2),
    number("y velocity", S32, "m/s", 2),
    number("z velocity", S32, "m/s", 2),
};

bool isHeading(const Field& field) { return field.type == Heading; }

/// The heading that has this name, or null.
const Field* findHeading(std::string_view name) {
  const auto* const found = std::ranges::find_if(
      kFields, [&](const Field& field) { return isHeading(field) && field.name == name; });
  return found == std::end(kFields) ? nullptr : found;
}

/// The report below this heading; 0 for none.
message::Id reportOf(const Field& heading) {
  const Command* const query = findCommand("query-" + std::string(heading.name));
  return query == nullptr ? heading.id : query->reply;
}

const Field* findReport(message::Id id) {
  const auto* const found = std::ranges::find_if(kFields, [&](const Field& field) {
    return isHeading(field) && id != 0 && reportOf(field) == id;
  });
  return found == std::end(kFields) ? nullptr : found;
}

/// The fields of a message in their order.
std::vector<Field> fieldsOfMessage(message::Id id) {
  constexpr std::string_view kSet = "set-";
  const Command* const command = findCommand(id);
  const bool isSetting = command != nullptr && command->store != nullptr;
  const Field* const heading = command == nullptr
                                   ? findReport(id)
                                   : findHeading(command->name.substr(isSetting ? kSet.size() : 0));
  if (heading == nullptr) {
    return {};
  }
  std::vector<Field> fields;
  std::copy_if(heading + 1, std::find_if(heading + 1, std::end(kFields), isHeading),
               std::back_inserter(fields),
               [&](const Field& field) { return field.isInSetting || !isSetting; });
  if (isSetting && command->hasAttribute) {
    fields.push_back(number("attribute"));
  }
  return fields;
}

template <typename Value>
Value valueOf(const Bytes& bytes) {
  Value value{};
  BodyReader(bytes).read(value);
  return value;
}

std::int64_t integerOf(FieldType type, const Bytes& bytes) {
  return type == U8    ? valueOf<std::uint8_t>(bytes)
         : type == U16 ? valueOf<std::uint16_t>(bytes)
         : type == U32 ? std::int64_t{valueOf<std::uint32_t>(bytes)}
                       : valueOf<std::int32_t>(bytes);
}

/// As few digits as tell the number from others of its type.
template <typename Float>
std::string floatText(Float value) {
  if (std::isnan(value)) {
    return "nan";
  }
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// The words for the bits that are set; bits that have none follow as a number.
std::string bitsText(std::span<const std::string_view> words, std::int64_t value) {
  std::string text;
  const auto add = [&text](std::string_view word) { text.append(text.empty() ? "" : " ") += word; };
  for (const std::string_view word : words) {
    if (value % 2 != 0) {
      add(word);
    }
    value /= 2;
  }
  if (value != 0) {
    add(format("0x%02llX", static_cast<unsigned long long>(value) << words.size()));
  }
  return text.empty() ? "none" : text;
}

/// In quotes, without the zero bytes that fill it up; what cannot stand there is escaped.
std::string quoted(const Bytes& bytes) {
  auto end = bytes.end();
  while (end != bytes.begin() && end[-1] == 0) {
    --end;
  }
  std::string text = "\"";
  std::for_each(bytes.begin(), end, [&](std::uint8_t byte) {
    const bool isPlain = isText(byte) && byte != '"' && byte != '\\';
    text += isPlain ? std::string(1, static_cast<char>(byte)) : format("\\x%02X", byte);
  });
  return text + '"';
}

void setInteger(const Field& field, std::int64_t value, FieldValue& result) {
  const auto index = static_cast<std::size_t>(value);
  if (field.areBits) {
    result.text = bitsText(field.words, value);
  } else if (index < field.words.size() && !field.words[index].empty()) {
    result.text = field.words[index];
    result.isNumber =
        std::isdigit(static_cast<unsigned char>(result.text.front())) != 0 && !field.unit.empty();
  } else if (!field.unit.empty() && !field.words.empty()) {
    result.text = "code " + std::to_string(value);
    result.unit = {};
  } else {
    result.text =
        format("%.*f", field.decimals, static_cast<double>(value) / std::pow(10, field.decimals));
    result.isNumber = true;
  }
}

FieldValue valueOfField(const Field& field, const Bytes& bytes) {
  FieldValue result{field.name, "", field.unit};
  switch (field.type) {
    case Heading:
      break;
    case U8:
    case U16:
    case U32:
    case S32:
      setInteger(field, integerOf(field.type, bytes), result);
      break;
    case F32:
      result.text = floatText(valueOf<float>(bytes));
      result.isNumber = true;
      break;
    case F64:
      result.text = floatText(valueOf<double>(bytes));
      result.isNumber = true;
      break;
    case IdByte:
      result.text = format("0x%02X", bytes[0]);
      break;
    case VersionGroup:
      result.text = format("%d.%d.%d", bytes[1], bytes[2], bytes[3]);
      break;
    case DateGroup:
      result.text = format("20%02d-%02d-%02d", bytes[1], bytes[2], bytes[3]);
      break;
    case HexBytes:
      result.text = toHex(bytes, " ");
      break;
    case TextBytes:
      result.text = quoted(bytes);
      break;
  }
  return result;
}

}  // namespace

FieldValues fieldValues(const Frame& frame) {
  FieldValues values{{}, frame.body()};
  Bytes& rest = values.rest;
  for (const Field& field : fieldsOfMessage(frame.id())) {
    if (rest.size() < field.width) {
      break;
    }
    const auto end = rest.begin() + static_cast<std::ptrdiff_t>(field.width);
    values.named.push_back(valueOfField(field, Bytes(rest.begin(), end)));
    rest.erase(rest.begin(), end);
  }
  return values;
}

std::string_view messageName(message::Id id) {
  if (const Command* const command = findCommand(id)) {
    return command->name;
  }
  const Field* const heading = findReport(id);
  return heading == nullptr ? "" : heading->name;
}

std::optional<message::Id> findMessage(std::string_view name) {
  if (const Command* const command = findCommand(name)) {
    return command->id;
  }
  const Field* const heading = findHeading(name);
  const message::Id report = heading == nullptr ? 0 : reportOf(*heading);
  return report == 0 ? std::nullopt : std::optional(report);
}

}  // namespace orb::sim
