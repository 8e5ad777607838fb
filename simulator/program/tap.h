#pragma once

#include <chrono>
#include <optional>
#include <sstream>

#include "base/owned_descriptor.h"
#include "line/pty_port.h"
#include "orb-sim/bytes.h"
#include "orb-sim/trace.h"
#include "program/display.h"
#include "program/signals.h"
#include "trace/transcript.h"

namespace orb::sim {

/// Stands between a serial port and the clients of a pty: passes everything on, both ways, and
/// writes it down. Without a pty, it writes down what comes from the port.
class Tap {
 public:
  /// `port` is an open serial port, which errors call `name`; `link` points to the pty; where it
  /// is empty, there is none. Bytes are recorded where there is a `trace`.
  Tap(OwnedDescriptor port, std::string name, const std::filesystem::path& link,
      std::optional<TraceWriter> trace, const ListingForm& form);

  /// The tty for clients; empty for none.
  std::string tty() const { return client_ ? client_->path() : ""; }

  /// Works until a signal asks for the end; also where standard output cannot be written or is not
  /// read, see Display. Throws Failure where the port is gone, and as TraceWriter does.
  void run(const EndSignals& end);

 private:
  using Clock = std::chrono::steady_clock;

  bool passOn(const EndSignals& end);
  void takeFromPort();
  void takeFromClient();
  void note(Speaker from, const Bytes& bytes);
  void show();
  std::chrono::microseconds now() const;

  const Clock::time_point start_ = Clock::now();
  OwnedDescriptor port_;
  const std::string name_;
  Display display_;  // ends last
  std::optional<PtyPort> client_;
  std::optional<TraceWriter> trace_;
  std::ostringstream text_;  // what the transcript has written and the display has not been given
  Transcript transcript_;

  Bytes toPort_;
  Bytes toClient_;
};

}  // namespace orb::sim
