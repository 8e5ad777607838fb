#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orb {

/// The units of a duration, for its messages.
inline constexpr char kDurationUnits[] = "ns, us, ms, s, min or h";

/// The seconds that a text like "250ms", "1.5s" or "-12.5ns" means; nothing where it means none.
/// Units are kDurationUnits; a unit is always given.
std::optional<double> secondsOf(std::string_view text);

/// `seconds` as a whole number of units of `unit` seconds; nothing where it is no whole number.
std::optional<std::int64_t> wholeUnits(double seconds, double unit);

/// A duration as secondsOf() reads it, in the largest unit in which it is a whole number.
std::string durationText(double seconds);

}  // namespace orb
