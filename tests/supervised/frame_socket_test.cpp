#include "supervised/frame_socket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <thread>

#include "base/owned_descriptor.h"
#include "supervised/wire.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

Deadline in(std::chrono::milliseconds time) { return std::chrono::steady_clock::now() + time; }

class FrameSocket : public testing::Test {
 protected:
  FrameSocket() {
    int ends[2];
    checked(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), "socketpair");
    one_ = OwnedDescriptor(ends[0]);
    other_ = OwnedDescriptor(ends[1]);
  }

  OwnedDescriptor one_;
  OwnedDescriptor other_;
};

TEST_F(FrameSocket, CarriesFramesOfAnySize) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{3} << 20}) {
    const std::string sent(size, 'x');
    std::thread sender([&] { sendFrame(one_.get(), sent, kNoDeadline); });
    std::string received = "before";
    EXPECT_EQ(receiveFrame(other_.get(), received, kNoDeadline), Transfer::Done);
    sender.join();
    EXPECT_EQ(received, sent);
  }
}

TEST_F(FrameSocket, IsLateWhereNothingComes) {
  std::string received;
  EXPECT_EQ(receiveFrame(one_.get(), received, in(20ms)), Transfer::Late);
}

TEST_F(FrameSocket, IsLateWhereAFrameStops) {
  const std::uint32_t length = 100;
  ASSERT_EQ(::write(other_.get(), &length, sizeof length), ssize_t{sizeof length});
  std::string received;
  EXPECT_EQ(receiveFrame(one_.get(), received, in(20ms)), Transfer::Late);
}

TEST_F(FrameSocket, IsLateWhereNobodyReads) {
  EXPECT_EQ(sendFrame(one_.get(), std::string(std::size_t{8} << 20, 'x'), in(20ms)),
            Transfer::Late);
}

TEST_F(FrameSocket, TellsThatTheOtherEndIsClosed) {
  other_.reset();
  std::string received;
  EXPECT_EQ(receiveFrame(one_.get(), received, kNoDeadline), Transfer::Closed);
  EXPECT_EQ(sendFrame(one_.get(), "text", kNoDeadline), Transfer::Closed);
}

TEST_F(FrameSocket, TakesNoFrameLongerThanTheLongest) {
  const auto length = static_cast<std::uint32_t>(kLongestFrame + 1);
  ASSERT_EQ(::write(other_.get(), &length, sizeof length), ssize_t{sizeof length});
  std::string received;
  EXPECT_EQ(receiveFrame(one_.get(), received, kNoDeadline), Transfer::Closed);
}

}  // namespace
}  // namespace orb::test
