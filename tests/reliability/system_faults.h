#pragma once

#include <cstddef>
#include <span>

// The system calls that the library and what it is built on make through the C library, each of
// which can be made to fail. A library of its own, since this program's own wrappers of paths come
// before it and pass on to it. One thread at a time.

namespace orb::test {

enum class SystemFault {
  kInterrupted,  ///< EINTR
  kInputOutput,  ///< EIO
  kNoSpace,      ///< ENOSPC
  kShort,        ///< half of the bytes pass
  kZero,         ///< no byte passes
  kHangUp,       ///< EIO now, and in every later call on the same descriptor
};
inline constexpr int kSystemFaults = 6;

/// While it exists, system calls are noted, and one of them meets a fault.
class SystemFaults {
 public:
  struct Call {
    const char* name = "";
    bool foundNothing = false;  ///< a read that had to wait
  };

  /// Call `number` meets the fault, 1 being the next; 0: none does.
  explicit SystemFaults(std::size_t number = 0, SystemFault fault = SystemFault::kInterrupted);
  SystemFaults(const SystemFaults&) = delete;
  SystemFaults& operator=(const SystemFaults&) = delete;
  ~SystemFaults();

  /// Those that were made, at the end of the last object's life too.
  static std::span<const Call> calls();
  /// Whether the call was made and can meet such a fault: one that moves no bytes is never short.
  bool hasHappened() const { return hasHappened_; }

  // For the replaced functions.

  /// Notes a call. False: it fails, with errno set, or ends at once where `size` is now 0.
  bool passes(const char* name, int descriptor, std::size_t* size);
  void foundNothing();

 private:
  friend class Undisturbed;

  std::size_t number_;
  SystemFault fault_;
  int hungUp_ = -1;
  bool hasHappened_ = false;
};

/// While it exists, calls are the test's own.
class Undisturbed {
 public:
  Undisturbed();
  Undisturbed(const Undisturbed&) = delete;
  Undisturbed& operator=(const Undisturbed&) = delete;
  ~Undisturbed();

 private:
  SystemFaults* const faults_;
};

}  // namespace orb::test
