#pragma once

#include <optional>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// The device's end of a line: what a Server serves. Only the server's thread uses it.
class Port {
 public:
  Port() = default;
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;
  virtual ~Port() = default;

  /// To be polled before each read(); may be a new one after each call of a member.
  virtual int descriptor() const = 0;

  /// What clients have written; empty when nothing is there. Never blocks.
  virtual Bytes read() = 0;

  /// Sends the client as many of the bytes, from the first on, as there is room for, and takes
  /// them out of `bytes`. Never blocks.
  virtual void write(Bytes& bytes) = 0;

  /// The speed that the client's end is set to, in baud, or 0 for one that has no name; none where
  /// there is no such thing.
  virtual std::optional<unsigned int> clientSpeed() const { return std::nullopt; }
  virtual void setClientSpeed(unsigned int /*baud*/) {}

  /// Drops the line under clients that hold it open, and offers a new one. Clients get a moment to
  /// read what has been written.
  virtual void hangUp() = 0;
};

}  // namespace orb::sim
