#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "controller/command.h"
#include "controller/reply.h"
#include "controller/result_bits.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/serial_channel.h"

namespace orb {

/// One exchange with the receiver, the same for every command: the channel is opened, the message
/// is sent, a query's reply is awaited, a setting is read back, failures are logged and become
/// result bits. A command gives only its values:
///
///     return exchange().query(Command(message_id::kQueryPowerMode, 1), message_id::kPowerMode,
///                             [&](const Reply& reply) { mode = reply.u8(1); });
class CommandExchange {
 public:
  /// The settle time of a setting that is read back at once.
  static constexpr std::chrono::nanoseconds kAtOnce{0};

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

  /// Sends a setting, gives it time to settle, and calls `readBack`, which asks for the setting and
  /// returns the query's result: in every case, also when the setting could not be sent. Returns
  /// both results OR-ed.
  ///
  /// After some time, the read-back opens a channel of its own and with it drops what piled up
  /// meanwhile. Read back at once, the setting may still be on its way out, and opening the device
  /// anew would destroy it: the query goes over the setting's own channel.
  template <typename ReadBack>
  unsigned int configure(Command&& command, std::chrono::nanoseconds settle, ReadBack readBack) {
    orbIO channel(device_);
    const unsigned int result = transmit(channel, command.message());
    if (settle > kAtOnce) {
      driver_.wait(settle);
      return result | readBack();
    }
    const ChannelLoan loan(driver_, channel);
    return result | readBack();
  }

  /// The same, and kRejected where `isKept` then says that what was read back differs.
  template <typename ReadBack, typename IsKept>
  unsigned int configure(Command&& command, std::chrono::nanoseconds settle, ReadBack readBack,
                         IsKept isKept) {
    const unsigned int result = configure(std::move(command), settle, readBack);
    return isKept() ? result : result | kRejected;
  }

  void logNotSent(const ORBMessage& message) { log("Could not send : ", message); }
  void logNoReply(const ORBMessage& message) { log("Did not receive : ", message); }

 private:
  /// Lends a channel, if it is open, to the queries that the driver makes meanwhile.
  class ChannelLoan {
   public:
    ChannelLoan(orbController_QN4470T01& driver, orbIO& channel)
        : driver_(driver),
          previous_(std::exchange(driver.lentChannel_, channel.isOpen() ? &channel : nullptr)) {}
    ChannelLoan(const ChannelLoan&) = delete;
    ChannelLoan& operator=(const ChannelLoan&) = delete;
    ~ChannelLoan() { driver_.lentChannel_ = previous_; }

   private:
    orbController_QN4470T01& driver_;
    orbIO* previous_;
  };

  unsigned int ask(ORBMessage& message, ORBMessageMsgValue reply,
                   std::unique_ptr<ORBMessage>& received);
  unsigned int ask(orbIO& channel, ORBMessage& message, ORBMessageMsgValue reply,
                   std::unique_ptr<ORBMessage>& received);
  unsigned int transmit(orbIO& channel, ORBMessage& message);
  void log(const char* failure, const ORBMessage& message);

  orbController_QN4470T01& driver_;
  std::string device_;
  bool isDefaultDevice_ = true;
  int timeoutSeconds_;
};

}  // namespace orb
