#include <cmath>
#include <iostream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "commands/operation_fixture.h"
#include "orb-sim/frame.h"
#include "support/captured_stream.h"

namespace orb::test {
namespace {

constexpr const char* kQueryTiming = "A0 A1 00 01 44 44 0D 0A";
const std::string kSettingNotSent = notSent("54 00: Configure 1PPS timing of GNSS receiver");

// A receiver's timing in a mode, every field of it different: an hour's survey, a standard
// deviation that only the receiver understands, a position, and five bytes more that nobody reads.
std::string timingIn(const std::string& mode, const std::string& checksum) {
  return "A0 A1 00 23 C2 " + mode +
         " 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 44 02 20 00 01 "
         "00 00 00 07 " +
         checksum + " 0D 0A";
}
const std::string kDynamicTiming = timingIn("00", "59");
const std::string kSurveyTiming = timingIn("01", "58");
const std::string kStaticTiming = timingIn("02", "5B");
const std::string kUnknownTiming = timingIn("03", "5A");
// What the setters make of that timing.
constexpr const char* kSetDynamic =
    "A0 A1 00 1F 54 00 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 00 C9 0D 0A";
constexpr const char* kSurveyLonger =
    "A0 A1 00 1F 54 01 00 01 02 03 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 00 D6 0D 0A";
constexpr const char* kHoldPosition =
    "A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 40 48 10 00 00 00 00 00 C0 27 00 00 00 00 00 00 "
    "C2 02 10 00 00 6F 0D 0A";

// Not through the virtual table, so that a recording driver records what they call.
Call setStatic(double latitude, double longitude, double altitude, double stdDev) {
  return [=](auto& driver) {
    return Outcome(driver.Driver::setSurveyStatic(latitude, longitude, altitude, stdDev));
  };
}
Call setAuto(unsigned int surveyLength, float stdDev) {
  return [=](auto& driver) { return Outcome(driver.Driver::setSurveyAuto(surveyLength, stdDev)); };
}
Call setMode(const std::string& name) {
  return [=](auto& driver) { return Outcome(driver.Driver::setSurveyMode(name)); };
}
const Call kHold = setStatic(48.125, -11.5, -32.515625, 1);
const Call kSurvey = setAuto(0x00010203, 30);
const Call kNavigate = [](auto& driver) { return Outcome(driver.Driver::setSurveyDynamic()); };

/// Records the steps of a setting.
class RecordedSurvey : public RecordingDriver {
 public:
  using StampedDriver::gpsObtGetTimeMode;

  unsigned int gpsObtGetTimeMode(unsigned int& mode, unsigned int& surveyLength,
                                 unsigned int& stdDev, double& latitude, double& longitude,
                                 float& altitude) override {
    calls.push_back("gpsObtGetTimeMode");
    mode = 258;
    surveyLength = 3600;
    stdDev = 9;
    latitude = 48.5;
    longitude = -11.25;
    altitude = 0.1F;
    return queryResult;
  }
  unsigned int getSurveyMode(std::string& mode) override {
    mode += readBack;
    return note("getSurveyMode");
  }
  std::string timeStamp() override { return StampedDriver::timeStamp(); }

  unsigned int queryResult = 0;
  std::string readBack;
};

class Survey : public OperationTest {
 protected:
  /// What the receiver answers to the queries before a setting, and then to the read-back.
  void answer(const std::string& present, const std::string& readBack, std::size_t queries = 1) {
    onPacket(kQueryTiming).answer(hex(readBack));
    onPacket(kQueryTiming).first(queries).answer(hex(present));
  }
  void answer(const std::string& reply) { answer(reply, reply); }

  /// What the line sees of a setting.
  static std::vector<std::string> line(const std::string& setting, const char* wait) {
    return {"open", kQueryTiming, "open", setting, wait, "open", kQueryTiming};
  }

  void expectRejectedUnsent(const Call& call) {
    connectReceiver();
    EXPECT_EQ(observe(call), (Observed{.result = 1}));
  }

  const std::vector<std::string> queryOnly_{"open", kQueryTiming};
};

// Setters: they read what is there, change their own part of it, and write it whole.

TEST_F(Survey, DynamicIsPrintedWithAFlush) {
  answer(kStaticTiming, kDynamicTiming);
  CapturedStream output(std::cout);
  EXPECT_EQ(observe(kNavigate).result, 0u);
  EXPECT_EQ(output.flushedText(), "Survey Mode: DYNAMIC\n");
}

struct Setter {
  const char* name;  ///< of its mode
  Call call;
  std::string kept;    ///< the timing that is to be read back
  const char* packet;  ///< what it makes of the timing with an unknown mode
  const char* wait;
  std::string printed(const std::string& mode) const {
    return std::string(name) == "DYNAMIC" ? "Survey Mode: " + mode + "\n" : "";
  }
};

std::ostream& operator<<(std::ostream& out, const Setter& setter) { return out << setter.name; }

class SurveySetter : public Survey, public testing::WithParamInterface<Setter> {
 protected:
  const Setter& setter() const { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(
    Each, SurveySetter,
    testing::Values(Setter{"STATIC", kHold, kStaticTiming, kHoldPosition, "wait 100 ms"},
                    Setter{"AUTO", kSurvey, kSurveyTiming, kSurveyLonger, "wait 100 ms"},
                    Setter{"DYNAMIC", kNavigate, kDynamicTiming, kSetDynamic, "wait 800 ms"}),
    [](const auto& info) { return info.param.name; });

// The standard deviation is the receiver's own: the argument is only checked.
TEST_P(SurveySetter, KeepsTheRestAndIsRejectedWhenTheModeIsNotKept) {
  for (const auto& [reply, mode] : {std::pair{kDynamicTiming, "DYNAMIC"},
                                    {kSurveyTiming, "AUTO"},
                                    {kStaticTiming, "STATIC"},
                                    {kUnknownTiming, ""}}) {
    answer(kUnknownTiming, reply);
    EXPECT_EQ(observe(setter().call), (Observed{.result = reply == setter().kept ? 0u : 1u,
                                                .standardOutput = setter().printed(mode),
                                                .line = line(setter().packet, setter().wait)}));
  }
}

TEST_P(SurveySetter, AddsUpWhatItsSettingAndItsReadBackThroughTheInterfaceComeTo) {
  for (const bool isSent : {true, false}) {
    if (!isSent) {
      unplug();
    }
    for (const unsigned int readBack : {0U, 4U, 64U}) {
      for (const std::string mode : {setter().name, ""}) {
        RecordedSurvey driver;
        driver.readBack = mode;
        driver.resultOf = [=](std::size_t) { return readBack; };
        const Observed observed = observe(driver, setter().call);
        EXPECT_EQ(observed.result, readBack | (isSent ? 0 : 8) | (mode.empty() ? 1 : 0));
        EXPECT_EQ(observed.standardOutput, setter().printed(mode));
        EXPECT_EQ(observed.standardError, isSent ? "" : kNoDevice);
        EXPECT_EQ(observed.errorLog, isSent ? "" : kSettingNotSent);
        EXPECT_EQ(observed.line.back(), setter().wait);
        EXPECT_EQ(driver.calls, (std::vector<std::string>{"gpsObtGetTimeMode", "getSurveyMode()"}));
      }
    }
  }
}

// Saved positions keep every bit, whatever number it makes.

TEST_F(Survey, AutoAndDynamicSendEveryBitOfTheSavedPositionAgain) {
  for (const char* position :
       {"80 00 00 00 00 00 00 00 80 00 00 00 00 00 00 00 80 00 00 00",     // -0.0
        "00 00 00 00 00 00 00 01 80 0F FF FF FF FF FF FF 00 00 00 01",     // denormal numbers
        "7F F0 00 00 00 00 00 00 FF F0 00 00 00 00 00 00 7F 80 00 00",     // infinities
        "7F F8 00 00 00 00 00 00 FF F8 12 34 56 78 9A BC 7F C1 23 45",     // quiet NaNs
        "7F F4 00 00 00 00 00 01 FF F0 00 00 00 00 00 01 FF 80 00 01",     // signalling NaNs
        "01 02 03 04 05 06 07 08 F1 F2 F3 F4 F5 F6 F7 F8 A1 A2 A3 A4"}) {  // each byte different
    const std::string lengthAndDeviation = "00 00 0E 10 9A BC DE F0 ";
    const auto packet = [](std::uint16_t id, const std::string& body) {
      return hexText(sim::frame(id, hex(body)));
    };
    const auto timing = [&](const std::string& mode) {
      return packet(0xC200, mode + lengthAndDeviation + position + " 00 00 00 00 00");
    };
    answer(timing("02 "), timing("01 "));
    EXPECT_EQ(observe(setAuto(3600, 1)),
              (Observed{.line = line(packet(0x5400, "01 " + lengthAndDeviation + position + " 00"),
                                     "wait 100 ms")}));
    answer(timing("02 "), timing("00 "));
    EXPECT_EQ(observe(kNavigate).line,
              line(packet(0x5400, "00 " + lengthAndDeviation + position + " 00"), "wait 800 ms"));
  }
}

// Limits.

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST_F(Survey, StaticSendsEveryBitOfItsLatitudeAndLongitudeAndANarrowAltitudeUpToTheLimits) {
  const std::pair<Call, const char*> kSettings[] = {
      {setStatic(48.37127429063949, -0.0, 0.1, 200),
       "A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 80 00 00 00 00 00 00 00 "
       "3D CC CC CD 00 22 0D 0A"},
      {setStatic(90, 180, 10000, 200),
       "A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 40 56 80 00 00 00 00 00 40 66 80 00 00 00 00 00 "
       "46 1C 40 00 00 6A 0D 0A"},
      {setStatic(-90, -180, -1000, 0.01),
       "A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 C0 56 80 00 00 00 00 00 C0 66 80 00 00 00 00 00 "
       "C4 7A 00 00 00 CE 0D 0A"}};
  answer(kStaticTiming);
  for (const auto& [call, packet] : kSettings) {
    EXPECT_EQ(observe(call), Observed{.line = line(packet, "wait 100 ms")});
  }
}

TEST_F(Survey, StaticIsRejectedBeyondItsLimitsWithTheDeviceLeftClosed) {
  // Of latitude, longitude, altitude and standard deviation.
  const std::vector<double> kBeyond[] = {
      {90.000001, std::nextafter(90, 91), std::nextafter(-90, -91), kNan, kInfinity, -kInfinity},
      {std::nextafter(180, 181), std::nextafter(-180, -181), kNan, kInfinity, -kInfinity},
      {std::nextafter(10000, 10001), std::nextafter(-1000, -1001), -1000.5, kNan, kInfinity,
       -kInfinity},
      {std::nextafter(200, 201), std::nextafter(0.01, 0), 0.009, 0, -1, kNan, kInfinity}};
  for (std::size_t place = 0; place < std::size(kBeyond); ++place) {
    for (const double value : kBeyond[place]) {
      double arguments[] = {0, 0, 0, 1};
      arguments[place] = value;
      expectRejectedUnsent(setStatic(arguments[0], arguments[1], arguments[2], arguments[3]));
    }
  }
}

TEST_F(Survey, AutoTakesItsLimits) {
  answer(kSurveyTiming);
  for (const unsigned int length : {1U, 1209600U}) {
    EXPECT_EQ(observe(setAuto(length, 0.01F)).result, 0u) << length;
    EXPECT_EQ(observe(setAuto(length, 50)).result, 0u) << length;
  }
}

TEST_F(Survey, AutoIsRejectedBeyondItsLimitsWithTheDeviceLeftClosed) {
  for (const unsigned int length : {0U, 1209601U, 0x80000000U, 0xFFFFFFFFU}) {
    expectRejectedUnsent(setAuto(length, 1));
  }
  constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
  for (const float stdDev : {std::nextafter(0.01F, 0.0F), 0.009F, 0.0F, -1.0F,
                             std::nextafter(50.0F, 51.0F), kNoNumber, HUGE_VALF}) {
    expectRejectedUnsent(setAuto(3600, stdDev));
  }
}

// By name.

TEST_F(Survey, ModeDynamicIsSetByItsNameHoweverItIsWritten) {
  for (const char* name : {"DYNAMIC", "dynamic", "Dynamic", "dYnAmIc"}) {
    answer(kStaticTiming, kDynamicTiming, 2);
    EXPECT_EQ(observe(setMode(name)),
              (Observed{.standardOutput = "Survey Mode: DYNAMIC\n",
                        .line = {"open", kQueryTiming, "open", kQueryTiming, "open", kSetDynamic,
                                 "wait 800 ms", "open", kQueryTiming}}));
  }
}

// The standard deviation that they would need is missing.
TEST_F(Survey, ModesAutoAndStaticAreRejectedByTheirNameAfterOneQuery) {
  for (const char* name : {"AUTO", "auto", "Auto", "STATIC", "static", "Static"}) {
    answer(kSurveyTiming);
    EXPECT_EQ(observe(setMode(name)), (Observed{.result = 1, .line = queryOnly_})) << name;
  }
}

TEST_F(Survey, ModeIsLeftAloneForAnyOtherNameAfterOneQuery) {
  for (const std::string name :
       {"", "DYNAMIC ", " AUTO", "STATICS", "AUT", "MANUAL", "\xE4uto", "\xFF\x80"}) {
    answer(kSurveyTiming);
    EXPECT_EQ(observe(setMode(name)), (Observed{.line = queryOnly_})) << name;
  }
}

// The steps go through the virtual members.

TEST_F(Survey, ModeByNameCallsTheSetterWithWhatTheReceiverHas) {
  RecordedSurvey driver;
  driver.resultOf = [](std::size_t n) { return 70 + static_cast<unsigned int>(n); };
  EXPECT_EQ(driver.Driver::setSurveyMode("Auto"), 72u);
  EXPECT_EQ(driver.Driver::setSurveyMode("Static"), 74u);
  EXPECT_EQ(driver.Driver::setSurveyMode("Dynamic"), 76u);
  EXPECT_EQ(driver.Driver::setSurveyMode("other"), 0u);
  EXPECT_EQ(driver.calls,
            (std::vector<std::string>{"gpsObtGetTimeMode", "setSurveyAuto(3600, 0)",  //
                                      "gpsObtGetTimeMode",
                                      "setSurveyStatic(48.5, -11.25, 0.10000000149011612, 0)",  //
                                      "gpsObtGetTimeMode", "setSurveyDynamic()",                //
                                      "gpsObtGetTimeMode"}));
}

TEST_F(Survey, AutoWithoutArgumentsCallsTheOtherWithThreeHoursAndAMetre) {
  RecordedSurvey driver;
  driver.resultOf = [](std::size_t) { return 71U; };
  EXPECT_EQ(driver.Driver::setSurveyAuto(), 71u);
  EXPECT_EQ(driver.calls, std::vector<std::string>{"setSurveyAuto(10800, 1)"});
}

TEST_F(Survey, AnyFailureOfTheQueryIsARejectionWithNothingSent) {
  connectReceiver();
  RecordedSurvey driver;
  std::vector<Call> setters = {kHold, kSurvey, kNavigate};
  for (const char* name : {"AUTO", "STATIC", "DYNAMIC", "MANUAL"}) {
    setters.push_back(setMode(name));
  }
  for (const unsigned int failure : {1U, 4U, 8U, 256U}) {
    driver.queryResult = failure;
    for (const Call& call : setters) {
      EXPECT_EQ(observe(driver, call), Observed{.result = 1}) << failure;
    }
  }
  EXPECT_EQ(driver.calls, std::vector<std::string>(28, "gpsObtGetTimeMode"));
}

TEST_F(Survey, InfoHasTheLowByteOfTheTimingMode) {
  RecordedSurvey driver;
  unsigned char mode = 0;
  double numbers[4] = {};
  unsigned int surveyLength = 0;
  float stdDev = 0;
  driver.Driver::getSurveyInfo(mode, numbers[0], numbers[1], numbers[2], numbers[3], surveyLength,
                               stdDev);
  EXPECT_EQ(text(mode, numbers[0], numbers[1], numbers[2], numbers[3], surveyLength, stdDev),
            "2, 48.5, -11.25, 0.10000000149011612, 0, 3600, 0");
}

TEST_F(Survey, ModeIsReadWithoutTheTimeModeQuery) {
  RecordedSurvey driver;
  connectReceiver();
  std::string mode;
  const auto read = [&](auto& any) { return Outcome(any.Driver::getSurveyMode(mode)); };
  EXPECT_EQ(observe(driver, read), (Observed{.line = queryOnly_}));
  EXPECT_EQ(mode, "DYNAMIC");
  EXPECT_EQ(driver.calls, std::vector<std::string>{});
}

}  // namespace
}  // namespace orb::test
