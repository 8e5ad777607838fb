#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orb::ctl {

/// A script that completes commands, options, keys and values: `shell` is bash, zsh or fish.
std::string completion(const std::string& shell, const CLI::App& app);

}  // namespace orb::ctl
