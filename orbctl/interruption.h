#pragma once

#include <unistd.h>

#include <csignal>
#include <string>
#include <utility>

namespace orb::ctl {

/// Says what SIGINT has interrupted, while it exists; there is one at a time.
class Interruption {
 public:
  explicit Interruption(std::string said = {}) {
    prepare(std::move(said));
    struct sigaction action {};
    action.sa_handler = [](int number) {
      static_cast<void>(!::write(STDERR_FILENO, text().data(), text().size()));
      ::raise(number);
    };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, nullptr, &before_);
    if (before_.sa_handler != SIG_IGN) {
      ::sigaction(SIGINT, &action, nullptr);
    }
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption() { ::sigaction(SIGINT, &before_, nullptr); }

  static void prepare(std::string next) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGINT);
    ::sigprocmask(SIG_BLOCK, &blocked, &before);
    text() = std::move(next);
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
  }

 private:
  static std::string& text() {
    static std::string text;
    return text;
  }

  struct sigaction before_ {};
};

}  // namespace orb::ctl
