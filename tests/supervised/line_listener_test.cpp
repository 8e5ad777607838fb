#include "supervised/line_listener.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

using State = LineReport::State;

constexpr std::string_view kSentence = "$GNGGA,,,,,,0,,,,,,,,*78\r\n";
const std::string kPacketText("\xA0\xA1\0\x02\x83\x02\x81\r\n", 9);

struct Heard {
  const char* name;
  std::string bytes;
  State state;
};

const Heard kHeard[] = {
    {"Nothing", "", State::Silent},
    {"Sentence", std::string(kSentence), State::Text},
    {"CutSentence", "GA,123519,4807.038,N,01131.000,E,1,0", State::Text},
    {"Packet", kPacketText, State::Packets},
    {"PacketAmongText", std::string(kSentence) + kPacketText, State::Packets},
    {"PacketWithWrongChecksum", std::string("\xA0\xA1\0\x02\x83\x02\x82\r\n", 9), State::Garbage},
    {"CutPacket", kPacketText.substr(0, 6), State::Garbage},
    {"WrongSpeed", "\xE6\x86\x98\x00\x7E\xF8\x9E", State::Garbage},
};

class LineListener : public testing::TestWithParam<Heard> {};

TEST_P(LineListener, TellsWhatIsHeard) {
  EXPECT_EQ(classify(GetParam().bytes).state, GetParam().state);
}

INSTANTIATE_TEST_SUITE_P(Each, LineListener, testing::ValuesIn(kHeard),
                         [](const auto& each) { return each.param.name; });

TEST(LineListener, CountsWhatIsWhole) {
  const LineReport report =
      classify(std::string(kSentence) + kPacketText + std::string(kSentence) + kPacketText + "$GN");
  EXPECT_EQ(report.sentences, 2U);
  EXPECT_EQ(report.packets, 2U);
}

TEST(LineListener, SaysWhyTheDeviceCannotBeOpened) {
  const LineReport report = listenTo("/nonexistent/tty", std::chrono::milliseconds(1));
  EXPECT_EQ(report.state, State::NotThere);
  EXPECT_EQ(report.problem, "/nonexistent/tty: No such file or directory");
}

}  // namespace
}  // namespace orb::test
