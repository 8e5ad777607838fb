// Queries and settings of the driver in a row, on a line that says anything. Input: for each
// operation its choice and what the line says to it: either bytes, or up to three replies, each
// with a byte that tells whether it is the awaited one, and its body.

#include <optional>
#include <string>
#include <vector>

#include "operations.h"
#include "orb-sim/frame.h"
#include "support/check.h"
#include "support/input.h"
#include "support/scripted_device.h"

namespace orb::test {
namespace {

constexpr int kMostOperations = 15;

// Rejected or read back otherwise, no reply, not sent, not supported.
constexpr unsigned int kResultBits = 1 | 4 | 8 | 256;

/// The operations that are made of others.
unsigned int callComposite(orbController_QN4470T01& driver, unsigned int choice) {
  unsigned char model = 0;
  unsigned char fixMode = 0;
  switch (choice % 8) {
    case 0:
      return driver.setDefaultConfiguration();
    case 1:
      return driver.setApplicationDefaults();
    case 2:
      return driver.resetFactoryDefaults();
    case 3:
      return driver.setGnssSystem(0x4D, true);
    case 4:
      return driver.getDynamicModel(model, fixMode);
    case 5:
      return driver.setDynamicModel(1, static_cast<unsigned char>(choice / 8));
    case 6:
      return driver.setSurveyMode("auto");
    default:
      return driver.setSurveyMode("static");
  }
}

unsigned int call(orbController_QN4470T01& driver, unsigned int choice) {
  static const sim::Receiver unused;
  const auto& operations = sim::test::operations();
  if (choice >= operations.size()) {
    return callComposite(driver, choice);
  }
  sim::test::Numbers numbers(choice);
  return operations[choice].carryOut(driver, unused, numbers).result;
}

std::uint16_t replyTo(unsigned int choice, unsigned int selector) {
  const auto& operations = sim::test::operations();
  const bool isAwaited = selector < 0x80 && choice < operations.size();
  return operations[isAwaited ? choice : selector % operations.size()].reply;
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

void hold(Input input) {
  std::optional<orbController_QN4470T01> driver;
  for (int i = 0; i < kMostOperations && !input.isEmpty(); ++i) {
    const unsigned int choice = input.byte();
    ScriptedDevice line(answerTo(choice, input));
    if (!driver) {
      driver.emplace();
    }
    const unsigned int result = call(*driver, choice);
    check((result & ~kResultBits) == 0, "result bits, not " + std::to_string(result));
  }
}

}  // namespace
}  // namespace orb::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orb::test::hold({data, size});
  return 0;
}
