#pragma once

#include <memory>

namespace orb {

/// The bytes received in one wait for a reply, oldest first.
///
/// When the buffer is full the oldest bytes go; the newest ones stay, as many as the catalogue's
/// longest packet has, so that none of its packets is torn while it comes in.
class ReceiveBuffer {
 public:
  /// A buffer for `timeoutSeconds` of traffic: 1024 bytes a second, and no less than 1024.
  explicit ReceiveBuffer(int timeoutSeconds);

  const unsigned char* data() const { return bytes_.get(); }
  unsigned long size() const { return size_; }

  /// Where the next bytes go. After makeRoom() there is room for one at least.
  unsigned char* end() { return bytes_.get() + size_; }
  /// Room at end().
  unsigned long space() const { return capacity_ - size_; }

  /// Takes in `count` bytes that were written at end(), at most space().
  void append(unsigned long count) { size_ += count; }

  /// Drops the oldest bytes if the buffer is full.
  void makeRoom();

 private:
  unsigned long capacity_;
  std::unique_ptr<unsigned char[]> bytes_;
  unsigned long size_ = 0;
};

}  // namespace orb
