#include "line/query.h"

#include <fcntl.h>
#include <sched.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace orb::bench {

namespace {

constexpr ORBMessageMsgValue kQueryMasks = 0x2F00;
constexpr ORBMessageMsgValue kMasks = 0xB000;
constexpr int kTimeoutSeconds = 5;

void expectAnswer(bool isRight) {
  if (!isRight) {
    throw std::runtime_error("a query was not answered as it should be");
  }
}

}  // namespace

const Bytes kMasksQuery{0xA0, 0xA1, 0x00, 0x01, 0x2F, 0x2F, 0x0D, 0x0A};
const Bytes kMasksReply{0xA0, 0xA1, 0x00, 0x04, 0xB0, 0x01, 0x05, 0x14, 0xA0, 0x0D, 0x0A};

void LibraryQuery::send() {
  ORBMessage query(kQueryMasks, 1, nullptr);
  expectAnswer(channel_.SendMessage(&query) == 0);
}

void LibraryQuery::receive() {
  const std::unique_ptr<ORBMessage> reply(channel_.ReceiveMessage(kMasks, kTimeoutSeconds));
  expectAnswer(reply != nullptr && reply->getPayloadData()[3] == 0x14);
}

void queryByLibrary(const std::string& tty) {
  LibraryQuery query(tty);
  query.send();
  query.receive();
}

void queryByBareLoop(const std::string& tty) {
  const int fd = open(tty.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_SYNC);
  termios settings;
  tcgetattr(fd, &settings);
  cfmakeraw(&settings);
  settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | CSTOPB);
  tcflush(fd, TCIOFLUSH);
  tcsetattr(fd, TCSANOW, &settings);
  ssize_t written = write(fd, kMasksQuery.data(), kMasksQuery.size());
  fsync(fd);
  unsigned char reply[1024];
  unsigned long received = 0;
  while (written > 0 && received < kMasksReply.size()) {
    const ssize_t count = read(fd, reply + received, sizeof reply - received);
    received += count > 0 ? static_cast<unsigned long>(count) : 0;
    if (count <= 0) sched_yield();
  }
  close(fd);
  expectAnswer(written > 0 && std::equal(kMasksReply.begin(), kMasksReply.end(), reply));
}

}  // namespace orb::bench
