#include "inventoryd/toml_fields.h"

#include <algorithm>

namespace orb::inventory {

std::optional<std::string> busTextOf(const toml::node& node, std::string_view subject,
                                     ProblemList& problems) {
  auto text = textOf(node, subject, problems);
  if (text && text->find('\0') != std::string::npos) {
    problems.add(lineOf(node),
                 std::string(subject) + " holds a null character, which D-Bus cannot carry");
    return std::nullopt;
  }
  return text;
}

void TomlFields::allowOnly(std::initializer_list<std::string_view> known) const {
  for (const auto& [key, node] : table_) {
    if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
      problems_.add(lineOf(node),
                    "unknown key " + inQuotes(key.str()) + " in " + std::string(what_));
    }
  }
}

std::optional<std::int64_t> TomlFields::number(std::string_view key, std::int64_t least,
                                               std::int64_t most) const {
  const toml::node* node = required(key);
  return node == nullptr ? std::nullopt : integerOf(*node, inQuotes(key), least, most, problems_);
}

std::optional<std::string> TomlFields::text(std::string_view key) const {
  const toml::node* node = required(key);
  return node == nullptr ? std::nullopt : busTextOf(*node, inQuotes(key), problems_);
}

std::string TomlFields::deviceName(std::string_view key) const {
  const std::string name = has(key) ? text(key).value_or("") : "";
  if (name.starts_with('/')) {
    problems_.add(lineOf(*table_.get(key)), inQuotes(key) + " is " + inQuotes(name) +
                                                "; it has to be a name below /dev, not a path");
  }
  return name;
}

const toml::node* TomlFields::required(std::string_view key) const {
  const toml::node* node = table_.get(key);
  if (node == nullptr) {
    problems_.add(lineOf(table_), std::string(what_) + " has no " + inQuotes(key));
  }
  return node;
}

}  // namespace orb::inventory
