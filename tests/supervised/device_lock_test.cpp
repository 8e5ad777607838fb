#include "supervised/device_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "orb-sim/path_map.h"
#include "support/device_files.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using State = DeviceLock::State;

class DeviceLockTest : public testing::Test {
 protected:
  DeviceLockTest() { sim::mapPath(DeviceLock::path(), file_.string()); }

  static Deadline soon() { return std::chrono::steady_clock::now() + 30ms; }

  static std::string line(pid_t process) {
    char text[16];
    std::snprintf(text, sizeof text, "%10d\n", static_cast<int>(process));
    return text;
  }

  DeviceFiles files_;
  const std::filesystem::path file_ = files_.folder / "LCK..tty_gps";
};

TEST_F(DeviceLockTest, WritesTheHoldersProcessId) {
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::Held);
  EXPECT_EQ(contentOf(file_), line(::getpid()));
}

TEST_F(DeviceLockTest, RemovesTheFileAtItsEnd) {
  { EXPECT_EQ(DeviceLock().acquire(soon()), State::Held); }
  EXPECT_EQ(contentOf(file_), "(no file)");
}

TEST_F(DeviceLockTest, TellsWhoHoldsItAtTheDeadline) {
  DeviceLock first;
  ASSERT_EQ(first.acquire(soon()), State::Held);
  DeviceLock second;
  EXPECT_EQ(second.acquire(soon()), State::HeldByOther);
  EXPECT_EQ(second.holder(), ::getpid());
  EXPECT_EQ(second.holderInWords(), "process " + std::to_string(::getpid()));
}

TEST_F(DeviceLockTest, DoesNotNameAHolderThatHasNotWrittenItsProcessId) {
  fill(file_, "");
  const OwnedDescriptor held(::open(file_.c_str(), O_RDWR | O_CLOEXEC), "open");
  ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::HeldByOther);
  EXPECT_EQ(lock.holderInWords(), "another process");
}

TEST_F(DeviceLockTest, HeedsToolsThatWriteTheFileAlone) {
  fill(file_, line(::getppid()));
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::HeldByOther);
  EXPECT_EQ(lock.holder(), ::getppid());
  EXPECT_EQ(contentOf(file_), line(::getppid()));
}

TEST_F(DeviceLockTest, HeedsAHolderThatIsHiddenInProc) {
  sim::mapPath("/proc/1/stat", (files_.folder / "none").string());
  fill(file_, line(1));
  EXPECT_EQ(DeviceLock().acquire(soon()), State::HeldByOther);
}

pid_t endedProcess() {
  const pid_t process = ::fork();
  if (process == 0) {
    ::_exit(0);
  }
  ::waitpid(process, nullptr, 0);
  return process;
}

TEST_F(DeviceLockTest, TakesOverWhatAnEndedProcessHasLeft) {
  fill(file_, line(endedProcess()));
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::Held);
  EXPECT_EQ(contentOf(file_), line(::getpid()));
}

TEST_F(DeviceLockTest, TakesOverWhatAProcessHasLeftThatNobodyWaitedFor) {
  const pid_t process = ::fork();
  if (process == 0) {
    ::_exit(0);
  }
  siginfo_t ended{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT), 0);
  fill(file_, line(process));
  EXPECT_EQ(DeviceLock().acquire(soon()), State::Held);
  ::waitpid(process, nullptr, 0);
}

TEST_F(DeviceLockTest, TakesOverAFileWithoutAProcess) {
  for (const char* const content : {"", "text", "          ", "-5"}) {
    fill(file_, content);
    EXPECT_EQ(DeviceLock().acquire(soon()), State::Held) << content;
  }
}

TEST_F(DeviceLockTest, WaitsForNobodyWhereAFifoStandsInItsPlace) {
  ASSERT_EQ(::mkfifo(file_.c_str(), 0644), 0);
  DeviceLock::removeLeftBy(::getppid());
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::Unprotected);
}

TEST_F(DeviceLockTest, IsHeldByNobodyWhereAFifoStandsInItsPlace) {
  ASSERT_EQ(::mkfifo(file_.c_str(), 0644), 0);
  const OwnedDescriptor planted(::open(file_.c_str(), O_RDWR | O_CLOEXEC), "open");
  ASSERT_EQ(::flock(planted.get(), LOCK_EX), 0);
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::Unprotected);
  EXPECT_EQ(lock.problem(), "cannot write " + DeviceLock::path() + ": Invalid argument");
}

TEST_F(DeviceLockTest, WritesToNoFileThatHasAnotherName) {
  const std::filesystem::path other = files_.folder / "other";
  fill(other, "text");
  std::filesystem::create_hard_link(other, file_);
  {
    DeviceLock lock;
    EXPECT_EQ(lock.acquire(soon()), State::Unprotected);
    EXPECT_EQ(lock.problem(), "cannot write " + DeviceLock::path() + ": Too many links");
  }
  EXPECT_EQ(contentOf(file_), "text");
}

TEST_F(DeviceLockTest, HeedsToolsThatHaveWrittenTheFileUnderAnotherName) {
  const std::filesystem::path other = files_.folder / "other";
  fill(other, line(::getppid()));
  std::filesystem::create_hard_link(other, file_);
  EXPECT_EQ(DeviceLock().acquire(soon()), State::HeldByOther);
}

TEST_F(DeviceLockTest, SaysWhyTheLineIsNotProtected) {
  sim::mapPath(DeviceLock::path(), (files_.folder / "missing" / "file").string());
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::Unprotected);
  EXPECT_EQ(lock.problem(), "cannot write " + DeviceLock::path() + ": No such file or directory");
}

/// Root may do to files what their modes allow, and no more, as long as this exists.
class WithoutPrivilege {
 public:
  WithoutPrivilege() {
    ::syscall(SYS_capget, &header_, before_);
    Sets without = {before_[0], before_[1]};
    without[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
    EXPECT_EQ(::syscall(SYS_capset, &header_, without), 0);
  }
  ~WithoutPrivilege() { EXPECT_EQ(::syscall(SYS_capset, &header_, before_), 0); }
  WithoutPrivilege(const WithoutPrivilege&) = delete;
  WithoutPrivilege& operator=(const WithoutPrivilege&) = delete;

 private:
  using Sets = __user_cap_data_struct[_LINUX_CAPABILITY_U32S_3];

  __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
  Sets before_{};
};

TEST_F(DeviceLockTest, GoesOnInAFolderThatItMayNotWrite) {
  const WithoutPrivilege as;
  std::filesystem::permissions(files_.folder, std::filesystem::perms::owner_exec);
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::Unprotected);
  std::filesystem::permissions(files_.folder, std::filesystem::perms::owner_all);
  EXPECT_EQ(lock.problem(), "cannot write " + DeviceLock::path() + ": Permission denied");
}

TEST_F(DeviceLockTest, KeepsOthersOffWithAFileThatItMayNotWrite) {
  fill(file_, line(endedProcess()));
  std::filesystem::permissions(file_, std::filesystem::perms::owner_read);
  const WithoutPrivilege as;
  DeviceLock lock;
  EXPECT_EQ(lock.acquire(soon()), State::Unprotected);
  EXPECT_EQ(lock.problem(), "cannot write " + DeviceLock::path() + ": Permission denied");
  EXPECT_EQ(DeviceLock().acquire(soon()), State::HeldByOther);
}

TEST_F(DeviceLockTest, LeavesNothingWhereItCannotWriteItsProcessId) {
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit none{0, limit.rlim_max};
  State state{};
  State another{};
  {
    DeviceLock lock;
    ::setrlimit(RLIMIT_FSIZE, &none);
    state = lock.acquire(soon());
    another = DeviceLock().acquire(soon());
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(state, State::Unprotected);
  EXPECT_EQ(another, State::HeldByOther);
  EXPECT_EQ(contentOf(file_), "(no file)");
}

TEST_F(DeviceLockTest, LeavesTheFileOfWhoHasTheLineAfterItsOwnWasRemoved) {
  DeviceLock second;
  {
    DeviceLock first;
    ASSERT_EQ(first.acquire(soon()), State::Held);
    std::filesystem::remove(file_);
    ASSERT_EQ(second.acquire(soon()), State::Held);
  }
  EXPECT_EQ(contentOf(file_), line(::getpid()));
}

TEST_F(DeviceLockTest, RemovesWhatAKilledProcessHasLeft) {
  const pid_t ended = endedProcess();
  fill(file_, line(ended));
  DeviceLock::removeLeftBy(ended + 1);
  EXPECT_EQ(contentOf(file_), line(ended));
  DeviceLock::removeLeftBy(ended);
  EXPECT_EQ(contentOf(file_), "(no file)");
}

/// Starts a process that takes the lock, and leaves the file where it `isKilled`. It ends with 0
/// where nobody else had the lock at the time, which the file `witness` tells.
pid_t startHolder(const std::filesystem::path& witness, pid_t killedBefore, bool isKilled) {
  const pid_t process = ::fork();
  if (process != 0) {
    return process;
  }
  DeviceLock::removeLeftBy(killedBefore);
  {
    DeviceLock lock;
    const Deadline deadline = std::chrono::steady_clock::now() + 20s;
    bool isAlone = lock.acquire(deadline) == State::Held &&
                   ::open(witness.c_str(), O_CREAT | O_EXCL, 0600) >= 0;
    ::sched_yield();
    isAlone = ::unlink(witness.c_str()) == 0 && isAlone;
    if (isKilled || !isAlone) {
      ::_exit(isAlone ? 0 : 1);
    }
  }
  ::_exit(0);
}

TEST_F(DeviceLockTest, HasOneHolderWhileSeveralRemoveWhatIsLeft) {
  constexpr int kHolders = 400;
  constexpr int kAtOnce = 8;
  pid_t killed = endedProcess();
  for (int started = 0, ended = 0; ended < kHolders; ++ended) {
    for (; started < std::min(ended + kAtOnce, kHolders); ++started) {
      const bool isKilled = started % 2 == 0;
      const pid_t process = startHolder(files_.folder / "witness", killed, isKilled);
      ASSERT_GT(process, 0);
      killed = isKilled ? process : killed;
    }
    int status = -1;
    ASSERT_GT(::wait(&status), 0);
    EXPECT_EQ(status, 0);
  }
}

}  // namespace
}  // namespace orb::test
