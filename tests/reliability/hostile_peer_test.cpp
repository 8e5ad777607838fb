// Replies of every length and of the worst values, and lines that never fall quiet.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <termios.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

#include "operations/operations.h"
#include "orb-sim/frame.h"
#include "orb-sim/path_map.h"
#include "support/allocations.h"
#include "support/captured_output.h"
#include "support/scripted_line.h"
#include "support/simulated_sleep.h"
#include "support/tty_calls.h"
#include "support/wall_clock.h"

namespace orb::test {
namespace {

constexpr std::size_t kLongestBody = 512;
constexpr std::size_t kHeaderLength = 4;
constexpr std::size_t kTrailerLength = 3;  // checksum and end bytes

/// What the bytes of a reply are: zeros, ones, numbers that are none, anything.
constexpr int kFillings = 4;
sim::Bytes body(std::size_t length, int filling) {
  constexpr std::array<std::uint8_t, 4> kNotANumber{0x7F, 0xF8, 0x7F, 0xF8};  // in 4 and in 8 bytes
  Numbers numbers(static_cast<unsigned int>(length));
  sim::Bytes bytes;
  for (std::size_t i = 0; i < length; ++i) {
    bytes.push_back(filling == 0   ? 0x00
                    : filling == 1 ? 0xFF
                    : filling == 2 ? kNotANumber[i % kNotANumber.size()]
                                   : numbers.byte());
  }
  return bytes;
}

/// The driver on a line that says what it is told; then whatever is awaited times out.
class HostilePeer : public testing::TestWithParam<Query> {
 protected:
  HostilePeer() {
    calls_.settingsFound = termios{};
    calls_.settingResult = 0;
    calls_.syncResult = 0;
  }

  /// What the query comes to, where the line says these bytes.
  std::string outcomeOf(const sim::Bytes& bytes) {
    ScriptedLine line(calls_, clock_);
    line.deliver(bytes);
    line.endInTimeOut();
    const Outcome outcome = GetParam().call(driver_);
    return shown(outcome.result, outcome.outputs);
  }

  static std::string shown(unsigned int result, const std::string& outputs) {
    return std::to_string(result) + " | " + outputs;
  }

  static std::string expected(const sim::Bytes& packet) {
    return shown(0, GetParam().decoded(Payload(sim::Bytes(packet.begin() + kHeaderLength,
                                                          packet.end() - kTrailerLength))));
  }

  const std::uint16_t reply_ = messageIn(GetParam().reply.packet);

 private:
  TtyCalls calls_{"/dev/null"};
  WallClock clock_;
  SimulatedSleep sleep_;
  Driver driver_;
};

// Nothing but the received bytes decides: not those of an earlier reply, nor what memory held.
TEST_P(HostilePeer, DecidesWithItsBytesAloneAtEveryLength) {
  int different = 0;
  {
    const CapturedOutput standardOutput(1);
    const CapturedOutput standardError(2);
    for (std::size_t length = 0; length <= kLongestBody; ++length) {
      for (int filling = 0; filling < kFillings; ++filling) {
        // With sanitizers, which take most of the time, one of them.
        if (ORB_IS_SANITIZED && length % kFillings != static_cast<std::size_t>(filling)) {
          continue;
        }
        const sim::Bytes packet = sim::frame(reply_, body(length, filling));
        different += outcomeOf(packet) != expected(packet) ? 1 : 0;
      }
    }
    std::fflush(stdout);
  }
  EXPECT_EQ(different, 0);
}

TEST_P(HostilePeer, IsNotBelievedWhereItsReplyIsLongerThanAnyThatIsKept) {
  constexpr std::size_t kIdLength = 2;
  sim::Bytes packet = sim::frame(
      reply_, body(std::numeric_limits<std::uint16_t>::max() - kIdLength, kFillings - 1));
  std::string outcome;
  {
    const CapturedOutput standardOutput(1);
    const CapturedOutput standardError(2);
    outcome = outcomeOf(packet);
    std::fflush(stdout);
  }
  EXPECT_EQ(outcome, shown(GetParam().noReply.result, GetParam().untouched));
}

INSTANTIATE_TEST_SUITE_P(Of, HostilePeer, testing::ValuesIn(everyOperation().queries),
                         [](const auto& info) { return info.param.name; });

std::chrono::microseconds processorTime() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto time = [](const timeval& part) {
    return std::chrono::seconds(part.tv_sec) + std::chrono::microseconds(part.tv_usec);
  };
  return time(usage.ru_utime) + time(usage.ru_stime);
}

/// A line that says one message over and over, in pieces of the size that is asked for.
class Flood {
 public:
  Flood(TtyCalls& calls, WallClock& clock, const sim::Bytes& message, std::size_t count)
      : message_(message), left_(message.size() * count) {
    calls.read = [this, &clock](int /*descriptor*/, void* buffer, std::size_t size) -> ssize_t {
      const std::size_t wanted = std::min(size, left_);
      for (std::size_t i = 0; i < wanted; ++i) {
        static_cast<std::uint8_t*>(buffer)[i] = message_[at_++ % message_.size()];
      }
      left_ -= wanted;
      mostBlocks_ = std::max(mostBlocks_, liveAllocations());
      if (wanted == 0) {  // it is over: a zero byte, and the time to wait is too
        clock.advance(std::chrono::hours{1});
        *static_cast<std::uint8_t*>(buffer) = 0;
        return 1;
      }
      return static_cast<ssize_t>(wanted);
    };
  }

  long mostBlocks() const { return mostBlocks_; }

 private:
  const sim::Bytes message_;
  std::size_t at_ = 0;
  std::size_t left_;
  long mostBlocks_ = 0;
};

class Floods : public testing::Test {
 public:
  /// What a query costs while so many of these messages come.
  struct Cost {
    unsigned int result = 0;
    long blocks = 0;
    std::chrono::microseconds processor{0};
  };
  static Cost costOf(const sim::Bytes& message, std::size_t count) {
    TtyCalls calls("/dev/null");
    calls.settingsFound = termios{};
    calls.settingResult = 0;
    calls.syncResult = 0;
    WallClock clock;
    const SimulatedSleep sleep;
    const CapturedOutput standardError(2);
    Driver driver;
    const Flood flood(calls, clock, message, count);
    const long before = liveAllocations();
    const std::chrono::microseconds start = processorTime();
    signed char minimum = 0;
    const unsigned int result = driver.getMinCNo(minimum);
    return {result, flood.mostBlocks() - before, processorTime() - start};
  }
};

constexpr std::size_t kFew = 1'000;
constexpr std::size_t kMany = 1'000'000;

/// Many cost no more memory than few, and of the processor what their bytes take.
void expectThatTheyAreNotKept(const sim::Bytes& message) {
  constexpr std::chrono::nanoseconds kOfAByte{1'000};
  const Floods::Cost few = Floods::costOf(message, kFew);
  const Floods::Cost many = Floods::costOf(message, kMany);
  EXPECT_EQ(many.result, 4U);
  EXPECT_EQ(many.blocks, few.blocks);
  EXPECT_LT(many.processor, kMany * message.size() * kOfAByte);
}

TEST_F(Floods, OfMessagesThatNobodyAwaitsAreNotKept) {
  expectThatTheyAreNotKept(sim::frame(0x6480, sim::Bytes(20)));
}

TEST_F(Floods, OfBeginningsOfMessagesAreNotKept) { expectThatTheyAreNotKept(sim::Bytes(20, 0xA0)); }

}  // namespace
}  // namespace orb::test
