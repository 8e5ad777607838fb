#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <toml++/toml.h>

#include "base/toml/problem_list.h"

namespace orb {

/// The content of a file, or nothing and a problem where it cannot be read.
std::optional<std::string> readTextFile(const std::string& path, ProblemList& problems);

/// What a TOML text holds, or nothing and a problem where it is not TOML.
std::optional<toml::table> parseToml(std::string_view text, ProblemList& problems);

}  // namespace orb
