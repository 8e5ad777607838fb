#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "orb-sim/frame.h"
#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::Call;
using orb::test::hexText;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;

const Sent kQueryTiming{"A0 A1 00 01 44 44 0D 0A", "44 00: Query 1PPS timing of the GNSS receiver"};
constexpr const char* kTimingNotSent =
    "STAMP:  Could not send : 44 00: Query 1PPS timing of the GNSS receiver\n";
constexpr const char* kNoTiming =
    "STAMP:  Did not receive : 44 00: Query 1PPS timing of the GNSS receiver\n";
constexpr const char* kSettingNotSent =
    "STAMP:  Could not send : 54 00: Configure 1PPS timing of GNSS receiver\n";

// A receiver's timing, every field of it different: an hour's survey, a standard deviation that
// only the receiver understands, a position, and five bytes more that nobody reads.
constexpr const char* kDynamicTiming =
    "A0 A1 00 23 C2 00 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 01 00 00 00 07 59 0D 0A";
constexpr const char* kSurveyTiming =
    "A0 A1 00 23 C2 01 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 01 00 00 00 07 58 0D 0A";
constexpr const char* kStaticTiming =
    "A0 A1 00 23 C2 02 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 01 00 00 00 07 5B 0D 0A";
constexpr const char* kUnknownTiming =
    "A0 A1 00 23 C2 03 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 01 00 00 00 07 5A 0D 0A";
constexpr const char* kTimingWithoutAltitude =
    "A0 A1 00 1A C2 02 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "3B 0D 0A";

// What the setters make of that timing.
constexpr const char* kSetDynamic =
    "A0 A1 00 1F 54 00 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 00 C9 0D 0A";
constexpr const char* kSurveyTwoHours =
    "A0 A1 00 1F 54 01 00 00 1C 20 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 00 EA 0D 0A";
constexpr const char* kHoldPosition =
    "A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 40 48 10 00 00 00 00 00 C0 27 00 00 00 00 00 00 "
    "C2 02 10 00 00 6F 0D 0A";

// The position of that timing, as numbers.
constexpr const char* kPosition = "48.371274290639491, -11.567826317546164, 520.5";

unsigned int holdPosition(ORBControlInterface& driver) {
  return driver.setSurveyStatic(48.125, -11.5, -32.515625, 1.0);
}

unsigned int surveyTwoHours(ORBControlInterface& driver) {
  return driver.setSurveyAuto(7200, 30.0F);
}

Outcome getTimeMode(orbController_QN4470T01& driver) {
  unsigned int mode = 70;
  unsigned int surveyLength = 71;
  unsigned int stdDev = 72;
  double latitude = 73;
  double longitude = 74;
  float altitude = 75;
  const unsigned int result =
      driver.gpsObtGetTimeMode(mode, surveyLength, stdDev, latitude, longitude, altitude);
  return Outcome(result, mode, surveyLength, stdDev, latitude, longitude, altitude);
}

Outcome getSurveyMode(orbController_QN4470T01& driver) {
  std::string mode = "before";
  const unsigned int result = driver.getSurveyMode(mode);
  return Outcome(result, mode);
}

Outcome getSurveyInfo(orbController_QN4470T01& driver) {
  unsigned char mode = 70;
  double latitude = 71;
  double longitude = 72;
  double altitude = 73;
  double reserved = 74;
  unsigned int surveyLength = 75;
  float stdDev = 76;
  const unsigned int result =
      driver.getSurveyInfo(mode, latitude, longitude, altitude, reserved, surveyLength, stdDev);
  return Outcome(result, mode, latitude, longitude, altitude, reserved, surveyLength, stdDev);
}

// Queries.

std::vector<Query> queries() {
  return {
      {.name = "GetTimeMode",
       .call = getTimeMode,
       .sends = kQueryTiming,
       .reply = kStaticTiming,
       .answer = {0, std::string("2, 3600, 305419896, ") + kPosition},
       .shortReply = kTimingWithoutAltitude,
       .shortAnswer = {0, "2, 3600, 305419896, 48.371274290639491, -11.567826317546164, 0"},
       .untouched = "70, 71, 72, 73, 74, 75"},
      {.name = "GetSurveyMode",
       .call = getSurveyMode,
       .sends = kQueryTiming,
       .reply = kStaticTiming,
       .answer = {0, "\"STATIC\""},
       .shortReply = "A0 A1 00 01 C2 C2 0D 0A",
       .shortAnswer = {0, "\"DYNAMIC\""},
       .untouched = "\"before\""},
      // Any failure of the query is 1. The standard deviation is not passed on.
      {.name = "GetSurveyInfo",
       .call = getSurveyInfo,
       .sends = kQueryTiming,
       .reply = kSurveyTiming,
       .answer = {0, std::string("1, ") + kPosition + ", 0, 3600, 0"},
       .shortReply = "A0 A1 00 05 C2 01 00 00 0E CD 0D 0A",
       .shortAnswer = {0, "1, 0, 0, 0, 0, 3584, 0"},
       .untouched = "70, 71, 72, 73, 74, 75, 76",
       .noReply = {1},
       .noDevice = {1}},
  };
}

INSTANTIATE_TEST_SUITE_P(Survey, QueryOutcome, testing::ValuesIn(queries()), RowName());

class Survey : public OperationTest {
 protected:
  /// What the receiver answers to the queries before a setting, and then to the read-back.
  void answer(const std::string& present, const std::string& readBack, std::size_t queries = 1) {
    onPacket(kQueryTiming.packet).answer(bytes(readBack));
    onPacket(kQueryTiming.packet).first(queries).answer(bytes(present));
  }
  void answer(const std::string& reply) { answer(reply, reply); }

  /// What the line sees of a setting.
  static std::vector<std::string> line(const std::string& setting, const char* wait) {
    return {"open", kQueryTiming.packet, "open", setting, wait, "open", kQueryTiming.packet};
  }

  void expectRejectedUnsent(const Call& call) {
    connectReceiver();
    EXPECT_EQ(observe(call), (Observed{.result = 1}));
  }

  const std::vector<std::string> queryOnly_{"open", kQueryTiming.packet};
};

TEST_F(Survey, ModeIsToldByItsName) {
  for (const auto& [reply, mode] : {std::pair{kDynamicTiming, "\"DYNAMIC\""},
                                    {kSurveyTiming, "\"AUTO\""},
                                    {kStaticTiming, "\"STATIC\""},
                                    {kUnknownTiming, "\"\""}}) {
    answer(reply);
    EXPECT_EQ(observe(getSurveyMode), (Observed{.outputs = mode, .line = queryOnly_}));
  }
}

TEST_F(Survey, FieldsAreUnsignedUpToTheirExtremes) {
  answer(
      "A0 A1 00 23 C2 FF FF FF FF FF FF FF FF FF 7F EF FF FF FF FF FF FF FF EF FF FF FF FF FF FF "
      "FF 7F FF FF FF FF FF FF FF C2 0D 0A");
  EXPECT_EQ(observe(getTimeMode).outputs,
            "255, 4294967295, 4294967295, 1.7976931348623157e+308, -1.7976931348623157e+308, "
            "-3.4028234663852886e+38");
  answer(
      "A0 A1 00 23 C2 80 80 00 00 00 80 00 00 00 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 "
      "80 00 00 00 00 00 00 00 00 43 0D 0A");
  EXPECT_EQ(observe(getTimeMode).outputs,
            "128, 2147483648, 2147483648, -0, 4.9406564584124654e-324, -0");
}

TEST_F(Survey, InfoHasTheSameExtremesWithAWiderAltitude) {
  answer(
      "A0 A1 00 23 C2 FF FF FF FF FE 11 11 11 11 7F F0 00 00 00 00 00 00 80 00 00 00 00 00 00 00 "
      "FF 7F FF FF 00 00 00 00 00 B3 0D 0A");
  EXPECT_EQ(observe(getSurveyInfo).outputs,
            "255, inf, -0, -3.4028234663852886e+38, 0, 4294967294, 0");
}

// Setters: they read what is there, change their own part of it, and write it whole.

TEST_F(Survey, StaticSendsItsPositionAndKeepsTheRest) {
  answer(kSurveyTiming, kStaticTiming);
  EXPECT_EQ(observe([](auto& driver) { return Outcome(holdPosition(driver)); }),
            (Observed{.line = line(kHoldPosition, "wait 100 ms")}));
}

// The standard deviation is the receiver's own: the argument is only checked.
TEST_F(Survey, AutoSendsItsLengthAndKeepsTheRest) {
  answer(kDynamicTiming, kSurveyTiming);
  EXPECT_EQ(observe([](auto& driver) { return Outcome(surveyTwoHours(driver)); }),
            (Observed{.line = line(kSurveyTwoHours, "wait 100 ms")}));
}

TEST_F(Survey, DynamicKeepsAllButTheModeAndIsPrinted) {
  answer(kStaticTiming, kDynamicTiming);
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setSurveyDynamic()); }),
            (Observed{.standardOutput = "Survey Mode: DYNAMIC\n",
                      .line = line(kSetDynamic, "wait 800 ms")}));
}

TEST_F(Survey, AutoWithoutArgumentsIsOfThreeHours) {
  answer(kDynamicTiming, kSurveyTiming);
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setSurveyAuto()); }),
            (Observed{.line = line("A0 A1 00 1F 54 01 00 00 2A 30 12 34 56 78 40 48 2F 85 EA 7C 12 "
                                   "34 C0 27 22 BA 21 8F 56 78 "
                                   "44 02 20 00 00 CC 0D 0A",
                                   "wait 100 ms")}));
}

struct Setter {
  const char* name;
  Call call;
  const char* kept;    ///< the timing that is to be read back
  const char* packet;  ///< what it makes of the dynamic timing
  const char* wait;
  std::string printed(const std::string& mode) const {
    return std::string(name) == "Dynamic" ? "Survey Mode: " + mode + "\n" : "";
  }
};

std::ostream& operator<<(std::ostream& out, const Setter& setter) { return out << setter.name; }

class SurveySetter : public Survey, public testing::WithParamInterface<Setter> {
 protected:
  const Setter& setter() const { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(
    Each, SurveySetter,
    testing::Values(Setter{"Static", [](auto& driver) { return Outcome(holdPosition(driver)); },
                           kStaticTiming, kHoldPosition, "wait 100 ms"},
                    Setter{"Auto", [](auto& driver) { return Outcome(surveyTwoHours(driver)); },
                           kSurveyTiming, kSurveyTwoHours, "wait 100 ms"},
                    Setter{"Dynamic",
                           [](auto& driver) { return Outcome(driver.setSurveyDynamic()); },
                           kDynamicTiming, kSetDynamic, "wait 800 ms"}),
    [](const auto& info) { return info.param.name; });

TEST_P(SurveySetter, IsRejectedWhenTheModeIsNotKept) {
  for (const auto& [reply, mode] : {std::pair{kDynamicTiming, "DYNAMIC"},
                                    {kSurveyTiming, "AUTO"},
                                    {kStaticTiming, "STATIC"},
                                    {kUnknownTiming, ""}}) {
    answer(kDynamicTiming, reply);
    EXPECT_EQ(observe(setter().call),
              (Observed{.result = std::string(reply) == setter().kept ? 0u : 1u,
                        .standardOutput = setter().printed(mode),
                        .line = line(setter().packet, setter().wait)}));
  }
}

// Not 4, which the query comes to.
TEST_P(SurveySetter, IsRejectedUnsentWhenItsQueryIsNotAnswered) {
  letWaitsEnd();
  EXPECT_EQ(
      observe(setter().call),
      (Observed{
          .result = 1, .standardError = kTimedOut, .errorLog = kNoTiming, .line = queryOnly_}));
  EXPECT_EQ(waitsEnded(), 1);
}

// Not 8, which the query comes to.
TEST_P(SurveySetter, IsRejectedUnsentWithoutDevice) {
  unplug();
  EXPECT_EQ(observe(setter().call),
            (Observed{.result = 1, .standardError = kNoDevice, .errorLog = kTimingNotSent}));
}

// A device that goes while the query's channel is open is missing when the setting's is opened.

TEST_P(SurveySetter, IsReadBackAlsoWhenItCouldNotBeSent) {
  answer(kDynamicTiming);
  when("open", 1, [&] { unplug(); });
  EXPECT_EQ(observe(setter().call),
            (Observed{.result = 8 | 1,
                      .standardOutput = setter().printed(""),
                      .standardError = std::string(kNoDevice) + kNoDevice,
                      .errorLog = std::string(kSettingNotSent) + kTimingNotSent,
                      .line = {"open", kQueryTiming.packet, setter().wait}}));
}

TEST_P(SurveySetter, ReportsASettingThatCouldNotBeSentThoughItsModeIsThere) {
  answer(setter().kept);
  when("open", 1, [&] { unplug(); });
  when(setter().wait, 1, [&] { plugIn(); });
  const Observed observed = observe(setter().call);
  EXPECT_EQ(observed.result, 8u);
  EXPECT_EQ(observed.standardError, kNoDevice);
  EXPECT_EQ(observed.errorLog, kSettingNotSent);
}

TEST_P(SurveySetter, AddsUpAFailedSettingAndAMissingReadBack) {
  onPacket(kQueryTiming.packet).first(1).answer(bytes(kDynamicTiming));
  when("open", 1, [&] { unplug(); });
  when(setter().wait, 1, [&] {
    plugIn();
    letWaitsEnd();
  });
  EXPECT_EQ(observe(setter().call), (Observed{.result = 8 | 4 | 1,
                                              .standardOutput = setter().printed(""),
                                              .standardError = std::string(kNoDevice) + kTimedOut,
                                              .errorLog = std::string(kSettingNotSent) + kNoTiming,
                                              .line = {"open", kQueryTiming.packet, setter().wait,
                                                       "open", kQueryTiming.packet}}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(SurveySetter, ReportsAMissingReadBackAsAMismatchToo) {
  onPacket(kQueryTiming.packet).first(1).answer(bytes(kDynamicTiming));
  when(setter().wait, 1, [&] { letWaitsEnd(); });
  EXPECT_EQ(observe(setter().call), (Observed{.result = 4 | 1,
                                              .standardOutput = setter().printed(""),
                                              .standardError = kTimedOut,
                                              .errorLog = kNoTiming,
                                              .line = line(setter().packet, setter().wait)}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(SurveySetter, IsKeptByTheReceiver) {
  connectReceiver();
  EXPECT_EQ(observe(setter().call).result, 0u);
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
      return hexText(orb::sim::frame(id, bytes(body)));
    };
    const auto timing = [&](const std::string& mode) {
      return packet(0xC200, mode + lengthAndDeviation + position + " 00 00 00 00 00");
    };
    answer(timing("02 "), timing("01 "));
    EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setSurveyAuto(3600, 1.0F)); }),
              (Observed{.line = line(packet(0x5400, "01 " + lengthAndDeviation + position + " 00"),
                                     "wait 100 ms")}));
    answer(timing("02 "), timing("00 "));
    EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setSurveyDynamic()); }).line,
              line(packet(0x5400, "00 " + lengthAndDeviation + position + " 00"), "wait 800 ms"));
  }
}

TEST_F(Survey, StaticSendsEveryBitOfItsLatitudeAndLongitudeAndANarrowAltitude) {
  answer(kStaticTiming);
  EXPECT_EQ(observe([](auto& driver) {
              return Outcome(driver.setSurveyStatic(48.37127429063949, -0.0, 0.1, 200));
            }).line,
            line("A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 80 00 00 00 00 "
                 "00 00 00 "
                 "3D CC CC CD 00 22 0D 0A",
                 "wait 100 ms"));
}

TEST_F(Survey, SurveyLengthIsBigEndian) {
  answer(kSurveyTiming);
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setSurveyAuto(0x00010203, 1)); }).line,
            line("A0 A1 00 1F 54 01 00 01 02 03 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 "
                 "8F 56 78 "
                 "44 02 20 00 00 D6 0D 0A",
                 "wait 100 ms"));
}

// Limits.

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct StaticArguments {
  double latitude;
  double longitude;
  double altitude;
  double stdDev;
};

TEST_F(Survey, StaticTakesItsLimits) {
  answer(kStaticTiming);
  for (const StaticArguments& row :
       {StaticArguments{90, 180, 10000, 200}, StaticArguments{-90, -180, -1000, 0.01},
        StaticArguments{0, 0, 0, 1}}) {
    EXPECT_EQ(observe([&](auto& driver) {
                return Outcome(
                    driver.setSurveyStatic(row.latitude, row.longitude, row.altitude, row.stdDev));
              }).result,
              0u);
  }
}

TEST_F(Survey, StaticSendsItsLimits) {
  answer(kStaticTiming);
  EXPECT_EQ(observe([](auto& driver) {
              return Outcome(driver.setSurveyStatic(90, 180, 10000, 200));
            }).line,
            line("A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 40 56 80 00 00 00 00 00 40 66 80 00 00 "
                 "00 00 00 "
                 "46 1C 40 00 00 6A 0D 0A",
                 "wait 100 ms"));
  EXPECT_EQ(observe([](auto& driver) {
              return Outcome(driver.setSurveyStatic(-90, -180, -1000, 0.01));
            }).line,
            line("A0 A1 00 1F 54 02 00 00 0E 10 12 34 56 78 C0 56 80 00 00 00 00 00 C0 66 80 00 00 "
                 "00 00 00 "
                 "C4 7A 00 00 00 CE 0D 0A",
                 "wait 100 ms"));
}

TEST_F(Survey, StaticIsRejectedBeyondItsLimitsWithTheDeviceLeftClosed) {
  for (const StaticArguments& row : {StaticArguments{90.000001, 0, 0, 1},
                                     StaticArguments{std::nextafter(90, 91), 0, 0, 1},
                                     StaticArguments{std::nextafter(-90, -91), 0, 0, 1},
                                     StaticArguments{kNan, 0, 0, 1},
                                     StaticArguments{kInfinity, 0, 0, 1},
                                     StaticArguments{-kInfinity, 0, 0, 1},
                                     StaticArguments{0, std::nextafter(180, 181), 0, 1},
                                     StaticArguments{0, std::nextafter(-180, -181), 0, 1},
                                     StaticArguments{0, kNan, 0, 1},
                                     StaticArguments{0, kInfinity, 0, 1},
                                     StaticArguments{0, -kInfinity, 0, 1},
                                     StaticArguments{0, 0, std::nextafter(10000, 10001), 1},
                                     StaticArguments{0, 0, std::nextafter(-1000, -1001), 1},
                                     StaticArguments{0, 0, -1000.5, 1},
                                     StaticArguments{0, 0, kNan, 1},
                                     StaticArguments{0, 0, kInfinity, 1},
                                     StaticArguments{0, 0, -kInfinity, 1},
                                     StaticArguments{0, 0, 0, std::nextafter(200, 201)},
                                     StaticArguments{0, 0, 0, std::nextafter(0.01, 0)},
                                     StaticArguments{0, 0, 0, 0.009},
                                     StaticArguments{0, 0, 0, 0},
                                     StaticArguments{0, 0, 0, -1},
                                     StaticArguments{0, 0, 0, kNan},
                                     StaticArguments{0, 0, 0, kInfinity}}) {
    expectRejectedUnsent([&](auto& driver) {
      return Outcome(driver.setSurveyStatic(row.latitude, row.longitude, row.altitude, row.stdDev));
    });
  }
}

TEST_F(Survey, AutoTakesItsLimits) {
  answer(kSurveyTiming);
  for (const auto& [surveyLength, stdDev] :
       {std::pair{1U, 0.01F}, {1U, 50.0F}, {1209600U, 50.0F}, {1209600U, 0.01F}}) {
    EXPECT_EQ(observe([surveyLength = surveyLength, stdDev = stdDev](auto& driver) {
                return Outcome(driver.setSurveyAuto(surveyLength, stdDev));
              }).result,
              0u);
  }
}

TEST_F(Survey, AutoIsRejectedBeyondItsLimitsWithTheDeviceLeftClosed) {
  for (const auto& [surveyLength, stdDev] : {std::pair{0U, 1.0F},
                                             {1209601U, 1.0F},
                                             {0x80000000U, 1.0F},
                                             {0xFFFFFFFFU, 1.0F},
                                             {3600U, std::nextafter(0.01F, 0.0F)},
                                             {3600U, 0.009F},
                                             {3600U, 0.0F},
                                             {3600U, -1.0F},
                                             {3600U, std::nextafter(50.0F, 51.0F)},
                                             {3600U, std::numeric_limits<float>::quiet_NaN()},
                                             {3600U, std::numeric_limits<float>::infinity()}}) {
    expectRejectedUnsent([surveyLength = surveyLength, stdDev = stdDev](auto& driver) {
      return Outcome(driver.setSurveyAuto(surveyLength, stdDev));
    });
  }
}

// By name.

TEST_F(Survey, ModeDynamicIsSetByItsNameHoweverItIsWritten) {
  for (const char* name : {"DYNAMIC", "dynamic", "Dynamic", "dYnAmIc"}) {
    answer(kStaticTiming, kDynamicTiming, 2);
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setSurveyMode(name)); }),
              (Observed{.standardOutput = "Survey Mode: DYNAMIC\n",
                        .line = {"open", kQueryTiming.packet, "open", kQueryTiming.packet, "open",
                                 kSetDynamic, "wait 800 ms", "open", kQueryTiming.packet}}));
  }
}

// The standard deviation that they would need is missing.
TEST_F(Survey, ModesAutoAndStaticAreRejectedByTheirNameAfterOneQuery) {
  for (const char* name : {"AUTO", "auto", "Auto", "STATIC", "static", "Static"}) {
    answer(kSurveyTiming);
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setSurveyMode(name)); }),
              (Observed{.result = 1, .line = queryOnly_}))
        << name;
  }
}

TEST_F(Survey, ModeIsLeftAloneForAnyOtherNameAfterOneQuery) {
  for (const std::string name :
       {"", "DYNAMIC ", " AUTO", "STATICS", "AUT", "MANUAL", "\xE4uto", "\xFF\x80"}) {
    answer(kSurveyTiming);
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setSurveyMode(name)); }),
              (Observed{.line = queryOnly_}))
        << name;
  }
}

TEST_F(Survey, ModeIsRejectedByAnyNameWhenItsQueryIsNotAnswered) {
  for (const char* name : {"AUTO", "STATIC", "DYNAMIC", "MANUAL"}) {
    letWaitsEnd();
    EXPECT_EQ(
        observe([&](auto& driver) { return Outcome(driver.setSurveyMode(name)); }),
        (Observed{
            .result = 1, .standardError = kTimedOut, .errorLog = kNoTiming, .line = queryOnly_}));
    EXPECT_EQ(waitsEnded(), 1);
  }
}

TEST_F(Survey, ModeIsRejectedByAnyNameWithoutDevice) {
  unplug();
  for (const char* name : {"AUTO", "STATIC", "DYNAMIC", "MANUAL"}) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setSurveyMode(name)); }),
              (Observed{.result = 1, .standardError = kNoDevice, .errorLog = kTimingNotSent}));
  }
}

// The steps go through the virtual members.

/// Takes down the steps of a setting.
class SurveyTakenDown : public orb::test::StampedDriver {
 public:
  using StampedDriver::gpsObtGetTimeMode;
  using StampedDriver::setSurveyAuto;

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
    calls.push_back("getSurveyMode");
    mode = readBack;
    return 64;
  }
  unsigned int setSurveyAuto(unsigned int surveyLength, float stdDev) override {
    calls.push_back("setSurveyAuto " + Outcome(0, surveyLength, stdDev).outputs);
    return 71;
  }
  unsigned int setSurveyStatic(double latitude, double longitude, double altitude,
                               double stdDev) override {
    calls.push_back("setSurveyStatic " + Outcome(0, latitude, longitude, altitude, stdDev).outputs);
    return 72;
  }
  unsigned int setSurveyDynamic() override {
    calls.push_back("setSurveyDynamic");
    return 73;
  }

  unsigned int queryResult = 0;
  std::string readBack;
  std::vector<std::string> calls;
};

TEST_F(Survey, ModeByNameCallsTheSetterWithWhatTheReceiverHas) {
  SurveyTakenDown driver;
  EXPECT_EQ(driver.setSurveyMode("Auto"), 71u);
  EXPECT_EQ(driver.setSurveyMode("Static"), 72u);
  EXPECT_EQ(driver.setSurveyMode("Dynamic"), 73u);
  EXPECT_EQ(driver.setSurveyMode("other"), 0u);
  EXPECT_EQ(driver.calls,
            (std::vector<std::string>{"gpsObtGetTimeMode", "setSurveyAuto 3600, 0",  //
                                      "gpsObtGetTimeMode",
                                      "setSurveyStatic 48.5, -11.25, 0.10000000149011612, 0",  //
                                      "gpsObtGetTimeMode", "setSurveyDynamic",                 //
                                      "gpsObtGetTimeMode"}));
}

TEST_F(Survey, AutoWithoutArgumentsCallsTheOtherWithThreeHoursAndAMetre) {
  SurveyTakenDown driver;
  EXPECT_EQ(driver.setSurveyAuto(), 71u);
  EXPECT_EQ(driver.calls, std::vector<std::string>{"setSurveyAuto 10800, 1"});
}

TEST_F(Survey, SettersQueryAndReadBackThroughTheInterface) {
  connectReceiver();
  SurveyTakenDown driver;
  const std::vector<std::string> steps{"gpsObtGetTimeMode", "getSurveyMode"};

  driver.readBack = "STATIC";
  EXPECT_EQ(observe(driver,
                    [](auto& any) {
                      return Outcome(any.orbController_QN4470T01::setSurveyStatic(1, 2, 3, 4));
                    })
                .result,
            64u);
  EXPECT_EQ(std::exchange(driver.calls, {}), steps);

  driver.readBack = "AUTO";
  EXPECT_EQ(
      observe(driver,
              [](auto& any) { return Outcome(any.orbController_QN4470T01::setSurveyAuto(1, 2)); })
          .result,
      64u);
  EXPECT_EQ(std::exchange(driver.calls, {}), steps);

  driver.readBack = "DYNAMIC";
  EXPECT_EQ(
      observe(driver,
              [](auto& any) { return Outcome(any.orbController_QN4470T01::setSurveyDynamic()); })
          .result,
      64u);
  EXPECT_EQ(std::exchange(driver.calls, {}), steps);
}

TEST_F(Survey, AnyFailureOfTheQueryIsARejection) {
  SurveyTakenDown driver;
  for (const unsigned int failure : {1U, 4U, 8U, 256U}) {
    driver.queryResult = failure;
    EXPECT_EQ(driver.setSurveyMode("DYNAMIC"), 1u);
    EXPECT_EQ(driver.orbController_QN4470T01::setSurveyStatic(1, 2, 3, 4), 1u);
    EXPECT_EQ(driver.orbController_QN4470T01::setSurveyAuto(1, 2), 1u);
    EXPECT_EQ(driver.orbController_QN4470T01::setSurveyDynamic(), 1u);
  }
  EXPECT_EQ(driver.calls, std::vector<std::string>(16, "gpsObtGetTimeMode"));
}

TEST_F(Survey, InfoHasTheLowByteOfTheTimingMode) {
  SurveyTakenDown driver;
  EXPECT_EQ(getSurveyInfo(driver).outputs, "2, 48.5, -11.25, 0.10000000149011612, 0, 3600, 0");
}

TEST_F(Survey, ModeIsReadWithoutTheTimeModeQuery) {
  SurveyTakenDown driver;
  connectReceiver();
  EXPECT_EQ(observe(driver,
                    [](auto& any) {
                      std::string mode;
                      const unsigned int result = any.orbController_QN4470T01::getSurveyMode(mode);
                      return Outcome(result, mode);
                    }),
            (Observed{.outputs = "\"DYNAMIC\"", .line = queryOnly_}));
  EXPECT_EQ(driver.calls, std::vector<std::string>{});
}

}  // namespace
