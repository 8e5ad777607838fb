#include <algorithm>
#include <sstream>

#include "scenario/duration.h"
#include "scenario/section.h"

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
  std::optional<std::string> text = textAt(key);
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

void Section::number(std::string_view key, double& value, double least, double most) {
  value = numberAt(key, least, most).value_or(value);
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

}  // namespace orb::sim
