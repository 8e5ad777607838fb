#include "orb-sim/tcp_line.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>
#include <system_error>

#include "dropping_device.h"
#include "hex.h"
#include "orb-sim/frame.h"
#include "orb-sim/receiver.h"
#include "processor_time.h"
#include "tcp_client.h"

namespace orb::sim::test {
namespace {

using namespace std::chrono_literals;

const Bytes kRateQuery = frame(0x1000);
const Bytes kRateAnswer = acknowledge(0x1000) + frame(0x8600, {1});

/// Speaks at every tick, whether anybody listens or not.
class Chatterbox : public Device {
 public:
  Bytes receive(const Bytes&) override { return {}; }
  Bytes tick(std::chrono::milliseconds) override { return Bytes(100000, 0x11); }
  std::chrono::milliseconds untilNextOutput() const override { return 1ms; }
};

/// A line to a device that says what it hears.
class TcpLineTo : public testing::Test {
 protected:
  Bytes echoOf(TcpClient& client, const Bytes& bytes) {
    client.write(bytes);
    return client.read(bytes.size());
  }

  DroppingDevice echo_;
  TcpLine line_{echo_};
};

TEST_F(TcpLineTo, AClientCarriesEveryByteBothWays) {
  TcpClient client(line_.port());
  Bytes all(256);
  std::iota(all.begin(), all.end(), std::uint8_t{0});
  all.erase(all.begin() + DroppingDevice::kDrop);
  EXPECT_EQ(echoOf(client, all), all);
}

TEST_F(TcpLineTo, AClientIsTheOnlyOneUntilItLeaves) {
  std::optional<TcpClient> first(std::in_place, line_.port());
  EXPECT_EQ(echoOf(*first, hex("01")), hex("01"));
  TcpClient second(line_.port());
  second.write(hex("02"));
  EXPECT_EQ(second.read(1, 50ms), Bytes{});
  EXPECT_EQ(echoOf(*first, hex("03")), hex("03"));
  first.reset();
  EXPECT_EQ(second.read(1), hex("02"));
}

TEST_F(TcpLineTo, OneClientAfterAnotherServesEach) {
  for (std::uint8_t i = 0; i < 50; ++i) {
    TcpClient client(line_.port());
    if (i % 2 == 1) {
      client.resetWhenClosed();
    }
    ASSERT_EQ(echoOf(client, {i}), Bytes{i});
  }
}

TEST_F(TcpLineTo, AClientEndsWithTheLastByteWhenTheDeviceDropsIt) {
  TcpClient client(line_.port());
  EXPECT_EQ(echoOf(client, {1, 2, 3, DroppingDevice::kDrop}),
            (Bytes{1, 2, 3, DroppingDevice::kDrop}));
  EXPECT_TRUE(client.isAtEnd());
  TcpClient next(line_.port());
  EXPECT_EQ(echoOf(next, hex("04")), hex("04"));
}

TEST_F(TcpLineTo, AClientEndsAlsoWhenTheDeviceDropsItOfItsOwnAccord) {
  TcpClient client(line_.port());
  EXPECT_EQ(echoOf(client, hex("01")), hex("01"));
  echo_.drop();
  EXPECT_TRUE(client.isAtEnd());
}

TEST_F(TcpLineTo, NobodyOutlivesAHangUp) {
  echo_.drop();
  TcpClient client(line_.port());
  // The hang-up may fall on this client or come before it.
  if (echoOf(client, hex("01")).empty()) {
    TcpClient next(line_.port());
    EXPECT_EQ(echoOf(next, hex("01")), hex("01"));
  }
}

TEST_F(TcpLineTo, NobodyAndThenAClientAndThenNobodyDoesNotSpin) {
  EXPECT_FALSE(spins());
  {
    TcpClient client(line_.port());
    EXPECT_EQ(echoOf(client, hex("01")), hex("01"));
    const TcpClient waiting(line_.port());
    EXPECT_FALSE(spins());
  }
  EXPECT_FALSE(spins());
}

TEST(TcpLine, TakesAFreePortOfItsOwnOrTheOneThatItIsGiven) {
  DroppingDevice device;
  std::uint16_t port = 0;
  {
    const TcpLine one(device);
    const TcpLine other(device);
    EXPECT_NE(one.port(), 0);
    EXPECT_NE(one.port(), other.port());
    EXPECT_THROW(TcpLine(device, one.port()), std::system_error);
    port = one.port();
    const TcpClient client(port);
  }
  const TcpLine again(device, port);
  EXPECT_EQ(again.port(), port);
}

TEST(TcpLine, AnswersLikeTheReceiver) {
  Receiver receiver;
  TcpLine line(receiver);
  TcpClient client(line.port());
  client.write(kRateQuery);
  EXPECT_EQ(client.read(kRateAnswer.size()), kRateAnswer);
}

// A write to a connection that the client has closed would end the process with SIGPIPE.
TEST(TcpLine, OutlivesClientsThatLeaveInTheMiddleOfItsOutput) {
  Chatterbox device;
  TcpLine line(device);
  for (int i = 0; i < 20; ++i) {
    TcpClient client(line.port());
    EXPECT_EQ(client.read(10), Bytes(10, 0x11));
  }
}

TEST(TcpLine, DoesNotSpinForAClientThatDoesNotRead) {
  class Loud : public Chatterbox {
   public:
    std::chrono::milliseconds untilNextOutput() const override { return 50ms; }
  };
  Loud device;
  TcpLine line(device);
  TcpClient client(line.port());
  EXPECT_EQ(client.read(10).size(), 10U);
  EXPECT_FALSE(spins());
}

}  // namespace
}  // namespace orb::sim::test
