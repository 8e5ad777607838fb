#include "program/display.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "program/standard_streams.h"

namespace orb::sim {
namespace {

constexpr std::size_t kMostUnread = 1 << 20;
constexpr std::size_t kPiece = 4096;
constexpr std::chrono::seconds kPatience{1};

std::size_t linesOf(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace

struct Display::Output {
  std::mutex mutex;
  std::condition_variable changed;
  std::string unread;
  int error = 0;
  bool isFinished = false;
};

Display::Display() : output_(std::make_shared<Output>()) {
  std::thread([output = output_] { write(output); }).detach();
}

Display::~Display() {
  std::unique_lock lock(output_->mutex);
  output_->changed.wait_for(lock, kPatience, [&] { return output_->unread.empty(); });
  tellOfError();
  leftOut_ += linesOf(output_->unread);
  tellOfLeftOut();
  output_->isFinished = true;
  output_->changed.notify_all();
}

void Display::show(const std::string& lines) {
  const std::lock_guard lock(output_->mutex);
  tellOfError();
  if (lines.empty() || output_->error != 0) {
    return;
  }
  const bool isFull = leftOut_ != 0 ? !output_->unread.empty()
                                    : output_->unread.size() + lines.size() > kMostUnread;
  if (isFull || !tellOfLeftOut()) {
    leftOut_ += linesOf(lines);
    return;
  }
  output_->unread += lines;
  output_->changed.notify_all();
}

/// The thread's work.
void Display::write(const std::shared_ptr<Output>& output) {
  std::unique_lock lock(output->mutex);
  while (true) {
    output->changed.wait(lock, [&] { return output->isFinished || !output->unread.empty(); });
    if (output->isFinished) {
      return;
    }
    char piece[kPiece];
    const std::size_t size = output->unread.copy(piece, sizeof piece);
    lock.unlock();
    const ssize_t written = ::write(STDOUT_FILENO, piece, size);
    const int error = written < 0 && errno != EINTR && errno != EAGAIN ? errno : 0;
    if (written < 0 && error == 0) {  // others who have the same output may have set O_NONBLOCK
      pollfd output{STDOUT_FILENO, POLLOUT, 0};
      poll(&output, 1, -1);
    }
    lock.lock();
    if (error != 0) {
      output->error = error;
      output->unread.clear();
    } else {
      output->unread.erase(0, static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    output->changed.notify_all();
  }
}

void Display::tellOfError() {
  if (output_->error != 0 && !isErrorTold_) {
    isErrorTold_ = remark(std::string("cannot write standard output: ") +
                          std::strerror(output_->error) + "; goes on without it");
  }
}

/// Returns whether there is nothing more to tell.
bool Display::tellOfLeftOut() {
  if (leftOut_ != 0 && remark("nobody has read standard output; " + std::to_string(leftOut_) +
                              " lines are left out of it")) {
    leftOut_ = 0;
  }
  return leftOut_ == 0;
}

}  // namespace orb::sim
