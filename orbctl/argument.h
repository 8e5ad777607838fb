#pragma once

#include <string>
#include <string_view>

#include "operation_table/operation.h"

namespace orb::ctl {

/// The row of an operation's argument. Throws std::logic_error where the table has none of it.
const Argument& argumentOf(std::string_view operation, std::string_view argument);

/// What a number may be, such as "3 .. 85 degrees".
std::string rangeOf(const Argument& argument);

/// The value that `text` names. Throws Failure, with what is taken, where it names none.
Value valueFrom(const Argument& argument, const std::string& text);

/// Throws Failure where `value`, which the user calls `name`, is not taken.
void requireWithin(const Argument& argument, std::string_view name, double value);

}  // namespace orb::ctl
