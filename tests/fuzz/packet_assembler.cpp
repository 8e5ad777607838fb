// The assembler and its list, with a buffer that grows by pieces of any length. Input: how messages
// are taken out behind each piece, the lengths of all pieces but the last, the bytes.

#include <algorithm>
#include <deque>
#include <memory>

#include "orb-gnss/message_builder.h"
#include "orb-gnss/message_list.h"
#include "support/assembler_model.h"
#include "support/check.h"

namespace orb::fuzz {
namespace {

constexpr std::size_t kPieces = 7;
constexpr ORBMessageMsgValue kPerhapsNotThere = 0x8300;

/// What the getters say against the packet.
void checkMessage(const ORBMessage& message, const FoundMessage& expected) {
  const Bytes& packet = expected.packet;
  const unsigned long payloadLength = packet.size() - 7;
  check(message.getPacketLength() == packet.size(), "the packet's length");
  check(std::equal(packet.begin(), packet.end(), message.getPacketData()), "the packet's bytes");
  check(message.getPayloadLength() == payloadLength, "the payload's length");
  check(message.getPayloadData() == message.getPacketData() + 4, "the payload's place");
  check(message.getMsgSidId() == typeOf(expected.id), "the message's type");
  check(message.getMid() == expected.id.id && message.getSid() == expected.id.subId, "its id");
  check(message.getChecksum() == 0x0D, "the first end byte");
  const unsigned long body = expected.id.id >= 0x62 && expected.id.id <= 0x6F ? 6 : 5;
  for (unsigned long i = 0; i < payloadLength; ++i) {
    check(message.getByte(i) == packet[body + i], "body byte " + std::to_string(i));
  }
  check(message.getByte(payloadLength) == 0, "no byte behind the payload");
  check(!message.getMessageDescription().empty(), "every message has a description");
  const ORBMessage copy(message);
  check(std::equal(packet.begin(), packet.end(), copy.getPacketData()), "the copy's bytes");
}

/// The list's content as it should be, oldest first.
class ListModel {
 public:
  void add(const Scan& scan) {
    messages_.insert(messages_.end(), scan.messages.begin(), scan.messages.end());
  }

  void takeOldest(ORBMessageList& list) {
    const std::unique_ptr<ORBMessage> taken(list.getMessage());
    compare(taken.get(), messages_.begin());
  }

  void takeNewestOf(ORBMessageList& list, ORBMessageMsgValue type) {
    const std::unique_ptr<ORBMessage> taken(list.findFirstOfMessage(type));
    const auto found = std::find_if(messages_.rbegin(), messages_.rend(),
                                    [type](const auto& m) { return typeOf(m.id) == type; });
    compare(taken.get(), found == messages_.rend() ? messages_.end() : found.base() - 1);
  }

  void empty(ORBMessageList& list) {
    list.Empty();
    messages_.clear();
  }

  bool isEmpty() const { return messages_.empty(); }
  ORBMessageMsgValue someType() const {
    return isEmpty() ? kPerhapsNotThere : typeOf(messages_[messages_.size() / 2].id);
  }

 private:
  void compare(const ORBMessage* taken, std::deque<FoundMessage>::iterator expected) {
    check((taken == nullptr) == (expected == messages_.end()), "a message is there, or is not");
    if (taken != nullptr) {
      checkMessage(*taken, *expected);
      messages_.erase(expected);
    }
  }

  std::deque<FoundMessage> messages_;
};

void checkCounters(const ORBMessageBuilder& builder, const std::vector<Scan>& scans) {
  unsigned int good = 0;
  unsigned int errored = 0;
  unsigned int unknown = 0;
  unsigned int acknowledged = 0;
  unsigned int refused = 0;
  for (const Scan& scan : scans) {
    good += scan.good;
    errored += scan.errored;
    unknown += scan.unknown;
    acknowledged += scan.count(0x8300);
    refused += scan.count(0x8400);
  }
  check(builder.getGoodMessageCount() == good, "good messages");
  check(builder.getErroredMessageCount() == errored, "errored messages");
  check(builder.getUnknownMessageCount() == unknown, "unknown messages");
  check(builder.getAckMessageCount() == acknowledged, "acknowledgements");
  check(builder.getNakMessageCount() == refused, "refusals");
}

void takeSome(ORBMessageList& list, ListModel& model, unsigned int choice) {
  switch (choice) {
    case 1:
      model.takeOldest(list);
      break;
    case 2:
      model.takeNewestOf(list, model.someType());
      break;
    case 3:
      model.takeNewestOf(list, kPerhapsNotThere);
      break;
    case 4:
      model.empty(list);
      break;
    default:
      break;
  }
}

void assemble(Input input) {
  const Bytes choices = input.bytes(kPieces + 1);
  const Bytes lengths = input.bytes(kPieces);
  Bytes received;
  ORBMessageList list;
  ORBMessageBuilder builder(&list);
  ListModel model;
  std::vector<Scan> scans;
  for (const Bytes& piece : inPieces(input.rest(), lengths)) {
    received.insert(received.end(), piece.begin(), piece.end());
    // In memory of exactly its size, so that reading behind its end is seen.
    const auto buffer = std::make_unique<std::uint8_t[]>(received.size());
    std::copy(received.begin(), received.end(), buffer.get());

    const unsigned long position = builder.update(0, buffer.get(), received.size());
    const Scan& scan = scans.emplace_back(received);
    model.add(scan);
    check(position == scan.position, "the position");
    checkCounters(builder, scans);
    const unsigned int choice = scans.size() <= choices.size() ? choices[scans.size() - 1] : 0;
    takeSome(list, model, choice % 16);
    takeSome(list, model, choice / 16);
    check(list.isEmpty() == model.isEmpty(), "whether the list is empty");
  }
  while (!model.isEmpty()) {
    model.takeOldest(list);
  }
  check(list.isEmpty() && list.getMessage() == nullptr, "nothing is left");
  builder.resetMessageCounters();
  checkCounters(builder, {});
}

}  // namespace
}  // namespace orb::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orb::fuzz::assemble({data, size});
  return 0;
}
