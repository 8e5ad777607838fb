#include "supervised/supervisor.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <system_error>

#include "supervised/device_lock.h"
#include "supervised/line_listener.h"
#include "transport/default_device.h"
#include "transport/result_bits.h"

namespace orb {
namespace {

using Call = orbSupervisedController::Call;
using Ending = orbSupervisedController::Ending;

/// What a call may take beyond the operation's own longest time.
constexpr std::chrono::seconds kMargin{2};
/// The longest that looking for module and receiver takes.
constexpr std::chrono::seconds kLooking{5};
/// Far enough for anybody, also back, and near enough for the clock.
constexpr std::chrono::milliseconds kLongestLimit = std::chrono::hours(24 * 365);
/// NMEA sentences come once a second.
constexpr std::chrono::milliseconds kListening{1200};

/// The result of a call that did not come to its end.
Value resultWithoutOne(const Operation& operation, long long bit) {
  if (operation.name == "timeStamp") {
    return std::string();
  }
  if (operation.name == "IsOrbitek" || operation.name == "isVersionValid") {
    return false;
  }
  return operation.resultBits == Operation::kNoMask ? 0LL : bit;
}

void listen(Call& call) {
  const LineReport heard = listenTo(std::string(kDefaultDevice), kListening);
  call.line = heard.state;
  call.problem += "; " + describe(heard);
}

[[noreturn]] void rethrow(const CallResponse& response) {
  const auto& text = std::get<std::string>(response.arguments.at(0));
  if (response.kind == CallResponse::Kind::LogicError) {
    throw std::logic_error(text);
  }
  throw std::runtime_error(text);
}

}  // namespace

Value Supervisor::perform(const Operation& operation, std::vector<Value>& arguments,
                          std::chrono::milliseconds limit, Call& call) {
  call = Call();
  Deadline deadline =
      std::chrono::steady_clock::now() + std::clamp(limit, -kLongestLimit, kLongestLimit);
  std::unique_lock<std::timed_mutex> lock(oneCallAtATime_, std::defer_lock);
  if (limit == std::chrono::milliseconds::zero()) {
    lock.lock();  // the calls before this one have deadlines
  } else if (!lock.try_lock_until(deadline)) {
    call.ending = Ending::LineHeld;
    call.problem = "a call of another thread had the controller until the deadline";
    return resultWithoutOne(operation, kNotSent);
  }
  wakeWorker();
  if (limit == std::chrono::milliseconds::zero()) {
    deadline = std::chrono::steady_clock::now() + ownLimit(operation);
  }
  CallResponse response;
  Transfer transfer = Transfer::Closed;
  try {
    transfer = lockAndAsk(operation, arguments, deadline, response, call);
  } catch (...) {
    worker_.reset();  // it may have an answer that nobody waits for any more
    throw;
  }
  if (call.ending == Ending::NotStarted || call.ending == Ending::LineHeld) {
    return resultWithoutOne(operation, kNotSent);
  }
  if (transfer != Transfer::Done) {
    return resultWithoutOne(operation, kNoReply);
  }
  if (response.kind != CallResponse::Kind::Returned) {
    rethrow(response);
  }
  arguments = std::move(response.arguments);
  return response.result;
}

std::chrono::milliseconds Supervisor::ownLimit(const Operation& operation) const {
  const bool looksForReceiver = !worker_ || !worker_->hasLookedForReceiver;
  return operation.longestTime() + kMargin +
         (looksForReceiver ? kLooking : std::chrono::seconds::zero());
}

void Supervisor::wakeWorker() {
  if (worker_ && (worker_->isOfParent() || !worker_->announceRequest())) {
    worker_.reset();
  }
}

Transfer Supervisor::lockAndAsk(const Operation& operation, const std::vector<Value>& arguments,
                                Deadline deadline, CallResponse& response, Call& call) {
  DeviceLock lock;
  const DeviceLock::State state = lock.acquire(deadline);
  call.warning = lock.problem();
  if (state == DeviceLock::State::HeldByOther) {
    call.ending = Ending::LineHeld;
    call.problem = lock.holderInWords() + " holds " + std::string(kDefaultDevice);
    return Transfer::Late;
  }
  Transfer transfer = Transfer::Closed;
  try {
    transfer = ask(operation, arguments, deadline, response);
  } catch (const std::system_error& error) {
    call.ending = Ending::NotStarted;
    call.problem = std::string("cannot start the worker: ") + error.what();
    worker_.reset();
    return Transfer::Closed;
  }
  if (transfer != Transfer::Done) {
    worker_->end();
  }
  call.standardOutput = worker_->takeOutput();
  call.standardError = worker_->takeErrors();
  if (transfer == Transfer::Late) {
    call.ending = Ending::DeadlineMissed;
    call.problem = std::string(operation.name) + " did not return in time";
    listen(call);
  } else if (transfer == Transfer::Closed) {
    call.ending = Ending::WorkerEnded;
    call.problem = "the worker ended during " + std::string(operation.name);
    const std::string lastWords = call.standardError.substr(0, call.standardError.find('\n'));
    call.problem += lastWords.empty() ? "" : ": " + lastWords;
  }
  if (transfer != Transfer::Done) {
    worker_.reset();
  }
  return transfer;
}

Transfer Supervisor::send(const CallRequest& request, Deadline deadline) {
  if (worker_) {
    const Transfer sent = worker_->send(request, deadline);
    if (sent != Transfer::Closed) {
      return sent;
    }
  }
  worker_ = std::make_unique<WorkerProcess>(workerProgram());
  return worker_->send(request, deadline);
}

Transfer Supervisor::ask(const Operation& operation, const std::vector<Value>& arguments,
                         Deadline deadline, CallResponse& response) {
  const auto place = static_cast<std::size_t>(&operation - operations().data());
  const Transfer sent = send({place, arguments}, deadline);
  if (sent != Transfer::Done) {
    return sent;
  }
  try {
    const Transfer transfer = worker_->receive(response, deadline);
    worker_->hasLookedForReceiver |=
        operation.isOfFacade && response.kind == CallResponse::Kind::Returned;
    return transfer;
  } catch (const std::runtime_error&) {
    return Transfer::Closed;  // it sent what is no response
  }
}

}  // namespace orb
