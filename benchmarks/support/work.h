#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace orb::bench {

enum class Sense { kAtMost, kAtLeast };

/// A curve for the plots.
struct Series {
  std::string x;
  std::string y;
  std::string label{};  ///< what tells it from the others of the same plot
  std::vector<std::pair<double, double>> points;
};

/// One row of the table; ../README.md says what each member means.
struct Row {
  std::string work{};
  std::string title{};
  std::string unit{};
  double value = 0;
  std::optional<double> limit{};
  std::optional<double> ratio{};
  Sense sense = Sense::kAtMost;
  std::optional<double> bound{};
  std::vector<double> samples{};
  std::optional<Series> series{};
  std::string note{};

  /// Whether the ratio, or the value where there is no ratio, is within the bound.
  bool isWithinBound() const;
};

/// Something to measure, by the name under which it is selected.
struct Work {
  std::string name;
  std::vector<Row> (*measure)();
  /// In how many processes it is measured, an odd number; the median ratio counts. More than one
  /// where the time depends on where a process has its code and its heap.
  int processes = 1;
};

/// The whole main() of a bench program: does the works that the command line selects, and prints
/// their rows. Returns the exit status.
int runWorks(int argc, char** argv, std::span<const Work> works);

}  // namespace orb::bench
