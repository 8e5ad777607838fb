// What waiting for a reply costs, in looks and wake-ups; sleeping takes no real time here.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>

#include "delayed_reply.h"
#include "support/allocations.h"
#include "support/captured_output.h"
#include "support/channel_values.h"
#include "support/pty.h"
#include "support/replacement.h"
#include "support/wall_clock.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

/// How often a poll, a select or the like, or a reading of a clock other than time() was asked for.
int otherCalls = 0;

/// A call that nothing here needs.
int refuse() {
  ++otherCalls;
  errno = ENOSYS;
  return -1;
}

/// A line on which the reply comes when the waiting thread has slept for long enough.
class Waiting : public testing::Test {
 protected:
  /// Waits for the reply; returns how late it was seen.
  nanoseconds lateness(nanoseconds delay) {
    orbIO channel(pty_.path());
    const SimulatedSleep sleep;
    DelayedReply reply(calls_, sleep, {kAck});
    reply.comeAfter(0, delay);
    otherCalls = 0;
    EXPECT_EQ(receive(channel, 0x8300), kAck);
    otherCalls_ = otherCalls;
    looks_ = reply.looks();
    wakeUps_ = sleep.sleeps();
    yields_ = sleep.yields();
    return sleep.slept() - delay;
  }

  Pty pty_;
  TtyCalls calls_{pty_.path()};
  WallClock clock_;
  int looks_ = 0;
  int wakeUps_ = 0;
  int yields_ = 0;
  int otherCalls_ = 0;
};

TEST_F(Waiting, SeldomWakesUp) {
  lateness(20ms);
  EXPECT_LE(wakeUps_, 25);
  lateness(1s);
  EXPECT_LE(wakeUps_, 145);
  EXPECT_GE(wakeUps_, 125) << "no sleep is longer than 15 ms";
  const int inTheFirstSecond = wakeUps_;
  lateness(3s);
  EXPECT_LE(wakeUps_ - inTheFirstSecond, 140) << "15 ms each";
}

// The reply of a far end on this machine comes while the looks follow each other at once.
TEST_F(Waiting, GivesWaySixtyFourTimesAndThenSleepsBetweenLooks) {
  for (const nanoseconds delay : {nanoseconds(1), nanoseconds(20ms), nanoseconds(1s)}) {
    lateness(delay);
    EXPECT_EQ(yields_, 64);
    EXPECT_EQ(looks_, 64 + wakeUps_ + 1) << "one before each pause, and the last";
  }
}

TEST_F(Waiting, SeesAReplyThatIsNearlyThereWithoutSleeping) {
  lateness(0ns);
  EXPECT_EQ(looks_, 1);
  EXPECT_EQ(wakeUps_, 0);
}

TEST_F(Waiting, SeesAReplyLateByASmallPartOfItsDelay) {
  for (nanoseconds delay = 1us; delay < 1s; delay += delay / 16 + 1us) {
    const nanoseconds longest = std::clamp<nanoseconds>(delay / 30, 4ms, 15ms);
    const nanoseconds most = std::min(350us + delay / 12, longest);
    EXPECT_LE(lateness(delay), most) << delay.count() << " ns";
  }
}

TEST_F(Waiting, NeitherPollsNorLooksAtTheClock) {
  clock_.passSeconds({0});
  lateness(3s);
  EXPECT_EQ(otherCalls_, 0);
  EXPECT_EQ(clock_.readings(), 1) << "when the wait starts";
}

// Text that comes in byte by byte, as it does at 115200 baud, while no reply comes.
TEST_F(Waiting, CostsNoMoreOnALineThatIsNeverQuiet) {
  constexpr nanoseconds kTimeOfByte = nanoseconds(1s) / 11520;
  const CapturedOutput standardError(STDERR_FILENO);
  orbIO channel(pty_.path());
  const SimulatedSleep sleep;
  unsigned long taken = 0;
  int rounds = 0;
  calls_.read = [&](int, void* buffer, std::size_t size) -> ssize_t {
    constexpr int kTooManyLooks = 5000;
    if (++looks_ > kTooManyLooks) {
      throw std::runtime_error("the wait spins");
    }
    const auto sent = static_cast<unsigned long>(sleep.slept() / kTimeOfByte);
    const unsigned long count = std::min<unsigned long>(sent - taken, size);
    if (count == 0) {
      errno = EAGAIN;
      return -1;
    }
    std::memset(buffer, '$', count);
    taken += count;
    ++rounds;
    if (sleep.slept() >= 5s) {
      clock_.passSeconds({5});
    }
    return static_cast<ssize_t>(count);
  };
  const ReleasedBlocks released;
  EXPECT_EQ(receive(channel, 0x8300, 5), kNothing);
  EXPECT_LE(sleep.sleeps(), 145 + 4 * 68);
  EXPECT_GT(rounds, 300);
  EXPECT_LT(released.count(), 5u) << "a round that finds nothing allocates nothing";
}

}  // namespace
}  // namespace orb::test

ORB_TEST_REPLACEMENT int clock_gettime(clockid_t clock, timespec* now) noexcept {
  ++orb::test::otherCalls;
  return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
}

ORB_TEST_REPLACEMENT int poll(pollfd*, nfds_t, int) { return orb::test::refuse(); }

ORB_TEST_REPLACEMENT int ppoll(pollfd*, nfds_t, const timespec*, const sigset_t*) {
  return orb::test::refuse();
}

ORB_TEST_REPLACEMENT int select(int, fd_set*, fd_set*, fd_set*, timeval*) {
  return orb::test::refuse();
}

ORB_TEST_REPLACEMENT int epoll_wait(int, epoll_event*, int, int) { return orb::test::refuse(); }
