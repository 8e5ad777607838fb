#pragma once

#include <string>

#include "base/raw_pty.h"
#include "support/hex_text.h"

namespace orb::test {

/// A pseudo-terminal with a raw tty for the code under test and the far end for the test.
///
/// Nothing here depends on when the kernel passes bytes on: each member returns when they are
/// there, and throws std::runtime_error when that takes seconds.
class Pty {
 public:
  /// The tty to open.
  const std::string& path() const { return pty_.path; }
  /// A descriptor on the tty, which also keeps its settings while nobody else has it open.
  int tty() const { return pty_.tty.get(); }

  /// Puts at most 4000 bytes where the tty's reader finds them. Nobody reads meanwhile.
  void feed(const Bytes& bytes);
  /// The same without waiting until they are there, while somebody may be reading.
  void send(const Bytes& bytes);
  /// How many bytes wait for the tty's reader.
  int waiting() const;

  /// Takes `count` bytes that were written to the tty.
  Bytes takeWritten(std::size_t count);
  /// Whether more was written than was taken.
  bool hasWritten() const;

 private:
  RawPty pty_;
};

}  // namespace orb::test
