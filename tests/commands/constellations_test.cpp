#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;
using orb::test::Setting;
using orb::test::SettingOutcome;
using namespace std::chrono_literals;

constexpr const char* kConfigureConstellations =
    "64 19: Configure the GNSS constellation type used for navigation solution ";
constexpr const char* kConfigureSecondBand = "64 50: Enable/Disable second band of GNSS receiver ";

const Sent kQueryConstellations{
    "A0 A1 00 02 64 1A 7E 0D 0A",
    "64 1A: Query the GNSS constellation type used for navigation solution"};
const Sent kQuerySbas{"A0 A1 00 02 62 02 60 0D 0A", "62 02: Query SBAS status of GNSS receiver "};
const Sent kQueryQzss{"A0 A1 00 02 62 04 66 0D 0A", "62 04: Query QZSS status of GNSS receiver"};
const Sent kQuerySecondBand{"A0 A1 00 02 64 51 35 0D 0A",
                            "64 51: Query second band status of GNSS receiver "};

const Sent kConfigureAllConstellations{"A0 A1 00 05 64 19 00 0F 00 72 0D 0A",
                                       kConfigureConstellations};
const Sent kSbasOff{"A0 A1 00 09 62 01 00 01 08 01 03 07 00 6F 0D 0A",
                    "62 01: Configure SBAS parameters of GNSS receiver "};
const Sent kSbasOn{"A0 A1 00 09 62 01 01 01 08 01 03 07 00 6E 0D 0A",
                   "62 01: Configure SBAS parameters of GNSS receiver "};
const Sent kQzssOff{"A0 A1 00 05 62 03 00 03 00 62 0D 0A",
                    "62 03: Configure QZSS parameters of GNSS receiver "};
const Sent kQzssOn{"A0 A1 00 05 62 03 01 03 00 63 0D 0A",
                   "62 03: Configure QZSS parameters of GNSS receiver "};
const Sent kSecondBandOff{"A0 A1 00 04 64 50 00 00 34 0D 0A", kConfigureSecondBand};
const Sent kSecondBandOn{"A0 A1 00 04 64 50 01 00 35 0D 0A", kConfigureSecondBand};

Outcome getReceiverMask(orbController_QN4470T01& driver) {
  unsigned short mask = 0xABCD;
  const unsigned int result = driver.gpsObtGetGnssConfigure(mask);
  return Outcome(result, mask);
}

Outcome getSbas(orbController_QN4470T01& driver) {
  bool enabled = true;
  const unsigned int result = driver.gpsObtGetSbasConfigure(enabled);
  return Outcome(result, enabled);
}

Outcome getQzss(orbController_QN4470T01& driver) {
  bool enabled = true;
  const unsigned int result = driver.gpsObtGetQzssConfigure(enabled);
  return Outcome(result, enabled);
}

Outcome getSecondBand(orbController_QN4470T01& driver) {
  bool enabled = true;
  const unsigned int result = driver.gpsObtGetL2BandConfigure(enabled);
  return Outcome(result, enabled);
}

std::vector<Query> queries() {
  return {
      {.name = "GetGnssConfigure",
       .call = getReceiverMask,
       .sends = kQueryConstellations,
       .reply = "A0 A1 00 04 64 8C 12 34 CE 0D 0A",
       .answer = {0, "4660"},
       .shortReply = "A0 A1 00 03 64 8C 12 FA 0D 0A",
       .shortAnswer = {0, "4608"},
       .untouched = "43981"},
      // Adds to what the caller's mask holds: 0x100 and 0x49.
      {.name = "GetGnssSystem",
       .call =
           [](auto& driver) {
             unsigned short mask = 0x100;
             const unsigned int result = driver.getGnssSystem(mask);
             return Outcome(result, mask);
           },
       .sends = kQueryConstellations,
       .reply = "A0 A1 00 04 64 8C 00 0B E3 0D 0A",
       .answer = {0, "329"},
       .shortReply = "A0 A1 00 02 64 8C E8 0D 0A",
       .shortAnswer = {0, "256"},
       .untouched = "256"},
      {.name = "GetSbasConfigure",
       .call = getSbas,
       .sends = kQuerySbas,
       .reply = "A0 A1 00 08 62 80 00 01 08 01 03 07 EE 0D 0A",
       .answer = {0, "false"},
       .shortReply = "A0 A1 00 02 62 80 E2 0D 0A",
       .shortAnswer = {0, "false"},
       .untouched = "true"},
      {.name = "GetQzssConfigure",
       .call = getQzss,
       .sends = kQueryQzss,
       .reply = "A0 A1 00 04 62 81 00 03 E0 0D 0A",
       .answer = {0, "false"},
       .shortReply = "A0 A1 00 02 62 81 E3 0D 0A",
       .shortAnswer = {0, "false"},
       .untouched = "true"},
      {.name = "GetL2BandConfigure",
       .call = getSecondBand,
       .sends = kQuerySecondBand,
       .reply = "A0 A1 00 03 64 9F 00 FB 0D 0A",
       .answer = {0, "false"},
       .shortReply = "A0 A1 00 02 64 9F FB 0D 0A",
       .shortAnswer = {0, "false"},
       .untouched = "true"},
  };
}

INSTANTIATE_TEST_SUITE_P(Constellations, QueryOutcome, testing::ValuesIn(queries()), RowName());

// An unanswered read-back leaves a switch off and a mask empty.
std::vector<Setting> settings() {
  return {
      {.name = "GnssConfigure",
       .call = [](auto& driver) { return Outcome(driver.gpsObtGnssConfigure(0x4D)); },
       .sends = kConfigureAllConstellations,
       .settle = 100ms,
       .reads = kQueryConstellations,
       .reply = "A0 A1 00 04 64 8C 00 0F E7 0D 0A",
       .otherReply = "A0 A1 00 04 64 8C 00 4D A5 0D 0A",  // the mask as it was given
       .shortReply = "A0 A1 00 03 64 8C 00 E8 0D 0A"},
      {.name = "GnssConfigureToNone",
       .call = [](auto& driver) { return Outcome(driver.gpsObtGnssConfigure(0)); },
       .sends = {"A0 A1 00 05 64 19 00 00 00 7D 0D 0A", kConfigureConstellations},
       .settle = 100ms,
       .reads = kQueryConstellations,
       .reply = "A0 A1 00 04 64 8C 00 00 E8 0D 0A",
       .otherReply = "A0 A1 00 04 64 8C 01 00 E9 0D 0A",
       .shortReply = "A0 A1 00 02 64 8C E8 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
      {.name = "SbasConfigureOn",
       .call = [](auto& driver) { return Outcome(driver.gpsObtSbasConfigure(true)); },
       .sends = kSbasOn,
       .settle = 100ms,
       .reads = kQuerySbas,
       .reply = "A0 A1 00 08 62 80 01 01 08 01 03 07 EF 0D 0A",
       .otherReply = "A0 A1 00 08 62 80 00 01 08 01 03 07 EE 0D 0A",
       .shortReply = "A0 A1 00 02 62 80 E2 0D 0A"},
      {.name = "SbasConfigureOff",
       .call = [](auto& driver) { return Outcome(driver.gpsObtSbasConfigure(false)); },
       .sends = kSbasOff,
       .settle = 100ms,
       .reads = kQuerySbas,
       .reply = "A0 A1 00 08 62 80 00 01 08 01 03 07 EE 0D 0A",
       .otherReply = "A0 A1 00 08 62 80 01 01 08 01 03 07 EF 0D 0A",
       .shortReply = "A0 A1 00 02 62 80 E2 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
      {.name = "ConfigureSBAS",
       .call = [](auto& driver) { return Outcome(driver.configureSBAS()); },
       .sends = kSbasOff,
       .settle = 100ms,
       .reads = kQuerySbas,
       .reply = "A0 A1 00 08 62 80 00 01 08 01 03 07 EE 0D 0A",
       .otherReply = "A0 A1 00 08 62 80 01 01 08 01 03 07 EF 0D 0A",
       .shortReply = "A0 A1 00 02 62 80 E2 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
      {.name = "QzssConfigureOn",
       .call = [](auto& driver) { return Outcome(driver.gpsObtQzssConfigure(true)); },
       .sends = kQzssOn,
       .settle = 100ms,
       .reads = kQueryQzss,
       .reply = "A0 A1 00 04 62 81 01 03 E1 0D 0A",
       .otherReply = "A0 A1 00 04 62 81 00 03 E0 0D 0A",
       .shortReply = "A0 A1 00 02 62 81 E3 0D 0A"},
      {.name = "QzssConfigureOff",
       .call = [](auto& driver) { return Outcome(driver.gpsObtQzssConfigure(false)); },
       .sends = kQzssOff,
       .settle = 100ms,
       .reads = kQueryQzss,
       .reply = "A0 A1 00 04 62 81 00 03 E0 0D 0A",
       .otherReply = "A0 A1 00 04 62 81 01 03 E1 0D 0A",
       .shortReply = "A0 A1 00 02 62 81 E3 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
      {.name = "L2BandConfigureOn",
       .call = [](auto& driver) { return Outcome(driver.gpsObtL2BandConfigure(true)); },
       .sends = kSecondBandOn,
       .settle = 50ms,
       .reads = kQuerySecondBand,
       .reply = "A0 A1 00 03 64 9F 01 FA 0D 0A",
       .otherReply = "A0 A1 00 03 64 9F 00 FB 0D 0A",
       .shortReply = "A0 A1 00 02 64 9F FB 0D 0A"},
      {.name = "L2BandConfigureOff",
       .call = [](auto& driver) { return Outcome(driver.gpsObtL2BandConfigure(false)); },
       .sends = kSecondBandOff,
       .settle = 50ms,
       .reads = kQuerySecondBand,
       .reply = "A0 A1 00 03 64 9F 00 FB 0D 0A",
       .otherReply = "A0 A1 00 03 64 9F 01 FA 0D 0A",
       .shortReply = "A0 A1 00 02 64 9F FB 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
  };
}

INSTANTIATE_TEST_SUITE_P(Constellations, SettingOutcome, testing::ValuesIn(settings()), RowName());

class Constellations : public OperationTest {
 protected:
  /// What getGnssSystem() makes of `held` when the receiver replies this.
  unsigned int interfaceMask(const std::string& reply, unsigned short held = 0) {
    onPacket(kQueryConstellations.packet).answer(bytes(reply));
    unsigned short mask = held;
    observe([&](auto& driver) { return Outcome(driver.getGnssSystem(mask)); });
    return mask;
  }
};

// The receiver's numbering and the interface's.

TEST_F(Constellations, AreSentInTheReceiversNumbering) {
  connectReceiver();
  struct Row {
    unsigned short mask;
    const char* packet;
  };
  for (const Row& row :
       {Row{0x0001, "A0 A1 00 05 64 19 00 01 00 7C 0D 0A"},  // GPS
        Row{0x0002, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"},  // SBAS
        Row{0x0004, "A0 A1 00 05 64 19 00 04 00 79 0D 0A"},  // GALILEO
        Row{0x0008, "A0 A1 00 05 64 19 00 08 00 75 0D 0A"},  // BEIDOU
        Row{0x0010, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"},  // IMES
        Row{0x0020, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"},  // QZSS
        Row{0x0040, "A0 A1 00 05 64 19 00 02 00 7F 0D 0A"},  // GLONASS
        Row{0x0080, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"},  // nothing, as all that follow
        Row{0x0100, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"},  //
        Row{0x8000, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"},  //
        Row{0xFFFF, "A0 A1 00 05 64 19 00 0F 00 72 0D 0A"}}) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.gpsObtGnssConfigure(row.mask)); }),
              (Observed{.line = {"open", row.packet, "wait 100 ms", "open",
                                 kQueryConstellations.packet}}))
        << "mask " << row.mask;
  }
}

TEST_F(Constellations, AreReadAsTheReceiverNumbersThem) {
  for (const auto& [reply, mask] : {std::pair{"A0 A1 00 04 64 8C 00 00 E8 0D 0A", "0"},
                                    {"A0 A1 00 04 64 8C 00 02 EA 0D 0A", "2"},
                                    {"A0 A1 00 04 64 8C 00 FF 17 0D 0A", "255"},
                                    {"A0 A1 00 04 64 8C 80 00 68 0D 0A", "32768"},
                                    {"A0 A1 00 04 64 8C FF FF E8 0D 0A", "65535"}}) {
    onPacket(kQueryConstellations.packet).answer(bytes(reply));
    EXPECT_EQ(observe(getReceiverMask),
              (Observed{.outputs = mask, .line = {"open", kQueryConstellations.packet}}));
  }
}

TEST_F(Constellations, AreReadInTheInterfacesNumberingThroughIt) {
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 01 E9 0D 0A"), 0x01u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 02 EA 0D 0A"), 0x40u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 04 EC 0D 0A"), 0x04u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 08 E0 0D 0A"), 0x08u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 10 F8 0D 0A"), 0u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 20 C8 0D 0A"), 0u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 40 A8 0D 0A"), 0u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C FF F0 E7 0D 0A"), 0u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C FF FF E8 0D 0A"), 0x4Du);
}

TEST_F(Constellations, AreAddedToWhatTheCallersMaskHolds) {
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 0B E3 0D 0A", 0x100), 0x149u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 01 E9 0D 0A", 0x40), 0x41u);
  EXPECT_EQ(interfaceMask("A0 A1 00 04 64 8C 00 00 E8 0D 0A", 0xFFFF), 0xFFFFu);
}

TEST_F(Constellations, AreComparedWithAllThatTheReceiverReports) {
  onPacket(kQueryConstellations.packet).answer(bytes("A0 A1 00 04 64 8C 01 0F E6 0D 0A"));
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsObtGnssConfigure(0x4D)); }).result,
            1u);
}

// The constellations together with SBAS and QZSS, which always go off.

TEST_F(Constellations, AreSetWithSbasAndQzssSwitchedOffAfterThem) {
  connectReceiver();
  gps_.receiver.change([](auto& state) { state.sbas[0] = state.qzss[0] = 1; });
  for (const auto& [mask, packet] : {std::pair{0x45, "A0 A1 00 05 64 19 00 07 00 7A 0D 0A"},
                                     {0x22, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"}}) {
    EXPECT_EQ(observe([mask = mask](auto& driver) {
                return Outcome(driver.setGnssSystem(static_cast<unsigned short>(mask)));
              }),
              (Observed{.line = {"open", packet, "wait 100 ms", "open",
                                 kQueryConstellations.packet,                     //
                                 "open", kSbasOff.packet, "wait 100 ms", "open",  //
                                 kQuerySbas.packet,                               //
                                 "open", kQzssOff.packet, "wait 100 ms", "open",  //
                                 kQueryQzss.packet}}));
  }
  EXPECT_EQ(gps_.receiver.state().sbas[0], 0);
  EXPECT_EQ(gps_.receiver.state().qzss[0], 0);
}

TEST_F(Constellations, AddUpWhatTheThreeSettingsComeTo) {
  connectReceiver();
  onPacket(kQueryQzss.packet).answer(bytes("A0 A1 00 04 62 81 01 03 E1 0D 0A"));
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setGnssSystem(0x4D)); }).result, 1u);

  onPacket(kQuerySbas.packet).nothing();
  letWaitsEnd();
  const Observed observed =
      observe([](auto& driver) { return Outcome(driver.setGnssSystem(0x4D)); });
  EXPECT_EQ(observed.result, 4u | 1u);
  EXPECT_EQ(observed.errorLog, "STAMP:  Did not receive : " + kQuerySbas.description + "\n");
}

TEST_F(Constellations, AreTriedInAllThreeSettingsWithoutDevice) {
  unplug();
  EXPECT_EQ(
      observe([](auto& driver) { return Outcome(driver.setGnssSystem(0x4D)); }),
      (Observed{.result = 8 | 1,
                .standardError = std::string(kNoDevice) + kNoDevice + kNoDevice + kNoDevice +
                                 kNoDevice + kNoDevice,
                .errorLog = "STAMP:  Could not send : " + kConfigureAllConstellations.description +
                            "\nSTAMP:  Could not send : " + kQueryConstellations.description +
                            "\nSTAMP:  Could not send : " + kSbasOff.description +
                            "\nSTAMP:  Could not send : " + kQuerySbas.description +
                            "\nSTAMP:  Could not send : " + kQzssOff.description +
                            "\nSTAMP:  Could not send : " + kQueryQzss.description + "\n",
                .line = {"wait 100 ms", "wait 100 ms", "wait 100 ms"}}));
}

// The constellations together with the second band.

/// Takes down how the constellations are set, and answers what it is told.
class ConstellationsTakenDown : public orb::test::StampedDriver {
 public:
  using StampedDriver::setGnssSystem;
  unsigned int setGnssSystem(unsigned short mask) override {
    masks.push_back(mask);
    return result;
  }
  std::vector<unsigned int> masks;
  unsigned int result = 0;
};

TEST_F(Constellations, AreSetThroughTheInterfaceBeforeTheSecondBand) {
  connectReceiver();
  for (const bool on : {true, false}) {
    ConstellationsTakenDown driver;
    EXPECT_EQ(observe(driver, [&](auto& any) { return Outcome(any.setGnssSystem(0xABCD, on)); }),
              (Observed{.line = {"open", (on ? kSecondBandOn : kSecondBandOff).packet, "wait 50 ms",
                                 "open", kQuerySecondBand.packet}}));
    EXPECT_EQ(driver.masks, std::vector<unsigned int>{0xABCD});
  }
}

TEST_F(Constellations, AndTheSecondBandAddUp) {
  onPacket(kQuerySecondBand.packet).answer(bytes("A0 A1 00 03 64 9F 00 FB 0D 0A"));
  ConstellationsTakenDown driver;
  driver.result = 8;
  const orb::test::Call call = [](auto& any) { return Outcome(any.setGnssSystem(1, true)); };
  EXPECT_EQ(observe(driver, call).result, 8u | 1u);
  driver.revisionNumber = 2024613;
  EXPECT_EQ(observe(driver, call), (Observed{.result = 8}));
}

TEST_F(Constellations, AndTheSecondBandAreSetInTheReceiver) {
  connectReceiver();
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setGnssSystem(0x4D, true)); }).result,
            0u);
  EXPECT_EQ(gps_.receiver.state().constellations, 0x0F);
  EXPECT_EQ(gps_.receiver.state().secondBand, 1);
}

// Switches.

TEST_F(Constellations, ReportASwitchAsOnForAnyValueButZero) {
  struct Row {
    const Sent& query;
    orb::test::Call call;
    std::vector<std::string> replies;
  };
  for (const Row& row :
       {Row{kQuerySbas,
            getSbas,
            {"A0 A1 00 08 62 80 01 01 08 01 03 07 EF 0D 0A",
             "A0 A1 00 08 62 80 02 00 00 00 00 00 E0 0D 0A",
             "A0 A1 00 08 62 80 80 00 00 00 00 00 62 0D 0A",
             "A0 A1 00 08 62 80 FF FF FF FF FF FF E2 0D 0A"}},
        Row{kQueryQzss,
            getQzss,
            {"A0 A1 00 04 62 81 01 03 E1 0D 0A", "A0 A1 00 04 62 81 02 00 E1 0D 0A",
             "A0 A1 00 04 62 81 80 00 63 0D 0A", "A0 A1 00 04 62 81 FF FF E3 0D 0A"}},
        Row{kQuerySecondBand,
            getSecondBand,
            {"A0 A1 00 03 64 9F 01 FA 0D 0A", "A0 A1 00 03 64 9F 02 F9 0D 0A",
             "A0 A1 00 03 64 9F 80 7B 0D 0A", "A0 A1 00 03 64 9F FF 04 0D 0A"}}}) {
    for (const std::string& reply : row.replies) {
      onPacket(row.query.packet).answer(bytes(reply));
      EXPECT_EQ(observe(row.call),
                (Observed{.outputs = "true", .line = {"open", row.query.packet}}))
          << reply;
    }
  }
}

TEST_F(Constellations, ReportASwitchAsOffWhateverFollowsTheZero) {
  onPacket(kQuerySbas.packet).answer(bytes("A0 A1 00 08 62 80 00 FF FF FF FF FF 1D 0D 0A"));
  EXPECT_EQ(observe(getSbas).outputs, "false");
  onPacket(kQueryQzss.packet).answer(bytes("A0 A1 00 04 62 81 00 FF 1C 0D 0A"));
  EXPECT_EQ(observe(getQzss).outputs, "false");
}

// The second band depends on the firmware, as its revision was last read.

class SecondBand : public OperationTest {
 protected:
  /// Lets the driver read this revision of the firmware: two digits of the year, month, day.
  void readRevision(const std::string& reply) {
    onPacket("A0 A1 00 02 02 00 02 0D 0A").answer(bytes(reply));
    observe([](auto& driver) {
      std::string info;
      return Outcome(driver.getInfo(info));
    });
  }

  Observed switchOn() {
    onPacket(kQuerySecondBand.packet).answer(bytes("A0 A1 00 03 64 9F 01 FA 0D 0A"));
    return observe([](auto& driver) { return Outcome(driver.gpsObtL2BandConfigure(true)); });
  }

  const Observed switched_{
      .line = {"open", kSecondBandOn.packet, "wait 50 ms", "open", kQuerySecondBand.packet}};
  const Observed nothing_{};
};

TEST_F(SecondBand, IsSwitchedUpToRevision2024612) {
  readRevision("A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 18 06 0C 9D 0D 0A");
  EXPECT_EQ(driver_.revisionNumber, 2024612);
  EXPECT_EQ(switchOn(), switched_);
}

TEST_F(SecondBand, IsLeftAloneFromRevision2024613On) {
  readRevision("A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 18 06 0D 9C 0D 0A");
  EXPECT_EQ(driver_.revisionNumber, 2024613);
  EXPECT_EQ(switchOn(), nothing_);
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsObtL2BandConfigure(false)); }),
            nothing_);
}

// The number has no padding: 2025.1.1 is 202511, and 2024.10.1 is 2024101.
TEST_F(SecondBand, IsSwitchedForALaterDateWithASmallerNumber) {
  readRevision("A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 19 01 01 96 0D 0A");
  EXPECT_EQ(driver_.revisionNumber, 202511);
  EXPECT_EQ(switchOn(), switched_);
  readRevision("A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 18 0A 01 9C 0D 0A");
  EXPECT_EQ(driver_.revisionNumber, 2024101);
  EXPECT_EQ(switchOn(), switched_);
}

TEST_F(SecondBand, IsLeftAloneForAnEarlierDateWithALargerNumber) {
  readRevision("A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 17 0B 0F 9C 0D 0A");
  EXPECT_EQ(driver_.revisionNumber, 20231115);
  EXPECT_EQ(switchOn(), nothing_);
}

TEST_F(SecondBand, IsSwitchedBeforeTheRevisionHasBeenRead) { EXPECT_EQ(switchOn(), switched_); }

TEST_F(SecondBand, IsReadWhateverTheRevision) {
  driver_.revisionNumber = 2024613;
  onPacket(kQuerySecondBand.packet).answer(bytes("A0 A1 00 03 64 9F 01 FA 0D 0A"));
  EXPECT_EQ(observe(getSecondBand),
            (Observed{.outputs = "true", .line = {"open", kQuerySecondBand.packet}}));
}

}  // namespace
