#include <algorithm>

#include "scenario/readers.h"

namespace orb::sim {

using namespace std::chrono_literals;

void readEvent(TableReader& event, std::vector<TimedEvent>& timeline) {
  constexpr auto kLatest = 24h * 366;
  constexpr auto kFarthest = 200'000h;  // more than the 1024 weeks of a GPS week roll-over
  TimedEvent read;
  event.require({"at"});
  event.duration("at", read.at, 0s, kLatest);
  if (bool signals = true; event.flag("signals", signals)) {
    read.signals = signals;
  }
  event.word("interference", read.interferenceStatus, kInterference);
  event.duration("jump", read.jump, -kFarthest, kFarthest);
  if (double rate = 1; event.number("rate", rate, 0, kFastestClock)) {
    read.clockRate = rate;
  }
  if (!event.has("signals") && !event.has("interference") && !event.has("jump") &&
      !event.has("rate")) {
    event.refuse("at",
                 "is all that there is; signals, interference, jump or rate has to say what "
                 "happens then");
  }
  const auto later = std::upper_bound(
      timeline.begin(), timeline.end(), read.at,
      [](std::chrono::milliseconds at, const TimedEvent& other) { return at < other.at; });
  timeline.insert(later, read);
}

}  // namespace orb::sim
