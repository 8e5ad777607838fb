#include "orb-sim/pty_line.h"

#include <gtest/gtest.h>
#include <termios.h>

#include <numeric>
#include <thread>

#include "device/echo_device.h"
#include "line_client.h"
#include "orb-sim/receiver.h"
#include "orb-sim/script.h"
#include "rate_query.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

const sim::Bytes kSetRate = sim::frame(0x0E00, {20, 0});

/// A quiet receiver with a script before it, on a line with a client.
class LineWithAClient : public testing::Test {
 protected:
  LineWithAClient() {
    receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::None; });
  }

  sim::Bytes answerTo(const sim::Bytes& packet, std::size_t length) {
    client_.write(packet);
    return client_.read(length);
  }

  sim::Receiver receiver_;
  sim::Script script_{receiver_};
  sim::PtyLine line_{script_};
  TtyClient client_{line_.path()};
};

TEST(PtyLine, CarriesEveryByteBothWays) {
  EchoDevice echo;
  sim::PtyLine line(echo);
  TtyClient client(line.path());
  sim::Bytes all(256);
  std::iota(all.begin(), all.end(), std::uint8_t{0});
  client.write(all);
  EXPECT_EQ(client.read(all.size()), all);
  EXPECT_EQ(line.received(), all);
}

TEST(PtyLine, IsRawFromTheStart) {
  EchoDevice echo;
  const sim::PtyLine line(echo);
  const TtyClient client(line.path());
  termios settings{};
  ASSERT_EQ(tcgetattr(client.descriptor(), &settings), 0);
  EXPECT_EQ(settings.c_lflag & (ECHO | ICANON | ISIG | IEXTEN), 0U);
  EXPECT_EQ(settings.c_oflag & OPOST, 0U);
  EXPECT_EQ(settings.c_iflag & (ICRNL | INLCR | IGNCR | IXON | ISTRIP), 0U);
  EXPECT_EQ(settings.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
}

TEST_F(LineWithAClient, AnswersTheNextClientOnTheSamePath) {
  for (int i = 0; i < 20; ++i) {
    TtyClient next(line_.path());
    next.write(kRateQuery);
    EXPECT_EQ(next.read(kRateAnswer.size()), kRateAnswer);
  }
}

TEST_F(LineWithAClient, HasShownTheDeviceWhatAWaitReports) {
  for (std::uint8_t rate = 1; rate <= 50; ++rate) {
    client_.write(sim::frame(0x0E00, {rate, 0}));
    ASSERT_TRUE(line_.waitForMessage(0x0E00, rate));
    EXPECT_EQ(receiver_.state().updateRate, rate);
  }
}

TEST_F(LineWithAClient, WaitsForBytesAndMessages) {
  client_.write(hex("01 02 03") + kSetRate);
  EXPECT_TRUE(line_.waitForBytes(3 + kSetRate.size()));
  EXPECT_TRUE(line_.waitForMessage(0x0E00));
  EXPECT_EQ(line_.received(), hex("01 02 03") + kSetRate);
  EXPECT_FALSE(line_.waitForBytes(3 + kSetRate.size() + 1, 20ms));
  EXPECT_FALSE(line_.waitForMessage(0x0E00, 2, 20ms));
  EXPECT_FALSE(line_.waitForMessage(0x1000, 1, 20ms));
}

TEST_F(LineWithAClient, ForgetsWhatItReceivedWhenTold) {
  client_.write(kSetRate);
  ASSERT_TRUE(line_.waitForMessage(0x0E00));
  line_.forgetReceived();
  EXPECT_EQ(line_.received(), sim::Bytes{});
  EXPECT_FALSE(line_.waitForMessage(0x0E00, 1, 0ms));
}

// Here the line wakes up often, and the query falls between two milliseconds of its device's time.
TEST_F(LineWithAClient, DelaysAnAnswerForAtLeastTheTimeAsked) {
  script_.on(0x1000).after(10ms);
  for (int i = 0; i < 10; ++i) {
    std::this_thread::sleep_for(700us);
    const auto start = sim::PtyLine::Clock::now();
    client_.write(kRateQuery);
    sim::Bytes heard;
    while (heard.size() < kRateAnswer.size()) {
      line_.send({});
      sim::append(heard, client_.readSome(0ms));
    }
    EXPECT_GE(sim::PtyLine::Clock::now() - start, 10ms);
    EXPECT_EQ(heard, kRateAnswer);
  }
}

TEST_F(LineWithAClient, SendsNothingIntoAnAnswer) {
  const std::string answer(kRateAnswer.begin(), kRateAnswer.end());
  for (int i = 0; i < 50; ++i) {
    client_.write(kRateQuery);
    std::string heard;
    while (heard.find(answer) == std::string::npos) {
      line_.send(hex("55 55"));
      const sim::Bytes some = client_.readSome();
      ASSERT_FALSE(some.empty());
      heard.append(some.begin(), some.end());
      ASSERT_LT(heard.size(), 100000U);
    }
  }
}

TEST_F(LineWithAClient, CarriesTheOutputOfAReceiverThatIsChangedFromOutside) {
  EXPECT_EQ(answerTo(kRateQuery, kRateAnswer.size()), kRateAnswer);
  receiver_.change([](sim::State& state) {
    state.outputType = sim::OutputType::Binary;
    state.updateRate = 50;
  });
  sim::FrameReader reader;
  const std::vector<sim::Frame> frames = reader.push(client_.read(3 * 66));
  ASSERT_EQ(frames.size(), 3U);
  EXPECT_EQ(frames[2].id(), 0xA800);
}

}  // namespace
}  // namespace orb::test
