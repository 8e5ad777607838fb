#include "support/work.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace orb::bench {

namespace {

using nlohmann::ordered_json;

ordered_json jsonOf(const std::optional<double>& number) {
  return number ? ordered_json(*number) : ordered_json();
}

ordered_json jsonOf(const Row& row) {
  ordered_json json{{"work", row.work},
                    {"title", row.title},
                    {"unit", row.unit},
                    {"value", row.value},
                    {"limit", jsonOf(row.limit)},
                    {"ratio", jsonOf(row.ratio)},
                    {"sense", row.sense == Sense::kAtMost ? "at most" : "at least"},
                    {"bound", jsonOf(row.bound)},
                    {"ok", row.isWithinBound()},
                    {"samples", row.samples},
                    {"note", row.note}};
  if (row.series) {
    json["series"] = {{"x", row.series->x},
                      {"y", row.series->y},
                      {"label", row.series->label},
                      {"points", row.series->points}};
  }
  return json;
}

}  // namespace

bool Row::isWithinBound() const {
  const double figure = ratio.value_or(value);
  return !bound || (sense == Sense::kAtMost ? figure <= *bound : figure >= *bound);
}

int run(int argc, char** argv, std::span<const Work> works) {
  const std::span<char*> names(argv + 1, argv + argc);
  if (!names.empty() && names.front() == std::string("--list")) {
    for (const Work& work : works) {
      std::cout << work.name << ' ' << work.processes << '\n';
    }
    return 0;
  }
  try {
    for (const Work& work : works) {
      if (names.empty() || std::ranges::count(names, work.name) > 0) {
        for (const Row& row : work.measure()) {
          std::cout << jsonOf(row) << std::endl;
        }
      }
    }
  } catch (const std::exception& error) {
    std::cerr << argv[0] << ": " << error.what() << '\n';
    return 1;
  }
  return 0;
}

}  // namespace orb::bench
