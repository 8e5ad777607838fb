#include "orbctl/argument.h"

#include <fmt/format.h>

#include <charconv>
#include <stdexcept>

#include "orbctl/failure.h"

namespace orb::ctl {
namespace {

Failure notWithin(std::string_view name, const std::string& range, const std::string& value) {
  return {ExitStatus::WrongUse, fmt::format("{} is {}, not {}", name, range, value),
          "nothing was sent"};
}

/// Not a number is within nothing.
bool isWithin(const Argument& argument, double value) {
  return value >= argument.lowest && value <= argument.highest;
}

}  // namespace

const Argument& argumentOf(std::string_view operation, std::string_view argument) {
  for (const Operation& row : operations()) {
    for (const Argument& candidate : row.arguments()) {
      if (row.name == operation && candidate.name == argument) {
        return candidate;
      }
    }
  }
  throw std::logic_error(fmt::format("{} has no argument {}", operation, argument));
}

std::string rangeOf(const Argument& argument) {
  return fmt::format("{} .. {}{}{}", argument.lowest, argument.highest,
                     argument.unit.empty() ? "" : " ", argument.unit);
}

void requireWithin(const Argument& argument, std::string_view name, double value) {
  if (!isWithin(argument, value)) {
    throw notWithin(name, rangeOf(argument), fmt::format("{}", value));
  }
}

Value valueFrom(const Argument& argument, const std::string& text) {
  const std::string given = fmt::format("'{}'", text);
  if (argument.type == Argument::Type::Text) {
    return text;
  }
  if (argument.type == Argument::Type::Boolean) {
    if (text != "on" && text != "off") {
      throw notWithin(argument.name, "on or off", given);
    }
    return text == "on";
  }
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || last != end || !isWithin(argument, number)) {
    throw notWithin(argument.name, rangeOf(argument), given);
  }
  if (argument.type == Argument::Type::Number) {
    return number;
  }
  const auto whole = static_cast<long long>(number);
  if (number != static_cast<double>(whole)) {
    throw notWithin(argument.name, rangeOf(argument), given);
  }
  return whole;
}

}  // namespace orb::ctl
