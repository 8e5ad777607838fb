#pragma once

#include <string>

#include "line/owned_descriptor.h"
#include "orb-sim/bytes.h"

namespace orb::sim {

/// A pseudo-terminal, seen from the device's end. Its tty is raw and stays open, so that a client
/// that closes it is not felt as a hang-up, which would make every poll return at once.
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

 private:
  OwnedDescriptor master_;
  std::string path_;
  OwnedDescriptor tty_;
};

}  // namespace orb::sim
