#include "controller/command_exchange.h"

#include <ostream>
#include <utility>

#include "transport/default_device.h"

namespace orb {

CommandExchange::CommandExchange(orbController_QN4470T01& driver)
    : driver_(driver), device_(kDefaultDevice), timeoutSeconds_(driver.replyTimeoutSeconds_) {}

CommandExchange&& CommandExchange::on(std::string device) && {
  device_ = std::move(device);
  isDefaultDevice_ = false;
  return std::move(*this);
}

CommandExchange&& CommandExchange::within(int seconds) && {
  timeoutSeconds_ = seconds;
  return std::move(*this);
}

unsigned int CommandExchange::send(ORBMessage& message) {
  orbIO channel(device_);
  return transmit(channel, message);
}

unsigned int CommandExchange::ask(ORBMessage& message, ORBMessageMsgValue reply,
                                  std::unique_ptr<ORBMessage>& received) {
  if (driver_.lentChannel_ != nullptr && isDefaultDevice_) {
    return ask(*driver_.lentChannel_, message, reply, received);
  }
  orbIO channel(device_);
  return ask(channel, message, reply, received);
}

unsigned int CommandExchange::ask(orbIO& channel, ORBMessage& message, ORBMessageMsgValue reply,
                                  std::unique_ptr<ORBMessage>& received) {
  if (transmit(channel, message) != kSucceeded) {
    return kNotSent;
  }
  received.reset(channel.ReceiveMessage(reply, timeoutSeconds_));
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
  driver_.errorLog_ << driver_.timeStamp() << ' ' << failure << message.getMessageDescription()
                    << std::endl;
}

}  // namespace orb
