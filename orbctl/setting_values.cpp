#include "orbctl/setting_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "orbctl/argument.h"
#include "orbctl/failure.h"
#include "orbctl/words.h"

namespace orb::ctl {
namespace {

/// The argument that a number is: the first of the operation that sets it.
Argument numberOf(const Setting& setting) {
  for (const Operation& operation : operations()) {
    if (operation.name == setting.writes) {
      Argument argument = operation.arguments().front();
      argument.highest = setting.highest < 0 ? argument.highest : double(setting.highest);
      return argument;
    }
  }
  return {};
}

Failure notTaken(const Setting& setting, const std::string& text) {
  return {ExitStatus::WrongUse,
          fmt::format("{} takes {}{}, not '{}'", setting.key,
                      setting.kind == Setting::Kind::Number ? "a whole number, " : "",
                      rangeOf(setting), text),
          fmt::format("nothing was sent; see: orbctl keys {}", setting.key)};
}

std::string requireWord(const Setting& setting, const std::string& word) {
  const std::vector<std::string> words = split(setting.words);
  const std::string lower = lowered(word);
  if (std::find(words.begin(), words.end(), lower) == words.end()) {
    throw notTaken(setting, word);
  }
  return lower;
}

/// The words that are given, in the order of the setting's own.
Json wordsFrom(const Setting& setting, const std::string& text) {
  std::vector<std::string> given;
  for (const std::string& word : split(text)) {
    given.push_back(requireWord(setting, word));
  }
  Json names = Json::array();
  for (const std::string& name : split(setting.words)) {
    if (std::find(given.begin(), given.end(), name) != given.end()) {
      names.push_back(name);
    }
  }
  if (names.empty()) {
    throw notTaken(setting, text);
  }
  return names;
}

}  // namespace

std::string_view unitOf(const Setting& setting) {
  return setting.kind == Setting::Kind::Number ? numberOf(setting).unit : "";
}

std::string rangeOf(const Setting& setting) {
  switch (setting.kind) {
    case Setting::Kind::Number:
      return rangeOf(numberOf(setting));
    case Setting::Kind::Switch:
      return "on, off";
    case Setting::Kind::Word:
      return fmt::format("{}", fmt::join(split(setting.words), ", "));
    case Setting::Kind::Words:
      return fmt::format("any of {}, separated by commas", fmt::join(split(setting.words), ", "));
  }
  return {};
}

Json valueFrom(const Setting& setting, const std::string& text) {
  switch (setting.kind) {
    case Setting::Kind::Number: {
      long long number = 0;
      const Argument argument = numberOf(setting);
      const char* const end = text.data() + text.size();
      const auto [stop, error] = std::from_chars(text.data(), end, number);
      if (text.empty() || error != std::errc() || stop != end ||
          static_cast<double>(number) < argument.lowest ||
          static_cast<double>(number) > argument.highest) {
        throw notTaken(setting, text);
      }
      return number;
    }
    case Setting::Kind::Switch: {
      const std::string word = lowered(text);
      if (word != "on" && word != "off") {
        throw notTaken(setting, text);
      }
      return word == "on";
    }
    case Setting::Kind::Word:
      return requireWord(setting, text);
    case Setting::Kind::Words:
      return wordsFrom(setting, text);
  }
  return {};
}

std::string textOf(const Json& value) {
  if (value.is_boolean()) {
    return value.get<bool>() ? "on" : "off";
  }
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_array()) {
    return value.empty() ? "none"
                         : fmt::format("{}", fmt::join(value.get<std::vector<std::string>>(), ","));
  }
  return value.dump();
}

std::string withUnit(const Setting& setting, const Json& value) {
  const std::string_view unit = unitOf(setting);
  return fmt::format("{}{}{}", textOf(value), unit.empty() ? "" : " ", unit);
}

}  // namespace orb::ctl
