// What it costs to wait on a line that says nothing, or nothing of use.

#include <chrono>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "line/far_end.h"
#include "line/query.h"
#include "line/text_feed.h"
#include "orb-gnss/serial_channel.h"
#include "support/turns.h"
#include "support/work.h"

namespace {

using orb::bench::FarEnd;
using orb::bench::Row;
using orb::bench::TextFeed;
using std::chrono::milliseconds;

double realNanoseconds() {
  return static_cast<double>(FarEnd::Clock::now().time_since_epoch().count());
}

// What a wake-up costs changes from second to second with what else the machine does.
constexpr int kSilences = 3;

std::vector<Row> silentLine() {
  constexpr milliseconds kSilence(5000);
  FarEnd farEnd({{orb::bench::kStartByte, orb::bench::kMasksReply}});
  farEnd.answerAfter(kSilence);
  orb::bench::LibraryQuery query(farEnd.tty());
  std::vector<double> shares;
  for (int silence = 0; silence < kSilences; ++silence) {
    query.send();
    const double start = realNanoseconds();
    const double processorStart = orb::bench::threadNanoseconds();
    query.receive();
    const double processor = orb::bench::threadNanoseconds() - processorStart;
    shares.push_back(100 * processor / (realNanoseconds() - start));
  }
  return {{.work = "silence",
           .title = "a line that stays silent for 5 s, processor",
           .unit = "% of core",
           .value = orb::bench::median(shares),
           .bound = 0.5,
           .samples = shares}};
}

/// While it exists, nobody says on std::cerr that a time-out has passed.
class Quiet {
 public:
  Quiet() : buffer_(std::cerr.rdbuf(nullptr)) {}
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;
  ~Quiet() {
    std::cerr.rdbuf(buffer_);  // which also clears the error that writing to nothing has set
  }

 private:
  std::streambuf* buffer_;
};

std::vector<Row> timeoutUnderText() {
  constexpr ORBMessageMsgValue kMasks = 0xB000;
  constexpr int kTimeoutSeconds = 5;
  constexpr double kMostOfIt = 0.95;
  const Quiet quiet;
  const TextFeed feed;
  orbIO channel(feed.tty());
  const double start = realNanoseconds();
  const double processorStart = orb::bench::threadNanoseconds();
  const std::unique_ptr<ORBMessage> reply(channel.ReceiveMessage(kMasks, kTimeoutSeconds));
  const double processor = orb::bench::threadNanoseconds() - processorStart;
  const double real = realNanoseconds() - start;
  if (reply != nullptr) {
    throw std::runtime_error("text was taken for a reply");
  }
  if (static_cast<double>(feed.bytes()) < kMostOfIt * TextFeed::kBytesPerSecond * real / 1e9) {
    throw std::runtime_error("the text came slower than the line could have brought it");
  }
  return {{.work = "text",
           .title = "a 5 s time-out under 11520 bytes/s of text, processor",
           .unit = "% of core",
           .value = 100 * processor / real,
           .bound = 1,
           .note = "kernel included; " + std::to_string(feed.bytes()) + " bytes"}};
}

const orb::bench::Work kWorks[] = {{"silence", silentLine}, {"text", timeoutUnderText}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
