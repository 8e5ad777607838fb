#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/plain_text.h"

namespace orb {

/// Collects what is wrong with a file, and lists it in the order of the lines.
class ProblemList {
 public:
  explicit ProblemList(std::string path) : path_(std::move(path)) {}

  void add(std::uint32_t line, std::string what) {
    // What is quoted from the file may hold anything; a problem stays one line.
    std::replace(what.begin(), what.end(), '\n', ' ');
    problems_.emplace(line, path_ + ':' + std::to_string(line) + ": " + plain(what));
  }

  /// A problem of the file as a whole.
  void add(const std::string& what) { problems_.emplace(0, path_ + ": " + what); }

  std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    for (const auto& [line, text] : problems_) {
      lines.push_back(text);
    }
    return lines;
  }

 private:
  std::string path_;
  std::multimap<std::uint32_t, std::string> problems_;
};

}  // namespace orb
