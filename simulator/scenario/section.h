#pragma once

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/toml/node.h"

namespace orb::sim {

/// A word of the file, and what it stands for.
template <typename Value>
struct Word {
  std::string_view name;
  Value value;
};

/// One table of a scenario file. What it holds overwrites the defaults that the caller passes in;
/// what is wrong becomes a problem "KEY: what is wrong; what is accepted", with the key's full
/// name, and leaves the default.
class Section {
 public:
  /// `path` is the table's full name; empty for the file. The table and the problems outlive this.
  Section(const toml::table& table, std::string path, ProblemList& problems)
      : table_(table), path_(std::move(path)), problems_(problems) {}

  bool has(std::string_view key) { return find(key) != nullptr; }

  /// A problem for each of these keys that is not there.
  void require(std::initializer_list<std::string_view> keys);

  void flag(std::string_view key, bool& value);

  /// True where there is a text that is not too long.
  bool text(std::string_view key, std::string& value, std::size_t longest);

  /// True where there is an integer from `least` to `most`.
  template <typename Integer>
  bool integer(std::string_view key, Integer& value, std::int64_t least,
               std::int64_t most = std::numeric_limits<Integer>::max()) {
    const auto number = integerAt(key, least, most);
    if (number) {
      value = static_cast<Integer>(*number);
    }
    return number.has_value();
  }

  /// A number with or without a fraction.
  void number(std::string_view key, double& value, double least, double most);

  /// A number that is kept as a whole number of `1 / scale`: degrees with scale 1e7.
  template <typename Integer>
  void scaled(std::string_view key, Integer& value, double scale, double least, double most) {
    if (const auto number = numberAt(key, least, most)) {
      value = static_cast<Integer>(std::llround(*number * scale));
    }
  }

  /// A text such as "250ms". What is finer than the duration's unit is a problem.
  template <typename Representation, typename Period>
  void duration(std::string_view key, std::chrono::duration<Representation, Period>& value,
                std::chrono::nanoseconds least, std::chrono::nanoseconds most) {
    static_assert(std::numeric_limits<Representation>::is_integer);
    constexpr double kUnit = static_cast<double>(Period::num) / static_cast<double>(Period::den);
    if (const auto units = durationAt(key, kUnit, least, most)) {
      value = std::chrono::duration<Representation, Period>(static_cast<Representation>(*units));
    }
  }

  /// One of `words`, which is a range of Word.
  template <typename Value, typename Words>
  void word(std::string_view key, Value& value, const Words& words) {
    if (const toml::node* node = find(key)) {
      if (const std::optional<std::size_t> index = indexOf(*node, key, namesOf(words))) {
        value = std::begin(words)[*index].value;
      }
    }
  }

  /// Any number of `words`, as an array.
  template <typename Value, typename Words>
  void words(std::string_view key, std::vector<Value>& values, const Words& words) {
    if (const toml::array* array = arrayAt(key, "an array of texts")) {
      values.clear();
      for (const toml::node& node : *array) {
        if (const std::optional<std::size_t> index = indexOf(node, key, namesOf(words))) {
          values.push_back(std::begin(words)[*index].value);
        }
      }
    }
  }

  /// Calls `read` with the table of this name, if there is one.
  void table(std::string_view key, const std::function<void(Section&)>& read);

  /// Calls `read` with each table under [[key]].
  void eachTable(std::string_view key, const std::function<void(Section&)>& read);

  /// The value of a key, or null. From now on, the key is known.
  const toml::node* find(std::string_view key);

  /// Adds a problem: "KEY: what". Without a key of this name, it stands at the table's line.
  void refuse(std::string_view key, const std::string& what);

  /// Every key that nobody has asked for is a problem.
  void refuseUnknownKeys();

 private:
  template <typename Words>
  static std::vector<std::string_view> namesOf(const Words& words) {
    std::vector<std::string_view> names;
    for (const auto& word : words) {
      names.push_back(word.name);
    }
    return names;
  }

  std::optional<std::string> textAt(std::string_view key);
  std::optional<std::int64_t> integerAt(std::string_view key, std::int64_t least,
                                        std::int64_t most);
  std::optional<double> numberAt(std::string_view key, double least, double most);
  std::optional<std::int64_t> durationAt(std::string_view key, double unit,
                                         std::chrono::nanoseconds least,
                                         std::chrono::nanoseconds most);
  const toml::array* arrayAt(std::string_view key, std::string_view accepted);
  std::optional<std::size_t> indexOf(const toml::node& node, std::string_view key,
                                     const std::vector<std::string_view>& names);

  std::string nameOf(std::string_view key) const;
  std::string subject(std::string_view key) const { return nameOf(key) + ':'; }

  const toml::table& table_;
  std::string path_;
  ProblemList& problems_;
  std::vector<std::string> known_;
};

/// "a", "a or b", "a, b or c".
std::string alternatives(const std::vector<std::string>& texts);

}  // namespace orb::sim
