// Drivers in threads of their own, each on a line of its own. To be run under the thread sanitizer.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "orb-gnss/module_driver.h"
#include "orb-sim/pty_line.h"
#include "orb-sim/receiver.h"
#include "support/replacement.h"

namespace {

/// Where this thread finds the tty.
thread_local std::string ttyOfThread;

}  // namespace

ORB_TEST_REPLACEMENT int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  if (std::strcmp(path, "/dev/tty_gps") == 0) {
    path = ttyOfThread.c_str();
  }
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

ORB_TEST_REPLACEMENT int __open_2(const char* path, int flags) { return open(path, flags); }

namespace orb::test {
namespace {

constexpr unsigned int kThreads = 4;
constexpr unsigned int kRounds = 5;

/// How many exchanges of a driver of its own, on a receiver of its own, do not give its values.
int failuresOf(unsigned int number) {
  sim::Receiver receiver;
  const sim::PtyLine line(receiver);
  ttyOfThread = line.path();
  orbController_QN4470T01 driver;
  int failures = 0;
  for (unsigned int round = 0; round < kRounds; ++round) {
    const auto wanted = static_cast<signed char>((number * kRounds + round) % 40);
    signed char found = -1;
    std::string info;
    failures += driver.setMinCNo(wanted) != 0 || driver.getMinCNo(found) != 0 || found != wanted;
    failures += driver.getInfo(info) != 0 || info.empty();
  }
  return failures;
}

TEST(Threads, WithADriverAndALineEachDoNotDisturbEachOther) {
  std::array<int, kThreads> failures{};
  failures.fill(-1);
  std::vector<std::thread> threads;
  for (unsigned int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&failures, number] { failures[number] = failuresOf(number); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(failures, (std::array<int, kThreads>{}));
}

}  // namespace
}  // namespace orb::test
