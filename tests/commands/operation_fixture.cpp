#include "commands/operation_fixture.h"

#include <dlfcn.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "support/captured_output.h"
#include "support/replacement.h"

namespace orb::test {

namespace {

using namespace std::chrono_literals;

constexpr int kLooksAWait = 10;
constexpr int kWaits = 50;  // more than any operation has
constexpr std::chrono::milliseconds kChatterInterval = 2ms;

// Other threads, and a sanitizer's runtime in them, open files of their own at any moment: only
// terminals count.
std::ptrdiff_t openTerminals() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::count_if(begin(descriptors), end(descriptors), [](const auto& descriptor) {
    std::error_code gone;
    return std::filesystem::read_symlink(descriptor, gone).native().rfind("/dev/pts/", 0) == 0;
  });
}

std::string waitEvent(std::chrono::nanoseconds time) {
  return time % 1ms == 0ms ? "wait " + std::to_string(time / 1ms) + " ms"
                           : "wait " + std::to_string(time / 1ns) + " ns";
}

// Records an event of the thread that calls the driver; the line's own thread is not watched.
thread_local std::function<void(const std::string&)> noteEvent;

}  // namespace

/// The serial line's events of one call, as they come.
class OperationTest::LineTrace {
 public:
  explicit LineTrace(OperationTest& test) : test_(test) {
    noteEvent = [this](const std::string& event) { note(event); };
  }
  LineTrace(const LineTrace&) = delete;
  LineTrace& operator=(const LineTrace&) = delete;
  ~LineTrace() { noteEvent = nullptr; }

  std::vector<std::string> events() {
    notePackets();
    return events_;
  }

 private:
  void note(const std::string& event) {
    notePackets();
    events_.push_back(event);
    for (Trigger& trigger : test_.triggers_) {
      if (trigger.event == event && --trigger.countdown == 0) {
        trigger.action();
      }
    }
  }

  void notePackets() {
    if (const std::string sent = test_.sent(); !sent.empty()) {
      events_.push_back(sent);
    }
  }

  OperationTest& test_;
  std::vector<std::string> events_;
};

std::string notSent(const std::string& description) {
  return "STAMP:  Could not send : " + description + "\n";
}

std::string noReply(const std::string& description) {
  return "STAMP:  Did not receive : " + description + "\n";
}

std::string times(int count, const std::string& text) {
  return count == 0 ? "" : text + times(count - 1, text);
}

std::vector<std::string> lineOf(const Setting& row, const std::string& packet) {
  if (row.settle == 0ms) {
    return {"open", packet + " " + row.reads.packet};
  }
  return {"open", packet, waitEvent(row.settle), "open", row.reads.packet};
}

std::ostream& operator<<(std::ostream& out, const Observed& observed) {
  out << "\n  result " << observed.result << "\n  outputs {" << observed.outputs
      << "}\n  standard output {" << observed.standardOutput << "}\n  standard error {"
      << observed.standardError << "}\n  error log {" << observed.errorLog << "}\n  line";
  for (const std::string& event : observed.line) {
    out << "\n    " << event;
  }
  return out;
}

Observed OperationTest::observe(Driver& driver, const Call& call) {
  const std::size_t logged = contentOf(files_.errorLog).size();
  const std::ptrdiff_t openBefore = openTerminals();
  std::fflush(stdout);
  CapturedOutput standardOutput(1);
  CapturedOutput standardError(2);
  LineTrace trace(*this);
  const std::ptrdiff_t openOwn = openTerminals() - openBefore;

  const Outcome outcome = call(driver);

  std::fflush(stdout);
  EXPECT_EQ(openTerminals() - openOwn, openBefore) << "the device is left open";
  return {outcome.result,
          outcome.outputs,
          standardOutput.text(),
          standardError.text(),
          contentOf(files_.errorLog).substr(logged),
          trace.events()};
}

Observed OperationTest::observeAnswered(const Query& row, const std::string& body,
                                        const Call& call) {
  onPacket(row.sends.packet).answer(sim::frame(messageIn(row.reply.packet), hex(body)));
  return observe(call);
}

void OperationTest::when(std::string event, int nth, std::function<void()> action) {
  triggers_.push_back({std::move(event), nth, std::move(action)});
}

void OperationTest::unplug() { std::filesystem::rename(files_.tty, unplugged_); }

void OperationTest::plugIn() { std::filesystem::rename(unplugged_, files_.tty); }

void OperationTest::letWaitsEnd(int limitSeconds) {
  std::vector<int> looks;
  for (int wait = 0; wait < kWaits; ++wait) {
    const int start = wait * limitSeconds;
    looks.push_back(start);
    looks.insert(looks.end(), kLooksAWait - 1, start + limitSeconds - 1);
    looks.push_back(start + limitSeconds);
  }
  clock_.passSeconds(looks);
  gps_.line.startChatter(kChatterInterval);
}

int OperationTest::waitsEnded() const {
  constexpr int kReadings = kLooksAWait + 1;
  return clock_.readings() % kReadings == 0 ? clock_.readings() / kReadings : -1;
}

void OperationTest::stayWithinTheLimit(int limitSeconds) {
  clock_.passSeconds({0, limitSeconds - 1});
  gps_.line.startChatter(kChatterInterval);
}

}  // namespace orb::test

// A channel sets the terminal once, when it has opened it; the driver's waits are its only
// calls of nanosleep().

ORB_TEST_REPLACEMENT int tcsetattr(int descriptor, int when, const termios* settings) noexcept {
  if (orb::test::noteEvent) {
    orb::test::noteEvent("open");
  }
  static auto* const real = reinterpret_cast<decltype(&::tcsetattr)>(dlsym(RTLD_NEXT, "tcsetattr"));
  return real(descriptor, when, settings);
}

ORB_TEST_REPLACEMENT int nanosleep(const timespec* duration, timespec* rest) {
  if (orb::test::noteEvent) {
    orb::test::noteEvent(orb::test::waitEvent(std::chrono::seconds(duration->tv_sec) +
                                              std::chrono::nanoseconds(duration->tv_nsec)));
    return 0;
  }
  errno = ::clock_nanosleep(CLOCK_MONOTONIC, 0, duration, rest);
  return errno == 0 ? 0 : -1;
}
