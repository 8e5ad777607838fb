#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "base/owned_descriptor.h"
#include "supervised/child_handle.h"
#include "supervised/frame_socket.h"
#include "supervised/wire.h"

namespace orb {

/// What a process has written since this was last asked, kept in memory that outlives it.
class CapturedStream {
 public:
  explicit CapturedStream(const char* name);
  int descriptor() const { return memory_.get(); }
  std::string take();

 private:
  OwnedDescriptor memory_;
};

/// A process that holds the controller and does what it is asked to, one operation after another.
/// It ends with this object, and also where the process of this object is killed.
class WorkerProcess {
 public:
  /// Starts it, without a copy of this process. Throws std::system_error.
  explicit WorkerProcess(const std::string& program);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  /// As end().
  ~WorkerProcess();

  /// Whether this is a child of fork(): the worker is its parent's.
  bool isOfParent() const { return owner_ != ::getpid(); }

  /// Has the process wake up for a request. Returns false where it has ended.
  bool announceRequest();

  /// Sends what it is to do; Closed where it has ended before.
  Transfer send(const CallRequest& request, Deadline deadline);

  /// Receives what became of the request. Unless that is done, the process is of no further use.
  Transfer receive(CallResponse& response, Deadline deadline);

  /// Kills it, and waits half a second at most until it has ended.
  void end();

  std::string takeOutput() { return output_.take(); }
  std::string takeErrors() { return errors_.take(); }

  /// Whether the receiver was looked for: that is done with the first operation of the facade.
  bool hasLookedForReceiver = false;

 private:
  CapturedStream output_;
  CapturedStream errors_;
  OwnedDescriptor socket_;
  OwnedDescriptor lifeline_;
  std::optional<ChildHandle> process_;
  const pid_t owner_ = ::getpid();
};

/// Where the program of the worker stands: beside this library, as built or as installed. A library
/// that was loaded by a relative path is found from the folder of the first call.
std::string workerProgram();

}  // namespace orb
