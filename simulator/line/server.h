#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <thread>

#include "line/owned_descriptor.h"
#include "line/pty.h"
#include "line/received_log.h"
#include "line/stable_link.h"
#include "orb-sim/pty_line.h"

namespace orb::sim {

/// The thread that stands between a device and its pty. It sleeps in poll() until a client writes,
/// the device or the chatter is due, or another thread wants something.
class PtyLine::Server {
 public:
  Server(Device& device, const std::filesystem::path& link);
  ~Server();

  const std::string& path() const { return pty_.path(); }
  ReceivedLog& log() { return log_; }

  void send(const Bytes& bytes);
  void startChatter(std::chrono::milliseconds interval);
  void stopChatter();

 private:
  using Milliseconds = std::chrono::milliseconds;

  void run();
  bool sleep();
  int sleepLimit();
  void wake();
  void letTimePass(Milliseconds elapsed);
  void serveClient();
  void chatter();
  void offer(const Bytes& bytes);
  void flush();

  Device& device_;
  Pty pty_;
  StableLink link_;
  OwnedDescriptor wake_;
  ReceivedLog log_;
  Clock::time_point deviceTime_ = Clock::now();  ///< the line's thread alone uses it

  std::mutex mutex_;  ///< guards what follows; never held while the device is called
  bool stopping_ = false;
  Bytes outgoing_;     ///< what goes to the client next
  bool full_ = false;  ///< the tty has not taken all of it
  std::optional<Milliseconds> chatterInterval_;
  Clock::time_point nextChatter_;

  std::thread thread_;
};

}  // namespace orb::sim
