#pragma once

#include <cstddef>

#include "support/bytes.h"

namespace orb::test {

/// A copy of some bytes that ends where an inaccessible page begins: who reads or writes after it
/// ends the test program, in every build.
class GuardedBytes {
 public:
  explicit GuardedBytes(const Bytes& bytes);
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  ~GuardedBytes();

  unsigned char* data() { return data_; }
  unsigned long size() const { return size_; }

 private:
  std::size_t size_;
  std::size_t mappedSize_;
  void* mapping_;
  unsigned char* data_;
};

}  // namespace orb::test
