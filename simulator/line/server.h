#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <thread>

#include "base/owned_descriptor.h"
#include "line/port.h"
#include "line/received_log.h"
#include "orb-sim/device.h"

namespace orb::sim {

/// The thread that stands between a device and the port that clients reach it through. It sleeps in
/// poll() until a client writes, the device or the chatter is due, or another thread wants
/// something.
class Server {
 public:
  /// Both must outlive this.
  Server(Device& device, Port& port);
  ~Server();

  ReceivedLog& log() { return log_; }

  void send(const Bytes& bytes);
  void startChatter(std::chrono::milliseconds interval);
  void stopChatter();

 private:
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::milliseconds;

  void run();
  bool sleep();
  int sleepLimit();
  void wake();
  void letTimePass(Milliseconds elapsed);
  void serveClient();
  void hangUpIfDropped();
  void chatter();
  void offer(const Bytes& bytes);
  void flush();

  Device& device_;
  Port& port_;
  OwnedDescriptor wake_;
  ReceivedLog log_;
  Clock::time_point deviceTime_ = Clock::now();  ///< the server's thread alone uses it

  std::mutex mutex_;  ///< guards what follows; never held while the device is called
  bool stopping_ = false;
  Bytes outgoing_;     ///< what goes to the client next
  bool full_ = false;  ///< the port has not taken all of it
  std::optional<Milliseconds> chatterInterval_;
  Clock::time_point nextChatter_;

  std::thread thread_;
};

}  // namespace orb::sim
