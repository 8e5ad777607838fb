#include "base/toml/node.h"

namespace orb {

std::uint32_t lineOf(const toml::node& node) {
  return static_cast<std::uint32_t>(node.source().begin.line);
}

std::string_view typeName(const toml::node& node) {
  switch (node.type()) {
    case toml::node_type::table:
      return "a table";
    case toml::node_type::array:
      return "an array";
    case toml::node_type::string:
      return "a text";
    case toml::node_type::integer:
      return "an integer";
    case toml::node_type::floating_point:
      return "a fraction";
    case toml::node_type::boolean:
      return "true or false";
    default:
      return "a date or a time";
  }
}

std::string inQuotes(std::string_view text) { return '"' + std::string(text) + '"'; }

void addWrongType(const toml::node& node, std::string_view subject, std::string_view accepted,
                  ProblemList& problems) {
  problems.add(lineOf(node), std::string(subject) + " is " + std::string(typeName(node)) +
                                 "; it has to be " + std::string(accepted));
}

std::optional<std::string> textOf(const toml::node& node, std::string_view subject,
                                  ProblemList& problems) {
  auto text = node.value_exact<std::string>();
  if (!text) {
    addWrongType(node, subject, "a text in quotes", problems);
  }
  return text;
}

std::optional<std::int64_t> integerOf(const toml::node& node, std::string_view subject,
                                      std::int64_t least, std::int64_t most,
                                      ProblemList& problems) {
  const auto value = node.value_exact<std::int64_t>();
  if (!value) {
    addWrongType(node, subject, "an integer", problems);
    return std::nullopt;
  }
  if (*value < least || *value > most) {
    problems.add(lineOf(node), std::string(subject) + " is " + std::to_string(*value) +
                                   "; it has to be from " + std::to_string(least) + " to " +
                                   std::to_string(most));
    return std::nullopt;
  }
  return value;
}

}  // namespace orb
