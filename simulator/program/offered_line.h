#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

namespace orb::sim {

/// Adds --link.
CLI::Option* addLinkOption(CLI::App& subcommand, std::filesystem::path& link);

/// Throws Failure where `link` is a symbolic link to something that exists, as a rule the line that
/// another orb-sim offers; one that leads nowhere is what a killed one has left.
void requireFreeLink(const std::filesystem::path& link);

/// Tells the user on standard output how clients find a line that is offered at `link`; `tty` is
/// what it points to.
void announceLine(const std::filesystem::path& link, const std::string& tty);

}  // namespace orb::sim
