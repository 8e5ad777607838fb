#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "orb-sim/frame.h"
#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::Call;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;
using orb::test::Setting;
using orb::test::SettingOutcome;

const Sent kQueryFix{"A0 A1 00 02 64 12 76 0D 0A",
                     "64 12: Query the position fix of GNSS receiver "};
const Sent kQueryDop{"A0 A1 00 01 2E 2E 0D 0A",
                     "2E 00: Query the information of DOP mask used by GNSS receiver "};
const Sent kQueryMasks{
    "A0 A1 00 01 2F 2F 0D 0A",
    "2F 00: Query the values of elevation mask and CNR mask used by GNSS receiver"};

constexpr const char* kFixTitle = "64 11: Configure the position fix mask of GNSS receiver ";
constexpr const char* kMasksTitle = "2B 00: Configure values of Elevation and CNR Mask ";

constexpr const char* kReports2D2D = "A0 A1 00 04 64 88 01 01 EC 0D 0A";
constexpr const char* kReports2D3D = "A0 A1 00 04 64 88 01 00 ED 0D 0A";
constexpr const char* kReports3D2D = "A0 A1 00 04 64 88 00 01 ED 0D 0A";
constexpr const char* kReports3D3D = "A0 A1 00 04 64 88 00 00 EC 0D 0A";
constexpr const char* kReportsNoFix = "A0 A1 00 02 64 88 EC 0D 0A";  // which reads as 3D, 3D

constexpr const char* kReportsDop = "A0 A1 00 08 AF 01 00 FA 00 FA 00 FA 54 0D 0A";
constexpr const char* kPrintsDop = "Dop Mode: 1 \nnDop: 250 \nhDop: 250 \ngDop: 250 \n";

// Elevation 5, carrier-to-noise ratio 20.
constexpr const char* kReportsMasks = "A0 A1 00 04 B0 01 05 14 A0 0D 0A";
constexpr const char* kReportsModeOnly = "A0 A1 00 02 B0 01 B1 0D 0A";

Outcome readFix(orbController_QN4470T01& driver) {
  std::string first = "before";
  std::string second = "before too";
  return Outcome(driver.gpsObtGetFixNavConfigure(first, second), first, second);
}

Outcome readDop(orbController_QN4470T01& driver) {
  unsigned int mode = 71;
  unsigned int first = 72;
  unsigned int second = 73;
  unsigned int third = 74;
  return Outcome(driver.gpsObtGetDopConfigure(mode, first, second, third), mode, first, second,
                 third);
}

Outcome readMasks(orbController_QN4470T01& driver) {
  unsigned int mode = 71;
  unsigned int elevation = 72;
  unsigned int cnr = 73;
  return Outcome(driver.gpsOrbGetElevConfigure(mode, elevation, cnr), mode, elevation, cnr);
}

Outcome readMinCNo(orbController_QN4470T01& driver) {
  signed char minimum = 77;
  return Outcome(driver.getMinCNo(minimum), minimum);
}

Outcome readElevationLimit(orbController_QN4470T01& driver) {
  unsigned char limit = 77;
  return Outcome(driver.getElevationLimit(limit), limit);
}

std::vector<Query> queries() {
  return {
      {.name = "GetFixNavConfigure",
       .call = readFix,
       .sends = kQueryFix,
       .reply = kReports2D3D,
       .answer = {0, "\"2D\", \"3D\""},
       .shortReply = "A0 A1 00 03 64 88 01 ED 0D 0A",
       .shortAnswer = {0, "\"2D\", \"3D\""},
       .untouched = "\"before\", \"before too\""},
      {.name = "GetDopConfigure",
       .call = readDop,
       .sends = kQueryDop,
       .reply = kReportsDop,
       .answer = {0, "1, 250, 250, 250", kPrintsDop},
       .shortReply = "A0 A1 00 05 AF 01 00 FA 01 55 0D 0A",
       .shortAnswer = {0, "1, 250, 256, 0", "Dop Mode: 1 \nnDop: 250 \nhDop: 256 \ngDop: 0 \n"},
       .untouched = "71, 72, 73, 74"},
      {.name = "GetElevConfigure",
       .call = readMasks,
       .sends = kQueryMasks,
       .reply = kReportsMasks,
       .answer = {0, "1, 5, 20"},
       .shortReply = kReportsModeOnly,
       .shortAnswer = {0, "1, 0, 0"},
       .untouched = "71, 72, 73"},
      {.name = "GetMinCNo",
       .call = readMinCNo,
       .sends = kQueryMasks,
       .reply = kReportsMasks,
       .answer = {0, "20"},
       .shortReply = kReportsModeOnly,
       .shortAnswer = {0, "0"},
       .untouched = "77"},
      {.name = "GetElevationLimit",
       .call = readElevationLimit,
       .sends = kQueryMasks,
       .reply = kReportsMasks,
       .answer = {0, "5"},
       .shortReply = kReportsModeOnly,
       .shortAnswer = {0, "0"},
       .untouched = "77"},
  };
}

INSTANTIATE_TEST_SUITE_P(MasksAndFix, QueryOutcome, testing::ValuesIn(queries()), RowName());

Setting settingFix(const std::string& name, Call call, const std::string& packet,
                   const std::string& reply, const std::string& otherReply) {
  return {.name = name,
          .call = std::move(call),
          .sends = {packet, kFixTitle},
          .reads = kQueryFix,
          .reply = reply,
          .otherReply = otherReply,
          .shortReply = kReportsNoFix,
          .shortAnswer = {reply == kReports3D3D ? 0u : 1u}};
}

Call setFix(const std::string& first, const std::string& second) {
  return [=](auto& driver) { return Outcome(driver.gpsObtFixNavConfigure(first, second)); };
}

Call setFixMode(unsigned char fixMode) {
  return [=](auto& driver) { return Outcome(driver.setFixMode(fixMode)); };
}

Call setMasks(unsigned int mode, unsigned int elevation, unsigned int cnr) {
  return [=](auto& driver) { return Outcome(driver.gpsObtElevConfigure(mode, elevation, cnr)); };
}

Outcome setDop(orbController_QN4470T01& driver) { return Outcome(driver.gpsObtDopConfigure()); }

constexpr const char* kSet2D2D = "A0 A1 00 05 64 11 01 01 00 75 0D 0A";
constexpr const char* kSet2D3D = "A0 A1 00 05 64 11 01 00 00 74 0D 0A";
constexpr const char* kSet3D2D = "A0 A1 00 05 64 11 00 01 00 74 0D 0A";
constexpr const char* kSet3D3D = "A0 A1 00 05 64 11 00 00 00 75 0D 0A";
const Sent kSetDop{"A0 A1 00 09 2A 01 00 FA 00 FA 00 FA 00 D1 0D 0A",
                   "2A 00: Configure values of DOP mask "};

std::vector<Setting> settings() {
  return {
      settingFix("FixNavConfigureTo2D2D", setFix("2D", "2D"), kSet2D2D, kReports2D2D, kReports2D3D),
      settingFix("FixNavConfigureTo2D3D", setFix("2D", "3D"), kSet2D3D, kReports2D3D, kReports3D3D),
      settingFix("FixNavConfigureTo3D2D", setFix("3D", "2D"), kSet3D2D, kReports3D2D, kReports2D2D),
      settingFix("FixNavConfigureTo3D3D", setFix("3D", "3D"), kSet3D3D, kReports3D3D, kReports3D2D),
      settingFix("SetFixModeZero", setFixMode(0), kSet2D2D, kReports2D2D, kReports3D3D),
      settingFix("SetFixModeOne", setFixMode(1), kSet3D3D, kReports3D3D, kReports2D2D),
      settingFix("SetFixModeTwo", setFixMode(2), kSet3D2D, kReports3D2D, kReports2D3D),
      {.name = "DopConfigure",
       .call = setDop,
       .sends = kSetDop,
       .reads = kQueryDop,
       .reply = kReportsDop,
       .printed = kPrintsDop,
       .otherReply = "A0 A1 00 08 AF 01 00 FA 00 FA 00 FB 55 0D 0A",
       .other = {1, "", "Dop Mode: 1 \nnDop: 250 \nhDop: 250 \ngDop: 251 \n"},
       .shortReply = "A0 A1 00 01 AF AF 0D 0A",
       .shortAnswer = {1, "", "Dop Mode: 0 \nnDop: 0 \nhDop: 0 \ngDop: 0 \n"}},
      {.name = "ElevConfigure",
       .call = setMasks(1, 5, 20),
       .sends = {"A0 A1 00 05 2B 01 05 14 00 3B 0D 0A", kMasksTitle},
       .reads = kQueryMasks,
       .reply = kReportsMasks,
       .otherReply = "A0 A1 00 04 B0 01 05 15 A1 0D 0A",
       .shortReply = kReportsModeOnly},
      {.name = "ElevConfigureToZero",
       .call = setMasks(0, 0, 0),
       .sends = {"A0 A1 00 05 2B 00 00 00 00 2B 0D 0A", kMasksTitle},
       .reads = kQueryMasks,
       .reply = "A0 A1 00 04 B0 00 00 00 B0 0D 0A",
       .otherReply = kReportsMasks,
       .shortReply = "A0 A1 00 01 B0 B0 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
      {.name = "ElevConfigureToTheHighestBytes",
       .call = setMasks(255, 254, 253),
       .sends = {"A0 A1 00 05 2B FF FE FD 00 D7 0D 0A", kMasksTitle},
       .reads = kQueryMasks,
       .reply = "A0 A1 00 04 B0 FF FE FD 4C 0D 0A",
       .otherReply = "A0 A1 00 04 B0 FF FE FF 4E 0D 0A",
       .shortReply = kReportsModeOnly},
  };
}

INSTANTIATE_TEST_SUITE_P(MasksAndFix, SettingOutcome, testing::ValuesIn(settings()), RowName());

class MasksAndFix : public OperationTest {
 protected:
  /// What a call sees when the query is answered by message `id` with this body.
  Observed answered(const Sent& query, std::uint16_t id, const std::string& body,
                    const Call& call) {
    onPacket(query.packet).answer(orb::sim::frame(id, bytes(body)));
    return observe(call);
  }

  Observed answeredByMasks(const std::string& body, const Call& call) {
    return answered(kQueryMasks, 0xB000, body, call);
  }
};

// Nothing is sent, and the device is not opened.
const Observed kRejected{.result = 1};
const Observed kNotSupported{.result = 256};

// Position fix.

TEST_F(MasksAndFix, FixIsRejectedUnlessBothAreNamedExactly) {
  letWaitsEnd();  // of what is sent by mistake
  for (const char* wrong : {"2d", "3d", "", "2D ", " 2D", "2", "D", "4D", "2D3D"}) {
    EXPECT_EQ(observe(setFix(wrong, "2D")), kRejected) << wrong;
    EXPECT_EQ(observe(setFix("3D", wrong)), kRejected) << wrong;
    EXPECT_EQ(observe(setFix(wrong, wrong)), kRejected) << wrong;
  }
}

TEST_F(MasksAndFix, FixModeAboveTwoIsNotSupported) {
  letWaitsEnd();  // of what is sent by mistake
  for (int mode = 3; mode <= 255; ++mode) {
    EXPECT_EQ(observe(setFixMode(static_cast<unsigned char>(mode))), kNotSupported) << mode;
  }
}

TEST_F(MasksAndFix, FixHasNoNameForAnyOtherByte) {
  const std::map<std::string, std::string> names = {{"00 00", R"("3D", "3D")"},
                                                    {"01 01", R"("2D", "2D")"},
                                                    {"01 07", R"("2D", "")"},
                                                    {"02 00", R"("", "3D")"},
                                                    {"80 FF", R"("", "")"}};
  for (const auto& [body, outputs] : names) {
    EXPECT_EQ(answered(kQueryFix, 0x6488, body, readFix),
              (Observed{.outputs = outputs, .line = {"open", kQueryFix.packet}}));
  }
}

TEST_F(MasksAndFix, FixReadBackMustBeRightInBothPlaces) {
  for (const char* body : {"01 01", "00 00", "01 00", "00 02", "02 01", "07 07"}) {
    EXPECT_EQ(answered(kQueryFix, 0x6488, body, setFix("3D", "2D")).result, 1u) << body;
  }
}

// Dilution of precision.

TEST_F(MasksAndFix, DopMaskHasEachFieldInItsPlace) {
  const Observed observed = answered(kQueryDop, 0xAF00, "01 02 03 04 05 06 07", readDop);
  EXPECT_EQ(observed.outputs, "1, 515, 1029, 1543");
  EXPECT_EQ(observed.standardOutput, "Dop Mode: 1 \nnDop: 515 \nhDop: 1029 \ngDop: 1543 \n");
}

TEST_F(MasksAndFix, DopMaskIsReadAsUnsigned) {
  Observed observed = answered(kQueryDop, 0xAF00, "FF FF FF FF FF FF FF", readDop);
  EXPECT_EQ(observed.outputs, "255, 65535, 65535, 65535");
  EXPECT_EQ(observed.standardOutput, "Dop Mode: 255 \nnDop: 65535 \nhDop: 65535 \ngDop: 65535 \n");
  observed = answered(kQueryDop, 0xAF00, "80 80 00 7F FF 00 01", readDop);
  EXPECT_EQ(observed.outputs, "128, 32768, 32767, 1");
  observed = answered(kQueryDop, 0xAF00, "00 00 00 00 00 00 00", readDop);
  EXPECT_EQ(observed.outputs, "0, 0, 0, 0");
}

TEST_F(MasksAndFix, DopReadBackMustBeRightInEveryField) {
  for (const char* body : {"00 00 FA 00 FA 00 FA", "02 00 FA 00 FA 00 FA", "01 01 FA 00 FA 00 FA",
                           "01 00 F9 00 FA 00 FA", "01 00 FA FA 00 00 FA", "01 00 FA 00 FB 00 FA",
                           "01 00 FA 00 FA FF FA", "01 00 FA 00 FA 00 00"}) {
    const Observed observed = answered(kQueryDop, 0xAF00, body, setDop);
    EXPECT_EQ(observed.result, 1u) << body;
    EXPECT_EQ(observed.line,
              (std::vector<std::string>{"open", kSetDop.packet + " " + kQueryDop.packet}));
  }
}

// Elevation and carrier-to-noise ratio.

TEST_F(MasksAndFix, MasksAreReadAsUnsignedBytes) {
  const std::map<std::string, std::string> masks = {{"01 02 03", "1, 2, 3"},
                                                    {"00 00 00", "0, 0, 0"},
                                                    {"7F 80 FF", "127, 128, 255"},
                                                    {"FF 7F 80", "255, 127, 128"}};
  for (const auto& [body, outputs] : masks) {
    EXPECT_EQ(answeredByMasks(body, readMasks),
              (Observed{.outputs = outputs, .line = {"open", kQueryMasks.packet}}));
  }
}

TEST_F(MasksAndFix, MinCNoIsTheLowByteWithItsSign) {
  const std::map<std::string, std::string> minima = {{"01 05 00", "0"},
                                                     {"01 05 28", "40"},
                                                     {"01 05 7F", "127"},
                                                     {"01 05 80", "-128"},
                                                     {"01 05 FF", "-1"}};
  for (const auto& [body, minimum] : minima) {
    EXPECT_EQ(answeredByMasks(body, readMinCNo).outputs, minimum);
  }
}

TEST_F(MasksAndFix, ElevationLimitIsAnyByte) {
  const std::map<std::string, std::string> limits = {
      {"01 00 14", "0"}, {"01 55 14", "85"}, {"01 80 14", "128"}, {"01 FF 14", "255"}};
  for (const auto& [body, limit] : limits) {
    EXPECT_EQ(answeredByMasks(body, readElevationLimit).outputs, limit);
  }
}

TEST_F(MasksAndFix, MaskReadBackMustBeRightInEveryField) {
  for (const char* body : {"00 05 14", "02 05 14", "01 04 14", "01 05 13", "01 14 05"}) {
    EXPECT_EQ(answeredByMasks(body, setMasks(1, 5, 20)).result, 1u) << body;
  }
}

TEST_F(MasksAndFix, MaskAboveAByteIsCutWhenSentAndThenMissed) {
  const std::vector<std::string> line{"open",
                                      "A0 A1 00 05 2B 01 05 14 00 3B 0D 0A " + kQueryMasks.packet};
  onPacket(kQueryMasks.packet).answer(bytes(kReportsMasks));
  EXPECT_EQ(observe(setMasks(0x101, 5, 20)), (Observed{.result = 1, .line = line}));
  EXPECT_EQ(observe(setMasks(1, 0xFFFFFF05, 20)), (Observed{.result = 1, .line = line}));
  EXPECT_EQ(observe(setMasks(1, 5, 0x80000014)), (Observed{.result = 1, .line = line}));
}

}  // namespace
