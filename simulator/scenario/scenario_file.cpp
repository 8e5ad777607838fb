#include <stdexcept>
#include <utility>

#include "base/toml/text_file.h"
#include "orb-sim/scenario.h"
#include "scenario/readers.h"

namespace orb::sim {
namespace {

constexpr std::size_t kLongestDescription = 1000;

void readScenario(const toml::table& table, Scenario& scenario, ProblemList& problems) {
  Section file(table, "", problems);
  file.text("description", scenario.description, kLongestDescription);
  file.integer("seed", scenario.seed, 0, std::numeric_limits<std::int64_t>::max());
  file.table("device", [&](Section& device) { readDevice(device, scenario); });
  file.table("receiver", [&](Section& receiver) { readReceiver(receiver, scenario.state); });
  readSurroundings(file, scenario.state);
  file.table("time", [&](Section& time) { readTime(time, scenario.state); });
  file.table("start", [&](Section& start) { readStart(start, scenario); });
  file.table("line", [&](Section& line) { readLine(line, scenario.line); });
  file.eachTable("fault", [&](Section& fault) { readFault(fault, scenario.faults); });
  file.refuseUnknownKeys();
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += (text.empty() ? "" : "\n") + line;
  }
  return text;
}

}  // namespace

Scenario loadScenario(const std::filesystem::path& file) {
  Scenario scenario;
  ProblemList problems(file.string());
  if (const auto text = readTextFile(file.string(), problems)) {
    if (const auto table = parseToml(*text, problems)) {
      readScenario(*table, scenario, problems);
    }
  }
  if (!problems.empty()) {
    throw std::runtime_error(joined(problems.lines()));
  }
  return scenario;
}

}  // namespace orb::sim
