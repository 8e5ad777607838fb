#include "support/scripted_line.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace orb::test {

ScriptedLine::ScriptedLine(TtyCalls& calls, WallClock& clock) : clock_(clock) {
  calls.read = [this](int, void* buffer, std::size_t size) { return read(buffer, size); };
}

void ScriptedLine::deliver(Bytes bytes, int secondsBefore) {
  script_.push_back({std::move(bytes), secondsBefore, EAGAIN});
}

void ScriptedLine::pause(int reads) {
  script_.insert(script_.end(), static_cast<std::size_t>(reads), {{}, 0, EAGAIN});
}

void ScriptedLine::fail(int error) { script_.push_back({{}, 0, error}); }

ssize_t ScriptedLine::read(void* buffer, std::size_t size) {
  if (script_.empty()) {
    if (!endsInTimeOut_) {
      throw LineStaysSilent();
    }
    deliver({0}, kSecondsAfterTheScript);
  }
  Event& next = script_.front();
  clock_.advance(std::chrono::seconds(std::exchange(next.secondsBefore, 0)));
  const std::size_t count = std::min(size, next.bytes.size());
  const auto end = next.bytes.begin() + static_cast<std::ptrdiff_t>(count);
  std::copy(next.bytes.begin(), end, static_cast<std::uint8_t*>(buffer));
  next.bytes.erase(next.bytes.begin(), end);
  const int error = next.error;
  if (next.bytes.empty()) {
    script_.pop_front();
  }
  if (count == 0) {
    errno = error;
    return error == 0 ? 0 : -1;
  }
  return static_cast<ssize_t>(count);
}

}  // namespace orb::test
