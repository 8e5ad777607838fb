#include <string>
#include <utility>
#include <vector>

#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

// Not through the virtual table, so that a recording driver records what they call.
Call setSystem(unsigned short mask) {
  return [=](auto& driver) { return Outcome(driver.Driver::setGnssSystem(mask)); };
}
Call setSystem(unsigned short mask, bool secondBand) {
  return [=](auto& driver) { return Outcome(driver.Driver::setGnssSystem(mask, secondBand)); };
}

class Constellations : public OperationTest {
 protected:
  const Setting& constellations_ = setting("GnssConfigure");
  const Setting& sbasOff_ = setting("SbasConfigureOff");
  const Setting& qzssOff_ = setting("QzssConfigureOff");
  const Setting& secondBandOn_ = setting("L2BandConfigureOn");
  const Setting& secondBandOff_ = setting("L2BandConfigureOff");
};

// The constellations together with SBAS and QZSS, which always go off.

TEST_F(Constellations, AreSetWithSbasAndQzssSwitchedOffAfterThem) {
  connectReceiver();
  gps_.receiver.change([](auto& state) { state.sbas[0] = state.qzss[0] = 1; });
  for (const auto& [mask, packet] : {std::pair{0x45, "A0 A1 00 05 64 19 00 07 00 7A 0D 0A"},
                                     {0x22, "A0 A1 00 05 64 19 00 00 00 7D 0D 0A"}}) {
    EXPECT_EQ(observe(setSystem(static_cast<unsigned short>(mask))),
              (Observed{.line = {"open", packet, "wait 100 ms",                 //
                                 "open", constellations_.reads.packet,          //
                                 "open", sbasOff_.sends.packet, "wait 100 ms",  //
                                 "open", sbasOff_.reads.packet,                 //
                                 "open", qzssOff_.sends.packet, "wait 100 ms",  //
                                 "open", qzssOff_.reads.packet}}));
  }
  EXPECT_EQ(gps_.receiver.state().sbas[0], 0);
  EXPECT_EQ(gps_.receiver.state().qzss[0], 0);
}

TEST_F(Constellations, AddUpWhatTheThreeSettingsComeTo) {
  connectReceiver();
  onPacket(qzssOff_.reads.packet).answer(hex(qzssOff_.otherReply.packet));
  EXPECT_EQ(observe(setSystem(0x4D)).result, 1u);

  onPacket(sbasOff_.reads.packet).nothing();
  letWaitsEnd();
  const Observed observed = observe(setSystem(0x4D));
  EXPECT_EQ(observed.result, 4u | 1u);
  EXPECT_EQ(observed.errorLog, noReply(sbasOff_.reads.description));
}

TEST_F(Constellations, AreTriedInAllThreeSettingsWithoutDevice) {
  unplug();
  std::string errorLog;
  for (const Setting* row : {&constellations_, &sbasOff_, &qzssOff_}) {
    errorLog += notSent(row->sends.description) + notSent(row->reads.description);
  }
  EXPECT_EQ(observe(setSystem(0x4D)),
            (Observed{.result = 8 | 1,
                      .standardError = times(6, kNoDevice),
                      .errorLog = errorLog,
                      .line = {"wait 100 ms", "wait 100 ms", "wait 100 ms"}}));
}

// The constellations together with the second band.

TEST_F(Constellations, AreSetThroughTheInterfaceBeforeTheSecondBand) {
  connectReceiver();
  for (const bool on : {true, false}) {
    const Setting& row = on ? secondBandOn_ : secondBandOff_;
    RecordingDriver driver;
    EXPECT_EQ(
        observe(driver, setSystem(0xABCD, on)),
        (Observed{.line = {"open", row.sends.packet, "wait 50 ms", "open", row.reads.packet}}));
    EXPECT_EQ(driver.calls, std::vector<std::string>{"setGnssSystem(43981)"});
  }
}

TEST_F(Constellations, AndTheSecondBandAddUp) {
  onPacket(secondBandOn_.reads.packet).answer(hex(secondBandOn_.otherReply.packet));
  RecordingDriver driver;
  driver.resultOf = [](std::size_t) { return 8U; };
  EXPECT_EQ(observe(driver, setSystem(1, true)).result, 8u | 1u);
  driver.revisionNumber = 2024613;
  EXPECT_EQ(observe(driver, setSystem(1, true)), (Observed{.result = 8}));
}

// The second band depends on the firmware, as its revision was last read. That number has no
// padding: 2025.1.1 is 202511, and 2024.10.1 is 2024101.

struct Firmware {
  const char* revision;  ///< body of the reply: two digits of the year, month and day at its end
  int number;
  bool hasSecondBand;
};

TEST_F(Constellations, OfTheSecondBandDependOnTheRevision) {
  onPacket(secondBandOn_.reads.packet).answer(hex(secondBandOn_.reply.packet));
  const Observed untouched;
  const Observed switched{.line = {"open", secondBandOn_.sends.packet, "wait 50 ms", "open",
                                   secondBandOn_.reads.packet}};
  EXPECT_EQ(observe(secondBandOn_.call), switched) << "before the revision has been read";
  for (const Firmware& firmware :
       {Firmware{"01 00 01 00 0C 00 01 02 00 00 18 06 0C", 2024612, true},
        Firmware{"01 00 01 00 0C 00 01 02 00 00 18 06 0D", 2024613, false},
        Firmware{"01 00 01 00 0C 00 01 02 00 00 19 01 01", 202511, true},
        Firmware{"01 00 01 00 0C 00 01 02 00 00 18 0A 01", 2024101, true},
        Firmware{"01 00 01 00 0C 00 01 02 00 00 17 0B 0F", 20231115, false}}) {
    observeAnswered(query("GetInfo"), firmware.revision, reading(&Driver::getInfo, ""));
    EXPECT_EQ(driver_.revisionNumber, firmware.number);
    EXPECT_EQ(observe(secondBandOn_.call), firmware.hasSecondBand ? switched : untouched);
  }
  EXPECT_EQ(observe(secondBandOff_.call), untouched);
}

TEST_F(Constellations, OfTheSecondBandAreReadWhateverTheRevision) {
  driver_.revisionNumber = 2024613;
  EXPECT_EQ(observeAnswered(query("GetL2BandConfigure"), "01", query("GetL2BandConfigure").call),
            (Observed{.outputs = "true", .line = {"open", secondBandOn_.reads.packet}}));
}

}  // namespace
}  // namespace orb::test
