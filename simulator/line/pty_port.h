#pragma once

#include <filesystem>
#include <mutex>
#include <string>

#include "base/raw_pty.h"
#include "line/port.h"
#include "line/stable_link.h"

namespace orb::sim {

/// A pseudo-terminal, seen from the device's end, with a link that leads to its tty.
class PtyPort : public Port {
 public:
  /// Without a link where `link` is empty. Throws std::system_error.
  explicit PtyPort(const std::filesystem::path& link);

  /// Whether a PtyPort of any process offers this tty by this link.
  static bool isOffered(const std::filesystem::path& tty, const std::filesystem::path& link);

  /// The tty that clients are to open now. May be called from any thread.
  std::string path() const;

  int descriptor() const override { return pty_.master.get(); }
  Bytes read() override;
  void write(Bytes& bytes) override;

  std::optional<unsigned int> clientSpeed() const override;
  void setClientSpeed(unsigned int baud) override;

  /// Offers another pty. Clients that have the old tty open see a hang-up: reads end, writes fail
  /// with EIO. Where no other pty is to be had, the line stays as it is.
  void hangUp() override;

 private:
  /// The tty stays open, so that a client that closes it is not seen as a
  /// hang-up, which would make every poll return at once.
  struct Pty : RawPty {
    explicit Pty(const std::filesystem::path& link);
  };

  void waitUntilRead() const;

  const std::filesystem::path linkPath_;
  mutable std::mutex mutex_;  ///< guards pty_.path
  Pty pty_;
  StableLink link_;
};

}  // namespace orb::sim
