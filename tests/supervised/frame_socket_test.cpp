#include "supervised/frame_socket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <stdexcept>
#include <thread>

#include "base/owned_descriptor.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

Deadline in(std::chrono::milliseconds time) { return std::chrono::steady_clock::now() + time; }

class FrameSocket : public testing::Test {
 protected:
  FrameSocket() {
    int ends[2];
    checked(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), "socketpair");
    one_ = OwnedDescriptor(ends[0]);
    other_ = OwnedDescriptor(ends[1]);
  }

  OwnedDescriptor one_;
  OwnedDescriptor other_;
};

TEST_F(FrameSocket, CarriesFramesOneByOne) {
  const std::string sent[] = {"x", std::string(100'000, 'y'), "z"};
  for (const std::string& bytes : sent) {
    EXPECT_EQ(sendFrame(one_.get(), bytes, kNoDeadline), Transfer::Done);
  }
  for (const std::string& bytes : sent) {
    std::string received = "before";
    EXPECT_EQ(receiveFrame(other_.get(), received, kNoDeadline), Transfer::Done);
    EXPECT_EQ(received, bytes);
  }
}

TEST_F(FrameSocket, ReceivesWhatComesWhileAwakeOrAsleep) {
  for (const std::chrono::microseconds awake : {0us, 60'000'000us}) {
    std::string received;
    std::thread receiver([&] { receiveFrame(one_.get(), received, kNoDeadline, awake); });
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(sendFrame(other_.get(), "text", kNoDeadline), Transfer::Done);
    receiver.join();
    EXPECT_EQ(received, "text");
  }
}

TEST_F(FrameSocket, IsLateWhereNothingComes) {
  std::string received;
  EXPECT_EQ(receiveFrame(one_.get(), received, in(20ms)), Transfer::Late);
  EXPECT_EQ(receiveFrame(one_.get(), received, in(20ms), 1ms), Transfer::Late);
}

TEST_F(FrameSocket, IsLateWhereNobodyReads) {
  Transfer sent = Transfer::Done;
  for (int frames = 0; sent == Transfer::Done && frames < 1000; ++frames) {
    sent = sendFrame(one_.get(), std::string(10'000, 'x'), in(20ms));
  }
  EXPECT_EQ(sent, Transfer::Late);
}

TEST_F(FrameSocket, TellsThatTheOtherEndIsClosed) {
  other_.reset();
  std::string received;
  EXPECT_EQ(receiveFrame(one_.get(), received, kNoDeadline), Transfer::Closed);
  EXPECT_EQ(sendFrame(one_.get(), "text", kNoDeadline), Transfer::Closed);
}

TEST_F(FrameSocket, RefusesAFrameThatIsTooLong) {
  const std::string bytes(std::size_t{8} << 20, 'x');
  EXPECT_THROW(sendFrame(one_.get(), bytes, kNoDeadline), std::length_error);
}

}  // namespace
}  // namespace orb::test
