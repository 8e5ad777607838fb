#include "base/toml/duration.h"

#include <charconv>
#include <cmath>
#include <iterator>
#include <sstream>

namespace orb {
namespace {

struct Unit {
  std::string_view name;
  double seconds;
};

constexpr Unit kUnits[] = {
    {"h", 3600}, {"min", 60}, {"s", 1}, {"ms", 1e-3}, {"us", 1e-6}, {"ns", 1e-9},
};

/// Beyond this, a double does not tell neighbouring whole numbers apart.
constexpr double kMostUnits = 9e15;

}  // namespace

std::optional<double> secondsOf(std::string_view text) {
  double number = 0;
  const auto [end, error] =
      std::from_chars(text.begin(), text.end(), number, std::chars_format::fixed);
  if (error != std::errc() || !std::isfinite(number)) {
    return std::nullopt;
  }
  text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
  for (const Unit& unit : kUnits) {
    if (text == unit.name) {
      return number * unit.seconds;
    }
  }
  return std::nullopt;
}

std::optional<std::int64_t> wholeUnits(double seconds, double unit) {
  const double units = seconds / unit;
  // What is whole in decimal is nearly so in binary.
  const double tolerance = 1e-6 + 1e-12 * std::abs(units);
  if (std::abs(units) > kMostUnits || std::abs(units - std::round(units)) > tolerance) {
    return std::nullopt;
  }
  return std::llround(units);
}

std::string durationText(double seconds) {
  if (seconds == 0) {
    return "0s";
  }
  for (const Unit& unit : kUnits) {
    const auto units = wholeUnits(seconds, unit.seconds);
    if (units && *units != 0) {
      return std::to_string(*units) + std::string(unit.name);
    }
  }
  constexpr const Unit& kFinest = std::end(kUnits)[-1];
  std::ostringstream text;
  text << seconds / kFinest.seconds << kFinest.name;
  return text.str();
}

}  // namespace orb
