#include "inventoryd/toml_fields.h"

#include <algorithm>

namespace orb::inventory {

std::uint32_t lineOf(const toml::node& node) {
  return static_cast<std::uint32_t>(node.source().begin.line);
}

std::string quoted(std::string_view name) { return '"' + std::string(name) + '"'; }

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

std::optional<std::string> textOf(const toml::node& node, std::string_view name,
                                  ProblemList& problems) {
  const auto text = node.value_exact<std::string>();
  if (!text) {
    problems.add(lineOf(node), quoted(name) + " is " + std::string(typeName(node)) +
                                   "; it has to be a text in quotes");
    return std::nullopt;
  }
  if (text->find('\0') != std::string::npos) {
    problems.add(lineOf(node), quoted(name) + " holds a null character, which D-Bus cannot carry");
    return std::nullopt;
  }
  return text;
}

void TomlFields::allowOnly(std::initializer_list<std::string_view> known) const {
  for (const auto& [key, node] : table_) {
    if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
      problems_.add(lineOf(node), "unknown key " + quoted(key.str()) + " in " + std::string(what_));
    }
  }
}

std::optional<std::int64_t> TomlFields::number(std::string_view key, std::int64_t least,
                                               std::int64_t most) const {
  const toml::node* node = required(key);
  if (node == nullptr) {
    return std::nullopt;
  }
  const auto value = node->value_exact<std::int64_t>();
  if (!value) {
    problems_.add(lineOf(*node), quoted(key) + " is " + std::string(typeName(*node)) +
                                     "; it has to be an integer");
    return std::nullopt;
  }
  if (*value < least || *value > most) {
    problems_.add(lineOf(*node), quoted(key) + " is " + std::to_string(*value) +
                                     "; it has to be from " + std::to_string(least) + " to " +
                                     std::to_string(most));
    return std::nullopt;
  }
  return value;
}

std::optional<std::string> TomlFields::text(std::string_view key) const {
  const toml::node* node = required(key);
  return node == nullptr ? std::nullopt : textOf(*node, key, problems_);
}

std::string TomlFields::deviceName(std::string_view key) const {
  const std::string name = has(key) ? text(key).value_or("") : "";
  if (name.starts_with('/')) {
    problems_.add(lineOf(*table_.get(key)), quoted(key) + " is " + quoted(name) +
                                                "; it has to be a name below /dev, not a path");
  }
  return name;
}

const toml::node* TomlFields::required(std::string_view key) const {
  const toml::node* node = table_.get(key);
  if (node == nullptr) {
    problems_.add(lineOf(table_), std::string(what_) + " has no " + quoted(key));
  }
  return node;
}

}  // namespace orb::inventory
