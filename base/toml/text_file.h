#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <toml++/toml.h>

#include "base/toml/problem_list.h"

namespace orb {

/// A text that is read has no more bytes.
constexpr std::size_t kLongestText = std::size_t{1} << 20;
constexpr char kTooLong[] = "cannot read it: it has more than 1 MiB";

/// The content of a regular file of at most kLongestText bytes, or nothing and a problem where it
/// cannot be read.
std::optional<std::string> readTextFile(const std::string& path, ProblemList& problems);

/// What a TOML text holds, or nothing and a problem where it is not TOML, or so deep that its
/// tables could not be released: values are nested up to 16 times, and a line has up to 256 dots.
std::optional<toml::table> parseToml(std::string_view text, ProblemList& problems);

}  // namespace orb
