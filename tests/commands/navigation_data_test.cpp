#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orb-sim/frame.h"
#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::kTimedOut;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;

const Sent kPrompt{"A0 A1 00 02 64 30 54 0D 0A",
                   "64 30: Query the navigation output message interval of GNSS receiver "};

// 3D, 9 satellites, week 2300, 345678 s, 48.3712345 N 11.5678901 E, 520.12 m and 475.9 m.
constexpr const char* kNavigationData =
    "A0 A1 00 3B A8 02 09 08 FC 02 0F 76 78 1C D4 DD 59 06 E5 1E B5 00 00 CB 2C 00 00 B9 E6"
    " 00 B4 00 A0 00 5A 00 82 00 55 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    " 00 00 00 71 0D 0A";
constexpr const char* kReport =
    "\"fix mode=3D\n"
    "number if sv in fix=9\n"
    "GPS Week=2300\n"
    "GPS TOW=345678.000000\n"
    "latitude=48.371234\n"
    "longitude=11.567890\n"
    "ellipsoid altitude=520.120000\n"
    "sea level altitude=475.900000\n\"";

constexpr const char* kEmptyNavigationData = "A0 A1 00 01 A8 A8 0D 0A";
constexpr const char* kEmptyReport =
    "\"fix mode=NO-FIX\n"
    "number if sv in fix=0\n"
    "GPS Week=0\n"
    "GPS TOW=0.000000\n"
    "latitude=0.000000\n"
    "longitude=0.000000\n"
    "ellipsoid altitude=0.000000\n"
    "sea level altitude=0.000000\n\"";

Outcome readReport(orbController_QN4470T01& driver) {
  std::string report = "before";
  return Outcome(driver.gpsObtGetMsgUserNavDataBinary(report), report);
}

Outcome countSatellites(orbController_QN4470T01& driver) {
  unsigned char count = 77;
  return Outcome(driver.getNofSatellitesInNavSol(count), count);
}

std::vector<Query> queries() {
  return {
      {.name = "GetMsgUserNavDataBinary",
       .call = readReport,
       .sends = kPrompt,
       .reply = kNavigationData,
       .answer = {0, kReport},
       .shortReply = kEmptyNavigationData,
       .shortAnswer = {0, kEmptyReport},
       .untouched = "\"before\""},
      {.name = "GetNavsolution",
       .call =
           [](auto& driver) {
             std::string report = "before";
             return Outcome(driver.getNavsolution("all", report), report);
           },
       .sends = kPrompt,
       .reply = kNavigationData,
       .answer = {0, kReport},
       .shortReply = kEmptyNavigationData,
       .shortAnswer = {0, kEmptyReport},
       .untouched = "\"before\""},
      // It has a way of its own to fail.
      {.name = "GetNofSatellitesInNavSol",
       .call = countSatellites,
       .sends = kPrompt,
       .reply = kNavigationData,
       .answer = {0, "9"},
       .shortReply = kEmptyNavigationData,
       .shortAnswer = {0, "0"},
       .untouched = "77",
       .noReply = {8},
       .noDevice = {0},
       .noReplyLog = "Could not send : ",
       .noDeviceLog = ""},
  };
}

INSTANTIATE_TEST_SUITE_P(NavigationData, QueryOutcome, testing::ValuesIn(queries()), RowName());

class NavigationData : public OperationTest {
 protected:
  /// The report made of these bytes behind the message id.
  std::string reportOf(const std::string& body) {
    onPacket(kPrompt.packet).answer(orb::sim::frame(0xA800, bytes(body)));
    const Observed observed = observe(readReport);
    EXPECT_EQ(observed.result, 0u);
    return observed.outputs;
  }
};

std::string lineOf(const std::string& report, const std::string& label) {
  const std::size_t begin = report.find(label + "=");
  return begin == std::string::npos ? "" : report.substr(begin, report.find('\n', begin) - begin);
}

TEST_F(NavigationData, NamesEachFixMode) {
  const std::map<std::string, std::string> names = {{"00", "NO-FIX"},   {"01", "2D"}, {"02", "3D"},
                                                    {"03", "3D+DGNSS"}, {"04", ""},   {"7F", ""},
                                                    {"80", ""},         {"FF", ""}};
  for (const auto& [mode, name] : names) {
    EXPECT_EQ(lineOf(reportOf(mode), "fix mode"), "fix mode=" + name) << mode;
  }
}

TEST_F(NavigationData, HasTheOtherLinesAlsoInAnUnknownFixMode) {
  EXPECT_EQ(reportOf("04 01"),
            "\"fix mode=\n"
            "number if sv in fix=1\n"
            "GPS Week=0\n"
            "GPS TOW=0.000000\n"
            "latitude=0.000000\n"
            "longitude=0.000000\n"
            "ellipsoid altitude=0.000000\n"
            "sea level altitude=0.000000\n\"");
}

TEST_F(NavigationData, HasEachFieldInItsPlace) {
  EXPECT_EQ(reportOf("01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18"),
            "\"fix mode=2D\n"
            "number if sv in fix=2\n"
            "GPS Week=772\n"
            "GPS TOW=842810.960000\n"
            "latitude=15.165313\n"
            "longitude=21.902517\n"
            "ellipsoid altitude=2863972.040000\n"
            "sea level altitude=3537692.400000\n\"");
}

TEST_F(NavigationData, TakesEveryFieldForUnsigned) {
  EXPECT_EQ(reportOf("02 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF"),
            "\"fix mode=3D\n"
            "number if sv in fix=255\n"
            "GPS Week=65535\n"
            "GPS TOW=42949672.950000\n"
            "latitude=429.496730\n"
            "longitude=429.496730\n"
            "ellipsoid altitude=42949672.950000\n"
            "sea level altitude=42949672.950000\n\"");
  EXPECT_EQ(reportOf("02 80 80 00 80 00 00 00 80 00 00 00 80 00 00 00 80 00 00 00 80 00 00 00"),
            "\"fix mode=3D\n"
            "number if sv in fix=128\n"
            "GPS Week=32768\n"
            "GPS TOW=21474836.480000\n"
            "latitude=214.748365\n"
            "longitude=214.748365\n"
            "ellipsoid altitude=21474836.480000\n"
            "sea level altitude=21474836.480000\n\"");
  EXPECT_EQ(reportOf("02 7F 7F FF 7F FF FF FF 7F FF FF FF 7F FF FF FF 7F FF FF FF 7F FF FF FF"),
            "\"fix mode=3D\n"
            "number if sv in fix=127\n"
            "GPS Week=32767\n"
            "GPS TOW=21474836.470000\n"
            "latitude=214.748365\n"
            "longitude=214.748365\n"
            "ellipsoid altitude=21474836.470000\n"
            "sea level altitude=21474836.470000\n\"");
  EXPECT_EQ(reportOf("00 01 00 01 00 00 00 01 00 00 00 01 00 00 00 01 00 00 00 01 00 00 00 01"),
            "\"fix mode=NO-FIX\n"
            "number if sv in fix=1\n"
            "GPS Week=1\n"
            "GPS TOW=0.010000\n"
            "latitude=0.000000\n"
            "longitude=0.000000\n"
            "ellipsoid altitude=0.010000\n"
            "sea level altitude=0.010000\n\"");
}

TEST_F(NavigationData, ReadsAsZeroFromWhereTheReplyEndsInAField) {
  EXPECT_EQ(reportOf("02 09 08"),
            "\"fix mode=3D\n"
            "number if sv in fix=9\n"
            "GPS Week=2048\n"
            "GPS TOW=0.000000\n"
            "latitude=0.000000\n"
            "longitude=0.000000\n"
            "ellipsoid altitude=0.000000\n"
            "sea level altitude=0.000000\n\"");
}

TEST_F(NavigationData, DoesNotReadWhatStandsBehindTheAltitudes) {
  const std::string read =
      "02 09 08 FC 02 0F 76 78 1C D4 DD 59 06 E5 1E B5 00 00 CB 2C 00 00 B9 E6";
  std::string rest;
  for (int i = 0; i < 34; ++i) {
    rest += " FF";
  }
  EXPECT_EQ(reportOf(read + rest), kReport);
}

TEST_F(NavigationData, IsTheSameReportForAnyKey) {
  onPacket(kPrompt.packet).answer(bytes(kNavigationData));
  for (const char* key : {"", "all", "latitude", "no such key"}) {
    const Observed observed = observe([&](auto& driver) {
      std::string report = "before";
      return Outcome(driver.getNavsolution(key, report), report);
    });
    EXPECT_EQ(observed, (Observed{.outputs = kReport, .line = {"open", kPrompt.packet}})) << key;
  }
}

TEST_F(NavigationData, IsNotTheAnswerToTheQuery) {
  letWaitsEnd();
  onPacket(kPrompt.packet).answer(bytes("A0 A1 00 03 64 98 01 FD 0D 0A"));
  EXPECT_EQ(observe(readReport),
            (Observed{.result = 4,
                      .outputs = "\"before\"",
                      .standardError = kTimedOut,
                      .errorLog = "STAMP:  Did not receive : " + kPrompt.description + "\n",
                      .line = {"open", kPrompt.packet}}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_F(NavigationData, IsTakenBehindTheAnswerToTheQuery) {
  onPacket(kPrompt.packet)
      .answer(bytes("A0 A1 00 02 83 64 E7 0D 0A A0 A1 00 03 64 98 01 FD 0D 0A " +
                    std::string(kNavigationData)));
  EXPECT_EQ(observe(readReport).outputs, kReport);
}

TEST_F(NavigationData, ComesFromAReceiverWhoseOutputIsBinary) {
  connectReceiver();
  gps_.receiver.change([](auto& state) { state.outputType = orb::sim::OutputType::Binary; });
  const Observed observed = observe(readReport);
  EXPECT_EQ(observed.result, 0u);
  EXPECT_EQ(lineOf(observed.outputs, "latitude"), "latitude=48.371234");
  EXPECT_EQ(observe(countSatellites).outputs, "9");
}

TEST_F(NavigationData, DoesNotComeFromAReceiverWhoseOutputIsNmea) {
  connectReceiver();
  letWaitsEnd();
  EXPECT_EQ(observe(readReport).result, 4u);
  EXPECT_EQ(observe(countSatellites).result, 8u);
  EXPECT_EQ(waitsEnded(), 2);
}

TEST_F(NavigationData, HasAnyNumberOfSatellites) {
  const std::map<std::string, std::string> counts = {
      {"00", "0"}, {"01", "1"}, {"7F", "127"}, {"80", "128"}, {"FF", "255"}};
  for (const auto& [byte, count] : counts) {
    onPacket(kPrompt.packet).answer(orb::sim::frame(0xA800, bytes("02 " + byte + " 2A")));
    const Observed observed = observe(countSatellites);
    EXPECT_EQ(observed.result, 0u);
    EXPECT_EQ(observed.outputs, count);
  }
}

TEST_F(NavigationData, HasNoInformationOnSingleSatellites) {
  EXPECT_EQ(observe([](auto& driver) {
              std::string info = "before";
              return Outcome(driver.getSatelliteInfo(info), info);
            }),
            Observed{.outputs = "\"before\""});
}

}  // namespace
