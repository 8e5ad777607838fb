#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include <toml++/toml.h>

#include "base/toml/node.h"
#include "base/toml/problem_list.h"

namespace orb::inventory {

/// Takes the fields out of one TOML table. What is missing or wrong becomes a problem, and the
/// field empty.
class TomlFields {
 public:
  /// `what` names the table in the problems ("the module"). The table, the problems and the text
  /// behind `what` outlive the object.
  TomlFields(const toml::table& table, std::string_view what, ProblemList& problems)
      : table_(table), what_(what), problems_(problems) {}

  /// Every key that is not among the known ones is a problem.
  void allowOnly(std::initializer_list<std::string_view> known) const;

  /// A number from `least` to `most`; the key has to be there.
  std::optional<std::int64_t> number(std::string_view key, std::int64_t least,
                                     std::int64_t most) const;

  /// A text that the bus can carry; the key has to be there.
  std::optional<std::string> text(std::string_view key) const;

  /// A device name below /dev; empty when the key is missing.
  std::string deviceName(std::string_view key) const;

  bool has(std::string_view key) const { return table_.contains(key); }

 private:
  const toml::node* required(std::string_view key) const;

  const toml::table& table_;
  std::string_view what_;
  ProblemList& problems_;
};

/// The text of a node, or nothing and a problem that begins with `subject`.
std::optional<std::string> busTextOf(const toml::node& node, std::string_view subject,
                                     ProblemList& problems);

}  // namespace orb::inventory
