#include "scripted_line.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace orb::test {

ScriptedLine::ScriptedLine(Pty& pty, TtyCalls& calls) : pty_(pty) {
  calls.read = [this](int descriptor, void* buffer, std::size_t size) {
    return read(descriptor, buffer, size);
  };
}

ssize_t ScriptedLine::read(int descriptor, void* buffer, std::size_t size) {
  if (pty_.waiting() == 0) {
    if (script_.empty()) {
      throw LineStaysSilent();
    }
    const std::variant<Bytes, int> next = std::move(script_.front());
    script_.pop_front();
    if (const int* const error = std::get_if<int>(&next)) {
      errno = *error;
      return *error == 0 ? 0 : -1;
    }
    pty_.feed(std::get<Bytes>(next));
  }
  return ::syscall(SYS_read, descriptor, buffer, size);
}

}  // namespace orb::test
