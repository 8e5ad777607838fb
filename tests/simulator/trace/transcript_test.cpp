#include "trace/transcript.h"
#include "rate_query.h"

#include <gtest/gtest.h>

#include <sstream>

namespace orb::test {
namespace {

using namespace std::chrono_literals;

TEST(Transcript, TellsWhoSaidWhatAndWhen) {
  std::ostringstream output;
  sim::Transcript transcript(output);
  transcript.add({0us, sim::Speaker::Client, sim::frame(0x1000)});
  transcript.add({1234567us, sim::Speaker::Receiver,
                  sim::acknowledge(0x1000) + sim::frame(0x8600, hex("01"))});
  transcript.finish();
  EXPECT_EQ(
      output.str(),
      "    0.000000  client    10     Query the position update rate of GNSS system\n"
      "    1.234567  receiver  83     Message Acknowledged: 10 (message 0x10)\n"
      "    1.234567  receiver  86     Position update rate of GNSS system: 01 (update rate 1 Hz)\n"
      "client: 1 good packet (0 unknown), 0 bad packets, 0 sentences, 0 other bytes\n"
      "receiver: 2 good packets (0 unknown), 0 bad packets, 0 sentences, 0 other bytes\n");
}

TEST(Transcript, KeepsTheSidesApart) {
  std::ostringstream output;
  sim::Transcript transcript(output);
  const sim::Bytes query = sim::frame(0x1000);
  transcript.add({1us, sim::Speaker::Client, sim::Bytes(query.begin(), query.begin() + 4)});
  transcript.add({2us, sim::Speaker::Receiver, sim::frame(0x8600, hex("01"))});
  transcript.add({3us, sim::Speaker::Client, sim::Bytes(query.begin() + 4, query.end())});
  EXPECT_EQ(
      output.str(),
      "    0.000002  receiver  86     Position update rate of GNSS system: 01 (update rate 1 Hz)\n"
      "    0.000003  client    10     Query the position update rate of GNSS system\n");
}

TEST(Transcript, WritesDownWhatStaysIncomplete) {
  std::ostringstream output;
  sim::Transcript transcript(output);
  transcript.add({1s, sim::Speaker::Receiver, hex("A0 A1 00 05 01")});
  EXPECT_TRUE(transcript.isMidItem());
  transcript.reach(2s - 1us);
  EXPECT_EQ(output.str(), "");
  transcript.reach(2s);
  EXPECT_EQ(output.str(), "    1.000000  receiver  bad    cut short: A0 A1 00 05 01\n");
  EXPECT_FALSE(transcript.isMidItem());
}

}  // namespace
}  // namespace orb::test
