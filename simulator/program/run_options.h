#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "orb-sim/state.h"

namespace orb::sim {

/// The hardware set identifier of the module that the library drives.
inline constexpr char kFittedModule[] = "47205318-001";

/// What a user asks of `orb-sim run`.
struct RunOptions {
  /// What the inventory says of module location 1; nothing where no module is fitted.
  std::optional<std::string> hardwareId = kFittedModule;

  enum class Receiver {
    kAnswering,
    kSilent,  ///< The line is there, and no byte ever comes from it.
    kAbsent,  ///< There is no line.
  };
  Receiver receiver = Receiver::kAnswering;

  /// What the receiver says of itself.
  Identity identity;

  /// Where the log and identity files are left; empty: they go with the run.
  std::filesystem::path keep;

  /// COMMAND and its arguments, as the user gave them.
  std::vector<std::string> command;
};

}  // namespace orb::sim
