#include "orbctl/simulate.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "orbctl/failure.h"

namespace orb::ctl {

namespace {

namespace fs = std::filesystem;

fs::path ownFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

}  // namespace

std::optional<Simulation> takeSimulation(std::vector<std::string>& arguments,
                                         const std::vector<std::string>& commands) {
  const std::string option = "--simulate";
  const auto at = std::find_if(arguments.begin(), arguments.end(), [&](const std::string& word) {
    return word == option || word.rfind(option + "=", 0) == 0;
  });
  if (at == arguments.end()) {
    return std::nullopt;
  }
  Simulation simulation;
  auto end = at + 1;
  if (*at != option) {
    simulation.scenario = at->substr(option.size() + 1);
  } else if (end != arguments.end() && end->rfind('-', 0) != 0 &&
             std::find(commands.begin(), commands.end(), *end) == commands.end()) {
    simulation.scenario = *end++;
  }
  arguments.erase(at, end);
  return simulation;
}

void runSimulated(const Simulation& simulation, const std::vector<std::string>& arguments) {
  const fs::path self = fs::read_symlink("/proc/self/exe");
  const std::string simulator = ownFolder() / "orb-sim";
  std::vector<std::string> words = {simulator, "run"};
  if (!simulation.scenario.empty()) {
    words.insert(words.end(), {"--scenario", simulation.scenario});
  }
  words.insert(words.end(), {"--", self.string()});
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  ::execv(simulator.c_str(), pointers.data());
  throw Failure(ExitStatus::WrongUse,
                fmt::format("cannot start {}: {}", simulator, std::strerror(errno)),
                "--simulate needs orb-sim beside orbctl");
}

}  // namespace orb::ctl
