#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>

#include "base/line_speed.h"
#include "base/owned_descriptor.h"
#include "board/expected_module.h"
#include "orbctl/command.h"
#include "orbctl/device_users.h"
#include "orbctl/error_log.h"
#include "orbctl/failure.h"
#include "orbctl/inventory.h"
#include "supervised/device_lock.h"

namespace orb::ctl {
namespace {

namespace fs = std::filesystem;

/// What one look at the device found.
struct Finding {
  enum class State { Good, Note, Bad };

  State state = State::Good;
  std::string what;
  std::string found;
  std::string nextStep;                        // where it is bad
  ExitStatus status = ExitStatus::NoReceiver;  // where it is bad
};

using enum Finding::State;

Finding lookAtNode() {
  struct stat node {};
  if (::stat(kDevice, &node) != 0) {
    return {Bad, "device", fmt::format("{} {}", kDevice, std::strerror(errno)),
            "is the driver of the serial port loaded, and the udev rule for tty_gps installed?",
            ExitStatus::NotSent};
  }
  if (!S_ISCHR(node.st_mode)) {
    return {Bad, "device", fmt::format("{} is no terminal", kDevice),
            fmt::format("remove what stands there: ls -l {}", kDevice), ExitStatus::NotSent};
  }
  if (::access(kDevice, R_OK | W_OK) != 0) {
    return {Bad, "device", fmt::format("no right to read and write {}", kDevice),
            "join the group that owns it (often dialout), or use sudo", ExitStatus::NotSent};
  }
  return {Good, "device", fmt::format("{} is there, and may be read and written", kDevice), {}};
}

Finding lookAtUsers() {
  DeviceLock lock;
  if (lock.acquire(std::chrono::steady_clock::now()) == DeviceLock::State::HeldByOther) {
    return {Bad, "users",
            fmt::format("{} holds the lock {}", lock.holderInWords(), DeviceLock::path()),
            lock.holder() == 0 ? fmt::format("see what it is: fuser -v {}", DeviceLock::path())
                               : fmt::format("see what it is: ps -p {}", lock.holder()),
            ExitStatus::Held};
  }
  const std::vector<std::string> users = usersOfDevice();
  if (!users.empty()) {
    return {Bad, "users", fmt::format("also open in {}", fmt::join(users, ", ")),
            "a second reader takes replies away: end it", ExitStatus::Held};
  }
  if (!lock.problem().empty()) {
    return {Note, "users", "nobody else is seen to have it open; " + lock.problem(), {}};
  }
  return {Good, "users", "nobody else has it open", {}};
}

Finding lookAtSpeed() {
  const OwnedDescriptor line(::open(kDevice, O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  termios settings{};
  if (!line.isOpen() || ::tcgetattr(line.get(), &settings) != 0) {
    return {Bad, "speed", fmt::format("{}: {}", kDevice, std::strerror(errno)),
            "the device is no serial line", ExitStatus::NotSent};
  }
  return {Good,
          "speed",
          fmt::format("{} bit/s; the receiver has to be set to the same", baudOf(settings)),
          {}};
}

/// A receiver may have nothing to say unasked: silence is no fault where it answers.
Finding lookAtLine(const LineReport& line, const std::optional<Finding>& receiver) {
  const std::string found = describe(line);
  switch (line.state) {
    case LineReport::State::Silent:
      if (receiver && receiver->state == Good) {
        return {Good, "line", found + " unasked, and the receiver answers when it is asked", {}};
      }
      return {Note,
              "line",
              found + "; a receiver with the output none is silent until it is asked",
              {}};
    case LineReport::State::Garbage:
      if (receiver && receiver->state == Good) {
        return {Note, "line",
                "bytes arrive that are neither text nor packets, but the receiver answers: noise",
                "check cable and shielding; the speed is right"};
      }
      return {
          Bad, "line", found,
          fmt::format("set the tty to the receiver's speed: stty -F {} 115200 (or 9600)", kDevice),
          ExitStatus::NoReply};
    case LineReport::State::NotThere:
      return {Bad, "line", found, "see above", ExitStatus::NotSent};
    default:
      return {Good, "line", found, {}};
  }
}

Finding lookAtInventory() {
  const auto [hardware, problem] = askInventory();
  if (!problem.empty()) {
    return {Bad, "inventory", "cannot be asked: " + problem, kAskForService,
            ExitStatus::NoReceiver};
  }
  if (hardware.empty()) {
    return {Bad, "inventory", fmt::format("no module is known at location {}", kModuleLocation),
            "is one fitted, and does the inventory's file tell of it?", ExitStatus::NoReceiver};
  }
  if (hardware.find(kModulePartNumber) == std::string::npos) {
    return {Bad, "inventory",
            fmt::format("module {} is fitted, not {}", hardware, kModulePartNumber),
            "the library drives QN4470T01 alone; or correct the inventory's file",
            ExitStatus::NoReceiver};
  }
  return {Good, "inventory", fmt::format("module {} is fitted", hardware), {}};
}

/// Asks a few times: a loose connector loses an answer now and then.
Finding askForAnswers(Session& session) {
  constexpr int kQueries = 10;
  int answered = 0;
  bool isOneLost = false;
  for (int asked = 0; asked < kQueries && !(isOneLost && answered > 0); ++asked) {
    try {
      session.call("gpsOrbGetFwVersion", {std::string(), std::string(), std::string()});
      ++answered;
    } catch (const Failure& failure) {
      if (failure.status() != ExitStatus::NoReply || isOneLost) {
        throw;
      }
      isOneLost = true;
    }
  }
  if (isOneLost) {
    return {Bad, "receiver", "answers only now and then",
            "a loose connector, a bad cable, or noise on the line? orbctl log tells what was lost",
            ExitStatus::NoReply};
  }
  return {Good, "receiver", "answers", {}};
}

Finding lookAtReceiver(Session& session) {
  try {
    if (!session.hasReceiver()) {
      return {Bad, "receiver", "does not answer the detection on " + std::string(kDevice),
              "check its power, the cable and the speed; is transmit connected to receive?",
              ExitStatus::NoReceiver};
    }
    return askForAnswers(session);
  } catch (const Failure& failure) {
    return {Bad, "receiver", failure.what(),
            failure.hint().find("doctor") == std::string::npos
                ? failure.hint()
                : std::string("check the receiver's power and the cable"),
            failure.status()};
  }
}

Finding lookAtLog() {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(kErrorLog, error);
  if (error) {
    return {Note, "log", fmt::format("{}: {}", kErrorLog, error.message()), {}};
  }
  const std::optional<std::string> last = lastLine(kErrorLog);
  return {Note,
          "log",
          last ? fmt::format("{} bytes, the last entry: {}", size, describe(logEntryFrom(*last)))
               : fmt::format("{} is empty", kErrorLog),
          {}};
}

const char* wordFor(Finding::State state) {
  return state == Good ? "ok" : state == Note ? "note" : "BAD";
}

/// What was found, in the order of the looks; printed at once where it is for a person.
class Findings {
 public:
  explicit Findings(const Options& options) : options_(options) {}

  /// Returns whether it is not bad.
  bool add(Finding finding) {
    findings_.push_back(std::move(finding));
    const Finding& last = findings_.back();
    if (!options_.isJson) {
      show(options_, "doctor", {},
           fmt::format("{:<5} {:<10} {}\n", wordFor(last.state), last.what, last.found));
    }
    return last.state != Bad;
  }

  /// Throws Failure for the first that is bad.
  void conclude() const {
    Json list = Json::array();
    for (const Finding& finding : findings_) {
      list.push_back({{"what", finding.what},
                      {"state", wordFor(finding.state)},
                      {"found", finding.found},
                      {"next_step", finding.nextStep}});
    }
    const Json data{{"findings", list}};
    const auto worst = std::find_if(findings_.begin(), findings_.end(),
                                    [](const Finding& finding) { return finding.state == Bad; });
    if (worst != findings_.end()) {
      throw Failure(worst->status, fmt::format("{}: {}", worst->what, worst->found),
                    worst->nextStep, 0, oneLine(data));
    }
    show(options_, "doctor", data, "All is well.\n");
  }

 private:
  const Options& options_;
  std::vector<Finding> findings_;
};

/// What is on the line, and whether the receiver answers, if there is a module for it.
void lookAtTraffic(Session& session, bool isFitted, Findings& findings) {
  const LineReport line = session.listen();
  std::optional<Finding> receiver;
  // Whether silence or noise is a fault, the receiver's answer tells.
  if ((line.state == LineReport::State::Silent || line.state == LineReport::State::Garbage) &&
      isFitted) {
    receiver = lookAtReceiver(session);
  }
  findings.add(lookAtLine(line, receiver));
  if (isFitted) {
    findings.add(receiver ? *receiver : lookAtReceiver(session));
  }
}

/// Takes each look in its turn; what needs the device is left out where there is none.
void doctor(Session& session, const Options& options) {
  Findings findings(options);
  const bool isUsable =
      findings.add(lookAtNode()) && findings.add(lookAtUsers()) && findings.add(lookAtSpeed());
  const bool isFitted = findings.add(lookAtInventory());
  if (isUsable) {
    lookAtTraffic(session, isFitted, findings);
  }
  findings.add(lookAtLog());
  findings.conclude();
}

}  // namespace

void addDoctorCommand(CLI::App& app, Action& chosen) {
  addCommand(app, "doctor", "Finds out why the receiver does not answer", chosen, doctor);
}

}  // namespace orb::ctl
