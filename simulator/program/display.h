#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace orb::sim {

/// Standard output for who must not wait for its readers: a thread writes, and waits where it has
/// to.
class Display {
 public:
  /// Its thread is never sent the signals that are blocked now.
  Display();
  /// Waits until everything has been read, but no longer than a second.
  ~Display();
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

  /// Shows whole lines, at once. Where 1 MiB has not been read yet, leaves them out, and those
  /// after them until all is read; says so on standard error afterwards. Also says there, once,
  /// that standard output cannot be written. Does not wait for readers of standard error either.
  void show(const std::string& lines);

 private:
  struct Output;

  static void write(const std::shared_ptr<Output>& output);
  void tellOfError();
  bool tellOfLeftOut();

  const std::shared_ptr<Output> output_;  // the thread may be waiting when this ends
  std::size_t leftOut_ = 0;               // lines
  bool isErrorTold_ = false;
};

}  // namespace orb::sim
