#include "support/receiver_fixture.h"

#include <algorithm>
#include <fstream>

namespace orb::test {

namespace {

// A reply is read in far fewer rounds than this, each of which looks at the clock once.
constexpr int kLooksBeforeTheLimit = 10;

}  // namespace

// What clients have written arrives in order, so a mark after it tells where it ends.
std::string ReceiverOnTty::sent() {
  static const sim::Bytes kMark{'<', 'e', 'n', 'd', '>'};
  std::ofstream(line.path(), std::ios::binary)
      .write(reinterpret_cast<const char*>(kMark.data()),
             static_cast<std::streamsize>(kMark.size()));
  for (;;) {
    const sim::Bytes received = line.received();
    const auto mark = std::search(received.begin(), received.end(), kMark.begin(), kMark.end());
    if (mark != received.end()) {
      line.forgetReceived();
      return hexText({received.begin(), mark});
    }
    if (!line.waitForBytes(received.size() + 1)) {
      return "(the line does not take what is written)";
    }
  }
}

void ReceiverTest::letPass(int seconds) {
  std::vector<int> looks(kLooksBeforeTheLimit, seconds - 1);
  looks.front() = 0;
  looks.push_back(seconds);
  clock_.passSeconds(looks);
  gps_.line.startChatter(std::chrono::milliseconds(2));
}

bool ReceiverTest::hasWaitedToTheLimit() const {
  return clock_.readings() == kLooksBeforeTheLimit + 1;
}

}  // namespace orb::test
