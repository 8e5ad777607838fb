#include "orb-sim/tcp_line.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>
#include <system_error>

#include "device/echo_device.h"
#include "line_client.h"
#include "processor_time.h"
#include "rate_query.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

/// Speaks at every tick, whether anybody listens or not.
class Chatterbox : public sim::Device {
 public:
  explicit Chatterbox(std::chrono::milliseconds interval) : interval_(interval) {}

  sim::Bytes receive(const sim::Bytes&) override { return {}; }
  sim::Bytes tick(std::chrono::milliseconds) override { return sim::Bytes(100000, 0x11); }
  std::chrono::milliseconds untilNextOutput() const override { return interval_; }

 private:
  const std::chrono::milliseconds interval_;
};

/// A line to a device that says what it hears.
class TcpLineTo : public testing::Test {
 protected:
  EchoDevice echo_;
  sim::TcpLine line_{echo_};
};

TEST_F(TcpLineTo, AClientCarriesEveryByteBothWays) {
  TcpClient client(line_.port());
  sim::Bytes all(256);
  std::iota(all.begin(), all.end(), std::uint8_t{0});
  EXPECT_EQ(client.echoOf(all), all);
}

TEST_F(TcpLineTo, AClientIsTheOnlyOneUntilItLeaves) {
  std::optional<TcpClient> first(std::in_place, line_.port());
  EXPECT_EQ(first->echoOf(hex("01")), hex("01"));
  TcpClient second(line_.port());
  second.write(hex("02"));
  EXPECT_EQ(second.read(1, 50ms), sim::Bytes{});
  EXPECT_EQ(first->echoOf(hex("03")), hex("03"));
  first.reset();
  EXPECT_EQ(second.read(1), hex("02"));
}

TEST_F(TcpLineTo, AClientThatDoesNotReadTakesNoMoreFromItAndThenServesTheNext) {
  testing::internal::CaptureStderr();
  {
    TcpClient client(line_.port());
    EXPECT_LT(client.flood(), std::size_t{32} << 20) << "the sockets' own buffers are large";
    EXPECT_FALSE(spins());
  }
  TcpClient next(line_.port());
  EXPECT_EQ(next.echoOf(hex("01")), hex("01"));
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST_F(TcpLineTo, OneClientAfterAnotherServesEach) {
  for (std::uint8_t i = 0; i < 50; ++i) {
    TcpClient client(line_.port());
    if (i % 2 == 1) {
      client.resetWhenClosed();
    }
    ASSERT_EQ(client.echoOf({i}), sim::Bytes{i});
  }
}

TEST_F(TcpLineTo, AClientEndsWithTheLastByteWhenTheDeviceDropsIt) {
  TcpClient client(line_.port());
  EXPECT_EQ(client.echoOf({1, 2, 3, EchoDevice::kDrop}), (sim::Bytes{1, 2, 3, EchoDevice::kDrop}));
  EXPECT_TRUE(client.isAtEnd());
  TcpClient next(line_.port());
  EXPECT_EQ(next.echoOf(hex("04")), hex("04"));
  echo_.drop();
  EXPECT_TRUE(next.isAtEnd()) << "of the device's own accord";
}

TEST_F(TcpLineTo, NobodyOutlivesAHangUp) {
  echo_.drop();
  TcpClient client(line_.port());
  // The hang-up may fall on this client or come before it.
  if (client.echoOf(hex("01")).empty()) {
    TcpClient next(line_.port());
    EXPECT_EQ(next.echoOf(hex("01")), hex("01"));
  }
}

TEST_F(TcpLineTo, NobodyAndThenAClientAndThenNobodyDoesNotSpin) {
  EXPECT_FALSE(spins());
  {
    TcpClient client(line_.port());
    EXPECT_EQ(client.echoOf(hex("01")), hex("01"));
    const TcpClient waiting(line_.port());
    EXPECT_FALSE(spins());
  }
  EXPECT_FALSE(spins());
}

TEST(TcpLine, TakesAFreePortOfItsOwnOrTheOneThatItIsGiven) {
  EchoDevice device;
  EchoDevice another;
  std::uint16_t port = 0;
  {
    const sim::TcpLine one(device);
    const sim::TcpLine other(another);
    EXPECT_NE(one.port(), 0);
    EXPECT_NE(one.port(), other.port());
    EXPECT_THROW(sim::TcpLine(device, one.port()), std::system_error);
    port = one.port();
    // The end that closes a connection first keeps the port in use for a while.
    TcpClient client(port);
    EXPECT_EQ(client.echoOf({EchoDevice::kDrop}), sim::Bytes{EchoDevice::kDrop});
    EXPECT_TRUE(client.isAtEnd());
  }
  const sim::TcpLine again(device, port);
  EXPECT_EQ(again.port(), port);
}

// A write to a connection that the client has closed would end the process with SIGPIPE.
TEST(TcpLine, OutlivesClientsThatLeaveInTheMiddleOfItsOutput) {
  Chatterbox device(1ms);
  sim::TcpLine line(device);
  for (int i = 0; i < 20; ++i) {
    TcpClient client(line.port());
    EXPECT_EQ(client.read(10), sim::Bytes(10, 0x11));
  }
}

TEST(TcpLine, DoesNotSpinForAClientThatDoesNotRead) {
  Chatterbox device(50ms);
  sim::TcpLine line(device);
  TcpClient client(line.port());
  EXPECT_EQ(client.read(10).size(), 10U);
  EXPECT_FALSE(spins());
}

}  // namespace
}  // namespace orb::test
