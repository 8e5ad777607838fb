#include "orb-gnss/serial_channel.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <utility>

#include "base/console.h"
#include "base/owned_descriptor.h"
#include "transport/default_device.h"
#include "transport/look_schedule.h"
#include "transport/receive_buffer.h"

namespace {

constexpr unsigned long kReadSize = 1024;

void complain(const char* text) { orb::standardError() << text << std::endl; }

// Programs that this one starts do not inherit the device, nor does it keep the number of a closed
// standard stream: what is printed would go to the receiver.
orb::OwnedDescriptor openPrivately(const std::string& device) {
  orb::OwnedDescriptor opened(::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_SYNC));
  if (opened.get() > STDERR_FILENO) {
    ::fcntl(opened.get(), F_SETFD, FD_CLOEXEC);
  } else if (opened.isOpen()) {
    opened = orb::OwnedDescriptor(::fcntl(opened.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  }
  return opened;
}

// Blocks until bytes arrive; the clock is not read here, so a silent line blocks for ever.
void readSome(orbIO& channel, orb::ReceiveBuffer& buffer, orb::LookSchedule& schedule) {
  buffer.makeRoom();
  const auto length = static_cast<long>(std::min(buffer.space(), kReadSize));
  for (;;) {
    const long count = channel.ReadFromUART(buffer.end(), length);
    if (count > 0) {
      buffer.append(static_cast<unsigned long>(count));
      return;
    }
    schedule.waitForNextLook();
  }
}

}  // namespace

orbIO::orbIO() : orbIO(std::string(orb::kDefaultDevice)) {}

// By delegating, the destructor closes the device even when what follows the opening throws.
orbIO::orbIO(std::string device) : orbIO(std::move(device), NotOpen{}) {
  orb::OwnedDescriptor opened = openPrivately(device_);
  if (!opened.isOpen()) {
    orb::standardError() << "Could not open " << orb::kDefaultDevice
                         << " cannot communicate with the orbitek device." << std::endl;
    return;
  }
  if (!SetupUART(opened.get())) {
    return;
  }
  fd_ = opened.release();
  list_ = std::make_unique<ORBMessageList>();
  builder_ = std::make_unique<ORBMessageBuilder>(list_.get());
}

orbIO::orbIO(std::string device, NotOpen) : device_(std::move(device)) {}

orbIO::~orbIO() {
  if (isOpen()) {
    ::close(fd_);
  }
}

bool orbIO::isOpen() const { return fd_ >= 0; }

bool orbIO::SetupUART(int fd) {
  termios settings{};
  if (::tcgetattr(fd, &settings) != 0) {
    complain("Can't get gps_tty settings");
    return false;
  }
  ::cfmakeraw(&settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | CSTOPB);
  ::tcflush(fd, TCIOFLUSH);
  if (::tcsetattr(fd, TCSANOW, &settings) != 0) {
    complain("Can't configure tty_gps raw mode");
    return false;
  }
  return true;
}

int orbIO::SendMessage(ORBMessage* message) {
  if (!isOpen()) {
    complain("Cannot send message to the orbitek, the device is not open!");
    return -1;
  }
  const unsigned long length = message->getPacketLength();
  const ssize_t written = ::write(fd_, message->getPacketData(), length);
  ::fsync(fd_);
  return static_cast<unsigned int>(written) == length ? 0 : -1;
}

long orbIO::ReadFromUART(unsigned char* buffer, long length) {
  if (!isOpen() || length <= 0) {
    return 0;
  }
  return std::max<ssize_t>(0, ::read(fd_, buffer, static_cast<unsigned long>(length)));
}

ORBMessage* orbIO::ReceiveMessage(unsigned short replyId, int timeout) {
  orb::ReceiveBuffer buffer(timeout);
  if (!isOpen()) {
    complain(" orbIO::ReceiveMessage Could not receive data from the orbitek, device is not open!");
    return nullptr;
  }
  std::unique_ptr<ORBMessage> match;
  orb::LookSchedule schedule;
  const std::time_t start = std::time(nullptr);
  for (;;) {
    readSome(*this, buffer, schedule);
    builder_->update(static_cast<unsigned char>(replyId >> 8), buffer.data(), buffer.size());
    takeNewest(replyId, match);
    if (match != nullptr && builder_->getErroredMessageCount() == 0) {
      return match.release();
    }
    if (std::difftime(std::time(nullptr), start) >= static_cast<double>(timeout)) {
      complain(" orbIO::ReceiveMessage Timed out waiting for rx from orbitek.");
      return match.release();
    }
    list_->Empty();  // The next round lists again what is still in the buffer.
  }
}

// An earlier match stays when its bytes have left the buffer and only other messages are listed.
void orbIO::takeNewest(unsigned short replyId, std::unique_ptr<ORBMessage>& match) {
  ORBMessage* newest = list_->findFirstOfMessage(replyId);
  if (newest != nullptr) {
    match.reset(newest);
  } else {
    list_->Empty();
  }
}
