#include "scenario/section.h"

#include <algorithm>
#include <sstream>

#include "scenario/duration.h"

namespace orb::sim {
namespace {

/// As short as it can be written: 0.5, 1e+07.
std::string numberText(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

std::string bounds(const std::string& least, const std::string& most) {
  return "it has to be from " + least + " to " + most;
}

}  // namespace

std::string alternatives(const std::vector<std::string>& texts) {
  std::string list;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const char* const separator = i == 0 ? "" : i + 1 == texts.size() ? " or " : ", ";
    list += separator + texts[i];
  }
  return list;
}

const toml::node* Section::find(std::string_view key) {
  if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
    known_.emplace_back(key);
  }
  return table_.get(key);
}

void Section::require(std::initializer_list<std::string_view> keys) {
  for (const std::string_view key : keys) {
    if (!has(key)) {
      refuse(key, "is missing; it has to be there");
    }
  }
}

void Section::flag(std::string_view key, bool& value) {
  if (const toml::node* node = find(key)) {
    if (const auto flag = node->value_exact<bool>()) {
      value = *flag;
    } else {
      addWrongType(*node, subject(key), "true or false", problems_);
    }
  }
}

bool Section::text(std::string_view key, std::string& value, std::size_t longest) {
  auto text = textAt(key);
  if (text && text->size() > longest) {
    refuse(key, "has " + std::to_string(text->size()) + " bytes; it has to be a text of at most " +
                    std::to_string(longest));
    return false;
  }
  if (text) {
    value = *std::move(text);
  }
  return text.has_value();
}

void Section::number(std::string_view key, double& value, double least, double most) {
  value = numberAt(key, least, most).value_or(value);
}

void Section::table(std::string_view key, const std::function<void(Section&)>& read) {
  if (const toml::node* node = find(key)) {
    if (const toml::table* table = node->as_table()) {
      Section section(*table, nameOf(key), problems_);
      read(section);
      section.refuseUnknownKeys();
    } else {
      addWrongType(*node, subject(key), "a table [" + nameOf(key) + "]", problems_);
    }
  }
}

void Section::eachTable(std::string_view key, const std::function<void(Section&)>& read) {
  const std::string accepted = "tables [[" + nameOf(key) + "]]";
  const toml::array* array = arrayAt(key, accepted);
  if (array == nullptr) {
    return;
  }
  for (const toml::node& node : *array) {
    if (const toml::table* table = node.as_table()) {
      Section section(*table, nameOf(key), problems_);
      read(section);
      section.refuseUnknownKeys();
    } else {
      addWrongType(node, subject(key), "one of the " + accepted, problems_);
    }
  }
}

void Section::refuse(std::string_view key, const std::string& what) {
  const toml::node* node = table_.get(key);
  problems_.add(lineOf(node != nullptr ? *node : table_), subject(key) + ' ' + what);
}

void Section::refuseUnknownKeys() {
  for (const auto& [key, node] : table_) {
    if (std::find(known_.begin(), known_.end(), key.str()) == known_.end()) {
      problems_.add(static_cast<std::uint32_t>(key.source().begin.line),
                    subject(key.str()) + " unknown key; it has to be " + alternatives(known_));
    }
  }
}

std::optional<std::string> Section::textAt(std::string_view key) {
  const toml::node* node = find(key);
  return node == nullptr ? std::nullopt : textOf(*node, subject(key), problems_);
}

std::optional<std::int64_t> Section::integerAt(std::string_view key, std::int64_t least,
                                               std::int64_t most) {
  const toml::node* node = find(key);
  return node == nullptr ? std::nullopt : integerOf(*node, subject(key), least, most, problems_);
}

std::optional<double> Section::numberAt(std::string_view key, double least, double most) {
  const toml::node* node = find(key);
  if (node == nullptr) {
    return std::nullopt;
  }
  if (!node->is_number()) {
    addWrongType(*node, subject(key), "a number", problems_);
    return std::nullopt;
  }
  const double number = node->value<double>().value_or(std::nan(""));
  if (!(number >= least && number <= most)) {
    refuse(key, "is " + numberText(number) + "; " + bounds(numberText(least), numberText(most)));
    return std::nullopt;
  }
  return number;
}

std::optional<std::int64_t> Section::durationAt(std::string_view key, double unit,
                                                std::chrono::nanoseconds least,
                                                std::chrono::nanoseconds most) {
  const auto text = textAt(key);
  if (!text) {
    return std::nullopt;
  }
  const std::optional<double> seconds = secondsOf(*text);
  if (!seconds) {
    refuse(key, "is " + inQuotes(*text) + "; it has to be a number and its unit (" +
                    kDurationUnits + "), such as \"250ms\"");
    return std::nullopt;
  }
  const double from = std::chrono::duration<double>(least).count();
  const double to = std::chrono::duration<double>(most).count();
  if (*seconds < from || *seconds > to) {
    refuse(key, "is " + inQuotes(*text) + "; " + bounds(durationText(from), durationText(to)));
    return std::nullopt;
  }
  const auto units = wholeUnits(*seconds, unit);
  if (!units) {
    refuse(key, "is " + inQuotes(*text) + "; it has to be a multiple of " + durationText(unit));
  }
  return units;
}

const toml::array* Section::arrayAt(std::string_view key, std::string_view accepted) {
  const toml::node* node = find(key);
  if (node == nullptr) {
    return nullptr;
  }
  const toml::array* array = node->as_array();
  if (array == nullptr) {
    addWrongType(*node, subject(key), accepted, problems_);
  }
  return array;
}

std::optional<std::size_t> Section::indexOf(const toml::node& node, std::string_view key,
                                            const std::vector<std::string_view>& names) {
  const auto text = textOf(node, subject(key), problems_);
  if (!text) {
    return std::nullopt;
  }
  const auto found = std::find(names.begin(), names.end(), *text);
  if (found == names.end()) {
    std::vector<std::string> accepted;
    std::transform(names.begin(), names.end(), std::back_inserter(accepted), inQuotes);
    problems_.add(lineOf(node), subject(key) + " is " + inQuotes(*text) + "; it has to be " +
                                    alternatives(accepted));
    return std::nullopt;
  }
  return static_cast<std::size_t>(found - names.begin());
}

std::string Section::nameOf(std::string_view key) const {
  return path_.empty() ? std::string(key) : path_ + '.' + std::string(key);
}

}  // namespace orb::sim
