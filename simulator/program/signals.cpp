#include "program/signals.h"

#include <sys/signalfd.h>

#include <cstring>
#include <string>

#include "program/standard_streams.h"

namespace orb::sim {

sigset_t signalSet(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) {
    sigaddset(&set, signal);
  }
  return set;
}

sigset_t passedOnSignals() {
  sigset_t set = signalSet({SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGALRM, SIGUSR1, SIGUSR2});
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
    sigaddset(&set, signal);
  }
  return set;
}

sigset_t blockSignals(const sigset_t& signals) {
  sigset_t before;
  sigprocmask(SIG_BLOCK, &signals, &before);
  return before;
}

siginfo_t takeSignal(const sigset_t& signals) {
  siginfo_t taken{};
  while (sigwaitinfo(&signals, &taken) < 0) {
  }
  return taken;
}

namespace {

/// Those by which this process is to be ended: not those that whoever started it has it ignore, as
/// nohup(1) does. Blocked, these would come nevertheless.
sigset_t endSignals() {
  sigset_t set = signalSet({});
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) {
      sigaddset(&set, signal);
    }
  }
  return set;
}

}  // namespace

EndSignals::EndSignals()
    : signals_(endSignals()),
      before_(blockSignals(signals_)),
      source_(signalfd(-1, &signals_, SFD_CLOEXEC), "signalfd") {
  std::signal(SIGPIPE, SIG_IGN);
}

void EndSignals::wait() const {
  remark(std::string("ended by SIG") + sigabbrev_np(takeSignal(signals_).si_signo));
}

EndSignals::~EndSignals() {
  // One that has come twice must not end the program before it has cleared up.
  const timespec atOnce{0, 0};
  while (sigtimedwait(&signals_, nullptr, &atOnce) > 0) {
  }
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace orb::sim
