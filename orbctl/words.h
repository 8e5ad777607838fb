#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orb::ctl {

/// The words of a list, which commas separate.
std::vector<std::string> split(std::string_view list);

std::string lowered(std::string_view text);
std::string uppered(std::string_view text);

/// The nearest of `words` to `word`, where one is near; else empty.
std::string nearest(std::string_view word, std::span<const std::string> words);

}  // namespace orb::ctl
