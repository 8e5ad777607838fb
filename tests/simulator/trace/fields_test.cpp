#include "trace/fields.h"
#include "rate_query.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "model/commands.h"
#include "model/packet_layout.h"
#include "trace/description.h"

namespace orb::test {
namespace {

/// What is printed of a message's fields.
std::string fieldsIn(sim::message::Id id, const sim::Bytes& body) {
  const sim::Bytes packet = sim::frame(id, body);
  const std::string line = sim::describe({sim::StreamItem::Kind::Packet, 0, packet, packet.size()});
  const std::size_t begin = line.find(" (");
  return begin == std::string::npos ? "" : line.substr(begin + 2, line.size() - begin - 3);
}

struct Known {
  sim::message::Id id;
  const char* body;
  const char* fields;
};

// Bodies are written by hand from the messages' tables.
constexpr Known kMessages[] = {
    {0x0100, "01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00",
     "start hot, year 1980, month 1, day 6, hour 0, minute 0, second 10, hints 0E A3 31 00 00 00"},
    {0x0400, "01", "type 1"},
    {0x643F, "01", "forget on"},
    {0x0500, "00 04 01", "port 0, speed 57600 baud, attribute 1"},
    {0x0500, "01 09 01", "port 1, speed code 9, attribute 1"},
    {0x0900, "02 00", "output binary, attribute 0"},
    {0x0C00, "01 00", "power mode power-saving, attribute 0"},
    {0x0E00, "0A 00", "update rate 10 Hz, attribute 0"},
    {0x2A00, "01 00 FA 01 2C 03 E7 00",
     "mode on, position DOP 25.0, horizontal DOP 30.0, geometric DOP 99.9, attribute 0"},
    {0x2B00, "01 05 0C 00", "mode on, elevation mask 5 degrees, CNR mask 12 dB-Hz, attribute 0"},
    {0x4500, "FF FF FF 6A 00", "cable delay -1.50 ns, attribute 0"},
    {0x5400,
     "01 00 00 2A 30 00 00 00 1E 40 48 2F 80 00 00 00 00 C0 27 20 00 00 00 00 00 44 02 07 AE 00",
     "mode survey, survey length 10800 s, standard deviation 30, latitude 48.37109375 degrees, "
     "longitude -11.5625 degrees, altitude 520.12 m, attribute 0"},
    {0x5500, "02 01 00", "pulses with-a-satellite, time reference utc, attribute 0"},
    {0x6201, "00 01 08 01 03 07 00", "SBAS off, parameters 01 08 01 03 07, attribute 0"},
    {0x6203, "01 03 00", "QZSS on, parameters 03, attribute 0"},
    {0x6402, "01 02 03 04 05 06 07 00 00 00 00 09 00",
     "GGA 1 epochs, GSA 2 epochs, GSV 3 epochs, GLL 4 epochs, RMC 5 epochs, VTG 6 epochs, "
     "ZDA 7 epochs, others 00 00 00 00 09, attribute 0"},
    {0x6406, "01 00", "detection on, and 00"},
    {0x6411, "00 01 00", "first fix 3d, later fixes 2d, attribute 0"},
    {0x6417, "05 00", "navigation mode 5, attribute 0"},
    {0x6419, "00 0D 00", "constellations gps galileo beidou, attribute 0"},
    {0x642F, "05 00", "interval 5 epochs, attribute 0"},
    {0x6450, "01 00", "second band on, attribute 0"},
    {0x6501, "00 01 86 A0 00", "pulse width 100000 us, attribute 0"},
    {0x6503, "01 24 F8 00 00", "frequency 19200000 Hz, attribute 0"},

    {0x0200, "00", "type 0"},
    {0x1000, "", ""},
    {0x6420, "", ""},

    {0x8000, "01 00 01 00 0C 00 01 02 00 00 18 03 0F",
     "type 1, kernel version 1.0.12, ODM version 1.2.0, revision 2024-03-15"},
    {0x8300, "2B", "message 0x2B"},
    {0x8400, "64", "message 0x64"},
    {0x8600, "14", "update rate 20 Hz"},
    {0xA800,
     "03 09 08 FC 02 0F 76 78 1C D4 DC 99 F9 1A FB 80 00 00 CB 2C FF FF B9 E6 00 B4 00 A0 00 5A "
     "00 82 00 55 00 00 00 64 FF FF FF 9C 7F FF FF FF 00 00 00 01 00 00 00 00 80 00 00 00",
     "fix 3d-differential, satellites 9, week 2300, time of week 345678.00 s, "
     "latitude 48.3712153 degrees, longitude -11.5672192 degrees, ellipsoid altitude 520.12 m, "
     "sea level altitude -179.46 m, geometric DOP 1.80, position DOP 1.60, horizontal DOP 0.90, "
     "vertical DOP 1.30, time DOP 0.85, x 1.00 m, y -1.00 m, z 21474836.47 m, x velocity 0.01 m/s, "
     "y velocity 0.00 m/s, z velocity -21474836.48 m/s"},
    {0xAF00, "00 00 05 00 05 00 05",
     "mode off, position DOP 0.5, horizontal DOP 0.5, geometric DOP 0.5"},
    {0xB000, "00 0A 00", "mode off, elevation mask 10 degrees, CNR mask 0 dB-Hz"},
    {0xB900, "00", "power mode normal"},
    {0xBB00, "00 00 0A F0", "cable delay 28.00 ns"},
    {0xC200,
     "02 00 00 07 D0 FF FF FF FF 40 48 2F 80 00 00 00 00 C0 27 20 00 00 00 00 00 44 02 00 00 "
     "02 00 00 07 D0",
     "mode static, survey length 2000 s, standard deviation 4294967295, latitude 48.37109375 "
     "degrees, longitude -11.5625 degrees, altitude 520 m, running mode static, surveyed 2000 s"},
    {0xC300, "01 00", "pulses with-a-fix, time reference gnss"},
    {0x6280, "01 01 08 01 03 07", "SBAS on, parameters 01 08 01 03 07"},
    {0x6281, "00 03", "QZSS off, parameters 03"},
    {0x6481, "01 01 01 01 01 01 FF 00 00 00 00 00",
     "GGA 1 epochs, GSA 1 epochs, GSV 1 epochs, GLL 1 epochs, RMC 1 epochs, VTG 1 epochs, "
     "ZDA 255 epochs, others 00 00 00 00 00"},
    {0x6483, "01 03", "detection on, interference critical"},
    {0x6488, "01 00", "first fix 2d, later fixes 3d"},
    {0x648B, "00", "navigation mode 0"},
    {0x648C, "00 02", "constellations glonass"},
    {0x648E, "00 05 26 5C 00 00 00 07 08 FC 12 13 05",
     "time of week 337.500 s, fraction 7 ns, week 2300, leap seconds 18, next leap seconds 19, "
     "valid time-of-week leap-seconds"},
    {0x6498, "01", "interval 1 epochs"},
    {0x649F, "00", "second band off"},
    {0x64FE,
     "4F 52 42 2D 53 49 4D 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00",
     "version extension \"ORB-SIM\""},
    {0x6580, "00 00 03 E8", "pulse width 1000 us"},
    {0x6581, "00 98 96 80", "frequency 10000000 Hz"},
};

TEST(Fields, AreNamedWithTheirUnits) {
  for (const Known& known : kMessages) {
    EXPECT_EQ(fieldsIn(known.id, hex(known.body)), known.fields) << std::hex << known.id;
  }
}

/// The message's body as it is when all goes well, in bytes.
std::size_t bodyLength(sim::message::Id id, std::size_t payloadLength) {
  return payloadLength - (sim::hasSubId(static_cast<std::uint8_t>(id >> 8)) ? 2 : 1);
}

bool isTried(sim::message::Id id) {
  return std::ranges::find(kMessages, id, &Known::id) != std::end(kMessages);
}

/// A message whose body has this length is named to its end.
void expectWhole(sim::message::Id id, std::size_t length, const sim::Bytes& rest = {}) {
  const sim::Frame frame = sim::frameOf(sim::frame(id, sim::Bytes(length)).data());
  const sim::FieldValues values = sim::fieldValues(frame);
  EXPECT_EQ(values.rest, rest) << std::hex << id;
  EXPECT_EQ(values.named.empty(), length == 0) << std::hex << id;
  EXPECT_EQ(sim::findMessage(sim::messageName(id)), id) << std::hex << id;
  EXPECT_TRUE(length == 0 || isTried(id)) << std::hex << id << " is not among the known ones";
}

TEST(Fields, AreThoseOfEveryMessageThatIsSentOrAnswered) {
  for (unsigned int id = 0; id <= 0xFFFF; ++id) {
    const sim::Command* const command = sim::findCommand(static_cast<sim::message::Id>(id));
    if (command == nullptr) {
      continue;
    }
    const bool endsInNothing = command->store != nullptr && !command->hasAttribute;
    expectWhole(command->id, bodyLength(command->id, command->length),
                sim::Bytes(endsInNothing ? 1 : 0));
    if (command->reply != 0) {
      sim::BodyWriter report;
      command->report({}, report);
      expectWhole(command->reply, report.body().size());
    }
  }
  constexpr std::size_t kNavigationData = 58;
  expectWhole(sim::message::kAcknowledged, 1);
  expectWhole(sim::message::kRefused, 1);
  expectWhole(sim::message::kNavigationData, kNavigationData);
}

TEST(Fields, AreNoneWhereNothingIsKnown) {
  EXPECT_EQ(fieldsIn(0x0000, hex("01 02 03")), "");
  EXPECT_EQ(fieldsIn(0x7000, hex("01 02 03")), "");
  EXPECT_EQ(fieldsIn(0xB100, hex("01 02 03")), "");
  EXPECT_EQ(sim::messageName(0x0000), "");
  EXPECT_EQ(sim::messageName(0xB100), "");
}

TEST(Fields, AreNamedAsFarAsTheMessageHasThem) {
  const sim::Bytes body = hex("01 05 0C 00");
  const char* const expected[] = {"", "mode on", "mode on, elevation mask 5 degrees",
                                  "mode on, elevation mask 5 degrees, CNR mask 12 dB-Hz"};
  for (std::size_t length = 0; length < body.size(); ++length) {
    const sim::Bytes cut(body.begin(), body.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(fieldsIn(0x2B00, cut), expected[length]);
  }
  EXPECT_EQ(fieldsIn(0x2B00, hex("01 05 0C 00 AA BB")),
            std::string(expected[3]) + ", attribute 0, and AA BB");
  EXPECT_EQ(fieldsIn(0xAF00, hex("01 00")), "mode on, and 00");
  EXPECT_EQ(fieldsIn(0xAF00, hex("01")), "mode on");
  EXPECT_EQ(fieldsIn(0xBB00, hex("01 02 03")), "") << "no field is whole";
}

TEST(Fields, HaveNumbersWhereNoWordIsKnown) {
  EXPECT_EQ(fieldsIn(0xB900, hex("07")), "power mode 7");
  EXPECT_EQ(fieldsIn(0x0100, hex("00")), "start 0");
  EXPECT_EQ(fieldsIn(0x648C, hex("00 00")), "constellations none");
  EXPECT_EQ(fieldsIn(0x648C, hex("80 31")), "constellations gps 0x8030");
}

TEST(Fields, SayWhereANumberIsNone) {
  const std::string begin = "00 00 00 00 00 00 00 00 00 ";
  const std::string text = fieldsIn(
      0xC200, hex((begin + "FF F8 00 00 00 00 00 00 FF F0 00 00 00 00 00 00 7F 80 00 00").c_str()));
  EXPECT_TRUE(text.ends_with("latitude nan degrees, longitude -inf degrees, altitude inf m"))
      << text;
}

TEST(Fields, EscapeWhatIsNotPrintable) {
  sim::Bytes body(32, 0);
  const sim::Bytes text = hex("1B 5B 41 22 5C 00 FF 7F 0A 42");
  std::copy(text.begin(), text.end(), body.begin());
  EXPECT_EQ(fieldsIn(0x64FE, body), R"(version extension "\x1B[A\x22\x5C\x00\xFF\x7F\x0AB")");
}

TEST(Messages, AreFoundByTheirNames) {
  EXPECT_EQ(sim::findMessage("set-timing"), 0x5400);
  EXPECT_EQ(sim::findMessage("query-timing"), 0x4400);
  EXPECT_EQ(sim::findMessage("timing"), 0xC200);
  EXPECT_EQ(sim::findMessage("navigation-data"), 0xA800);
  EXPECT_EQ(sim::findMessage("acknowledged"), 0x8300);
  EXPECT_EQ(sim::findMessage("serial-port"), std::nullopt) << "nothing reports it";
  EXPECT_EQ(sim::findMessage("second band"), std::nullopt) << "a field";
  EXPECT_EQ(sim::findMessage(""), std::nullopt);
}

}  // namespace
}  // namespace orb::test
