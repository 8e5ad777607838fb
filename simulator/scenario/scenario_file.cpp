#include <stdexcept>

#include "base/toml/text_file.h"
#include "orb-sim/scenario.h"
#include "scenario/readers.h"

namespace orb::sim {
namespace {

constexpr std::size_t kLongestDescription = 1000;

void readScenario(const toml::table& table, Scenario& scenario, ProblemList& problems) {
  TableReader file(table, TableName::path(""), problems);
  file.text("description", scenario.description, kLongestDescription);
  file.integer("seed", scenario.seed, 0);
  file.table("device", [&](TableReader& device) { readDevice(device, scenario); });
  file.table("receiver", [&](TableReader& receiver) { readReceiver(receiver, scenario.state); });
  readBackup(file, scenario.state);
  readSurroundings(file, scenario.state);
  file.table("time", [&](TableReader& time) { readTime(time, scenario); });
  file.eachTable("event", [&](TableReader& event) { readEvent(event, scenario.state.timeline); });
  file.table("start", [&](TableReader& start) { readStart(start, scenario); });
  file.table("line", [&](TableReader& line) { readLine(line, scenario.line); });
  file.eachTable("fault", [&](TableReader& fault) { readFault(fault, scenario.faults); });
  file.refuseUnknownKeys();
}

/// Throws the problems, if there are any.
void check(const ProblemList& problems) {
  std::string text;
  for (const std::string& line : problems.lines()) {
    text += (text.empty() ? "" : "\n") + line;
  }
  if (!text.empty()) {
    throw std::runtime_error(text);
  }
}

}  // namespace

Scenario parseScenario(std::string_view text, const std::string& name) {
  Scenario scenario;
  ProblemList problems(name);
  if (const auto table = parseToml(text, problems)) {
    readScenario(*table, scenario, problems);
  }
  check(problems);
  return scenario;
}

Scenario loadScenario(const std::filesystem::path& file) {
  ProblemList problems(file.string());
  const auto text = readTextFile(file.string(), problems);
  check(problems);
  return parseScenario(text.value_or(""), file.string());
}

}  // namespace orb::sim
