#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <numeric>
#include <optional>
#include <thread>

#include "device/echo_device.h"
#include "line_client.h"
#include "orb-sim/pty_line.h"
#include "orb-sim/receiver.h"
#include "orb-sim/script.h"
#include "processor_time.h"
#include "rate_query.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

/// Speaks one numbered block at every tick, whether anybody listens or not.
class Flood : public sim::Device {
 public:
  static constexpr std::size_t kBlock = 1000;

  sim::Bytes receive(const sim::Bytes&) override { return {}; }
  sim::Bytes tick(std::chrono::milliseconds) override {
    return sim::Bytes(kBlock, static_cast<std::uint8_t>(ticks_++ & 0x7F));
  }
  std::chrono::milliseconds untilNextOutput() const override { return 1ms; }

  int ticks() const { return ticks_; }

 private:
  std::atomic<int> ticks_{0};
};

TEST(PtyLine, TakesNextToNoProcessorWhileItIsIdleAndAfterItsClientHasHungUp) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.outputType = sim::OutputType::None; });
  const sim::PtyLine line(receiver);
  {
    TtyClient client(line.path());
    client.write(kRateQuery);
    EXPECT_EQ(client.read(kRateAnswer.size()), kRateAnswer);
  }
  EXPECT_FALSE(spins());

  TtyClient client(line.path());
  client.write(kRateQuery);
  EXPECT_EQ(client.read(kRateAnswer.size()), kRateAnswer);
}

TEST(PtyLine, TakesNextToNoProcessorWhileItsClientDoesNotRead) {
  sim::Script silent;
  sim::PtyLine line(silent);
  const TtyClient client(line.path());
  line.send(sim::Bytes(1000000, 'x'));
  std::this_thread::sleep_for(100ms);
  EXPECT_FALSE(spins());
}

TEST(PtyLine, ReadsNoMoreFromAClientThatDoesNotReadAndSaysSoOnce) {
  testing::internal::CaptureStderr();
  EchoDevice echo;
  const sim::PtyLine line(echo);
  TtyClient client(line.path());
  const std::size_t taken = client.flood();
  EXPECT_LT(taken, 2U << 20);
  EXPECT_FALSE(spins());
  EXPECT_EQ(client.read(taken).size(), taken) << "nothing is lost";
  EXPECT_EQ(client.read(client.flood(), 500ms).back(), 0x5A);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "orb-sim: a client sends without reading; no more is taken from it until it reads\n");
}

TEST(PtyLine, DeliversALongAnswerWholeToASlowReader) {
  sim::Script script;
  sim::PtyLine line(script);
  TtyClient client(line.path());
  sim::Bytes answer(300000);
  std::iota(answer.begin(), answer.end(), std::uint8_t{0});
  script.on(0x1000).answer(answer);
  client.write(kRateQuery);
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(client.read(answer.size()), answer);
}

TEST(PtyLine, LosesWholeOutputsWhileTheTtyIsFull) {
  Flood flood;
  sim::PtyLine line(flood);
  TtyClient client(line.path());
  while (flood.ticks() < 300) {
    std::this_thread::sleep_for(1ms);
  }
  line.send({0xFF});
  const sim::Bytes heard = client.readUntil({0xFF});
  ASSERT_TRUE(holds(heard, {0xFF}));
  const auto bytes =
      static_cast<std::size_t>(std::find(heard.begin(), heard.end(), 0xFF) - heard.begin());
  EXPECT_EQ(bytes % Flood::kBlock, 0U);
  EXPECT_LT(bytes, 300 * Flood::kBlock);
}

TEST(PtyLine, EndsAtOnceAlsoWithAnAnswerOnItsWay) {
  sim::Receiver receiver;
  sim::Script script(receiver);
  script.on(0x1000).after(1h);
  std::optional<sim::PtyLine> line(std::in_place, script);
  TtyClient client(line->path());
  client.write(kRateQuery);
  ASSERT_TRUE(line->waitForMessage(0x1000));
  const auto start = sim::PtyLine::Clock::now();
  line.reset();
  EXPECT_LT(sim::PtyLine::Clock::now() - start, 2s);
}

TEST(PtyLine, TakesNoSignalOfTheProgram) {
  sigset_t wanted;
  sigset_t before;
  sigemptyset(&wanted);
  sigaddset(&wanted, SIGUSR1);
  sim::Receiver receiver;
  const sim::PtyLine line(receiver);
  ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &wanted, &before), 0);
  // Any thread of the program that does not block the signal would now die of it.
  ASSERT_EQ(::kill(::getpid(), SIGUSR1), 0);
  std::this_thread::sleep_for(100ms);
  int taken = 0;
  EXPECT_EQ(sigwait(&wanted, &taken), 0);
  EXPECT_EQ(taken, SIGUSR1);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(PtyLine, CanBeUsedFromSeveralThreadsAtOnce) {
  sim::Receiver receiver;
  sim::Script script(receiver);
  sim::PtyLine line(script);
  std::atomic<bool> over{false};
  const auto whileItRuns = [&](auto action) {
    return std::thread([&over, action] {
      while (!over) {
        action();
        std::this_thread::sleep_for(100us);
      }
    });
  };
  std::thread threads[] = {
      whileItRuns([&] { line.send({'x'}); }),
      whileItRuns([&] {
        script.on(0x7000).nothing();
        script.clear();
      }),
      whileItRuns([&] {
        receiver.change([](sim::State& state) { ++state.navigation.satellites; });
        EXPECT_LE(receiver.state().updateRate, 200);
      }),
      whileItRuns([&] { EXPECT_LE(line.received().size(), 200 * 10U); }),
  };
  TtyClient client(line.path());
  for (std::uint8_t rate = 1; rate <= 200; ++rate) {
    client.write(sim::frame(0x0E00, {rate, 0}));
    EXPECT_TRUE(line.waitForMessage(0x0E00, rate));
    client.readSome(0ms);
  }
  over = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(receiver.state().updateRate, 200);
}

}  // namespace
}  // namespace orb::test
