#include "operation_table/receiver.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "orb-gnss/serial_channel.h"
#include "transport/result_bits.h"

namespace orb {
namespace {

constexpr std::chrono::seconds kRawTimeout{2};
constexpr std::chrono::milliseconds kLook{5};

constexpr unsigned char kAcknowledged = 0x83;
constexpr unsigned char kNavigationData = 0xA8;  // comes unasked

ORBMessage messageFrom(const std::string& payload) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(payload.data());
  ORBMessage message(0, payload.size(), nullptr);
  message.buildMessage(nullptr, payload.size());
  std::copy(bytes, bytes + payload.size(), message.getPayloadData());
  unsigned char* const packet = message.getPacketData();
  packet[message.getPacketLength() - 3] =
      static_cast<unsigned char>(orbComputeChecksum(bytes, payload.size()));
  return message;
}

void append(std::string& replies, const ORBMessage& message) {
  const unsigned long length = message.getPayloadLength();
  replies += static_cast<char>(length / 256);
  replies += static_cast<char>(length % 256);
  replies.append(reinterpret_cast<const char*>(message.getPayloadData()), length);
}

}  // namespace

unsigned int Receiver::exchangeRaw(std::string payload, std::string& replies) {
  replies.clear();
  orbIO line;
  ORBMessage message = messageFrom(payload);
  if (line.SendMessage(&message) != 0) {
    return kNotSent;
  }
  ORBMessageList list;
  ORBMessageBuilder builder(&list);
  std::string received;
  bool isAnswered = false;
  const auto end = std::chrono::steady_clock::now() + kRawTimeout;
  while (!isAnswered && std::chrono::steady_clock::now() < end) {
    unsigned char bytes[512];
    const long count = line.ReadFromUART(bytes, sizeof bytes);
    if (count <= 0) {
      std::this_thread::sleep_for(kLook);
      continue;
    }
    received.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(count));
    // The builder lists again what was in the buffer before: the last look has all of it.
    list.Empty();
    builder.update(0, reinterpret_cast<const unsigned char*>(received.data()), received.size());
    replies.clear();
    while (const std::unique_ptr<ORBMessage> reply{list.getMessage()}) {
      if (reply->getPayloadLength() == 0) {
        continue;  // has not even an id
      }
      append(replies, *reply);
      isAnswered |= reply->getMid() != kAcknowledged && reply->getMid() != kNavigationData;
    }
  }
  return replies.empty() ? kNoReply : 0;
}

}  // namespace orb
