#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orb-sim/frame.h"
#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;

const Sent kQueryTime{"A0 A1 00 02 64 20 44 0D 0A", "64 20: Query GPS time of GNSS receiver "};

Outcome readTime(orbController_QN4470T01& driver) {
  unsigned int Tow = 71;
  unsigned int sTow = 72;
  unsigned int week = 73;
  unsigned int nCurrentLeap = 74;
  unsigned int valid = 75;
  return Outcome(driver.gpsObtGetGpsTime(Tow, sTow, week, nCurrentLeap, valid), Tow, sTow, week,
                 nCurrentLeap, valid);
}

std::vector<Query> queries() {
  return {
      {.name = "GetGpsTime",
       .call = readTime,
       .sends = kQueryTime,
       .reply = "A0 A1 00 0F 64 8E 00 05 26 5C 00 00 01 F4 08 FC 12 12 07 93 0D 0A",
       .answer = {0, "337500, 500, 2300, 18, 7",
                  "Tow : 337500\n"
                  "sTow : 500\n"
                  "week : 2300\n"
                  "nCurrentLeap : 18\n"
                  "valid : 7\n"
                  "0 0x64\n"
                  "1 0x8E\n"
                  "2 0x00\n"
                  "3 0x05\n"
                  "4 0x26\n"
                  "5 0x5C\n"
                  "6 0x00\n"
                  "7 0x00\n"
                  "8 0x01\n"
                  "9 0xF4\n"
                  "10 0x08\n"
                  "11 0xFC\n"
                  "12 0x12\n"
                  "13 0x12\n"
                  "14 0x07\n"
                  "\n"},
       // It ends in the time of week.
       .shortReply = "A0 A1 00 04 64 8E 12 34 CC 0D 0A",
       .shortAnswer = {0, "305397760, 0, 0, 0, 0",
                       "Tow : 305397760\n"
                       "sTow : 0\n"
                       "week : 0\n"
                       "nCurrentLeap : 0\n"
                       "valid : 0\n"
                       "0 0x64\n"
                       "1 0x8E\n"
                       "2 0x12\n"
                       "3 0x34\n"
                       "4 0x00\n"
                       "5 0x00\n"
                       "6 0x00\n"
                       "7 0x00\n"
                       "8 0x00\n"
                       "9 0x00\n"
                       "10 0x00\n"
                       "11 0x00\n"
                       "12 0x00\n"
                       "13 0x00\n"
                       "14 0x00\n"
                       "\n"},
       .untouched = "71, 72, 73, 74, 75"},
  };
}

INSTANTIATE_TEST_SUITE_P(GpsTime, QueryOutcome, testing::ValuesIn(queries()), RowName());

class GpsTime : public OperationTest {
 protected:
  /// What the call makes of these bytes behind the sub-id.
  Observed readFrom(const std::string& body) {
    onPacket(kQueryTime.packet).answer(orb::sim::frame(0x648E, bytes(body)));
    return observe(readTime);
  }
};

/// The printed lines before the dump of the bytes.
std::string printedFields(const Observed& observed) {
  return observed.standardOutput.substr(0, observed.standardOutput.find("0 0x64\n"));
}

TEST_F(GpsTime, HasEachFieldInItsPlace) {
  const Observed observed = readFrom("01 02 03 04 05 06 07 08 09 0A 0B 0C 0D");
  EXPECT_EQ(observed.outputs, "16909060, 84281096, 2314, 11, 13");
  EXPECT_EQ(observed.standardOutput,
            "Tow : 16909060\nsTow : 84281096\nweek : 2314\nnCurrentLeap : 11\nvalid : 13\n"
            "0 0x64\n1 0x8E\n2 0x01\n3 0x02\n4 0x03\n5 0x04\n6 0x05\n7 0x06\n8 0x07\n9 0x08\n"
            "10 0x09\n11 0x0A\n12 0x0B\n13 0x0C\n14 0x0D\n\n");
}

TEST_F(GpsTime, HasTheCurrentLeapSecondsNotTheComingOnes) {
  const Observed observed = readFrom("00 05 26 5C 00 00 01 F4 08 FC 12 13 07");
  EXPECT_EQ(observed.outputs, "337500, 500, 2300, 18, 7");
  EXPECT_NE(observed.standardOutput.find("12 0x12\n13 0x13\n"), std::string::npos);
}

TEST_F(GpsTime, IsReadAsUnsignedAndPrintedAsSigned) {
  Observed observed = readFrom("FF FF FF FF FF FF FF FF FF FF FF FF FF");
  EXPECT_EQ(observed.outputs, "4294967295, 4294967295, 65535, 255, 255");
  EXPECT_EQ(printedFields(observed),
            "Tow : -1\nsTow : -1\nweek : 65535\nnCurrentLeap : 255\nvalid : 255\n");

  observed = readFrom("80 00 00 00 80 00 00 00 80 00 80 80 80");
  EXPECT_EQ(observed.outputs, "2147483648, 2147483648, 32768, 128, 128");
  EXPECT_EQ(printedFields(observed),
            "Tow : -2147483648\nsTow : -2147483648\nweek : 32768\nnCurrentLeap : 128\n"
            "valid : 128\n");

  observed = readFrom("7F FF FF FF 7F FF FF FF 7F FF 7F 7F 7F");
  EXPECT_EQ(observed.outputs, "2147483647, 2147483647, 32767, 127, 127");
  EXPECT_EQ(printedFields(observed),
            "Tow : 2147483647\nsTow : 2147483647\nweek : 32767\nnCurrentLeap : 127\n"
            "valid : 127\n");

  observed = readFrom("00 00 00 01 00 00 00 01 00 01 01 00 01");
  EXPECT_EQ(observed.outputs, "1, 1, 1, 1, 1");
}

TEST_F(GpsTime, DumpsNoMoreThanItsOwnBytesOfALongReply) {
  const Observed observed = readFrom("00 05 26 5C 00 00 01 F4 08 FC 12 12 07 AA BB");
  EXPECT_EQ(observed.outputs, "337500, 500, 2300, 18, 7");
  EXPECT_TRUE(observed.standardOutput.ends_with("13 0x12\n14 0x07\n\n"));
}

TEST_F(GpsTime, ComesFromAReceiver) {
  connectReceiver();
  const Observed observed = observe(readTime);
  EXPECT_EQ(observed.result, 0u);
  EXPECT_TRUE(observed.outputs.ends_with(", 2300, 18, 7")) << observed.outputs;
}

}  // namespace
