#include "supervised/line_listener.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "base/owned_descriptor.h"
#include "orb-gnss/packet.h"
#include "supervised/frame_socket.h"

namespace orb {
namespace {

constexpr std::size_t kMostBytes = 4096;

std::size_t countPackets(std::string_view bytes) {
  constexpr std::string_view kStart = "\xA0\xA1";
  constexpr std::size_t kOverhead = 7;
  constexpr std::size_t kPayload = 4;
  std::size_t count = 0;
  for (std::size_t at = bytes.find(kStart); at != std::string_view::npos;
       at = bytes.find(kStart, at + 1)) {
    if (bytes.size() - at < kOverhead) {
      break;
    }
    const auto* const packet = reinterpret_cast<const unsigned char*>(bytes.data() + at);
    const std::size_t length = packet[2] * 256U + packet[3];
    if (length == 0 || bytes.size() - at < length + kOverhead) {
      continue;
    }
    if (orbComputeChecksum(packet + kPayload, length) == packet[kPayload + length]) {
      ++count;
    }
  }
  return count;
}

/// Whether `text` is what stands between '$' and the end of line of a sentence.
bool isSentence(std::string_view text) {
  constexpr std::size_t kChecksum = 3;
  if (text.size() <= kChecksum || text[text.size() - kChecksum] != '*') {
    return false;
  }
  unsigned int written = 0;
  const char* const end = text.data() + text.size();
  if (std::from_chars(end - 2, end, written, 16).ptr != end) {
    return false;
  }
  unsigned int sum = 0;
  for (const char c : text.substr(0, text.size() - kChecksum)) {
    sum ^= static_cast<unsigned char>(c);
  }
  return sum == written;
}

std::size_t countSentences(std::string_view bytes) {
  std::size_t count = 0;
  for (std::size_t at = bytes.find('$'); at != std::string_view::npos;
       at = bytes.find('$', at + 1)) {
    const std::size_t end = bytes.find('\r', at);
    if (end != std::string_view::npos && isSentence(bytes.substr(at + 1, end - at - 1))) {
      ++count;
    }
  }
  return count;
}

/// Whether nine bytes of ten can stand in a text: a sentence may have been cut.
bool isMostlyText(std::string_view bytes) {
  const auto printable = std::count_if(bytes.begin(), bytes.end(), [](char c) {
    return (c >= ' ' && c <= '~') || c == '\r' || c == '\n';
  });
  return static_cast<std::size_t>(printable) * 10 >= bytes.size() * 9;
}

}  // namespace

LineReport classify(std::string_view bytes) {
  LineReport report;
  report.bytes = bytes.size();
  report.packets = countPackets(bytes);
  report.sentences = countSentences(bytes);
  if (report.packets > 0) {
    report.state = LineReport::State::Packets;
  } else if (bytes.empty()) {
    report.state = LineReport::State::Silent;
  } else if (report.sentences > 0 || isMostlyText(bytes)) {
    report.state = LineReport::State::Text;
  } else {
    report.state = LineReport::State::Garbage;
  }
  return report;
}

std::string describe(const LineReport& report) {
  using Line = LineReport::State;
  switch (report.state) {
    case Line::NotListened:
      return "the line was not listened to";
    case Line::NotThere:
      return "the device cannot be opened (" + report.problem + ")";
    case Line::Silent:
      return "no byte arrives on the line";
    case Line::Text:
      return "NMEA text is arriving, so the line is alive";
    case Line::Packets:
      return "packets of a receiver are arriving, so the line is alive";
    case Line::Garbage:
      return "bytes arrive that are neither text nor packets, as where the line's speed is wrong";
  }
  return {};
}

LineReport listenTo(const std::string& device, std::chrono::milliseconds time) {
  const OwnedDescriptor line(::open(device.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!line.isOpen()) {
    LineReport report;
    report.state = LineReport::State::NotThere;
    report.problem = device + ": " + std::strerror(errno);
    return report;
  }
  termios settings{};
  if (::tcgetattr(line.get(), &settings) == 0) {
    ::cfmakeraw(&settings);
    ::tcsetattr(line.get(), TCSANOW, &settings);
  }

  const Deadline end = std::chrono::steady_clock::now() + time;
  std::string heard;
  LineReport report;
  for (;;) {
    pollfd waited{line.get(), POLLIN, 0};
    if (::poll(&waited, 1, millisecondsUntil(end)) == 0) {
      return report;
    }
    char bytes[512];
    const ssize_t count = ::read(line.get(), bytes, sizeof bytes);
    if (count > 0) {
      heard.append(bytes, static_cast<std::size_t>(count));
      report = classify(heard);
    }
    const bool isKnown = report.packets > 0 || report.sentences > 0;
    const bool isOver = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    if (isKnown || isOver || heard.size() > kMostBytes) {
      return report;
    }
  }
}

}  // namespace orb
