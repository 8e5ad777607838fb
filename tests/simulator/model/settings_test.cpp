#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <random>

#include "receivers.h"

namespace orb::test {
namespace {

/// A setting, the query that reads it back and its reply. Bodies are without the attribute byte.
struct Row {
  const char* name;
  std::uint16_t setting;
  std::uint16_t query;
  std::uint16_t reply;
  const char* factory;        ///< what the query reports before anything is set
  const char* given;          ///< another value
  const char* measured = "";  ///< what the reply tells after that value, and is not set
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }

constexpr char kFactoryTiming[] =
    "00 00 00 07 D0 00 00 00 1E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

constexpr Row kRows[] = {
    {"PowerMode", 0x0C00, 0x1500, 0xB900, "00", "01"},
    {"UpdateRate", 0x0E00, 0x1000, 0x8600, "01", "14"},
    {"DopMask", 0x2A00, 0x2E00, 0xAF00, "00 01 2C 01 2C 01 2C", "01 00 FA 01 2C 01 5E"},
    {"ElevationCnrMask", 0x2B00, 0x2F00, 0xB000, "01 05 00", "01 0A 1E"},
    {"CableDelay", 0x4500, 0x4600, 0xBB00, "00 00 00 00", "FF F8 5E E0"},
    {"TimingAutoSurvey", 0x5400, 0x4400, 0xC200, kFactoryTiming,
     "01 00 00 2A 30 00 00 00 1E 40 48 2F 84 A0 B1 C2 D3 C0 27 22 98 01 02 03 04 44 02 20 00",
     "01 00 00 00 00"},
    {"TimingStatic", 0x5400, 0x4400, 0xC200, kFactoryTiming,
     "02 00 12 75 00 FF FF FF FE BF F0 00 00 00 00 00 01 40 66 80 00 00 00 00 02 C4 79 C0 00",
     "02 00 00 00 00"},
    {"PpsOutput", 0x5500, 0x5600, 0xC300, "00 00", "02 01"},
    {"Sbas", 0x6201, 0x6202, 0x6280, "01 01 08 01 03 07", "00 01 08 01 03 07"},
    {"Qzss", 0x6203, 0x6204, 0x6281, "01 03", "00 03"},
    {"NmeaIntervals", 0x6402, 0x6403, 0x6481, "01 01 01 01 01 01 01 00 00 00 00 00",
     "01 02 03 04 05 06 07 08 09 0A 0B 0C"},
    {"InterferenceDetection", 0x6406, 0x6407, 0x6483, "00", "01", "01"},
    {"FixNavMask", 0x6411, 0x6412, 0x6488, "00 00", "00 01"},
    {"NavigationMode", 0x6417, 0x6418, 0x648B, "00", "03"},
    {"Constellations", 0x6419, 0x641A, 0x648C, "00 03", "00 0F"},
    {"NavMessageInterval", 0x642F, 0x6430, 0x6498, "01", "05"},
    {"SecondBand", 0x6450, 0x6451, 0x649F, "00", "01"},
    {"PpsPulseWidth", 0x6501, 0x6502, 0x6580, "00 00 03 E8", "00 01 86 A0"},
    {"Pps2Frequency", 0x6503, 0x6504, 0x6581, "00 00 00 00", "01 24 F8 00"},
};

class EverySetting : public testing::TestWithParam<Row> {
 protected:
  Bytes set(const Bytes& body) { return receiver_.receive(sim::frame(GetParam().setting, body)); }
  Bytes query() { return receiver_.receive(sim::frame(GetParam().query)); }

  const Bytes given_ = hex(GetParam().given);
  sim::Receiver receiver_;
};

TEST_P(EverySetting, ReadsBackAsSet) {
  EXPECT_EQ(set(given_ + Bytes{0}), sim::acknowledge(GetParam().setting));
  EXPECT_EQ(query(), sim::acknowledge(GetParam().query) +
                         sim::frame(GetParam().reply, given_ + hex(GetParam().measured)));
}

TEST_P(EverySetting, IsRestoredByTheFactoryDefaults) {
  const Bytes before = query();
  set(given_ + Bytes{0});
  EXPECT_NE(query(), before);
  receiver_.receive(hex("A0 A1 00 02 04 01 05 0D 0A"));
  EXPECT_EQ(query(), before);
}

// All settings have one but that of the interference detection, whose last byte means nothing.
TEST_P(EverySetting, KeepsItsAttributeByte) {
  const std::uint16_t id = GetParam().setting;
  for (const std::uint8_t attribute : Bytes{0, 1, 2, 255}) {
    set(given_ + Bytes{attribute});
    std::map<std::uint16_t, std::uint8_t> kept;
    if (id != 0x6406) {
      kept[id] = attribute;
    }
    EXPECT_EQ(receiver_.state().attributes, kept);
  }
}

TEST_P(EverySetting, IsRefusedWhenOneByteShortOrLong) {
  const Bytes before = query();
  EXPECT_EQ(set(given_ + Bytes{0, 0}), sim::refuse(GetParam().setting));
  EXPECT_EQ(set(given_), sim::refuse(GetParam().setting));
  EXPECT_EQ(query(), before);
}

INSTANTIATE_TEST_SUITE_P(Settings, EverySetting, testing::ValuesIn(kRows),
                         [](const auto& info) { return info.param.name; });

TEST(Settings, WithoutAQueryAreSeenInTheState) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 04 05 01 03 01 06 0D 0A")),
            hex("A0 A1 00 02 83 05 86 0D 0A"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 03 09 02 01 0A 0D 0A")),
            hex("A0 A1 00 02 83 09 8A 0D 0A"));
  const sim::State state = receiver.state();
  EXPECT_EQ(state.serialPort.port, 1);
  EXPECT_EQ(state.serialPort.baudCode, 3);
  EXPECT_EQ(state.outputType, sim::OutputType::Binary);
  EXPECT_EQ(state.attributes, (std::map<std::uint16_t, std::uint8_t>{{0x0500, 1}, {0x0900, 1}}));
}

TEST(Settings, ReachTheNamedFieldsOfTheState) {
  sim::Receiver receiver;
  for (const Row& row : kRows) {
    receiver.receive(sim::frame(row.setting, hex(row.given) + Bytes{0}));
  }
  const sim::State state = receiver.state();
  EXPECT_EQ(state.powerMode, 1);
  EXPECT_EQ(state.updateRate, 20);
  EXPECT_EQ(state.dopMask.mode, 1);
  EXPECT_EQ(state.dopMask.limits, (std::array<std::uint16_t, 3>{250, 300, 350}));
  EXPECT_EQ(state.elevationCnrMask.mode, 1);
  EXPECT_EQ(state.elevationCnrMask.elevation, 10);
  EXPECT_EQ(state.elevationCnrMask.cnr, 30);
  EXPECT_EQ(state.cableDelay, -500000);
  EXPECT_EQ(state.timing.mode, sim::TimingMode::Static);
  EXPECT_EQ(state.timing.surveyLength, 1209600U);
  EXPECT_EQ(state.timing.standardDeviation, 0xFFFFFFFEU);
  EXPECT_EQ(state.timing.latitude, -1.0000000000000002);
  EXPECT_EQ(state.timing.longitude, 180.00000000000006);
  EXPECT_EQ(state.timing.altitude, -999.0F);
  EXPECT_EQ(state.ppsOutput.mode, 2);
  EXPECT_EQ(state.ppsOutput.alignSource, 1);
  EXPECT_EQ(state.sbas[0], 0);
  EXPECT_EQ(state.qzss[0], 0);
  EXPECT_EQ(state.nmeaIntervals[11], 12);
  EXPECT_EQ(state.interferenceDetection, 1);
  EXPECT_EQ(state.fixNavMask.first, 0);
  EXPECT_EQ(state.fixNavMask.second, 1);
  EXPECT_EQ(state.navigationMode, 3);
  EXPECT_EQ(state.constellations, 15);
  EXPECT_EQ(state.navMessageInterval, 5);
  EXPECT_EQ(state.secondBand, 1);
  EXPECT_EQ(state.ppsPulseWidth, 100000U);
  EXPECT_EQ(state.pps2Frequency, 19200000U);
}

TEST(Settings, KeepAnyValueApartFromEachOther) {
  std::mt19937 random(1);
  sim::Receiver receiver;
  std::map<std::uint16_t, Bytes> values;
  for (const Row& row : kRows) {
    values[row.setting] = hex(row.factory);
  }
  for (int round = 0; round < 1000 && !HasFailure(); ++round) {
    const std::uint16_t setting = kRows[random() % std::size(kRows)].setting;
    Bytes& value = values[setting];
    std::generate(value.begin(), value.end(), [&] { return static_cast<std::uint8_t>(random()); });
    EXPECT_EQ(receiver.receive(sim::frame(setting, value + Bytes{0})), sim::acknowledge(setting));
    for (const Row& row : kRows) {
      Bytes body = replyTo(row.query, receiver);
      body.resize(body.size() - hex(row.measured).size());
      EXPECT_EQ(body, values[row.setting]) << row.name << " after " << std::hex << setting;
    }
  }
}

}  // namespace
}  // namespace orb::test
