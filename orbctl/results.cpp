#include "orbctl/results.h"

#include <fmt/format.h>

#include "transport/result_bits.h"

namespace orb::ctl {
namespace {

struct ResultBit {
  unsigned int bit;
  const char* meaning;
};

constexpr ResultBit kResultBits[] = {
    {kRejected,
     "an argument was rejected, or the setting read back differs from what was requested"},
    {kNoReply, "the expected reply did not arrive in time"},
    {kNotSent, "a message could not be sent"},
    {kNotSupported, "the module does not support the operation or the argument's value"},
};

}  // namespace

std::vector<std::string> explainResult(unsigned int result) {
  std::vector<std::string> lines;
  for (const ResultBit& known : kResultBits) {
    if ((result & known.bit) != 0) {
      lines.push_back(fmt::format("{}: {}", known.bit, known.meaning));
      result &= ~known.bit;
    }
  }
  if (result != 0) {
    lines.push_back(fmt::format("{}: no operation returns this", result));
  }
  return lines;
}

std::string explainCombination(unsigned int result) {
  switch (result) {
    case 5:
      return "A setting was sent and its read-back was not answered: it may or may not be in "
             "force.";
    case 9:
      return "A setting was not sent, and the receiver does not hold it. Most often the device is "
             "not there.";
    case 12:
    case 13:
      return "A setting was not sent; its read-back was sent, and not answered.";
    default:
      return {};
  }
}

ExitStatus exitStatusFor(unsigned int result) {
  if ((result & 8) != 0) {
    return ExitStatus::NotSent;
  }
  if ((result & 4) != 0) {
    return ExitStatus::NoReply;
  }
  return ExitStatus::Refused;
}

}  // namespace orb::ctl
