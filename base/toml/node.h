#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <toml++/toml.h>

#include "base/toml/problem_list.h"

namespace orb {

/// The line that a value, or the key of a table, stands in.
std::uint32_t lineOf(const toml::node& node);

/// "a text", "an integer" and so on.
std::string_view typeName(const toml::node& node);

/// `text` in quotes.
std::string inQuotes(std::string_view text);

/// Adds the problem that a node has another type: "SUBJECT is a text; it has to be ACCEPTED".
void addWrongType(const toml::node& node, std::string_view subject, std::string_view accepted,
                  ProblemList& problems);

/// The value of a node, or nothing and a problem that begins with `subject`.
std::optional<std::string> textOf(const toml::node& node, std::string_view subject,
                                  ProblemList& problems);
std::optional<std::int64_t> integerOf(const toml::node& node, std::string_view subject,
                                      std::int64_t least, std::int64_t most, ProblemList& problems);

}  // namespace orb
