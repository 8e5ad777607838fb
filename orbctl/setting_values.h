#pragma once

#include <string>
#include <string_view>

#include "orbctl/settings.h"

namespace orb::ctl {

/// What is taken for the setting, such as "3 .. 85 degrees" or "on, off".
std::string rangeOf(const Setting& setting);

/// The unit of a number; else empty.
std::string_view unitOf(const Setting& setting);

/// The value that `text` names. Throws Failure, with what is taken, where it names none.
Json valueFrom(const Setting& setting, const std::string& text);

/// The value as a person writes it, such as "10" or "gps,galileo", without its unit.
std::string textOf(const Json& value);

/// The value with its unit.
std::string withUnit(const Setting& setting, const Json& value);

}  // namespace orb::ctl
