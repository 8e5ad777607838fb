#pragma once

#include <cstddef>
#include <functional>
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

std::vector<std::string> keysOf(const std::vector<Change>& changes);

/// Has `make` do what each of `keys` stands for, in turn; it returns whether something changed. A
/// Failure of it comes with what was changed before, and what was not tried.
void makeEach(const std::vector<std::string>& keys, const std::function<bool(std::size_t)>& make);

}  // namespace orb::ctl
