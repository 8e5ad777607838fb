#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

namespace orb::sim {

/// Adds --link.
CLI::Option* addLinkOption(CLI::App& subcommand, std::filesystem::path& link);

/// Tells the user on standard output how clients find a line that is offered at `link`; `tty` is
/// what it points to.
void announceLine(const std::filesystem::path& link, const std::string& tty);

}  // namespace orb::sim
