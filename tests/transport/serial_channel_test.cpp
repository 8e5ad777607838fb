// Opening, setting up, sending and closing.

#include "orb-gnss/serial_channel.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>

#include "channel_fixture.h"
#include "support/allocations.h"
#include "support/captured_stream.h"
#include "support/closed_standard_streams.h"
#include "support/files.h"

namespace orb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Truly;
using testing::UnorderedElementsAre;

static_assert(std::is_abstract_v<ORBMessagingInterface>);
static_assert(!std::has_virtual_destructor_v<ORBMessagingInterface>);
static_assert(std::is_base_of_v<ORBMessagingInterface, orbIO>);
static_assert(!std::has_virtual_destructor_v<orbIO>);

constexpr const char* kMissingDevice = "/dev/no-such-tty";

constexpr TtyCall kOpen{"open", O_RDWR | O_NOCTTY | O_NONBLOCK | O_SYNC};
constexpr TtyCall kGet{"tcgetattr"};
constexpr TtyCall kFlush{"tcflush", TCIOFLUSH};
constexpr TtyCall kSet{"tcsetattr", TCSANOW};
constexpr TtyCall kClose{"close"};

class SerialChannel : public ChannelTest {
 protected:
  ORBMessage query_{0x6502, 2, nullptr};
  const Bytes queryPacket_{0xA0, 0xA1, 0x00, 0x02, 0x65, 0x02, 0x67, 0x0D, 0x0A};
};

bool isOpenDescriptor(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

// Opening

TEST_F(SerialChannel, OpensTheDefaultOrTheNamedDeviceAndMakesItRaw) {
  const orbIO channel;
  EXPECT_TRUE(channel.isOpen());
  EXPECT_THAT(calls_.made(), ElementsAre(kOpen, kGet, kFlush, kSet));
  calls_.forget();
  const orbIO named(pty_.path());
  EXPECT_TRUE(named.isOpen());
  EXPECT_THAT(calls_.made(), ElementsAre(kOpen, kGet, kFlush, kSet));
  EXPECT_EQ(standardError(), "");
}

TEST_F(SerialChannel, DropsWhatThePreviousExchangeLeft) {
  pty_.feed(kAck);
  const orbIO channel;
  EXPECT_EQ(pty_.waiting(), 0);
}

TEST_F(SerialChannel, IsNotOpenWhenTheDefaultDeviceIsMissing) {
  const TtyCalls missing(kMissingDevice);
  const orbIO channel;
  EXPECT_FALSE(channel.isOpen());
  EXPECT_EQ(standardError(), kCouldNotOpen);
  EXPECT_THAT(missing.made(), ElementsAre(kOpen)) << "there is nothing to set up or to close";
}

// The diagnostics name the default device, also where another one is missing.
TEST_F(SerialChannel, RefusesToWorkWithoutDeviceAndFlushesEachDiagnostic) {
  CapturedStream error(std::cerr);
  std::cerr << std::nounitbuf;
  orbIO channel(kMissingDevice);
  EXPECT_FALSE(channel.isOpen());
  EXPECT_EQ(error.flushedText(), kCouldNotOpen);
  EXPECT_EQ(channel.SendMessage(&query_), -1);
  EXPECT_EQ(error.flushedText(), std::string(kCouldNotOpen) + kCouldNotSend);
  EXPECT_EQ(channel.ReceiveMessage(0x8300, 1), nullptr);
  EXPECT_EQ(error.flushedText(), std::string(kCouldNotOpen) + kCouldNotSend + kCouldNotReceive);
  EXPECT_EQ(error.flushes(), 3);
}

// Setting up

TEST_F(SerialChannel, ClosesADeviceThatIsNoTty) {
  const TtyCalls calls("/dev/null");
  orbIO channel;
  EXPECT_FALSE(channel.isOpen());
  EXPECT_EQ(standardError(), "Can't get gps_tty settings\n");
  EXPECT_THAT(calls.made(), ElementsAre(kOpen, kGet, kClose));
  EXPECT_FALSE(isOpenDescriptor(calls.descriptor()));
}

TEST_F(SerialChannel, ClosesATtyThatCannotBeMadeRaw) {
  calls_.settingResult = -1;
  orbIO channel;
  EXPECT_FALSE(channel.isOpen());
  EXPECT_EQ(standardError(), "Can't configure tty_gps raw mode\n");
  EXPECT_THAT(calls_.made(), ElementsAre(kOpen, kGet, kFlush, kSet, kClose));
  EXPECT_FALSE(isOpenDescriptor(calls_.descriptor()));
}

TEST_F(SerialChannel, RefusesToWorkAfterAFailedSetUp) {
  calls_.settingResult = -1;
  orbIO channel;
  calls_.forget();
  EXPECT_EQ(channel.SendMessage(&query_), -1);
  EXPECT_EQ(receive(channel, 0x8300), kNothing);
  unsigned char byte = 0;
  EXPECT_EQ(channel.ReadFromUART(&byte, 1), 0);
  EXPECT_EQ(standardError(),
            std::string("Can't configure tty_gps raw mode\n") + kCouldNotSend + kCouldNotReceive);
  EXPECT_THAT(calls_.made(), IsEmpty());
}

TEST_F(SerialChannel, TurnsOffAllThatRawModeExcludes) {
  termios found{};
  found.c_iflag = IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF | IGNPAR;
  found.c_oflag = OPOST | ONLCR;
  found.c_lflag = ECHO | ECHONL | ICANON | ISIG | IEXTEN | NOFLSH;
  found.c_cflag = CS7 | PARENB | CRTSCTS | CSTOPB | CREAD | CLOCAL | HUPCL;
  cfsetispeed(&found, B19200);
  cfsetospeed(&found, B19200);
  found.c_cc[VMIN] = 7;
  found.c_cc[VTIME] = 9;
  found.c_cc[VINTR] = 3;
  calls_.settingsFound = found;
  const orbIO channel;
  const termios& made = calls_.settings();
  EXPECT_EQ(made.c_iflag, tcflag_t{IXOFF | IGNPAR});
  EXPECT_EQ(made.c_oflag, tcflag_t{ONLCR});
  EXPECT_EQ(made.c_lflag, tcflag_t{NOFLSH});
  EXPECT_EQ(made.c_cflag & ~tcflag_t{CBAUD}, tcflag_t{CS8 | CREAD | CLOCAL | HUPCL});
  EXPECT_EQ(cfgetispeed(&made), speed_t{B19200});
  EXPECT_EQ(cfgetospeed(&made), speed_t{B19200});
  EXPECT_EQ(made.c_cc[VMIN], 1);
  EXPECT_EQ(made.c_cc[VTIME], 0);
  EXPECT_EQ(made.c_cc[VINTR], 3) << "what raw mode does not concern stays";
}

TEST_F(SerialChannel, SetsUpAnyTtyOnRequest) {
  orbIO notOpen(kMissingDevice);
  EXPECT_TRUE(notOpen.SetupUART(pty_.tty()));
  EXPECT_FALSE(notOpen.isOpen());
  EXPECT_FALSE(notOpen.SetupUART(-1));
  EXPECT_EQ(standardError(), std::string(kCouldNotOpen) + "Can't get gps_tty settings\n");
}

// Sending

TEST_F(SerialChannel, SendsAPacketWithOneWriteAndASync) {
  orbIO channel;
  calls_.forget();
  EXPECT_EQ(channel.SendMessage(&query_), 0);
  EXPECT_THAT(calls_.made(), ElementsAre(TtyCall{"write", 9}, TtyCall{"fsync"}))
      << "no answer is waited for";
  EXPECT_EQ(pty_.takeWritten(9), queryPacket_);
  EXPECT_FALSE(pty_.hasWritten());
  EXPECT_EQ(standardError(), "");
}

TEST_F(SerialChannel, LeavesTheMessageToTheCaller) {
  orbIO channel;
  EXPECT_EQ(channel.SendMessage(&query_), 0);
  EXPECT_EQ(channel.SendMessage(&query_), 0);
  EXPECT_EQ(packetOf(query_), queryPacket_);
  EXPECT_EQ(pty_.takeWritten(18), queryPacket_ + queryPacket_);
}

TEST_F(SerialChannel, ReportsAShortAndAFailedWriteWithoutRetry) {
  orbIO channel;
  for (const long written : {8, 0, -1}) {
    calls_.forget();
    calls_.writeResult = written;
    EXPECT_EQ(channel.SendMessage(&query_), -1) << written;
    EXPECT_THAT(calls_.made(), ElementsAre(TtyCall{"write", 9}, TtyCall{"fsync"}));
  }
  EXPECT_EQ(standardError(), "");
}

TEST_F(SerialChannel, IgnoresWhetherTheSyncSucceeds) {
  orbIO channel;
  calls_.syncResult = -1;
  EXPECT_EQ(channel.SendMessage(&query_), 0);
}

// Callers that hold the interface alone call by slot, SendMessage first.
TEST_F(SerialChannel, SendsThroughTheFirstSlotAndReceivesThroughTheSecond) {
  orbIO channel(kMissingDevice);
  ORBMessagingInterface* const interface = &channel;
  void** slots = nullptr;
  std::memcpy(&slots, static_cast<const void*>(interface), sizeof slots);
  const auto send = reinterpret_cast<int (*)(ORBMessagingInterface*, ORBMessage*)>(slots[0]);
  const auto receive =
      reinterpret_cast<ORBMessage* (*)(ORBMessagingInterface*, unsigned short, int)>(slots[1]);
  EXPECT_EQ(send(interface, &query_), -1);
  EXPECT_EQ(receive(interface, 0x8300, 2), nullptr);
  EXPECT_EQ(standardError(), std::string(kCouldNotOpen) + kCouldNotSend + kCouldNotReceive);
}

// Reading

TEST_F(SerialChannel, ReadsWhatIsThereAndNoMoreThanItIsAskedFor) {
  orbIO channel;
  line_.deliver(kAck);
  calls_.forget();
  unsigned char buffer[16] = {0, 0, 0, 0, 0x77};
  EXPECT_EQ(channel.ReadFromUART(buffer, 4), 4);
  EXPECT_EQ(Bytes(buffer, buffer + 5), hex("A0 A1 00 02 77"));
  EXPECT_EQ(channel.ReadFromUART(buffer, sizeof buffer), 5);
  EXPECT_EQ(Bytes(buffer, buffer + 5), hex("83 01 82 0D 0A"));
  EXPECT_THAT(calls_.made(), ElementsAre(TtyCall{"read", 4}, TtyCall{"read", 16}));
}

TEST_F(SerialChannel, ReadsNothingWhenItIsAskedForNothing) {
  orbIO channel;
  pty_.feed(kAck);
  unsigned char buffer[9] = {};
  EXPECT_EQ(channel.ReadFromUART(buffer, 0), 0);
  EXPECT_EQ(channel.ReadFromUART(buffer, -1), 0);
  EXPECT_EQ(Bytes(buffer, buffer + 9), Bytes(9, 0x00));
  EXPECT_EQ(pty_.waiting(), 9);
}

TEST_F(SerialChannel, ReadsNothingFromAnEmptyLineOrWhenTheReadFails) {
  orbIO channel;
  unsigned char byte = 0;
  for (const int error : {EIO, EINTR, 0}) {
    line_.fail(error);
    EXPECT_EQ(channel.ReadFromUART(&byte, 1), 0);
  }
  calls_.read = nullptr;  // as the kernel has it
  EXPECT_EQ(channel.ReadFromUART(&byte, 1), 0);
  EXPECT_EQ(standardError(), "");
}

// Closing

TEST_F(SerialChannel, KeepsTheDeviceToItself) {
  std::optional<ClosedStandardStreams> closed(std::in_place);
  const orbIO low;
  closed.reset();
  const orbIO usual;
  EXPECT_THAT(descriptorsOn(pty_.path()),
              UnorderedElementsAre(pty_.tty(), Truly(isPrivate), Truly(isPrivate)));
}

TEST_F(SerialChannel, ClosesTheDeviceWhenItIsDestroyed) {
  std::optional<orbIO> channel;
  channel.emplace();
  const int descriptor = calls_.descriptor();
  EXPECT_TRUE(isOpenDescriptor(descriptor));
  calls_.forget();
  channel.reset();
  EXPECT_THAT(calls_.made(), ElementsAre(kClose));
  EXPECT_FALSE(isOpenDescriptor(descriptor));
}

TEST_F(SerialChannel, ReleasesAllAlsoWhenMemoryRunsOut) {
  const long before = liveAllocations();
  { const orbIO notOpen(kMissingDevice); }
  EXPECT_EQ(liveAllocations(), before);
  int failures = 0;
  for (bool ranOut = true; ranOut;) {
    try {
      const FailingAllocation failing(failures + 1);
      const orbIO channel;
      ranOut = false;
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    EXPECT_FALSE(isOpenDescriptor(calls_.descriptor()));
    EXPECT_EQ(liveAllocations(), before);
  }
  EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace orb::test
