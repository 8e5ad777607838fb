#include "base/toml/text_file.h"

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

namespace orb {

std::optional<std::string> readTextFile(const std::string& path, ProblemList& problems) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (file.is_open() && file.peek() != std::ifstream::traits_type::eof()) {
    text << file.rdbuf();
  }
  if (!file.is_open() || file.bad()) {
    problems.add("cannot read it: " + std::generic_category().message(errno));
    return std::nullopt;
  }
  return text.str();
}

std::optional<toml::table> parseToml(std::string_view text, ProblemList& problems) {
  try {
    return toml::parse(text);
  } catch (const toml::parse_error& error) {
    problems.add(static_cast<std::uint32_t>(error.source().begin.line),
                 std::string(error.description()));
    return std::nullopt;
  }
}

}  // namespace orb
