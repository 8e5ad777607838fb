#include <gtest/gtest.h>

#include <map>
#include <ostream>

#include "hex.h"
#include "orb-sim/receiver.h"

namespace orb::sim::test {
namespace {

/// A setting and the query that reads it back, as whole packets.
struct Exchange {
  const char* name;
  const char* setting;
  const char* acknowledgement;
  const char* query;
  const char* answer;  ///< acknowledgement and reply
};

void PrintTo(const Exchange& exchange, std::ostream* stream) { *stream << exchange.name; }

constexpr Exchange kExchanges[] = {
    {"PowerMode", "A0 A1 00 03 0C 01 00 0D 0D 0A", "A0 A1 00 02 83 0C 8F 0D 0A",
     "A0 A1 00 01 15 15 0D 0A",
     "A0 A1 00 02 83 15 96 0D 0A "
     "A0 A1 00 02 B9 01 B8 0D 0A"},
    {"UpdateRate", "A0 A1 00 03 0E 14 00 1A 0D 0A", "A0 A1 00 02 83 0E 8D 0D 0A",
     "A0 A1 00 01 10 10 0D 0A",
     "A0 A1 00 02 83 10 93 0D 0A "
     "A0 A1 00 02 86 14 92 0D 0A"},
    {"DopMask", "A0 A1 00 09 2A 01 00 FA 01 2C 01 5E 00 A3 0D 0A", "A0 A1 00 02 83 2A A9 0D 0A",
     "A0 A1 00 01 2E 2E 0D 0A",
     "A0 A1 00 02 83 2E AD 0D 0A "
     "A0 A1 00 08 AF 01 00 FA 01 2C 01 5E 26 0D 0A"},
    {"ElevationCnrMask", "A0 A1 00 05 2B 01 0A 1E 00 3E 0D 0A", "A0 A1 00 02 83 2B A8 0D 0A",
     "A0 A1 00 01 2F 2F 0D 0A",
     "A0 A1 00 02 83 2F AC 0D 0A "
     "A0 A1 00 04 B0 01 0A 1E A5 0D 0A"},
    {"CableDelay", "A0 A1 00 06 45 FF F8 5E E0 00 FC 0D 0A", "A0 A1 00 02 83 45 C6 0D 0A",
     "A0 A1 00 01 46 46 0D 0A",
     "A0 A1 00 02 83 46 C5 0D 0A "
     "A0 A1 00 05 BB FF F8 5E E0 02 0D 0A"},
    {"TimingAutoSurvey",
     "A0 A1 00 1F 54 01 00 00 2A 30 00 00 00 1E 40 48 2F 84 A0 B1 C2 D3 C0 27 22 98 01 02 03 04 44 "
     "02 20 00 00 CD 0D 0A",
     "A0 A1 00 02 83 54 D7 0D 0A", "A0 A1 00 01 44 44 0D 0A",
     "A0 A1 00 02 83 44 C7 0D 0A "
     "A0 A1 00 23 C2 01 00 00 2A 30 00 00 00 1E 40 48 2F 84 A0 B1 C2 D3 C0 27 22 98 01 02 03 04 44 "
     "02 20 00 01 00 00 00 00 5A 0D 0A"},
    {"TimingStatic",
     "A0 A1 00 1F 54 02 00 12 75 00 FF FF FF FE BF F0 00 00 00 00 00 01 40 66 80 00 00 00 00 02 C4 "
     "79 C0 00 01 A6 0D 0A",
     "A0 A1 00 02 83 54 D7 0D 0A", "A0 A1 00 01 44 44 0D 0A",
     "A0 A1 00 02 83 44 C7 0D 0A "
     "A0 A1 00 23 C2 02 00 12 75 00 FF FF FF FE BF F0 00 00 00 00 00 01 40 66 80 00 00 00 00 02 C4 "
     "79 C0 00 02 00 00 00 00 33 0D 0A"},
    {"PpsOutput", "A0 A1 00 04 55 02 01 00 56 0D 0A", "A0 A1 00 02 83 55 D6 0D 0A",
     "A0 A1 00 01 56 56 0D 0A",
     "A0 A1 00 02 83 56 D5 0D 0A "
     "A0 A1 00 03 C3 02 01 C0 0D 0A"},
    {"Sbas", "A0 A1 00 09 62 01 00 01 08 01 03 07 00 6F 0D 0A", "A0 A1 00 02 83 62 E1 0D 0A",
     "A0 A1 00 02 62 02 60 0D 0A",
     "A0 A1 00 02 83 62 E1 0D 0A "
     "A0 A1 00 08 62 80 00 01 08 01 03 07 EE 0D 0A"},
    {"Qzss", "A0 A1 00 05 62 03 00 03 00 62 0D 0A", "A0 A1 00 02 83 62 E1 0D 0A",
     "A0 A1 00 02 62 04 66 0D 0A",
     "A0 A1 00 02 83 62 E1 0D 0A "
     "A0 A1 00 04 62 81 00 03 E0 0D 0A"},
    {"NmeaIntervals", "A0 A1 00 0F 64 02 01 02 03 04 05 06 07 08 09 0A 0B 0C 00 6A 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A", "A0 A1 00 02 64 03 67 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A "
     "A0 A1 00 0E 64 81 01 02 03 04 05 06 07 08 09 0A 0B 0C E9 0D 0A"},
    {"InterferenceDetection", "A0 A1 00 04 64 06 01 00 63 0D 0A", "A0 A1 00 02 83 64 E7 0D 0A",
     "A0 A1 00 02 64 07 63 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A "
     "A0 A1 00 04 64 83 01 01 E7 0D 0A"},
    {"FixNavMask", "A0 A1 00 05 64 11 00 01 00 74 0D 0A", "A0 A1 00 02 83 64 E7 0D 0A",
     "A0 A1 00 02 64 12 76 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A "
     "A0 A1 00 04 64 88 00 01 ED 0D 0A"},
    {"NavigationMode", "A0 A1 00 04 64 17 03 00 70 0D 0A", "A0 A1 00 02 83 64 E7 0D 0A",
     "A0 A1 00 02 64 18 7C 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A "
     "A0 A1 00 03 64 8B 03 EC 0D 0A"},
    {"Constellations", "A0 A1 00 05 64 19 00 0F 00 72 0D 0A", "A0 A1 00 02 83 64 E7 0D 0A",
     "A0 A1 00 02 64 1A 7E 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A "
     "A0 A1 00 04 64 8C 00 0F E7 0D 0A"},
    {"NavMessageInterval", "A0 A1 00 04 64 2F 05 00 4E 0D 0A", "A0 A1 00 02 83 64 E7 0D 0A",
     "A0 A1 00 02 64 30 54 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A "
     "A0 A1 00 03 64 98 05 F9 0D 0A"},
    {"SecondBand", "A0 A1 00 04 64 50 01 00 35 0D 0A", "A0 A1 00 02 83 64 E7 0D 0A",
     "A0 A1 00 02 64 51 35 0D 0A",
     "A0 A1 00 02 83 64 E7 0D 0A "
     "A0 A1 00 03 64 9F 01 FA 0D 0A"},
    {"PpsPulseWidth", "A0 A1 00 07 65 01 00 01 86 A0 00 43 0D 0A", "A0 A1 00 02 83 65 E6 0D 0A",
     "A0 A1 00 02 65 02 67 0D 0A",
     "A0 A1 00 02 83 65 E6 0D 0A "
     "A0 A1 00 06 65 80 00 01 86 A0 C2 0D 0A"},
    {"Pps2Frequency", "A0 A1 00 07 65 03 01 24 F8 00 00 BB 0D 0A", "A0 A1 00 02 83 65 E6 0D 0A",
     "A0 A1 00 02 65 04 61 0D 0A",
     "A0 A1 00 02 83 65 E6 0D 0A "
     "A0 A1 00 06 65 81 01 24 F8 00 39 0D 0A"},
};

class EverySetting : public testing::TestWithParam<Exchange> {};

TEST_P(EverySetting, ReadsBackAsSet) {
  Receiver receiver;
  EXPECT_EQ(receiver.receive(hex(GetParam().setting)), hex(GetParam().acknowledgement));
  EXPECT_EQ(receiver.receive(hex(GetParam().query)), hex(GetParam().answer));
}

TEST_P(EverySetting, IsRestoredByTheFactoryDefaults) {
  Receiver receiver;
  const Bytes before = receiver.receive(hex(GetParam().query));
  receiver.receive(hex(GetParam().setting));
  EXPECT_NE(receiver.receive(hex(GetParam().query)), before);
  receiver.receive(hex("A0 A1 00 02 04 01 05 0D 0A"));
  EXPECT_EQ(receiver.receive(hex(GetParam().query)), before);
}

// All settings have one but that of the interference detection, whose last byte means nothing.
TEST_P(EverySetting, KeepsItsAttributeByte) {
  Receiver receiver;
  const Bytes golden = hex(GetParam().setting);
  const std::uint8_t idByte = golden[4];
  const auto id = static_cast<std::uint16_t>(idByte << 8 | (hasSubId(idByte) ? golden[5] : 0));
  Frame setting{Bytes(golden.begin() + 4, golden.end() - 3)};
  for (const std::uint8_t attribute : Bytes{0, 1, 2, 255}) {
    setting.payload.back() = attribute;
    receiver.receive(setting.packet());
    std::map<std::uint16_t, std::uint8_t> kept;
    if (id != 0x6406) {
      kept[id] = attribute;
    }
    EXPECT_EQ(receiver.state().attributes, kept);
  }
}

TEST_P(EverySetting, IsRefusedWhenOneByteShortOrLong) {
  const Bytes golden = hex(GetParam().setting);
  const Bytes payload(golden.begin() + 4, golden.end() - 3);
  const Bytes shorter(payload.begin(), payload.end() - 1);
  const Bytes refusal = refuse(static_cast<std::uint16_t>(payload[0] << 8));
  Receiver receiver;
  const Bytes before = receiver.receive(hex(GetParam().query));
  EXPECT_EQ(receiver.receive(Frame{payload + Bytes{0}}.packet()), refusal);
  EXPECT_EQ(receiver.receive(Frame{shorter}.packet()), refusal);
  EXPECT_EQ(receiver.receive(hex(GetParam().query)), before);
}

INSTANTIATE_TEST_SUITE_P(Settings, EverySetting, testing::ValuesIn(kExchanges),
                         [](const auto& info) { return info.param.name; });

TEST(Settings, WithoutAQueryAreSeenInTheState) {
  Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 04 05 01 03 01 06 0D 0A")),
            hex("A0 A1 00 02 83 05 86 0D 0A"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 03 09 02 01 0A 0D 0A")),
            hex("A0 A1 00 02 83 09 8A 0D 0A"));
  const State state = receiver.state();
  EXPECT_EQ(state.serialPort.port, 1);
  EXPECT_EQ(state.serialPort.baudCode, 3);
  EXPECT_EQ(state.outputType, OutputType::Binary);
  EXPECT_EQ(state.attributes, (std::map<std::uint16_t, std::uint8_t>{{0x0500, 1}, {0x0900, 1}}));
}

TEST(Settings, ReachTheNamedFieldsOfTheState) {
  Receiver receiver;
  for (const Exchange& exchange : kExchanges) {
    receiver.receive(hex(exchange.setting));
  }
  const State state = receiver.state();
  EXPECT_EQ(state.powerMode, 1);
  EXPECT_EQ(state.updateRate, 20);
  EXPECT_EQ(state.dopMask.mode, 1);
  EXPECT_EQ(state.dopMask.limits, (std::array<std::uint16_t, 3>{250, 300, 350}));
  EXPECT_EQ(state.elevationCnrMask.mode, 1);
  EXPECT_EQ(state.elevationCnrMask.elevation, 10);
  EXPECT_EQ(state.elevationCnrMask.cnr, 30);
  EXPECT_EQ(state.cableDelay, -500000);
  EXPECT_EQ(state.timing.mode, TimingMode::Static);
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

}  // namespace
}  // namespace orb::sim::test
