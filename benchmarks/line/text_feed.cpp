#include "line/text_feed.h"

#include <unistd.h>

#include <string_view>

namespace orb::bench {

namespace {

constexpr std::string_view kText =
    "$GNGGA,120000.000,4717.11399,N,00833.91590,E,1,12,0.8,499.6,M,48.0,M,,*4F\r\n";
constexpr std::chrono::nanoseconds kTimeOfByte =
    std::chrono::nanoseconds(std::chrono::seconds(1)) / TextFeed::kBytesPerSecond;

}  // namespace

TextFeed::TextFeed() : thread_([this] { feed(); }) {}

TextFeed::~TextFeed() {
  stopping_ = true;
  thread_.join();
}

void TextFeed::feed() {
  auto due = FarEnd::Clock::now();
  for (std::size_t next = 0; !stopping_; next = (next + 1) % kText.size()) {
    std::this_thread::sleep_until(due);  // late at times: then the bytes catch up, one by one
    if (write(pty_.master.get(), &kText[next], 1) == 1) {
      ++bytes_;
    }
    due += kTimeOfByte;
  }
}

}  // namespace orb::bench
