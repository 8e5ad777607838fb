#pragma once

#include <chrono>
#include <string>

#include "line/owned_descriptor.h"
#include "orb-sim/bytes.h"

namespace orb::sim {

/// A pseudo-terminal, seen from the device's end. Its tty is raw and stays open, so that a client
/// that closes it is not felt as a hang-up, which would make every poll return at once. Clients
/// that have it open when it goes see a hang-up: reads end, writes fail with EIO.
class Pty {
 public:
  /// Throws std::system_error where there is none to be had.
  Pty();

  /// The tty, for clients.
  const std::string& path() const { return path_; }

  /// To be polled; never blocks.
  int descriptor() const { return master_.get(); }

  /// What clients have written; empty when nothing is there.
  Bytes read();

  /// Hands the client as many of the bytes, from the first on, as the tty has room for, and takes
  /// them out of `bytes`.
  void write(Bytes& bytes);

  /// Sleeps until clients have read all that was written, at most for `limit`.
  void waitUntilRead(std::chrono::milliseconds limit) const;

 private:
  OwnedDescriptor master_;
  std::string path_;
  OwnedDescriptor tty_;
};

}  // namespace orb::sim
