#include "reference/assembler_pair.h"

#include <algorithm>
#include <memory>

#include "reference/catalogue_file.h"
#include "support/bytes.h"
#include "support/guarded_bytes.h"

namespace orb::test {
namespace {

constexpr std::size_t kMostBytes = 0x20000;

std::string agreed(const std::string& library, const std::string& model, const Bytes& buffer = {}) {
  if (library != model) {
    throw AssemblerPair::Disagreement("the library: " + library + "\nthe model:   " + model +
                                      "\nthe buffer:  " + hexText(buffer));
  }
  return library;
}

bool gettersAgree(const ORBMessage& message, const Bytes& packet) {
  const unsigned long length = packet.size() - 7;
  const unsigned long body = hasSubId(message.getMid()) ? 6 : 5;
  bool agree = message.getPayloadLength() == length && message.getByte(length) == 0 &&
               message.getPayloadData() == message.getPacketData() + 4 &&
               message.getMid() * 256 + message.getSid() == message.getMsgSidId() &&
               message.getChecksum() == 0x0D && !message.getMessageDescription().empty() &&
               packetOf(ORBMessage(message)) == packet;
  for (unsigned long i = 0; i < length; ++i) {
    agree = agree && message.getByte(i) == packet[body + i];
  }
  return agree;
}

std::string textOf(const std::unique_ptr<ORBMessage>& message) {
  if (message == nullptr) {
    return "";
  }
  const Bytes packet = packetOf(*message);
  const std::string text = messageText(message->getMsgSidId(), message->getPayloadLength(), packet);
  if (!gettersAgree(*message, packet)) {
    throw AssemblerPair::Disagreement("the getters and the packet of " + text);
  }
  return text;
}

}  // namespace

std::string AssemblerPair::update(unsigned char replyId, const Bytes& buffer) {
  static GuardedBytes memory{Bytes(kMostBytes)};
  unsigned char* const atItsEnd = memory.data() + kMostBytes - buffer.size();
  std::copy(buffer.begin(), buffer.end(), atItsEnd);
  const unsigned long position = builder_.update(replyId, atItsEnd, buffer.size());
  const std::string library = std::to_string(position) + ' ' + counters();
  const std::string text = agreed(library, model_.update(buffer), buffer);
  compareLists();
  return text;
}

std::string AssemblerPair::counters() const {
  return joined({builder_.getGoodMessageCount(), builder_.getErroredMessageCount(),
                 builder_.getUnknownMessageCount(), builder_.getAckMessageCount(),
                 builder_.getNakMessageCount()});
}

void AssemblerPair::resetCounters() {
  builder_.resetMessageCounters();
  model_.resetCounters();
  agreed(counters(), "0 0 0 0 0");
}

std::string AssemblerPair::takeOldest() {
  const std::unique_ptr<ORBMessage> message(list_.getMessage());
  const std::string text = agreed(textOf(message), model_.takeOldest());
  compareLists();
  return text;
}

std::string AssemblerPair::takeNewestOf(unsigned short type) {
  const std::unique_ptr<ORBMessage> message(list_.findFirstOfMessage(type));
  const std::string text = agreed(textOf(message), model_.takeNewestOf(type));
  compareLists();
  return text;
}

void AssemblerPair::empty() {
  list_.Empty();
  model_.empty();
  compareLists();
}

void AssemblerPair::compareLists() const {
  if (list_.isEmpty() != model_.isEmpty()) {
    throw Disagreement("one of the lists is empty");
  }
}

}  // namespace orb::test
