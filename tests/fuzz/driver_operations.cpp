// Operations of the driver in a row, on a line that says anything. Input: for each operation its
// choice and what the line says to it: either bytes, or up to three replies, each with a byte that
// tells which of the messages it is, awaited or not, and its body.

#include <optional>
#include <string>
#include <vector>

#include "operations/operations.h"
#include "orb-sim/frame.h"
#include "support/check.h"
#include "support/input.h"
#include "support/scripted_device.h"

namespace orb::test {
namespace {

constexpr int kMostOperations = 15;

// Rejected or read back otherwise, no reply, not sent, not supported.
constexpr unsigned int kResultBits = 1 | 4 | 8 | 256;

const Operation& operationOf(unsigned int choice) {
  return operations()[choice % operations().size()];
}

/// A message that the operation awaits, or that another one does.
std::uint16_t replyTo(unsigned int choice, unsigned int selector) {
  constexpr std::uint16_t kAcknowledgement = 0x8300;
  const std::vector<std::uint16_t>& replies =
      operationOf(selector < 0x80 ? choice : selector).replies;
  return replies.empty() ? kAcknowledgement : replies[selector % replies.size()];
}

std::vector<ScriptedDevice::Piece> answerTo(unsigned int choice, Input& input) {
  constexpr unsigned int kBytes = 0x80;
  constexpr std::size_t kLongestBody = 64;
  const unsigned int form = input.byte();
  if ((form & kBytes) != 0) {
    return {{input.bytes(form & ~kBytes)}};
  }
  std::vector<ScriptedDevice::Piece> script;
  for (unsigned int replies = form % 4; replies > 0; --replies) {
    const std::uint16_t reply = replyTo(choice, input.byte());
    script.push_back({sim::frame(reply, input.bytes(input.byte() % kLongestBody))});
  }
  return script;
}

}  // namespace

void tryInput(Input input) {
  std::optional<Driver> driver;
  for (int i = 0; i < kMostOperations && !input.isEmpty(); ++i) {
    const unsigned int choice = input.byte();
    ScriptedDevice line(answerTo(choice, input));
    if (!driver) {
      driver.emplace();
    }
    Numbers numbers(choice);
    const unsigned int result = operationOf(choice).draw(numbers).call(*driver).result;
    check((result & ~kResultBits) == 0, "result bits, not " + std::to_string(result));
  }
}

}  // namespace orb::test
