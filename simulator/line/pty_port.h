#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "line/port.h"
#include "line/pty.h"
#include "line/stable_link.h"

namespace orb::sim {

/// A line that is a pseudo-terminal, with a link that follows it.
class PtyPort : public Port {
 public:
  /// Without a link where `link` is empty. Throws std::system_error.
  explicit PtyPort(const std::filesystem::path& link);

  /// The tty that clients are to open now. May be called from any thread.
  std::string path() const;

  int descriptor() const override { return pty_->descriptor(); }
  Bytes read() override { return pty_->read(); }
  void write(Bytes& bytes) override { pty_->write(bytes); }

  /// Where no other pty is to be had, the line stays as it is.
  void hangUp() override;

 private:
  std::unique_ptr<Pty> pty_;
  StableLink link_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::string path_;
};

}  // namespace orb::sim
