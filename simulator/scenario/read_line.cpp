#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "scenario/readers.h"

namespace orb::sim {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLongestChatter = 1000;

void readBaud(Section& line, unsigned int& baud) {
  constexpr std::int64_t kRates[] = {4800,    9600,    19'200,  38'400, 57'600,
                                     115'200, 230'400, 460'800, 921'600};
  constexpr char kKey[] = "baud";
  const auto isUsual = [&] {
    return std::find(std::begin(kRates), std::end(kRates), baud) != std::end(kRates);
  };
  if (line.integer(kKey, baud, 0) && !isUsual()) {
    std::vector<std::string> rates;
    for (const std::int64_t rate : kRates) {
      rates.push_back(std::to_string(rate));
    }
    line.refuse(kKey, "is " + std::to_string(baud) + "; it has to be " + alternatives(rates));
  }
}

}  // namespace

void readLine(Section& line, LineConditions& conditions) {
  line.duration("latency", conditions.latency, 0ms, 1h);
  line.duration("spread", conditions.spread, 0ms, 1h);
  readBaud(line, conditions.baud);
  line.duration("chatter-interval", conditions.chatterInterval, 1ms, 1h);
  line.text("chatter", conditions.chatter, kLongestChatter);
}

}  // namespace orb::sim
