#pragma once

#include <algorithm>
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

#include <toml++/toml.h>

#include "base/toml/problem_list.h"

namespace orb {

/// A word of the file, and what it stands for.
template <typename Value>
struct Word {
  std::string_view name;
  Value value;
};

/// How problems name a table and its keys.
class TableName {
 public:
  /// By its path: "line.baud: is missing; it has to be there". The path of the file is empty.
  static TableName path(std::string path) { return {std::move(path), true}; }

  /// In words, such as "the module": "the module has no "location"".
  static TableName words(std::string words) { return {std::move(words), false}; }

  TableName of(std::string_view key) const;
  const std::string& text() const { return text_; }

  std::string subject(std::string_view key) const;
  std::string missing(std::string_view key) const;
  std::string unknown(std::string_view key, const std::vector<std::string>& known) const;

 private:
  TableName(std::string text, bool isPath) : text_(std::move(text)), isPath_(isPath) {}

  std::string text_;
  bool isPath_;
};

/// Reads one table of a TOML file. What the table holds overwrites the values that the caller
/// passes in; what is wrong becomes a problem "SUBJECT is ...; it has to be ...", and leaves them.
class TableReader {
 public:
  /// The table and the problems outlive this.
  TableReader(const toml::table& table, TableName name, ProblemList& problems)
      : table_(table), name_(std::move(name)), problems_(problems) {}

  bool has(std::string_view key) { return find(key) != nullptr; }

  /// A problem for each of these keys that is not there.
  void require(std::initializer_list<std::string_view> keys);

  /// Each of these reads the value of a key, where there is one, and returns whether it is right.
  bool flag(std::string_view key, bool& value);
  bool text(std::string_view key, std::string& value,
            std::size_t longest = std::numeric_limits<std::size_t>::max());
  bool number(std::string_view key, double& value, double least, double most);

  template <typename Integer>
  bool integer(std::string_view key, Integer& value, std::int64_t least,
               std::int64_t most = kLargest<Integer>) {
    const auto number = integerAt(key, least, most);
    value = number ? static_cast<Integer>(*number) : value;
    return number.has_value();
  }

  /// A number that is kept as a whole number of `1 / scale`: degrees with scale 1e7.
  template <typename Integer>
  void scaled(std::string_view key, Integer& value, double scale, double least, double most) {
    double number = 0;
    if (this->number(key, number, least, most)) {
      value = static_cast<Integer>(std::llround(number * scale));
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
      readWord(*node, key, words, [&](const auto& word) { value = word; });
    }
  }

  /// Any number of `words`, as an array.
  template <typename Value, typename Words>
  void words(std::string_view key, std::vector<Value>& values, const Words& words) {
    if (const toml::array* array = arrayAt(key, "an array of texts")) {
      values.clear();
      for (const toml::node& node : *array) {
        readWord(node, key, words, [&](const auto& word) { values.push_back(word); });
      }
    }
  }

  /// Calls `read` with the table of this name, if there is one, or with each table under [[key]].
  /// Keys that `read` does not ask for are problems.
  void table(std::string_view key, const std::function<void(TableReader&)>& read);
  void eachTable(std::string_view key, const std::function<void(TableReader&)>& read);

  /// The value of a key, or null. From now on, the key is known.
  const toml::node* find(std::string_view key);

  /// The array at a key, or null; `accepted` tells in the problem what it has to be.
  const toml::array* arrayAt(std::string_view key, std::string_view accepted);

  /// Adds a problem: "SUBJECT what". Without a key of this name, it stands at the table's line.
  void refuse(std::string_view key, const std::string& what);

  /// Every key that nobody has asked for is a problem.
  void refuseUnknownKeys();

 private:
  template <typename Integer>
  static constexpr std::int64_t kLargest = static_cast<std::int64_t>(std::min<std::uintmax_t>(
      std::numeric_limits<Integer>::max(), std::numeric_limits<std::int64_t>::max()));

  template <typename Words, typename Use>
  void readWord(const toml::node& node, std::string_view key, const Words& words, Use use) {
    std::vector<std::string_view> names;
    for (const auto& word : words) {
      names.push_back(word.name);
    }
    if (const std::optional<std::size_t> index = indexOf(node, key, names)) {
      use(std::begin(words)[*index].value);
    }
  }

  std::optional<std::string> textOf(const toml::node& node, std::string_view key);
  std::optional<std::int64_t> integerAt(std::string_view key, std::int64_t least,
                                        std::int64_t most);
  std::optional<std::int64_t> durationAt(std::string_view key, double unit,
                                         std::chrono::nanoseconds least,
                                         std::chrono::nanoseconds most);
  std::optional<std::size_t> indexOf(const toml::node& node, std::string_view key,
                                     const std::vector<std::string_view>& names);
  void readTable(const toml::table& table, std::string_view key,
                 const std::function<void(TableReader&)>& read);

  const toml::table& table_;
  TableName name_;
  ProblemList& problems_;
  std::vector<std::string> known_;
};

/// "a", "a or b", "a, b or c".
std::string alternatives(const std::vector<std::string>& texts);

/// The line that a value, or the key of a table, stands in.
std::uint32_t lineOf(const toml::node& node);

/// "a text", "an integer" and so on.
std::string typeName(const toml::node& node);

/// `text` in quotes.
std::string inQuotes(std::string_view text);

/// Adds the problem that a node has another type: "SUBJECT is a text; it has to be ACCEPTED".
void addWrongType(const toml::node& node, const std::string& subject, std::string_view accepted,
                  ProblemList& problems);

}  // namespace orb
