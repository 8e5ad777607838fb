#include "line/query.h"

#include <memory>
#include <stdexcept>

namespace orb::bench {

namespace {

constexpr ORBMessageMsgValue kQueryMasks = 0x2F00;
constexpr ORBMessageMsgValue kMasks = 0xB000;
constexpr int kTimeoutSeconds = 5;

// Of the answer's payload, and what it is there.
constexpr int kCnrAt = 3;
constexpr unsigned char kCnr = 0x14;

void expectAnswer(bool isRight) {
  if (!isRight) {
    throw std::runtime_error("a query was not answered as it should be");
  }
}

}  // namespace

void LibraryQuery::send() {
  ORBMessage query(kQueryMasks, 1, nullptr);
  expectAnswer(channel_.SendMessage(&query) == 0);
}

void LibraryQuery::receive() {
  const std::unique_ptr<ORBMessage> reply(channel_.ReceiveMessage(kMasks, kTimeoutSeconds));
  expectAnswer(reply != nullptr && reply->getPayloadData()[kCnrAt] == kCnr);
}

void queryByLibrary(const std::string& tty) {
  LibraryQuery query(tty);
  query.send();
  query.receive();
}

}  // namespace orb::bench
