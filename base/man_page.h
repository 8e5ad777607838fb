#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orb {

/// The manual page of a program, made from what its --help is made from.
struct ManPage {
  std::string name;
  int section = 1;
  std::string version;
  /// What the page has besides: text in mdoc, after the options.
  std::string more;
};

/// The page in the mdoc language.
std::string manPage(const ManPage& page, const CLI::App& app);

}  // namespace orb
