// The simulated receiver: any bytes, in any pieces, while time passes. Input: the lengths of seven
// pieces, the time between them, the bytes.

#include <algorithm>
#include <charconv>
#include <chrono>

#include "orb-sim/receiver.h"
#include "orb-sim/scenario.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kPieces = 7;

/// The length of the packet at the front; 0 where there is no right one.
std::size_t packetLength(const Bytes& bytes) {
  if (bytes.size() < 8 || bytes[0] != 0xA0 || bytes[1] != 0xA1) {
    return 0;
  }
  const std::size_t payload = bytes[2] * 256U + bytes[3];
  if (payload == 0 || bytes.size() < payload + 7) {
    return 0;
  }
  std::uint8_t sum = 0;
  for (std::size_t i = 0; i < payload; ++i) {
    sum ^= bytes[4 + i];
  }
  const bool isRight =
      sum == bytes[payload + 4] && bytes[payload + 5] == 0x0D && bytes[payload + 6] == 0x0A;
  return isRight ? payload + 7 : 0;
}

/// The length of the NMEA sentence at the front; 0 where there is no right one.
std::size_t sentenceLength(const Bytes& bytes) {
  const auto star = std::find(bytes.begin(), bytes.end(), '*');
  if (bytes.empty() || bytes[0] != '$' || bytes.end() - star < 5) {
    return 0;
  }
  std::uint8_t sum = 0;
  for (auto at = bytes.begin() + 1; at != star; ++at) {
    if (*at < 0x20 || *at > 0x7E) {
      return 0;
    }
    sum ^= *at;
  }
  const char digits[] = {static_cast<char>(star[1]), static_cast<char>(star[2])};
  std::uint8_t said = 0;
  const auto parsed = std::from_chars(digits, digits + 2, said, 16);
  const bool isRight =
      parsed.ptr == digits + 2 && said == sum && star[3] == '\r' && star[4] == '\n';
  return isRight ? static_cast<std::size_t>(star - bytes.begin()) + 5 : 0;
}

/// How many of the whole packets that the output consists of, with sentences between them, answer a
/// message: acknowledgements and refusals.
std::size_t countAnswers(Bytes output) {
  std::size_t answers = 0;
  while (!output.empty()) {
    const std::size_t packet = packetLength(output);
    const std::size_t length = std::max(packet, sentenceLength(output));
    check(length > 0, "whole packets and sentences come out");
    answers += packet > 0 && (output[4] == 0x83 || output[4] == 0x84) ? 1 : 0;
    output.erase(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(length));
  }
  return answers;
}

}  // namespace

void tryInput(Input input) {
  const Bytes lengths = input.bytes(kPieces);
  const milliseconds between(input.word() % 300);
  sim::State state = sim::ordinaryState();
  state.startTimes.silence = milliseconds(input.byte());
  const Bytes bytes = input.rest();

  sim::Receiver inPassingTime(state);
  sim::Receiver inPiecesAtOnce(state);
  sim::Receiver atOnce(state);
  std::size_t answers = 0;
  Bytes output;
  for (const Bytes& piece : inPieces(bytes, lengths)) {
    answers += countAnswers(inPassingTime.receive(piece));
    answers += countAnswers(inPassingTime.tick(between));
    check(inPassingTime.untilNextOutput() >= milliseconds(0), "the next output is not past");
    sim::append(output, inPiecesAtOnce.receive(piece));
  }
  check(answers <= inPassingTime.readerCounts().frames, "no answer but to a message");
  countAnswers(inPassingTime.tick(std::chrono::seconds(1)));

  const bool restarted = inPiecesAtOnce.state().startup.silence > milliseconds(0);
  if (!restarted) {
    const Bytes whole = atOnce.receive(bytes);
    check(output == whole, "what comes in pieces is answered as what comes at once");
    check(countAnswers(whole) == atOnce.readerCounts().frames, "each message is answered once");
  }
}

}  // namespace orb::test
