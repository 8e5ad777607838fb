#pragma once

#include <memory>
#include <string>

#include "controller/command.h"
#include "controller/reply.h"
#include "controller/result_bits.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/serial_channel.h"

namespace orb {

/// One exchange with the receiver, the same for every command: the channel is opened, the message
/// is sent, a query's reply is awaited, failures are logged and become result bits. A command gives
/// only its values:
///
///     return exchange().query(Command(message_id::kQueryPowerMode, 1), message_id::kPowerMode,
///                             [&](const Reply& reply) { mode = reply.u8(1); });
class CommandExchange {
 public:
  /// An exchange on the default device, with the driver's reply time-out.
  explicit CommandExchange(orbController_QN4470T01& driver);

  CommandExchange&& on(std::string device) &&;
  CommandExchange&& within(int seconds) &&;

  /// Sends. Returns 0, or kNotSent.
  unsigned int send(Command&& command) { return send(command.message()); }
  unsigned int send(ORBMessage& message);

  /// Sends and waits for `reply`. Where it comes, `decode` gets its payload and the result is 0;
  /// else the result is kNotSent or kNoReply and `decode` is not called.
  template <typename Decode>
  unsigned int query(Command&& command, ORBMessageMsgValue reply, Decode decode) {
    std::unique_ptr<ORBMessage> received;
    const unsigned int result = ask(command.message(), reply, received);
    if (received != nullptr) {
      decode(Reply(*received));
    }
    return result;
  }

 private:
  unsigned int ask(ORBMessage& message, ORBMessageMsgValue reply,
                   std::unique_ptr<ORBMessage>& received);
  unsigned int transmit(orbIO& channel, ORBMessage& message);
  void log(const char* failure, const ORBMessage& message);

  orbController_QN4470T01& driver_;
  std::string device_;
  int timeoutSeconds_;
};

}  // namespace orb
