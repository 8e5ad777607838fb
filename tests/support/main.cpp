#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

/// The main function of the GoogleTest programs. Each test gets the number of seconds that the
/// environment variable ORB_TEST_TIMEOUT holds: a receive on a silent line never returns by design,
/// and a test that meets one by mistake must not stop the run. Without the variable, as under a
/// debugger, there is no limit. A program without any test fails.
namespace orb::test {
namespace {

std::array<char, 512> message;
int standardError = -1;  // also while a test captures what it writes there

void endProgram(int /*signal*/) {
  std::size_t length = 0;
  while (length < message.size() && message[length] != '\0') {
    ++length;
  }
  [[maybe_unused]] const ssize_t written = ::write(standardError, message.data(), length);
  _exit(EXIT_FAILURE);
}

/// A timer of its own, since tests use alarm() and setitimer() themselves; forked children have
/// none.
class TimeLimit : public ::testing::EmptyTestEventListener {
 public:
  explicit TimeLimit(time_t seconds) : seconds_(seconds) {
    struct sigaction action {};
    action.sa_handler = endProgram;
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGRTMAX;
    standardError = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100);
    if (standardError < 0 || sigaction(SIGRTMAX, &action, nullptr) != 0 ||
        timer_create(CLOCK_MONOTONIC, &event, &timer_) != 0) {
      throw std::system_error(errno, std::generic_category(), "the time limit of tests");
    }
  }

  void OnTestStart(const ::testing::TestInfo& test) override {
    const std::string text = std::string(test.test_suite_name()) + "." + test.name() +
                             " did not end within " + std::to_string(seconds_) + " s\n";
    message.fill('\0');
    text.copy(message.data(), message.size());
    start(seconds_);
  }

  void OnTestEnd(const ::testing::TestInfo& /*test*/) override { start(0); }

 private:
  void start(time_t seconds) {
    const itimerspec time{{}, {seconds, 0}};
    timer_settime(timer_, 0, &time, nullptr);
  }

  time_t seconds_;
  timer_t timer_{};
};

}  // namespace
}  // namespace orb::test

int main(int argc, char** argv) {
  ::testing::InitGoogleMock(&argc, argv);
  const ::testing::UnitTest& tests = *::testing::UnitTest::GetInstance();
  if (const char* const seconds = std::getenv("ORB_TEST_TIMEOUT")) {
    ::testing::UnitTest::GetInstance()->listeners().Append(
        new orb::test::TimeLimit(std::stoi(seconds)));  // which owns it
  }
  const int result = RUN_ALL_TESTS();
  return tests.total_test_count() == 0 ? EXIT_FAILURE : result;
}
