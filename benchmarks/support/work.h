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

/// One row of the table.
struct Row {
  std::string work{};             ///< its name, unique
  std::string title{};            ///< what the table prints
  std::string unit{};             ///< of value and limit
  double value = 0;               ///< what the library took or reached
  std::optional<double> limit{};  ///< the same of the limit
  std::optional<double> ratio{};  ///< median of the turns' ratios of value to limit
  Sense sense = Sense::kAtMost;
  std::optional<double> bound{};   ///< for the ratio, or for the value where there is no ratio
  std::vector<double> samples{};   ///< the figures of which ratio or value is the median
  std::optional<Series> series{};  ///< a curve to plot
  std::string note{};              ///< a short remark for the table

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
int run(int argc, char** argv, std::span<const Work> works);

}  // namespace orb::bench
