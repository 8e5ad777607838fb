#pragma once

#include <CLI/CLI.hpp>

namespace orb {

/// Prints the manual page, in the mdoc language, where --man is the only argument; returns whether
/// it is. The page is made from what --help is made from. `section` is that of the manual.
bool printManPage(const CLI::App& app, int section, int argc, char** argv);

}  // namespace orb
