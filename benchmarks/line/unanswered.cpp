// What it costs to wait on a line that says nothing, or nothing of use.

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "base/raw_pty.h"
#include "line/far_end.h"
#include "line/query.h"
#include "support/turns.h"

namespace orb::bench {

namespace {

// The processor time that `function` takes, in percent of the real time.
template <typename Function>
double processorShareOf(Function&& function) {
  double processor = 0;
  const double real =
      timePerCall([&] { processor = timePerCall(function, 1); }, 1, realNanoseconds);
  return 100 * processor / real;
}

std::vector<Row> silentLine() {
  // What a wake-up costs changes from second to second with what else the machine does.
  constexpr int kSilences = 3;
  FarEnd farEnd({{kStartByte, kMasksReply}});
  farEnd.answerAfter(std::chrono::seconds(5));
  LibraryQuery query(farEnd.tty());
  std::vector<double> shares;
  for (int silence = 0; silence < kSilences; ++silence) {
    query.send();
    shares.push_back(processorShareOf([&] { query.receive(); }));
  }
  return {{.work = "silence",
           .title = "a line that stays silent for 5 s, processor",
           .unit = "% of core",
           .value = median(shares),
           .bound = 0.5,
           .samples = shares}};
}

// A pty that text without start bytes comes in on, byte by byte, as fast as 115200 baud allow.
class TextFeed {
 public:
  static constexpr int kBytesPerSecond = 11520;

  /// The device to open.
  const std::string& tty() const { return pty_.path; }

  /// How many bytes the line has taken.
  long bytes() const { return bytes_; }

 private:
  void feed(const std::stop_token& stop) {
    constexpr std::chrono::nanoseconds kTimeOfByte(1'000'000'000 / kBytesPerSecond);
    const Bytes text = textBytes(4096);
    auto due = std::chrono::steady_clock::now();
    for (std::size_t next = 0; !stop.stop_requested(); next = (next + 1) % text.size()) {
      std::this_thread::sleep_until(due);  // late at times: then the bytes catch up, one by one
      if (write(pty_.master.get(), &text[next], 1) == 1) {
        ++bytes_;
      }
      due += kTimeOfByte;
    }
  }

  RawPty pty_{O_NONBLOCK};
  std::atomic<long> bytes_{0};
  std::jthread thread_{[this](const std::stop_token& stop) { feed(stop); }};  // uses the others
};

std::vector<Row> timeoutUnderText() {
  constexpr int kTimeoutSeconds = 5;
  constexpr double kMostOfIt = 0.95;
  const TextFeed feed;
  orbIO channel(feed.tty());
  std::unique_ptr<ORBMessage> reply;
  const double start = realNanoseconds();
  std::cerr.setstate(std::ios_base::badbit);  // The library would say that the time-out has passed.
  const double share =
      processorShareOf([&] { reply.reset(channel.ReceiveMessage(kMasks, kTimeoutSeconds)); });
  std::cerr.clear();
  const double seconds = (realNanoseconds() - start) / 1e9;
  if (reply != nullptr) {
    throw std::runtime_error("text was taken for a reply");
  }
  const long bytes = feed.bytes();
  if (static_cast<double>(bytes) < kMostOfIt * TextFeed::kBytesPerSecond * seconds) {
    throw std::runtime_error("the text came slower than the line could have brought it");
  }
  return {{.work = "text",
           .title = "a 5 s time-out under 11520 bytes/s of text, processor",
           .unit = "% of core",
           .value = share,
           .bound = 1,
           .note = "kernel included; " + std::to_string(bytes) + " bytes"}};
}

const Work kWorks[] = {{"silence", silentLine}, {"text", timeoutUnderText}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
