#pragma once

#include <sys/types.h>

#include <string>

#include "base/owned_descriptor.h"
#include "supervised/frame_socket.h"

namespace orb {

/// The lock on /dev/tty_gps that serial tools keep: a file LCK..tty_gps with the holder's process
/// id, in /run/lock or /var/lock, and flock() on it. Held from acquire() to the end of the object.
class DeviceLock {
 public:
  enum class State {
    Held,         // the line is ours
    HeldByOther,  // another process had it until the deadline
    Unprotected   // no file may be written; another user's, where there is one, has been locked
  };

  DeviceLock() = default;
  DeviceLock(const DeviceLock&) = delete;
  DeviceLock& operator=(const DeviceLock&) = delete;
  ~DeviceLock();

  State acquire(Deadline deadline);

  /// Who held it; 0 where that is not known.
  pid_t holder() const { return holder_; }
  /// As "process 7" or "another process".
  std::string holderInWords() const;

  /// Why the line is not protected.
  const std::string& problem() const { return problem_; }

  /// The path of the file, which is there while somebody holds the lock.
  static const std::string& path();

  /// Removes the file where it holds the id of `process`, which has been killed.
  static void removeLeftBy(pid_t process);

 private:
  enum class Attempt { Taken, Busy, Again, Impossible };

  Attempt attempt(const std::string& path);
  Attempt impossible(const std::string& path, int error);
  Attempt takeOver(const std::string& path);

  OwnedDescriptor file_;
  pid_t holder_ = 0;
  bool isOurs_ = false;
  std::string problem_;
};

}  // namespace orb
