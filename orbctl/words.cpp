#include "orbctl/words.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace orb::ctl {
namespace {

/// The number of letters that are added, dropped or changed between the two.
std::size_t distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const std::size_t change = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({change, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::string> split(std::string_view list) {
  std::vector<std::string> result;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    result.emplace_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return result;
}

std::string lowered(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

std::string uppered(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return result;
}

std::string nearest(std::string_view word, std::span<const std::string> words) {
  const std::string* best = nullptr;
  std::size_t least = std::max<std::size_t>(2, word.size() / 2) + 1;
  for (const std::string& candidate : words) {
    // The first part of a name is as good as a slip of the finger.
    const bool isPart = word.size() > 2 && candidate.find(word) != std::string::npos;
    const std::size_t far = isPart ? 1 : distance(word, candidate);
    if (far < least) {
      least = far;
      best = &candidate;
    }
  }
  return best == nullptr ? std::string() : *best;
}

}  // namespace orb::ctl
