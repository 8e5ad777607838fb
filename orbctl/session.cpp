#include "orbctl/session.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "base/plain_text.h"
#include "board/expected_module.h"
#include "orb-gnss/catalogue.h"
#include "orbctl/complaint.h"
#include "orbctl/device_users.h"
#include "orbctl/error_log.h"
#include "orbctl/failure.h"
#include "orbctl/inventory.h"
#include "orbctl/results.h"
#include "supervised/device_lock.h"
#include "transport/result_bits.h"

namespace orb::ctl {
namespace {

using Call = orbSupervisedController::Call;
using Ending = orbSupervisedController::Ending;

constexpr std::chrono::milliseconds kListening{1200};
constexpr std::chrono::milliseconds kSilentWait{500};
constexpr char kIsThere[] = "IsOrbitek";
constexpr char kLookAgain[] = "CreateOrbitek";
constexpr unsigned char kRefusal = 0x84;

/// What to try next after an operation without a reply.
std::string hintAfterSilence(LineReport::State line) {
  switch (line) {
    case LineReport::State::NotThere:
      return "check the device node with: orbctl doctor";
    case LineReport::State::Silent:
      return "check the receiver's power and the cable, then: orbctl doctor";
    case LineReport::State::Garbage:
      return fmt::format("check the line's speed: stty -F {}", kDevice);
    case LineReport::State::Text:
    case LineReport::State::Packets:
    case LineReport::State::NotListened:
      return "try again: a receiver that was just started needs up to a minute";
  }
  return {};
}

/// What a person calls the operation.
std::string_view plainName(std::string_view operation) {
  return operation == kIsThere || operation == kLookAgain ? "detection" : operation;
}

/// What is on the line, and what to try next. Another reader takes bytes away from it.
std::pair<std::string, std::string> explainSilence(const LineReport& line) {
  const std::vector<std::string> users = usersOfDevice();
  if (users.empty()) {
    return {describe(line), hintAfterSilence(line.state)};
  }
  return {fmt::format("{}; {} is also open in {}", describe(line), kDevice, fmt::join(users, ", ")),
          "a second reader takes replies away: end it, and try again"};
}

Failure withoutReply(const char* what, const std::string& operation, unsigned int result,
                     const LineReport& line) {
  const auto [silence, hint] = explainSilence(line);
  return {ExitStatus::NoReply, fmt::format("{}: {} ({})", what, silence, plainName(operation)),
          hint, result};
}

std::uintmax_t logSize() {
  std::error_code error;
  return std::filesystem::file_size(kErrorLog, error);
}

/// The payloads of what exchangeRaw() leaves, each after its length in two bytes.
std::vector<std::string> payloadsIn(const Value& left) {
  const auto& replies = std::get<std::string>(left);
  std::vector<std::string> payloads;
  for (std::size_t at = 0; at + 2 <= replies.size(); at += 2 + payloads.back().size()) {
    const auto length = static_cast<std::size_t>(static_cast<unsigned char>(replies[at]) * 256 +
                                                 static_cast<unsigned char>(replies[at + 1]));
    payloads.push_back(replies.substr(at + 2, length));
  }
  return payloads;
}

Failure failureOf(Session& session, const std::string& operation, unsigned int result) {
  const ExitStatus status = exitStatusFor(result);
  switch (status) {
    case ExitStatus::NoReply:
      if (session.isLastQueryRefused()) {
        return {ExitStatus::Refused,
                fmt::format("the receiver refuses the query; its firmware does not know it ({})",
                            operation),
                "see which query it is with: orbctl log", result};
      }
      return withoutReply("the receiver did not answer in time", operation, result,
                          session.listen());
    case ExitStatus::NotSent:
      return {status, fmt::format("a message could not be sent to {} ({})", kDevice, operation),
              "find out why with: orbctl doctor", result};
    default:
      if ((result & kNotSupported) != 0) {
        return {
            status, fmt::format("the module does not support this ({})", operation), {}, result};
      }
      return {status, fmt::format("refused, or the receiver kept another value ({})", operation),
              "see what it holds with: orbctl get", result};
  }
}

Failure noReceiver(Session& session) {
  const auto [hardware, problem] = askInventory();
  if (!problem.empty()) {
    return {ExitStatus::NoReceiver, fmt::format("the inventory cannot be asked: {}", problem),
            kAskForService};
  }
  if (hardware.find(kModulePartNumber) == std::string::npos) {
    return {
        ExitStatus::NoReceiver,
        hardware.empty()
            ? fmt::format("no module: the inventory tells of none at location {}", kModuleLocation)
            : fmt::format("another module is fitted at location {}: {}", kModuleLocation, hardware),
        "ask the inventory service with: orbctl doctor"};
  }
  if (::access(kDevice, F_OK) != 0) {
    return {ExitStatus::NotSent, fmt::format("{} does not exist", kDevice),
            "check the device node with: orbctl doctor"};
  }
  const LineReport line = session.listen();
  if (line.state == LineReport::State::NotThere) {
    return {ExitStatus::NotSent, fmt::format("{} cannot be opened ({})", kDevice, line.problem),
            "check the rights to it with: orbctl doctor"};
  }
  const auto [silence, hint] = explainSilence(line);
  return {ExitStatus::NoReceiver,
          fmt::format("the module is fitted, but no receiver answers on {}: {}", kDevice, silence),
          hint};
}

}  // namespace

void Session::show(const Call& call) {
  if (options_.showPrints) {
    complain(plain(call.standardOutput + call.standardError, "\n\t"));
  }
  if (!call.warning.empty() && call.warning != lastWarning_ && !options_.isQuiet) {
    lastWarning_ = call.warning;
    complain(fmt::format("orbctl: warning: the line is not locked: {}\n", call.warning));
  }
}

LineReport Session::listen() {
  DeviceLock lock;
  const auto limit = std::max<std::chrono::milliseconds>(options_.deadline, kListening);
  if (lock.acquire(std::chrono::steady_clock::now() + limit) == DeviceLock::State::HeldByOther) {
    throw Failure(ExitStatus::Held, fmt::format("{} holds {}", lock.holderInWords(), kDevice),
                  "wait for it to end, or give more time with --deadline");
  }
  return listenTo(kDevice, kListening);
}

void Session::checkLastCall(const std::string& operation) {
  const Call& call = orbSupervisedController::lastCall();
  // The next worker looks anew; where it finds no receiver, its operations do nothing, and say 0.
  isReceiverKnown_ = isReceiverKnown_ && call.ending == Ending::Done;
  switch (call.ending) {
    case Ending::Done:
      return;
    case Ending::LineHeld:
      throw Failure(ExitStatus::Held, call.problem,
                    "wait for it to end, or give more time with --deadline");
    case Ending::NotStarted:
      throw Failure(ExitStatus::NotSent, call.problem,
                    "the installation is not complete, or a limit is too low (ulimit -a)");
    case Ending::WorkerEnded:
      throw Failure(ExitStatus::NoReply, call.problem, "try again; the line is free");
    case Ending::DeadlineMissed:
      break;
  }
  LineReport report;
  report.state = call.line;
  report.problem = kDevice;
  throw withoutReply("no answer before the deadline", operation, kNoReply, report);
}

Value Session::callAnyway(const std::string& operation, Values& arguments) {
  tellOfWait();
  try {
    Value result = controller_.call(operation, arguments);
    show(orbSupervisedController::lastCall());
    checkLastCall(operation);
    return result;
  } catch (const Failure&) {
    throw;
  } catch (const std::exception& error) {
    show(orbSupervisedController::lastCall());
    throw Failure(ExitStatus::NotSent, fmt::format("{} ({})", error.what(), plainName(operation)));
  }
}

void Session::tellOfWait() {
  const bool isSeen = options_.showPrints || ::isatty(STDERR_FILENO) == 1;
  if (!isSeen || options_.isQuiet) {
    return;
  }
  DeviceLock lock;
  const bool isBounded = options_.deadline > std::chrono::milliseconds::zero();
  const auto limit = isBounded ? std::min(options_.deadline, kSilentWait) : kSilentWait;
  if (lock.acquire(std::chrono::steady_clock::now() + limit) == DeviceLock::State::HeldByOther) {
    complain(fmt::format("orbctl: waiting for {}, which holds the line\n", lock.holderInWords()));
  }
}

bool Session::hasReceiver() {
  Values none;
  isReceiverKnown_ = isReceiverKnown_ || std::get<bool>(callAnyway(kIsThere, none));
  // On a slow line, or one that loses bytes, the detection can miss a receiver that is there.
  return isReceiverKnown_ || (::access(kDevice, F_OK) == 0 && looksAgain());
}

bool Session::looksAgain() {
  Values none;
  Values device = {std::string(kDevice)};
  callAnyway(kLookAgain, device);
  isReceiverKnown_ = std::get<bool>(callAnyway(kIsThere, none));
  return isReceiverKnown_;
}

std::vector<std::string> Session::exchange(const std::string& payload) {
  return payloadsIn(call("exchangeRaw", {payload, std::string()})[1]);
}

bool Session::isLastQueryRefused() {
  if (logSize() == logSize_) {
    return false;
  }
  const LogEntry entry = logEntryFrom(lastLine(kErrorLog).value_or(""));
  for (const ORBMessageInfo& row : ORBMessages) {
    // A query is its id alone; what has a body may be a setting.
    const bool hasSubId = row.msgId.subId != 0;
    if (entry.isUnanswered && row.maxLength == (hasSubId ? 2 : 1) &&
        entry.message == fmt::format("{:02X} {:02X}", row.msgId.id, row.msgId.subId)) {
      std::string query(1, static_cast<char>(row.msgId.id));
      query += hasSubId ? std::string(1, static_cast<char>(row.msgId.subId)) : "";
      Values arguments = {query, std::string()};
      callAnyway("exchangeRaw", arguments);
      const std::vector<std::string> replies = payloadsIn(arguments[1]);
      return std::any_of(replies.begin(), replies.end(), [](const std::string& reply) {
        return static_cast<unsigned char>(reply.front()) == kRefusal;
      });
    }
  }
  return false;
}

void Session::requireReceiver() {
  if (!hasReceiver()) {
    throw noReceiver(*this);
  }
}

Values Session::call(const std::string& operation, Values arguments) {
  requireReceiver();
  logSize_ = logSize();
  const Value result = callAnyway(operation, arguments);
  if (const auto* const bits = std::get_if<long long>(&result); bits != nullptr && *bits != 0) {
    throw failureOf(*this, operation, static_cast<unsigned int>(*bits));
  }
  return arguments;
}

}  // namespace orb::ctl
