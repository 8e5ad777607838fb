// The process that holds the controller for a supervised one. It does what it is asked on its
// socket, and ends when its client ends, also in the middle of an operation.

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <thread>

#include "operation_table/operation.h"
#include "operation_table/receiver.h"
#include "supervised/device_lock.h"
#include "supervised/frame_socket.h"
#include "supervised/wire.h"
#include "supervised/worker_socket.h"

namespace orb {
namespace {

/// Runs in a thread of its own: the main one may be in a call that does not return.
[[noreturn]] void endWithClient(pid_t client) {
  char none = 0;
  while (::read(kWorkerLifeline, &none, 1) < 0 && errno == EINTR) {
  }
  DeviceLock::removeLeftBy(client);
  ::_exit(0);
}

CallResponse failed(CallResponse::Kind kind, const char* text) {
  return {kind, 0LL, {Value(text)}};
}

CallResponse perform(Receiver& receiver, CallRequest request) {
  try {
    if (request.operation >= operations().size()) {
      return failed(CallResponse::Kind::Exception, "no such operation");
    }
    CallResponse response;
    response.result = operations()[request.operation].call(receiver, request.arguments);
    response.arguments = std::move(request.arguments);
    return response;
  } catch (const std::logic_error& error) {
    return failed(CallResponse::Kind::LogicError, error.what());
  } catch (const std::exception& error) {
    return failed(CallResponse::Kind::Exception, error.what());
  }
}

Transfer answer(const CallResponse& response) {
  std::fflush(nullptr);
  try {
    return sendFrame(kWorkerSocket, encode(response), kNoDeadline);
  } catch (const std::length_error&) {
    const CallResponse tooLong = failed(CallResponse::Kind::Exception, "the reply is too long");
    return sendFrame(kWorkerSocket, encode(tooLong), kNoDeadline);
  }
}

/// Answers requests until there are no more.
void serve() {
  Receiver receiver;
  std::string bytes;
  std::chrono::microseconds awake{0};
  while (receiveFrame(kWorkerSocket, bytes, kNoDeadline, awake) == Transfer::Done) {
    const bool isAnnouncement = bytes == kAnnouncement;
    awake = isAnnouncement ? kAwake : std::chrono::microseconds{0};
    if (!isAnnouncement && answer(perform(receiver, decodeRequest(bytes))) != Transfer::Done) {
      return;
    }
  }
}

}  // namespace
}  // namespace orb

int main() {
  // What is printed before a deadline is missed is not to be lost with this process.
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  const pid_t client = ::getppid();
  std::thread(orb::endWithClient, client).detach();
  try {
    orb::serve();
  } catch (const std::exception& error) {
    std::cerr << "orb-gnss-worker: " << error.what() << '\n';
    ::_exit(1);
  }
  ::_exit(0);
}
