#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"

namespace orb::sim {

/// A serial line with a device at its far end: a pseudo-terminal that clients open like a tty.
///
///     Receiver receiver;
///     PtyLine line(receiver);
///     const int tty = open(line.path().c_str(), O_RDWR | O_NOCTTY);
///
/// A thread of the line's own serves the device. The tty is raw from the start, and clients may
/// open and close it as often as they like: the line holds a descriptor of its own, so that no
/// hang-up reaches the device and the path stays. Every member may be called from any thread.
///
/// Where the device drops the line (Device::takeHangUp()), clients that hold the tty open see a
/// hang-up: they read what has been written so far, then the end of the file, and cannot write
/// (EIO). A new tty has then taken its place already: path() and the link lead there. What
/// clients have written and the device has not yet seen is lost. Clients that do not read for a
/// quarter of a second lose what they have not read.
///
/// A client that sends and leaves more than 1 MiB unread waits until it reads, as on a line with
/// flow control; one line on standard error says so.
///
/// What the line writes whole (an answer, one send()) is not mixed with anything else; pieces that
/// a device sends one after the other are, where the line has more to say meanwhile.
class PtyLine {
 public:
  /// The clock that times the device.
  using Clock = std::chrono::steady_clock;

  /// How long the waits below last at most.
  static constexpr std::chrono::milliseconds kLimit{5000};

  /// Plugs in `device`, which must outlive the line. With `link`, a symbolic link of that name
  /// points to the tty for the life of the line; a symbolic link that is already there is replaced.
  /// Throws std::system_error where the pty cannot be had or the link cannot be made.
  explicit PtyLine(Device& device, const std::filesystem::path& link = {});
  PtyLine(const PtyLine&) = delete;
  PtyLine& operator=(const PtyLine&) = delete;
  ~PtyLine();

  /// The tty for clients to open: a new one after each hang-up.
  std::string path() const;

  /// All bytes that clients have written since the start or the last forgetReceived(). So that a
  /// line may serve for ever, the oldest go: it keeps 2^20 bytes, and 2^16 packets to wait for.
  Bytes received() const;
  /// Begins anew with what received() returns and the waits count.
  void forgetReceived();

  /// Waits until clients have written so many bytes, and the device has seen them. False when that
  /// took longer than `limit`.
  [[nodiscard]] bool waitForBytes(std::size_t count, std::chrono::milliseconds limit = kLimit);
  /// Waits likewise for `count` packets of message `id`.
  [[nodiscard]] bool waitForMessage(std::uint16_t id, std::size_t count = 1,
                                    std::chrono::milliseconds limit = kLimit);

  /// Sends these bytes to the client, as if the device had said them.
  void send(const Bytes& bytes);

 private:
  struct Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace orb::sim
