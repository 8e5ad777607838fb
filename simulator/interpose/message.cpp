#include "interpose/message.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace orb::sim {

void say(std::initializer_list<std::string_view> parts) noexcept {
  char line[1024];
  std::size_t length = 0;
  const auto append = [&](std::string_view part) {
    const std::size_t taken = std::min(part.size(), sizeof line - 1 - length);
    std::memcpy(line + length, part.data(), taken);
    length += taken;
  };
  append("orb-sim: ");
  for (const std::string_view part : parts) {
    append(part);
  }
  line[length++] = '\n';
  const int savedErrno = errno;
  if (write(STDERR_FILENO, line, length) < 0) {
    // There is nowhere left to say it.
  }
  errno = savedErrno;
}

void endProcess(std::string_view text) noexcept {
  say({text});
  std::abort();
}

}  // namespace orb::sim
