#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

#include "orb-gnss/supervised_controller.h"
#include "supervised/worker_process.h"

namespace orb {

/// Has a worker do operations, one after another, each until its deadline.
class Supervisor {
 public:
  using Call = orbSupervisedController::Call;

  Supervisor() { workerProgram(); }  // before the process changes its folder

  /// Does `operation` with `arguments`, which come back as it left them, and tells of the call.
  /// Throws what the operation threw. A limit of zero is the operation's own.
  Value perform(const Operation& operation, std::vector<Value>& arguments,
                std::chrono::milliseconds limit, Call& call);

 private:
  /// Does without a worker that is another process's or that has ended.
  void wakeWorker();
  /// Starts a worker where there is none any more.
  Transfer send(const CallRequest& request, Deadline deadline);
  Transfer ask(const Operation& operation, const std::vector<Value>& arguments, Deadline deadline,
               CallResponse& response);
  Transfer lockAndAsk(const Operation& operation, const std::vector<Value>& arguments,
                      Deadline deadline, CallResponse& response, Call& call);

  /// What a call may take that has no limit of its own.
  std::chrono::milliseconds ownLimit(const Operation& operation) const;

  std::timed_mutex oneCallAtATime_;
  std::unique_ptr<WorkerProcess> worker_;
};

}  // namespace orb
