#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <future>
#include <mutex>
#include <optional>
#include <sstream>
#include <thread>

#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/navigation.h"
#include "orbctl/screen.h"
#include "transport/default_device.h"

namespace orb::ctl {
namespace {

constexpr std::chrono::milliseconds kDeadline{4000};
constexpr std::chrono::milliseconds kBetweenReadings{1000};
constexpr std::chrono::milliseconds kAtOnce{500};
constexpr char kWaiting[] = "waiting";
constexpr std::size_t kMostPositions = 600;
constexpr double kMetresPerDegree = 111320;

/// What is shown: the last readings, and what was wrong with the last attempt.
struct Readings {
  Json navigation;
  Json time;
  Json survey;
  Json interference;
  std::string problem;
  unsigned long exchanges = 0;
  unsigned long failures = 0;
  std::deque<std::pair<double, double>> positions;  // metres north and east of the first one
};

/// Reads all of it, over and over, in a thread of its own.
class Reader {
 public:
  explicit Reader(const Session::Options& options)
      : session_(options), thread_([this] { run(); }) {}
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    isEnding_ = true;
    thread_.join();
  }

  /// Ends, with the receiver's output as it was. Returns false where that takes too long: a line
  /// that has carried no reply is not waited for.
  bool end() {
    isEnding_ = true;
    const Readings last = readings();
    const bool isAnswering = last.problem.empty() && last.exchanges > 0;
    return ended_.wait_for(isAnswering ? kDeadline : kAtOnce) == std::future_status::ready;
  }

  Readings readings() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return readings_;
  }

 private:
  void run() {
    while (!isEnding_) {
      try {
        readAll();
      } catch (const Failure& failure) {
        note([&](Readings& readings) {
          readings.problem = std::string(failure.what()) + '\n' + failure.hint();
          ++readings.failures;
        });
      }
      for (int i = 0; i < 10 && !isEnding_; ++i) {
        std::this_thread::sleep_for(kBetweenReadings / 10);
      }
    }
    output_.reset();
    hasEnded_.set_value();
  }

  void readAll() {
    if (!output_) {
      session_.requireReceiver();
      note([](Readings&) {});
      output_.emplace(session_);
    }
    const Json navigation = readSolution(session_);
    note([&](Readings& readings) {
      readings.navigation = navigation;
      addPosition(readings);
    });
    const Json time = readTime(session_);
    note([&](Readings& readings) { readings.time = time; });
    const Json survey = readSurvey(session_);
    note([&](Readings& readings) { readings.survey = survey; });
    const Json interference = readInterference(session_);
    note([&](Readings& readings) {
      readings.interference = interference;
      readings.problem.clear();
    });
  }

  /// What an exchange has brought.
  template <typename Change>
  void note(Change change) {
    const std::lock_guard<std::mutex> lock(mutex_);
    change(readings_);
    ++readings_.exchanges;
  }

  void addPosition(Readings& readings) {
    if (readings.navigation["fix"] == "NO-FIX") {
      return;
    }
    const auto latitude = readings.navigation["latitude"].get<double>();
    const auto longitude = readings.navigation["longitude"].get<double>();
    if (readings.positions.empty()) {
      first_ = {latitude, longitude};
    }
    const double narrowing = std::cos(latitude * std::acos(-1.0) / 180);
    readings.positions.emplace_back((latitude - first_.first) * kMetresPerDegree,
                                    (longitude - first_.second) * kMetresPerDegree * narrowing);
    if (readings.positions.size() > kMostPositions) {
      readings.positions.pop_front();
    }
  }

  Session session_;
  std::optional<BinaryOutput> output_;
  std::mutex mutex_;
  Readings readings_;
  std::pair<double, double> first_;
  std::atomic<bool> isEnding_{false};
  std::promise<void> hasEnded_;
  std::future<void> ended_ = hasEnded_.get_future();
  std::thread thread_;
};

/// Positions as dots around their mean, and how wide the picture is.
void drawScatter(Screen& screen, const Readings& readings, int top) {
  const int rows = screen.rows() - top - 2;
  const int columns = std::min(screen.columns() - 4, rows * 2);
  if (rows < 3 || columns < 6 || readings.positions.empty()) {
    return;
  }
  double north = 0;
  double east = 0;
  for (const auto& [n, e] : readings.positions) {
    north += n / static_cast<double>(readings.positions.size());
    east += e / static_cast<double>(readings.positions.size());
  }
  double reach = 0.5;
  for (const auto& [n, e] : readings.positions) {
    reach = std::max({reach, std::abs(n - north), std::abs(e - east)});
  }
  screen.text(top, 2, fmt::format("positions around their mean, {:.1f} m to each side", reach));
  for (const auto& [n, e] : readings.positions) {
    const int row = static_cast<int>((reach - (n - north)) / (2 * reach) * (rows - 1));
    const int column = static_cast<int>((reach + (e - east)) / (2 * reach) * (columns - 1));
    screen.text(top + 1 + row, 2 + column, "*");
  }
  screen.text(top + 1 + (rows - 1) / 2, 2 + (columns - 1) / 2, "+");
}

std::string fixLine(const Json& navigation) {
  if (navigation.is_null()) {
    return kWaiting;
  }
  return fmt::format("{}, {} satellites", navigation["fix"].get<std::string>(),
                     navigation["satellites"].get<int>());
}

std::string positionLine(const Json& navigation) {
  if (navigation.is_null() || navigation["fix"] == "NO-FIX") {
    return "none";
  }
  return fmt::format("{:.7f} {:.7f} degrees, {:.2f} m", navigation["latitude"].get<double>(),
                     navigation["longitude"].get<double>(),
                     navigation["sea_level_altitude"].get<double>());
}

void draw(Screen& screen, const Readings& readings) {
  screen.clear();
  const std::pair<const char*, std::string> lines[] = {
      {"fix", fixLine(readings.navigation)},
      {"position", positionLine(readings.navigation)},
      {"time", readings.time.is_null() ? kWaiting : describeTime(readings.time)},
      {"survey", readings.survey.is_null() ? kWaiting : describeSurvey(readings.survey)},
      {"interference",
       readings.interference.is_null() ? kWaiting : describeInterference(readings.interference)},
      {"line", fmt::format("{} exchanges, {} failed", readings.exchanges, readings.failures)},
  };
  int row = 0;
  screen.text(row++, 0, fmt::format("orbctl watch  {}  q quits", kDefaultDevice));
  for (const auto& [name, text] : lines) {
    screen.text(++row, 0, fmt::format("{:<13} {}", name, text));
  }
  // What fails, why, and what to do.
  std::string problem = readings.problem;
  if (const std::size_t colon = problem.find(": "); colon != std::string::npos) {
    problem[colon + 1] = '\n';
  }
  std::istringstream problems(problem);
  for (std::string line; std::getline(problems, line);) {
    screen.text(++row, 2, line);
  }
  drawScatter(screen, readings, row + 2);
  screen.show();
}

std::atomic<int> endingSignal{0};

void noteSignal(int signal) { endingSignal = signal; }

void watch(Session& /*session*/, const Options& options) {
  if (options.isJson) {
    throw Failure(ExitStatus::WrongUse, "watch prints no JSON: it draws on a terminal",
                  "for scripts: orbctl --json status");
  }
  if (::isatty(STDOUT_FILENO) != 1 || ::isatty(STDIN_FILENO) != 1) {
    throw Failure(ExitStatus::WrongUse, "watch needs a terminal",
                  "for scripts: orbctl --json status");
  }
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    std::signal(signal, noteSignal);
  }
  Session::Options session = options.session;
  session.isQuiet = true;
  session.showPrints = false;
  if (session.deadline == std::chrono::milliseconds::zero()) {
    session.deadline = kDeadline;
  }
  std::optional<Screen> screen(std::in_place);
  Reader reader(session);
  while (endingSignal == 0 && screen->key() != 'q') {
    draw(*screen, reader.readings());
  }
  screen.reset();
  const bool hasEnded = reader.end();
  if (endingSignal != 0) {
    std::signal(endingSignal, SIG_DFL);
    std::raise(endingSignal);
  }
  if (!hasEnded) {
    std::_Exit(0);  // the worker, which waits for a reply, ends with its client
  }
}

}  // namespace

void addWatchCommand(CLI::App& app, Action& chosen) {
  addCommand(app, "watch", "Shows fix, position, time, survey and interference live", chosen,
             watch);
}

}  // namespace orb::ctl
