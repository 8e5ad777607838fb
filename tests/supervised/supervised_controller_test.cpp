// Runs on the simulated device: /dev/tty_gps, the inventory and the lock's file are the run's own.

#include "orb-gnss/supervised_controller.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <link.h>
#include <linux/sched.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <thread>

#include "base/owned_descriptor.h"
#include "orb-gnss/controller.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using Ending = orbSupervisedController::Ending;
using Line = orbSupervisedController::Line;
using Values = std::vector<orbSupervisedController::Value>;

/// The worker, which is the only child of this process; 0 where there is none.
pid_t worker() {
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(thread.path() / "children");
    pid_t child = 0;
    if (file >> child) {
      return child;
    }
  }
  return 0;
}

/// Not without a worker: 0 would be this process and all its kin.
void signalWorker(int signal) {
  const pid_t process = worker();
  ASSERT_GT(process, 0);
  ::kill(process, signal);
}

/// Kills the worker, and waits until it has ended, but leaves that to be told to the controller.
void killWorker() {
  const pid_t process = worker();
  signalWorker(SIGKILL);
  siginfo_t ended{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT), 0);
}

/// A process that does nothing, with the number `process`, which is free; -1 where that cannot be.
pid_t forkAs(pid_t process) {
  clone_args plan{};
  plan.exit_signal = SIGCHLD;
  plan.set_tid = reinterpret_cast<std::uintptr_t>(&process);
  plan.set_tid_size = 1;
  const long made = ::syscall(SYS_clone3, &plan, sizeof plan);
  if (made == 0) {
    ::pause();
    ::_exit(0);
  }
  return static_cast<pid_t>(made);
}

long openDescriptors() {
  const auto all = std::filesystem::directory_iterator("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

TEST(SupervisedController, ReturnsWhatTheControllerReturns) {
  std::string direct;
  const unsigned int directResult = orbController().getInfo(direct);
  orbSupervisedController receiver;
  std::string supervised;
  EXPECT_EQ(receiver.getInfo(supervised), directResult);
  EXPECT_EQ(supervised, direct);
  EXPECT_EQ(orbSupervisedController::lastCall().ending, Ending::Done);
  EXPECT_EQ(orbSupervisedController::lastCall().problem, "");
}

TEST(SupervisedController, PassesInputsAndOutputs) {
  orbSupervisedController receiver;
  EXPECT_EQ(receiver.setElevationLimit(17), 0U);
  unsigned char limit = 0;
  EXPECT_EQ(receiver.getElevationLimit(limit), 0U);
  EXPECT_EQ(limit, 17);
  EXPECT_EQ(receiver.setElevationLimit(2), 1U);
  unsigned short mask = 0x8000;  // to which the query adds
  EXPECT_EQ(receiver.getGnssSystem(mask), 0U);
  EXPECT_GT(mask, 0x8000);
}

TEST(SupervisedController, KeepsWhatTheLibraryPrints) {
  orbSupervisedController receiver;
  std::string info;
  ASSERT_EQ(receiver.getInfo(info), 0U);
  EXPECT_NE(orbSupervisedController::lastCall().standardOutput.find("nOrbRevision"),
            std::string::npos);
  unsigned char limit = 0;
  ASSERT_EQ(receiver.getElevationLimit(limit), 0U);
  EXPECT_EQ(orbSupervisedController::lastCall().standardOutput, "");
}

TEST(SupervisedController, CallsTheDriversOwnCommandsByName) {
  orbSupervisedController receiver;
  Values arguments = {2000LL};
  EXPECT_EQ(receiver.call("gpsObtTimePulseConfigure", arguments),
            orbSupervisedController::Value(0LL));
  arguments = {0LL};
  receiver.call("gpsObtGetTimePulse", arguments);
  EXPECT_EQ(arguments, Values{2000LL});
}

TEST(SupervisedController, RefusesACallThatThereIsNot) {
  orbSupervisedController receiver;
  Values arguments = {2000LL};
  EXPECT_THROW(receiver.call("noSuchThing", arguments), std::invalid_argument);
  arguments = {std::string("2000")};
  EXPECT_THROW(receiver.call("gpsObtTimePulseConfigure", arguments), std::invalid_argument);
  arguments = {3600LL, 1e300};  // no float is so large
  EXPECT_THROW(receiver.call("setSurveyAuto", arguments), std::logic_error);
}

TEST(SupervisedController, DoesCallsOfSeveralThreadsOneAfterAnother) {
  constexpr int kThreads = 4;
  constexpr int kCalls = 10;
  orbSupervisedController receiver;
  std::atomic<int> good{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < kCalls; ++call) {
        std::string info;
        good += receiver.getInfo(info) == 0 && info.find("KernelVersion") == 0 ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(good, kThreads * kCalls);
}

TEST(SupervisedController, StartsAnotherWorkerForOneThatWasKilledBetweenCalls) {
  orbSupervisedController receiver;
  std::string info;
  ASSERT_EQ(receiver.getInfo(info), 0U);
  const pid_t first = worker();
  killWorker();
  info.clear();
  EXPECT_EQ(receiver.getInfo(info), 0U);
  EXPECT_EQ(orbSupervisedController::lastCall().ending, Ending::Done);
  EXPECT_NE(worker(), first);
}

TEST(SupervisedController, StartsAnotherWorkerForOneThatWasKilledWhileTheLineWasHeld) {
  orbSupervisedController receiver(20s);
  std::string info;
  ASSERT_EQ(receiver.getInfo(info), 0U);
  const char* const lockFile = "/run/lock/LCK..tty_gps";
  const OwnedDescriptor held(::open(lockFile, O_RDWR | O_CREAT | O_CLOEXEC, 0644), "open");
  ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
  std::thread caller([&] { EXPECT_EQ(receiver.getInfo(info), 0U); });
  std::this_thread::sleep_for(20ms);  // for the call to wait for the line
  killWorker();
  ::unlink(lockFile);
  ASSERT_EQ(::flock(held.get(), LOCK_UN), 0);
  caller.join();
}

TEST(SupervisedController, SparesAProcessThatHasTheNumberOfAWorkerThatWasWaitedFor) {
  auto receiver = std::make_unique<orbSupervisedController>();
  std::string info;
  ASSERT_EQ(receiver->getInfo(info), 0U);
  const pid_t number = worker();
  signalWorker(SIGKILL);
  ASSERT_EQ(::waitpid(-1, nullptr, 0), number);
  const pid_t bystander = forkAs(number);
  if (bystander < 0) {
    GTEST_SKIP() << "may not choose the number of a process, or another has it";
  }
  receiver.reset();
  int status = 0;
  EXPECT_EQ(::waitpid(bystander, &status, WNOHANG), 0);
  ::kill(bystander, SIGKILL);
  ::waitpid(bystander, &status, 0);
}

TEST(SupervisedController, ServesAClientThatIgnoresTheEndOfItsChildren) {
  ::signal(SIGCHLD, SIG_IGN);
  {
    orbSupervisedController receiver;
    std::string info;
    EXPECT_EQ(receiver.getInfo(info), 0U);
    EXPECT_NE(worker(), 0);
  }
  EXPECT_EQ(worker(), 0);
  ::signal(SIGCHLD, SIG_DFL);
}

TEST(SupervisedController, EndsAWorkerThatIsStopped) {
  orbSupervisedController receiver(2s);
  std::string info;
  ASSERT_EQ(receiver.getInfo(info), 0U);
  receiver.setDeadline(100ms);
  const pid_t stopped = worker();
  signalWorker(SIGSTOP);
  EXPECT_EQ(receiver.getInfo(info), 4U);
  EXPECT_EQ(orbSupervisedController::lastCall().ending, Ending::DeadlineMissed);
  EXPECT_EQ(::kill(stopped, 0), -1);
  receiver.setDeadline(10s);
  EXPECT_EQ(receiver.getInfo(info), 0U);
}

TEST(SupervisedController, OutlivesAWorkerWithoutMemory) {
  orbSupervisedController receiver;
  std::string info;
  ASSERT_EQ(receiver.getInfo(info), 0U);
  const pid_t poor = worker();
  ASSERT_GT(poor, 0);
  const rlimit none{1, 1};
  ASSERT_EQ(::prlimit(poor, RLIMIT_AS, &none, nullptr), 0);
  // The worker has no memory for this: it tells so, or ends.
  std::string large(180'000, 'x');
  try {
    EXPECT_EQ(receiver.getInfo(large), 4U);
    EXPECT_EQ(orbSupervisedController::lastCall().ending, Ending::WorkerEnded);
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "std::bad_alloc");
  }
  EXPECT_EQ(large, std::string(180'000, 'x'));
  if (worker() == poor) {
    killWorker();
  }
  info.clear();
  EXPECT_EQ(receiver.getInfo(info), 0U);
}

TEST(SupervisedController, IsOfUseAgainOnceThereAreDescriptors) {
  if (ORB_IS_SANITIZED) {
    GTEST_SKIP() << "sanitizers take descriptors of their own";
  }
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  const OwnedDescriptor lowest(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  unsigned int refusals = 0;
  for (rlim_t spare = 0; spare < 12; ++spare) {
    const rlimit few{static_cast<rlim_t>(lowest.get()) + 1 + spare, usual.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    orbSupervisedController receiver;
    std::string info;
    const unsigned int result = receiver.getInfo(info);
    EXPECT_TRUE(result == 0 || result == 8) << result;
    refusals += result != 0 ? 1 : 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_EQ(receiver.getInfo(info), 0U) << spare;
    EXPECT_NE(info, "");
  }
  EXPECT_GT(refusals, 0U);
  EXPECT_LT(refusals, 12U);
}

TEST(SupervisedController, RefusesAnArgumentThatIsTooLong) {
  orbSupervisedController receiver;
  std::string info(std::size_t{8} << 20, 'x');
  EXPECT_THROW(receiver.getInfo(info), std::length_error);
  info.clear();
  EXPECT_EQ(receiver.getInfo(info), 0U);
}

TEST(SupervisedController, TellsOfAReplyThatIsTooLong) {
  orbSupervisedController receiver;
  // A reply is a little longer than its request: the longest request that can be sent has none.
  std::size_t sent = 0;
  std::size_t refused = std::size_t{8} << 20;
  std::string problem;
  while (sent + 1 < refused) {
    const std::size_t size = (sent + refused) / 2;
    try {
      receiver.setAntennaType(std::string(size, 'x'));
      sent = size;
    } catch (const std::length_error&) {
      refused = size;
    } catch (const std::runtime_error& error) {
      problem = error.what();
      sent = size;
    }
  }
  EXPECT_EQ(problem, "the reply is too long");
  std::string info;
  EXPECT_EQ(receiver.getInfo(info), 0U);
}

TEST(SupervisedController, IsLeftAloneByAChildOfFork) {
  auto receiver = std::make_unique<orbSupervisedController>();
  std::string info;
  ASSERT_EQ(receiver->getInfo(info), 0U);
  const pid_t before = worker();
  const pid_t child = ::fork();
  if (child == 0) {
    const bool isAnswered = receiver->getInfo(info) == 0;  // by a worker of its own
    receiver.reset();
    ::_exit(isAnswered && worker() == 0 ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(receiver->getInfo(info), 0U);
  EXPECT_EQ(worker(), before);
}

TEST(SupervisedController, SaysWhoHoldsTheLine) {
  const OwnedDescriptor held(::open("/run/lock/LCK..tty_gps", O_RDWR | O_CREAT | O_CLOEXEC, 0644),
                             "open");
  ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
  const std::string text = std::to_string(::getppid()) + "\n";
  ASSERT_EQ(::write(held.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  orbSupervisedController receiver(50ms);
  unsigned char limit = 3;
  EXPECT_EQ(receiver.getElevationLimit(limit), 8U);
  EXPECT_EQ(limit, 3);
  EXPECT_EQ(orbSupervisedController::lastCall().ending, Ending::LineHeld);
  EXPECT_EQ(orbSupervisedController::lastCall().problem,
            "process " + std::to_string(::getppid()) + " holds /dev/tty_gps");
  ::unlink("/run/lock/LCK..tty_gps");
}

TEST(SupervisedController, LeavesNoProcessAndNoDescriptor) {
  const long before = openDescriptors();
  {
    orbSupervisedController receiver;
    std::string info;
    ASSERT_EQ(receiver.getInfo(info), 0U);
    EXPECT_NE(worker(), 0);
  }
  EXPECT_EQ(worker(), 0);
  EXPECT_EQ(openDescriptors(), before);
}

TEST(SupervisedController, WorksWithoutStandardDescriptors) {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const OwnedDescriptor kept(::fcntl(descriptor, F_DUPFD_CLOEXEC, 10), "fcntl");
    ::close(descriptor);
    std::string info;
    const unsigned int result = orbSupervisedController().getInfo(info);
    ::dup2(kept.get(), descriptor);
    EXPECT_EQ(result, 0U) << descriptor;
  }
}

TEST(SupervisedOnSilentLine, ReturnsAtItsDeadline) {
  orbSupervisedController receiver(200ms);
  unsigned char limit = 3;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(receiver.getElevationLimit(limit), 4U);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
  EXPECT_EQ(limit, 3);
  const auto& call = orbSupervisedController::lastCall();
  EXPECT_EQ(call.ending, Ending::DeadlineMissed);
  EXPECT_EQ(call.line, Line::Silent);
  EXPECT_EQ(call.problem, "getElevationLimit did not return in time; no byte arrives on the line");
  EXPECT_EQ(worker(), 0);
}

TEST(SupervisedOnSilentLine, ReturnsAtOnceWhereItsDeadlineHasLongPassed) {
  unsigned char limit = 3;
  const auto start = std::chrono::steady_clock::now();
  for (const std::chrono::milliseconds deadline :
       {std::chrono::milliseconds::min(), std::chrono::milliseconds::min() + 100s,
        std::chrono::milliseconds(-1)}) {
    orbSupervisedController receiver(deadline);
    EXPECT_EQ(receiver.getElevationLimit(limit), 4U);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, 50s);
}

TEST(SupervisedOnSilentLine, WaitsForACallOfAnotherThreadNoLongerThanItsDeadline) {
  orbSupervisedController receiver(10s);
  unsigned char limit = 3;
  std::thread other([&] {
    unsigned char unread = 0;
    EXPECT_EQ(receiver.getElevationLimit(unread), 4U);
    EXPECT_EQ(orbSupervisedController::lastCall().ending, Ending::WorkerEnded);
    EXPECT_EQ(orbSupervisedController::lastCall().problem,
              "the worker ended during getElevationLimit");
  });
  while (worker() == 0) {
    std::this_thread::sleep_for(1ms);
  }
  receiver.setDeadline(50ms);
  EXPECT_EQ(receiver.getElevationLimit(limit), 8U);
  EXPECT_EQ(orbSupervisedController::lastCall().ending, Ending::LineHeld);
  signalWorker(SIGKILL);  // for the other to end
  other.join();
}

TEST(SupervisedOnSilentLine, TellsOfNoReplyToBytes) {
  orbSupervisedController receiver(20s);
  Values arguments = {std::string("\x10"), std::string("before")};
  EXPECT_EQ(receiver.call("exchangeRaw", arguments), orbSupervisedController::Value(4LL));
  EXPECT_EQ(arguments[1], orbSupervisedController::Value(std::string()));
}

TEST(SupervisedOnSilentLine, TellsOfNoReceiver) {
  orbSupervisedController receiver(200ms);
  EXPECT_EQ(receiver.gpsObtChipDetect(), 0U);
  EXPECT_EQ(receiver.timeStamp(), "");
}

/// The path that the library was loaded from; dl_iterate_phdr() calls it for each of them.
int takeName(dl_phdr_info* library, std::size_t /*size*/, void* name) {
  const std::string path = library->dlpi_name;
  if (path.find("liborb-gnss-supervised") != std::string::npos) {
    *static_cast<std::string*>(name) = path;
  }
  return 0;
}

TEST(SupervisedFromRelativePath, FindsItsWorkerAlsoFromAnotherFolder) {
  std::string library;
  ::dl_iterate_phdr(takeName, &library);
  ASSERT_EQ(library, "lib/liborb-gnss-supervised.so.0");
  orbSupervisedController receiver;
  ASSERT_EQ(::chdir("/"), 0);
  std::string info;
  EXPECT_EQ(receiver.getInfo(info), 0U);
  EXPECT_EQ(orbSupervisedController::lastCall().problem, "");
  EXPECT_EQ(orbSupervisedController().getInfo(info), 0U);
}

TEST(SupervisedWithoutModule, DoesAsTheNullController) {
  orbSupervisedController receiver;
  unsigned char limit = 3;
  EXPECT_EQ(receiver.getElevationLimit(limit), 0U);
  EXPECT_EQ(limit, 3);
  EXPECT_EQ(receiver.gpsObtSetMsgType("NMEA"), 1U);
  EXPECT_THROW(receiver.timeStamp(), std::logic_error);
}

}  // namespace
}  // namespace orb::test
