#pragma once

#include <chrono>
#include <mutex>
#include <thread>

#include "base/owned_descriptor.h"
#include "line/port.h"
#include "line/received_log.h"
#include "orb-sim/device.h"

namespace orb::sim {

/// The thread that stands between a device and the port that clients reach it through. It sleeps in
/// poll() until a client writes, the device is due, or another thread wants something.
class Server {
 public:
  /// All must outlive this. What clients write is noted in the log, if there is one, after the
  /// device has seen it.
  Server(Device& device, Port& port, ReceivedLog* log = nullptr);
  ~Server();

  void send(const Bytes& bytes);

 private:
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;

  std::thread start();
  void run();
  bool sleep();
  int sleepLimit() const;
  void wake();
  void setUpClient();
  void letTimePass(Milliseconds elapsed);
  void serveClient();
  void hangUpIfDropped();
  void flush();

  Device& device_;
  Port& port_;
  ReceivedLog* const log_;
  OwnedDescriptor wake_;
  Clock::time_point deviceTime_ = Clock::now();  ///< the server's thread alone uses it

  std::mutex mutex_;  ///< guards what follows; never held while the device is called
  bool stopping_ = false;
  Bytes outgoing_;     ///< what goes to the client next
  bool full_ = false;  ///< the port has not taken all of it
  bool hasComplained_ = false;

  std::thread thread_;
};

}  // namespace orb::sim
