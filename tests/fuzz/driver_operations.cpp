// A session of the driver's queries and settings on a line that says anything. Input: the number of
// operations and their choices, then what the line says, in pieces of 64 bytes.

#include <string>

#include "operations.h"
#include "support/check.h"
#include "support/scripted_line.h"

namespace orb::fuzz {
namespace {

constexpr std::size_t kMostOperations = 15;
constexpr std::size_t kPieceLength = 64;

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

void hold(Input input) {
  const Bytes choices = input.bytes(input.byte() % (kMostOperations + 1));
  std::vector<ScriptedLine::Piece> script;
  while (!input.isEmpty()) {
    script.push_back({input.bytes(kPieceLength)});
  }
  ScriptedLine line(std::move(script));
  orbController_QN4470T01 driver;
  for (const std::uint8_t choice : choices) {
    const unsigned int result = call(driver, choice);
    check((result & ~kResultBits) == 0, "result bits, not " + std::to_string(result));
  }
}

}  // namespace
}  // namespace orb::fuzz

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  orb::fuzz::silenceTheLibrary();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orb::fuzz::hold({data, size});
  return 0;
}
