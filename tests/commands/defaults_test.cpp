#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/operation_test.h"

namespace {

using orb::test::bytes;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;

using Steps = std::vector<std::string>;

/// Takes down each step of a sequence that it takes, and gives it a result of its own.
class StepsTakenDown : public orb::test::StampedDriver {
 public:
  unsigned int setAntennaDelay(int delay) override { return step("setAntennaDelay", delay); }
  unsigned int setGnssSystem(unsigned short mask) override { return step("setGnssSystem", mask); }
  unsigned int setGnssSystem(unsigned short mask, bool secondBand) override {
    return step("setGnssSystem", mask, secondBand);
  }
  unsigned int setMinCNo(signed char minimum) override { return step("setMinCNo", minimum); }
  unsigned int setElevationLimit(unsigned char limit) override {
    return step("setElevationLimit", limit);
  }
  unsigned int setDynamicModel(unsigned char model) override {
    return step("setDynamicModel", model);
  }
  unsigned int setDynamicModel(unsigned char model, unsigned char fixMode) override {
    return step("setDynamicModel", model, fixMode);
  }
  unsigned int setSurveyAuto() override { return step("setSurveyAuto"); }
  unsigned int setSurveyAuto(unsigned int surveyLength, float stdDev) override {
    return step("setSurveyAuto", surveyLength, stdDev);
  }
  unsigned int configureSBAS() override { return step("configureSBAS"); }
  unsigned int setUtcStandardAuto() override { return step("setUtcStandardAuto"); }
  unsigned int gpsObtSetMsgType(std::string type) override {
    return step("gpsObtSetMsgType", type);
  }
  unsigned int gpsObtSetFactoryDefaults() override { return step("gpsObtSetFactoryDefaults"); }
  unsigned int configureOrbPolling(unsigned char interval) override {
    return step("configureOrbPolling", interval);
  }
  unsigned int configureNmeaPolling(unsigned char interval) override {
    return step("configureNmeaPolling", interval);
  }
  unsigned int setDefaultConfiguration() override { return step("setDefaultConfiguration"); }
  unsigned int setApplicationDefaults() override { return step("setApplicationDefaults"); }
  unsigned int save() override { return step("save"); }

  Steps steps;
  std::vector<unsigned int> results;  ///< of each step; 0 for those beyond

 private:
  template <typename... Arguments>
  unsigned int step(const char* name, const Arguments&... arguments) {
    steps.push_back(name + ("(" + Outcome(0, arguments...).outputs + ")"));
    return steps.size() <= results.size() ? results[steps.size() - 1] : 0;
  }
};

struct Sequence {
  const char* name;
  std::function<unsigned int(orbController_QN4470T01&)> run;  ///< not through the virtual table
  Steps steps;
};

std::ostream& operator<<(std::ostream& out, const Sequence& sequence) {
  return out << sequence.name;
}

class SequenceOfDefaults : public OperationTest, public testing::WithParamInterface<Sequence> {
 protected:
  SequenceOfDefaults() { connectReceiver(); }

  unsigned int run(StepsTakenDown& driver) { return GetParam().run(driver); }
};

INSTANTIATE_TEST_SUITE_P(
    Each, SequenceOfDefaults,
    testing::Values(
        Sequence{
            "Application",
            [](auto& driver) { return driver.orbController_QN4470T01::setApplicationDefaults(); },
            {"configureSBAS()", "setDynamicModel(8, 2)", "setUtcStandardAuto()",
             "gpsObtSetMsgType(\"NMEA\")"}},
        Sequence{
            "Configuration",
            [](auto& driver) { return driver.orbController_QN4470T01::setDefaultConfiguration(); },
            {"setAntennaDelay(28)", "setGnssSystem(77)", "setMinCNo(0)", "setElevationLimit(10)",
             "setDynamicModel(1, 1)", "setSurveyAuto()", "configureSBAS()"}},
        Sequence{
            "Factory",
            [](auto& driver) { return driver.orbController_QN4470T01::resetFactoryDefaults(); },
            {"gpsObtSetFactoryDefaults()", "configureOrbPolling(1)", "configureNmeaPolling(0)",
             "setDefaultConfiguration()", "gpsObtSetMsgType(\"NMEA\")", "save()"}}),
    [](const auto& info) { return info.param.name; });

TEST_P(SequenceOfDefaults, CallsItsStepsInOrderThroughVirtualMembers) {
  StepsTakenDown driver;
  EXPECT_EQ(run(driver), 0u);
  EXPECT_EQ(driver.steps, GetParam().steps);
}

TEST_P(SequenceOfDefaults, SendsNothingButWhatItsStepsSend) {
  StepsTakenDown driver;
  EXPECT_EQ(observe(driver, [&](auto& /*same*/) { return Outcome(run(driver)); }), Observed{});
}

TEST_P(SequenceOfDefaults, ComesToWhatItsOneFailingStepCameTo) {
  for (std::size_t failing = 0; failing < GetParam().steps.size(); ++failing) {
    StepsTakenDown driver;
    driver.results.resize(failing);
    driver.results.push_back(256 | 8 | 4 | 1);
    EXPECT_EQ(run(driver), 256u | 8u | 4u | 1u) << GetParam().steps[failing];
    EXPECT_EQ(driver.steps, GetParam().steps);
  }
}

TEST_P(SequenceOfDefaults, AddsUpWhatAllItsStepsCameTo) {
  StepsTakenDown driver;
  unsigned int sum = 0;
  for (unsigned int step = 0; step < GetParam().steps.size(); ++step) {
    driver.results.push_back(1U << step);
    sum |= 1U << step;
  }
  EXPECT_EQ(run(driver), sum);
  EXPECT_EQ(driver.steps, GetParam().steps);
}

TEST_P(SequenceOfDefaults, SucceedsWithAReceiver) {
  const Observed observed = observe([](auto& driver) { return Outcome(GetParam().run(driver)); });
  EXPECT_EQ(observed.result, 0u);
  EXPECT_EQ(observed.standardError, "");
  EXPECT_EQ(observed.errorLog, "");
}

// With a receiver, a silent one, and none at all.

constexpr const char* kNmeaOutput = "A0 A1 00 03 09 01 00 08 0D 0A";
constexpr const char* kQueryTiming = "A0 A1 00 01 44 44 0D 0A";

// SBAS off, read back after its wait.
const Steps kSbasOff{"open", "A0 A1 00 09 62 01 00 01 08 01 03 07 00 6F 0D 0A", "wait 100 ms",
                     "open", "A0 A1 00 02 62 02 60 0D 0A"};

Steps operator+(Steps first, const Steps& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Steps applicationDefaults() {
  return kSbasOff + Steps{"open",
                          "A0 A1 00 04 64 17 00 00 73 0D 0A",
                          "wait 100 ms",
                          "open",
                          "A0 A1 00 02 64 18 7C 0D 0A",  //
                          "wait 100 ms",                 //
                          "open",
                          "A0 A1 00 05 64 11 00 01 00 74 0D 0A A0 A1 00 02 64 12 76 0D 0A",  //
                          "open",
                          kNmeaOutput};
}

/// Where the masks are (mode, elevation, carrier-to-noise ratio) and the saved position is that.
Steps defaultConfiguration(const std::string& surveySetting) {
  return Steps{"open",
               "A0 A1 00 06 45 00 00 0A F0 00 BF 0D 0A A0 A1 00 01 46 46 0D 0A",  // 28 ns
               "open",
               "A0 A1 00 05 64 19 00 0F 00 72 0D 0A",
               "wait 100 ms",
               "open",
               "A0 A1 00 02 64 1A 7E 0D 0A"} +
         kSbasOff +
         Steps{"open",
               "A0 A1 00 05 62 03 00 03 00 62 0D 0A",
               "wait 100 ms",
               "open",
               "A0 A1 00 02 62 04 66 0D 0A",  // QZSS
               "open",
               "A0 A1 00 01 2F 2F 0D 0A",
               "open",
               "A0 A1 00 05 2B 01 05 00 00 2F 0D 0A A0 A1 00 01 2F 2F 0D 0A",
               "wait 800 ms",  // C/N0
               "open",
               "A0 A1 00 01 2F 2F 0D 0A",  //
               "open",
               "A0 A1 00 01 2F 2F 0D 0A",
               "wait 100 ms",
               "open",
               "A0 A1 00 05 2B 01 0A 00 00 20 0D 0A A0 A1 00 01 2F 2F 0D 0A",  // elevation
               "open",
               "A0 A1 00 04 64 17 01 00 72 0D 0A",
               "wait 100 ms",
               "open",
               "A0 A1 00 02 64 18 7C 0D 0A",  // model
               "wait 100 ms",
               "open",
               "A0 A1 00 05 64 11 00 00 00 75 0D 0A A0 A1 00 02 64 12 76 0D 0A",  // 3D
               "open",
               kQueryTiming,
               "open",
               surveySetting,
               "wait 100 ms",
               "open",
               kQueryTiming} +
         kSbasOff;
}

// The factory's survey: 2000 s and a deviation of 30, nowhere.
constexpr const char* kSurveyAfterReset =
    "A0 A1 00 1F 54 01 00 00 2A 30 00 00 00 1E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 51 0D 0A";

class Defaults : public OperationTest {
 protected:
  Observed setApplicationDefaults() {
    return observe([](auto& driver) { return Outcome(driver.setApplicationDefaults()); });
  }
  Observed setDefaultConfiguration() {
    return observe([](auto& driver) { return Outcome(driver.setDefaultConfiguration()); });
  }
  Observed resetFactoryDefaults() {
    return observe([](auto& driver) { return Outcome(driver.resetFactoryDefaults()); });
  }
};

TEST_F(Defaults, OfTheApplicationAreSentInOrder) {
  connectReceiver();
  gps_.receiver.change([](auto& state) { state.outputType = orb::sim::OutputType::Binary; });
  EXPECT_EQ(setApplicationDefaults(), Observed{.line = applicationDefaults()});
  const orb::sim::State state = gps_.receiver.state();
  EXPECT_EQ(state.sbas[0], 0);
  EXPECT_EQ(state.navigationMode, 0);
  EXPECT_EQ(state.fixNavMask.first, 0);
  EXPECT_EQ(state.fixNavMask.second, 1);
  EXPECT_EQ(state.outputType, orb::sim::OutputType::Nmea);
}

TEST_F(Defaults, OfTheConfigurationAreSentInOrder) {
  connectReceiver();
  EXPECT_EQ(setDefaultConfiguration(), Observed{.line = defaultConfiguration(kSurveyAfterReset)});
  const orb::sim::State state = gps_.receiver.state();
  EXPECT_EQ(state.cableDelay, 2800);
  EXPECT_EQ(state.constellations, 0x0F);
  EXPECT_EQ(state.sbas[0], 0);
  EXPECT_EQ(state.qzss[0], 0);
  EXPECT_EQ(state.elevationCnrMask.mode, 1);
  EXPECT_EQ(state.elevationCnrMask.elevation, 10);
  EXPECT_EQ(state.elevationCnrMask.cnr, 0);
  EXPECT_EQ(state.navigationMode, 1);
  EXPECT_EQ(state.fixNavMask.first, 0);
  EXPECT_EQ(state.fixNavMask.second, 0);
  EXPECT_EQ(state.timing.mode, orb::sim::TimingMode::AutoSurvey);
  EXPECT_EQ(state.timing.surveyLength, 10800u);
}

// The survey sends again the position that the receiver reports after its reset.
TEST_F(Defaults, OfTheFactoryAreSentInOrder) {
  connectReceiver();
  gps_.receiver.change([](auto& state) {
    state.updateRate = 20;
    state.timing.standardDeviation = 77;
    state.timing.latitude = 48.5;
    state.elevationCnrMask.elevation = 33;
  });
  const Steps reset{"open",
                    "A0 A1 00 02 04 01 05 0D 0A",
                    "open",
                    "A0 A1 00 02 64 30 54 0D 0A",
                    "open",
                    "A0 A1 00 0F 64 02 00 00 00 00 00 00 00 00 00 00 00 00 00 66 0D 0A A0 A1 00 02 "
                    "64 03 67 0D 0A"};
  const Steps end{"open", kNmeaOutput};
  EXPECT_EQ(resetFactoryDefaults(),
            Observed{.line = reset + defaultConfiguration(kSurveyAfterReset) + end});
  const orb::sim::State state = gps_.receiver.state();
  EXPECT_EQ(state.factoryResets, 1u);
  EXPECT_EQ(state.updateRate, 1);
  EXPECT_EQ(state.nmeaIntervals[0], 0);
  EXPECT_EQ(state.cableDelay, 2800);
  EXPECT_EQ(state.outputType, orb::sim::OutputType::Nmea);
}

// What is said of each message, in the error log.

std::string notSent(const char* description) {
  return "STAMP:  Could not send : " + std::string(description) + "\n";
}
std::string noReply(const char* description) {
  return "STAMP:  Did not receive : " + std::string(description) + "\n";
}

constexpr const char* kSetDelay = "45 00: Configure cable delay of 1PPS timing ";
constexpr const char* kGetDelay = "46 00: Query 1PPS cable delay of GNSS receiver ";
constexpr const char* kSetConstellations =
    "64 19: Configure the GNSS constellation type used for navigation solution ";
constexpr const char* kGetConstellations =
    "64 1A: Query the GNSS constellation type used for navigation solution";
constexpr const char* kSetSbas = "62 01: Configure SBAS parameters of GNSS receiver ";
constexpr const char* kGetSbas = "62 02: Query SBAS status of GNSS receiver ";
constexpr const char* kSetQzss = "62 03: Configure QZSS parameters of GNSS receiver ";
constexpr const char* kGetQzss = "62 04: Query QZSS status of GNSS receiver";
constexpr const char* kGetMasks =
    "2F 00: Query the values of elevation mask and CNR mask used by GNSS receiver";
constexpr const char* kSetMode = "64 17: Configure the navigation mode of GNSS receiver ";
constexpr const char* kGetMode = "64 18: Query the navigation mode of GNSS receiver ";
constexpr const char* kSetFix = "64 11: Configure the position fix mask of GNSS receiver ";
constexpr const char* kGetFix = "64 12: Query the position fix of GNSS receiver ";
constexpr const char* kGetTiming = "44 00: Query 1PPS timing of the GNSS receiver";
constexpr const char* kSetOutput = "09 00: Configure and select the output message type ";
constexpr const char* kReset = "04 00: Set system to factory default values ";
constexpr const char* kGetInterval =
    "64 30: Query the navigation output message interval of GNSS receiver ";
constexpr const char* kSetNmea =
    "64 02: Configure extended NMEA message interval of GNSS Receiver ";
constexpr const char* kGetNmea = "64 03: Query extended NMEA message interval of GNSS receiver ";

std::string times(int count, const std::string& text) {
  std::string result;
  for (int i = 0; i < count; ++i) {
    result += text;
  }
  return result;
}

TEST_F(Defaults, OfTheApplicationAreAllTriedWithASilentReceiver) {
  letWaitsEnd();
  EXPECT_EQ(setApplicationDefaults(), (Observed{.result = 4 | 1,
                                                .standardError = times(4, kTimedOut),
                                                .errorLog = noReply(kGetSbas) + noReply(kGetMode) +
                                                            noReply(kGetFix) + noReply(kSetOutput),
                                                .line = applicationDefaults()}));
  EXPECT_EQ(waitsEnded(), 4);
}

TEST_F(Defaults, OfTheApplicationAreAllTriedWithoutDevice) {
  unplug();
  EXPECT_EQ(setApplicationDefaults(),
            (Observed{.result = 8 | 1,
                      .standardError = times(7, kNoDevice),
                      .errorLog = notSent(kSetSbas) + notSent(kGetSbas) + notSent(kSetMode) +
                                  notSent(kGetMode) + notSent(kSetFix) + notSent(kGetFix) +
                                  notSent(kSetOutput),
                      .line = {"wait 100 ms", "wait 100 ms", "wait 100 ms"}}));
}

// Three of the seven steps ask before they set, and get no further.
const std::string kSilentConfiguration =
    noReply(kGetDelay) + noReply(kGetConstellations) + noReply(kGetSbas) + noReply(kGetQzss) +
    noReply(kGetMasks) + noReply(kGetMasks) + noReply(kGetMode) + noReply(kGetFix) +
    noReply(kGetTiming) + noReply(kGetSbas);
const std::string kUnsentConfiguration =
    notSent(kSetDelay) + notSent(kGetDelay) + notSent(kSetConstellations) +
    notSent(kGetConstellations) + notSent(kSetSbas) + notSent(kGetSbas) + notSent(kSetQzss) +
    notSent(kGetQzss) + notSent(kGetMasks) + notSent(kGetMasks) + notSent(kSetMode) +
    notSent(kGetMode) + notSent(kSetFix) + notSent(kGetFix) + notSent(kGetTiming) +
    notSent(kSetSbas) + notSent(kGetSbas);

const Steps kWaitsOfConfiguration(6, "wait 100 ms");

TEST_F(Defaults, OfTheConfigurationAreAllTriedWithASilentReceiver) {
  letWaitsEnd();
  EXPECT_EQ(
      setDefaultConfiguration(),
      (Observed{
          .result = 4 | 1,
          .standardError = times(10, kTimedOut),
          .errorLog = kSilentConfiguration,
          .line = Steps{"open", "A0 A1 00 06 45 00 00 0A F0 00 BF 0D 0A A0 A1 00 01 46 46 0D 0A",
                        "open", "A0 A1 00 05 64 19 00 0F 00 72 0D 0A", "wait 100 ms", "open",
                        "A0 A1 00 02 64 1A 7E 0D 0A"} +
                  kSbasOff +
                  Steps{"open", "A0 A1 00 05 62 03 00 03 00 62 0D 0A", "wait 100 ms", "open",
                        "A0 A1 00 02 62 04 66 0D 0A", "open", "A0 A1 00 01 2F 2F 0D 0A", "open",
                        "A0 A1 00 01 2F 2F 0D 0A", "open", "A0 A1 00 04 64 17 01 00 72 0D 0A",
                        "wait 100 ms", "open", "A0 A1 00 02 64 18 7C 0D 0A", "wait 100 ms", "open",
                        "A0 A1 00 05 64 11 00 00 00 75 0D 0A A0 A1 00 02 64 12 76 0D 0A", "open",
                        kQueryTiming} +
                  kSbasOff}));
  EXPECT_EQ(waitsEnded(), 10);
}

TEST_F(Defaults, OfTheConfigurationAreAllTriedWithoutDevice) {
  unplug();
  EXPECT_EQ(setDefaultConfiguration(), (Observed{.result = 8 | 1,
                                                 .standardError = times(17, kNoDevice),
                                                 .errorLog = kUnsentConfiguration,
                                                 .line = kWaitsOfConfiguration}));
}

TEST_F(Defaults, OfTheFactoryAreAllTriedWithASilentReceiver) {
  letWaitsEnd();
  const Observed observed = resetFactoryDefaults();
  EXPECT_EQ(observed.result, 4u | 1u);
  EXPECT_EQ(observed.errorLog,
            noReply(kGetInterval) + noReply(kGetNmea) + kSilentConfiguration + noReply(kSetOutput));
  EXPECT_EQ(waitsEnded(), 13);
}

TEST_F(Defaults, OfTheFactoryAreAllTriedWithoutDevice) {
  unplug();
  EXPECT_EQ(resetFactoryDefaults(),
            (Observed{.result = 8 | 1,
                      .standardError = times(22, kNoDevice),
                      .errorLog = notSent(kReset) + notSent(kGetInterval) + notSent(kSetNmea) +
                                  notSent(kGetNmea) + kUnsentConfiguration + notSent(kSetOutput),
                      .line = kWaitsOfConfiguration}));
}

// Only the reset itself finds no device.
TEST_F(Defaults, OfTheFactoryGoOnWhenTheResetCannotBeSent) {
  class PluggedInAfterTheReset : public orb::test::StampedDriver {
   public:
    explicit PluggedInAfterTheReset(std::function<void()> plugIn) : plugIn_(std::move(plugIn)) {}
    unsigned int gpsObtSetFactoryDefaults() override {
      const unsigned int result = StampedDriver::gpsObtSetFactoryDefaults();
      plugIn_();
      return result;
    }

   private:
    std::function<void()> plugIn_;
  };
  connectReceiver();
  unplug();
  PluggedInAfterTheReset driver([&] { plugIn(); });
  const Observed observed =
      observe(driver, [](auto& any) { return Outcome(any.resetFactoryDefaults()); });
  EXPECT_EQ(observed.result, 8u);
  EXPECT_EQ(observed.errorLog, notSent(kReset));
  EXPECT_EQ(gps_.receiver.state().factoryResets, 0u);
  EXPECT_EQ(gps_.receiver.state().cableDelay, 2800);
}

TEST_F(Defaults, OfTheFactoryDoNotCountTheNmeaInterval) {
  connectReceiver();
  onPacket("A0 A1 00 02 64 03 67 0D 0A")
      .answer(bytes("A0 A1 00 0E 64 81 09 01 01 01 01 01 01 01 01 01 01 01 ED 0D 0A"));
  EXPECT_EQ(resetFactoryDefaults().result, 0u);

  onPacket("A0 A1 00 02 64 03 67 0D 0A").nothing();
  letWaitsEnd();
  const Observed observed = resetFactoryDefaults();
  EXPECT_EQ(observed.result, 0u);
  EXPECT_EQ(observed.errorLog, noReply(kGetNmea));
}

}  // namespace
