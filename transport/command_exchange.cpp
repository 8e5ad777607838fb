#include "transport/command_exchange.h"

#include <ostream>

namespace orb {

unsigned int CommandExchange::send(ORBMessage& message) {
  orbIO channel(context_.device);
  return transmit(channel, message);
}

unsigned int CommandExchange::ask(ORBMessage& message, ORBMessageMsgValue reply,
                                  std::unique_ptr<ORBMessage>& received) {
  if (context_.lentChannel != nullptr) {
    return ask(*context_.lentChannel, message, reply, received);
  }
  orbIO channel(context_.device);
  return ask(channel, message, reply, received);
}

unsigned int CommandExchange::ask(orbIO& channel, ORBMessage& message, ORBMessageMsgValue reply,
                                  std::unique_ptr<ORBMessage>& received) {
  if (transmit(channel, message) != kSucceeded) {
    return kNotSent;
  }
  received.reset(channel.ReceiveMessage(reply, context_.replyTimeoutSeconds));
  if (received == nullptr) {
    logNoReply(message);
    return kNoReply;
  }
  return kSucceeded;
}

unsigned int CommandExchange::transmit(orbIO& channel, ORBMessage& message) {
  if (channel.SendMessage(&message) != 0) {
    logNotSent(message);
    return kNotSent;
  }
  return kSucceeded;
}

void CommandExchange::log(const char* failure, const ORBMessage& message) {
  context_.errorLog.clear();  // A failed write must not silence later lines.
  context_.errorLog << context_.timeStamp() << ' ' << failure << message.getMessageDescription()
                    << std::endl;
}

}  // namespace orb
