#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>

#include "base/sleep.h"
#include "orb-gnss/serial_channel.h"
#include "protocol/command.h"
#include "protocol/reply.h"
#include "transport/result_bits.h"

namespace orb {

/// What an exchange needs. The objects that it refers to outlive it.
struct ExchangeContext {
  std::string device;
  /// While a setting is read back at once, the setting's open channel, over which the read-back's
  /// query goes; else null.
  orbIO*& lentChannel;
  int replyTimeoutSeconds;
  std::ostream& errorLog;
  /// The time stamp that begins a line of the error log.
  std::function<std::string()> timeStamp;
};

/// One exchange with the receiver, the same for every command: the channel is opened, the message
/// is sent, a query's reply is awaited, a setting is read back, failures are logged and become
/// result bits. A command supplies only its values:
///
///     return exchange().query(Command(message::kQueryPowerMode),
///                             [&](const Reply& reply) { mode = reply.u8(1); });
class CommandExchange {
 public:
  /// The settle time of a setting that is read back at once.
  static constexpr std::chrono::nanoseconds kAtOnce{0};

  explicit CommandExchange(ExchangeContext context) : context_(std::move(context)) {}

  /// Sends. Returns 0, or kNotSent.
  unsigned int send(Command&& command) { return send(command.message()); }
  unsigned int send(ORBMessage& message);

  /// Sends and waits for the reply. Where it comes, `decode` gets its payload and the result is 0;
  /// else the result is kNotSent or kNoReply and `decode` is not called.
  template <typename Decode>
  unsigned int query(Command&& command, Decode decode) {
    const ORBMessageMsgValue reply = command.reply();
    return query(std::move(command), reply, decode);
  }

  /// The same, for a message that is answered by another reply than usual.
  template <typename Decode>
  unsigned int query(Command&& command, ORBMessageMsgValue reply, Decode decode) {
    std::unique_ptr<ORBMessage> received;
    const unsigned int result = ask(command.message(), reply, received);
    if (received != nullptr) {
      decode(Reply(*received));
    }
    return result;
  }

  /// Sends a setting, waits for `settle`, and calls `readBack`, which queries the setting and
  /// returns the query's result: also when the setting could not be sent. Returns both results
  /// OR-ed.
  ///
  /// After a wait, the read-back opens a channel of its own, which drops what has arrived
  /// meanwhile. Without one, opening the device would flush a setting that is still being sent, so
  /// the query goes over the setting's channel. But a setting that was sent in part would swallow
  /// the query: then the read-back opens a channel of its own.
  template <typename ReadBack>
  unsigned int configure(Command&& command, std::chrono::nanoseconds settle, ReadBack readBack) {
    orbIO channel(context_.device);
    const unsigned int result = transmit(channel, command.message());
    if (settle > kAtOnce) {
      sleepFor(settle);
      return result | readBack();
    }
    const ChannelLoan loan(context_.lentChannel, result == kSucceeded ? &channel : nullptr);
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

 private:
  /// Lends a channel, or none, for as long as it exists.
  class ChannelLoan {
   public:
    ChannelLoan(orbIO*& lentChannel, orbIO* channel)
        : lentChannel_(lentChannel), previous_(std::exchange(lentChannel, channel)) {}
    ChannelLoan(const ChannelLoan&) = delete;
    ChannelLoan& operator=(const ChannelLoan&) = delete;
    ~ChannelLoan() { lentChannel_ = previous_; }

   private:
    orbIO*& lentChannel_;
    orbIO* previous_;
  };

  void logNoReply(const ORBMessage& message) { log("Did not receive : ", message); }

  unsigned int ask(ORBMessage& message, ORBMessageMsgValue reply,
                   std::unique_ptr<ORBMessage>& received);
  unsigned int ask(orbIO& channel, ORBMessage& message, ORBMessageMsgValue reply,
                   std::unique_ptr<ORBMessage>& received);
  unsigned int transmit(orbIO& channel, ORBMessage& message);
  void log(const char* failure, const ORBMessage& message);

  ExchangeContext context_;
};

}  // namespace orb
