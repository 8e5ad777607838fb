#include "base/toml/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "base/owned_descriptor.h"

namespace orb {
namespace {

/// A key of very many parts makes tables within tables that nothing can release: the stack ends
/// before they do. The parser bounds arrays and tables within values, but not this.
constexpr std::ptrdiff_t kMostDots = 256;

/// The file's content; empty, with errno set, where it cannot be read.
std::optional<std::string> contentOf(const OwnedDescriptor& file) {
  std::string text(kLongestText + 1, '\0');
  std::size_t length = 0;
  ssize_t count = 1;
  while (count > 0) {
    count = ::read(file.get(), text.data() + length, text.size() - length);
    length += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
  text.resize(length);
  return count < 0 ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

std::optional<std::string> readTextFile(const std::string& path, ProblemList& problems) {
  // Without waiting for whoever might write to a FIFO.
  const OwnedDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  const bool isFound = file.isOpen() && ::fstat(file.get(), &status) == 0;
  if (isFound && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    problems.add("cannot read it: it is no regular file");
    return std::nullopt;
  }
  std::optional<std::string> text = isFound ? contentOf(file) : std::nullopt;
  if (!text) {
    problems.add("cannot read it: " + std::generic_category().message(errno));
  } else if (text->size() > kLongestText) {
    problems.add(kTooLong);
    text.reset();
  }
  return text;
}

std::optional<toml::table> parseToml(std::string_view text, ProblemList& problems) {
  std::uint32_t line = 1;
  for (std::string_view rest = text; !rest.empty(); ++line) {
    const std::size_t end = std::min(rest.find('\n'), rest.size() - 1) + 1;
    if (std::count(rest.begin(), rest.begin() + end, '.') > kMostDots) {
      problems.add(line, "has more than " + std::to_string(kMostDots) + " dots");
      return std::nullopt;
    }
    rest.remove_prefix(end);
  }
  try {
    return toml::parse(text);
  } catch (const toml::parse_error& error) {
    problems.add(static_cast<std::uint32_t>(error.source().begin.line),
                 std::string(error.description()));
    return std::nullopt;
  }
}

}  // namespace orb
