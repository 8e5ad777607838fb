#include "base/toml/table_reader.h"

#include <algorithm>
#include <sstream>

#include "base/toml/duration.h"

namespace orb {
namespace {

/// As short as it can be written: 0.5, 1e+07.
std::string numberText(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

std::string outside(const std::string& value, const std::string& least, const std::string& most) {
  return "is " + value + "; it has to be from " + least + " to " + most;
}

}  // namespace

TableName TableName::of(std::string_view key) const {
  return path(text_.empty() ? std::string(key) : text_ + '.' + std::string(key));
}

std::string TableName::subject(std::string_view key) const {
  return isPath_ ? of(key).text() + ':' : inQuotes(key);
}

std::string TableName::missing(std::string_view key) const {
  return isPath_ ? subject(key) + " is missing; it has to be there"
                 : text_ + " has no " + inQuotes(key);
}

std::string TableName::unknown(std::string_view key, const std::vector<std::string>& known) const {
  return isPath_ ? subject(key) + " unknown key; it has to be " + alternatives(known)
                 : "unknown key " + inQuotes(key) + " in " + text_;
}

void TableReader::require(std::initializer_list<std::string_view> keys) {
  for (const std::string_view key : keys) {
    if (!has(key)) {
      problems_.add(lineOf(table_), name_.missing(key));
    }
  }
}

bool TableReader::flag(std::string_view key, bool& value) {
  const toml::node* node = find(key);
  if (node == nullptr) {
    return false;
  }
  const auto flag = node->value_exact<bool>();
  if (!flag) {
    addWrongType(*node, name_.subject(key), "true or false", problems_);
  }
  value = flag.value_or(value);
  return flag.has_value();
}

bool TableReader::text(std::string_view key, std::string& value, std::size_t longest) {
  const toml::node* node = find(key);
  std::optional<std::string> text = node == nullptr ? std::nullopt : textOf(*node, key);
  if (!text) {
    return false;
  }
  if (text->size() > longest) {
    refuse(key, "has " + std::to_string(text->size()) + " bytes; it has to be a text of at most " +
                    std::to_string(longest));
    return false;
  }
  value = *std::move(text);
  return true;
}

bool TableReader::number(std::string_view key, double& value, double least, double most) {
  const toml::node* node = find(key);
  if (node == nullptr) {
    return false;
  }
  if (!node->is_number()) {
    addWrongType(*node, name_.subject(key), "a number", problems_);
    return false;
  }
  const double number = node->value<double>().value_or(std::nan(""));
  if (!(number >= least && number <= most)) {
    refuse(key, outside(numberText(number), numberText(least), numberText(most)));
    return false;
  }
  value = number;
  return true;
}

void TableReader::table(std::string_view key, const std::function<void(TableReader&)>& read) {
  if (const toml::node* node = find(key)) {
    if (const toml::table* table = node->as_table()) {
      readTable(*table, key, read);
    } else {
      addWrongType(*node, name_.subject(key), "a table [" + name_.of(key).text() + "]", problems_);
    }
  }
}

void TableReader::eachTable(std::string_view key, const std::function<void(TableReader&)>& read) {
  const std::string accepted = "tables [[" + name_.of(key).text() + "]]";
  const toml::array* array = arrayAt(key, accepted);
  if (array == nullptr) {
    return;
  }
  for (const toml::node& node : *array) {
    if (const toml::table* table = node.as_table()) {
      readTable(*table, key, read);
    } else {
      addWrongType(node, name_.subject(key), "one of the " + accepted, problems_);
    }
  }
}

const toml::node* TableReader::find(std::string_view key) {
  if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
    known_.emplace_back(key);
  }
  return table_.get(key);
}

const toml::array* TableReader::arrayAt(std::string_view key, std::string_view accepted) {
  const toml::node* node = find(key);
  if (node != nullptr && !node->is_array()) {
    addWrongType(*node, name_.subject(key), accepted, problems_);
  }
  return node == nullptr ? nullptr : node->as_array();
}

void TableReader::refuse(std::string_view key, const std::string& what) {
  const toml::node* node = table_.get(key);
  problems_.add(lineOf(node != nullptr ? *node : table_), name_.subject(key) + ' ' + what);
}

void TableReader::refuseUnknownKeys() {
  for (const auto& [key, node] : table_) {
    if (std::find(known_.begin(), known_.end(), key.str()) == known_.end()) {
      problems_.add(static_cast<std::uint32_t>(key.source().begin.line),
                    name_.unknown(key.str(), known_));
    }
  }
}

std::optional<std::string> TableReader::textOf(const toml::node& node, std::string_view key) {
  auto text = node.value_exact<std::string>();
  if (!text) {
    addWrongType(node, name_.subject(key), "a text in quotes", problems_);
  }
  return text;
}

std::optional<std::int64_t> TableReader::integerAt(std::string_view key, std::int64_t least,
                                                   std::int64_t most) {
  const toml::node* node = find(key);
  const auto value = node == nullptr ? std::nullopt : node->value_exact<std::int64_t>();
  if (node != nullptr && !value) {
    addWrongType(*node, name_.subject(key), "an integer", problems_);
  }
  if (value && (*value < least || *value > most)) {
    refuse(key, outside(std::to_string(*value), std::to_string(least), std::to_string(most)));
    return std::nullopt;
  }
  return value;
}

std::optional<std::int64_t> TableReader::durationAt(std::string_view key, double unit,
                                                    std::chrono::nanoseconds least,
                                                    std::chrono::nanoseconds most) {
  std::string text;
  if (!this->text(key, text)) {
    return std::nullopt;
  }
  const std::optional<double> seconds = secondsOf(text);
  if (!seconds) {
    refuse(key, "is " + inQuotes(text) + "; it has to be a number and its unit (" + kDurationUnits +
                    "), such as \"250ms\"");
    return std::nullopt;
  }
  const double from = std::chrono::duration<double>(least).count();
  const double to = std::chrono::duration<double>(most).count();
  if (*seconds < from || *seconds > to) {
    refuse(key, outside(inQuotes(text), durationText(from), durationText(to)));
    return std::nullopt;
  }
  const auto units = wholeUnits(*seconds, unit);
  if (!units) {
    refuse(key, "is " + inQuotes(text) + "; it has to be a multiple of " + durationText(unit));
  }
  return units;
}

std::optional<std::size_t> TableReader::indexOf(const toml::node& node, std::string_view key,
                                                const std::vector<std::string_view>& names) {
  const auto text = textOf(node, key);
  const auto found = text ? std::find(names.begin(), names.end(), *text) : names.end();
  if (found != names.end()) {
    return static_cast<std::size_t>(found - names.begin());
  }
  if (text) {
    std::vector<std::string> accepted;
    std::transform(names.begin(), names.end(), std::back_inserter(accepted), inQuotes);
    problems_.add(lineOf(node), name_.subject(key) + " is " + inQuotes(*text) + "; it has to be " +
                                    alternatives(accepted));
  }
  return std::nullopt;
}

void TableReader::readTable(const toml::table& table, std::string_view key,
                            const std::function<void(TableReader&)>& read) {
  TableReader reader(table, name_.of(key), problems_);
  read(reader);
  reader.refuseUnknownKeys();
}

std::string alternatives(const std::vector<std::string>& texts) {
  std::string list;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const char* const separator = i == 0 ? "" : i + 1 == texts.size() ? " or " : ", ";
    list += separator + texts[i];
  }
  return list;
}

std::uint32_t lineOf(const toml::node& node) {
  return static_cast<std::uint32_t>(node.source().begin.line);
}

std::string typeName(const toml::node& node) {
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

void addWrongType(const toml::node& node, const std::string& subject, std::string_view accepted,
                  ProblemList& problems) {
  problems.add(lineOf(node),
               subject + " is " + typeName(node) + "; it has to be " + std::string(accepted));
}

}  // namespace orb
