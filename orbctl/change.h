#pragma once

#include <string>
#include <utility>
#include <vector>

#include "orbctl/settings.h"

namespace orb::ctl {

/// A setting, and what it is to be.
struct Change {
  const Setting* setting;
  Json value;
};

/// Pairs of key and value. Throws Failure for the first that is none.
std::vector<Change> changesFrom(const std::vector<std::string>& words);

/// Makes the change, unless the receiver holds the value already or `isDry`, and reads it back.
/// Returns what became of it, in words and as data. Throws Failure where the receiver keeps another
/// value.
std::pair<std::string, Json> change(Session& session, const Change& wanted, bool isDry);

}  // namespace orb::ctl
