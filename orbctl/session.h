#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orb-gnss/supervised_controller.h"
#include "supervised/line_listener.h"
#include "transport/default_device.h"

namespace orb::ctl {

using Value = orbSupervisedController::Value;
using Values = std::vector<Value>;

constexpr const char* kDevice = kDefaultDevice.data();

/// One use of the receiver: every operation has its deadline, and one that fails ends the command.
class Session {
 public:
  struct Options {
    std::chrono::milliseconds deadline{0};  // zero: each operation's own
    bool showPrints = false;
    bool isQuiet = false;
  };

  explicit Session(const Options& options) : options_(options), controller_(options.deadline) {}

  /// Throws Failure where there is no module or no receiver. The operations below do so first.
  void requireReceiver();

  /// Whether module and receiver were found, the second time at the latest, without a complaint.
  bool hasReceiver();

  /// Looks for both anew.
  bool looksAgain();

  /// Calls an operation with these arguments, outputs included, and returns them as it left them.
  /// Throws Failure where its result has a bit.
  Values call(const std::string& operation, Values arguments = {});

  /// The same without looking for the receiver first, and with the result.
  Value callAnyway(const std::string& operation, Values& arguments);

  /// Sends a message, and returns the payloads of what comes within two seconds; a reply that is no
  /// acknowledgement ends the wait. Throws Failure where nothing comes.
  std::vector<std::string> exchange(const std::string& payload);

  /// Whether the receiver refuses the query that the last call() has noted in the error log as not
  /// answered. The library takes a refusal for no answer: the query is sent once more, and what
  /// comes looked at.
  bool isLastQueryRefused();

  /// What is heard on the line, which is locked meanwhile. Throws Failure where another process
  /// holds it.
  LineReport listen();

  /// Turns what became of the last call into a Failure, where something went wrong.
  void checkLastCall(const std::string& operation);

 private:
  void show(const orbSupervisedController::Call& call);
  /// Where somebody sees it, says who holds the line, if that takes long.
  void tellOfWait();

  Options options_;
  orbSupervisedController controller_;
  bool isReceiverKnown_ = false;
  std::uintmax_t logSize_ = 0;  // of the error log, before the last call()
  std::string lastWarning_;
};

}  // namespace orb::ctl
