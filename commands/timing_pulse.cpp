#include <cstdio>

#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::CommandExchange;
using orb::Reply;
namespace message = orb::message;

namespace {

constexpr unsigned int kLongestPulse = 100000;        // microseconds
constexpr unsigned int kHighestFrequency = 19200000;  // hertz

// The receiver counts the cable delay in hundredths of a nanosecond.
constexpr int kDelayUnits = 100;
constexpr int kLongestDelay = 500000;

// The product wraps as 32-bit numbers do, and is checked only then.
int inDelayUnits(int delay) {
  return static_cast<int>(static_cast<unsigned int>(delay) * unsigned{kDelayUnits});
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetTimePulse(unsigned int& width) {
  width = 0;
  return exchange().query(Command(message::kQueryPpsPulseWidth), [&](const Reply& reply) {
    width = reply.u32(2);
    std::printf("pulse_length_us: %d\n", static_cast<int>(width));
  });
}

unsigned int orbController_QN4470T01::gpsObtTimePulseConfigure(unsigned int width) {
  if (width < 1 || width > kLongestPulse) {
    return orb::kRejected;
  }
  unsigned int kept = 0;
  return exchange().configure(
      Command(message::kSetPpsPulseWidth).u32(width).u8(attribute_), CommandExchange::kAtOnce,
      [&] { return gpsObtGetTimePulse(kept); }, [&] { return kept == width; });
}

unsigned int orbController_QN4470T01::gpsObtGetFreqOutput(unsigned int& frequency) {
  frequency = 0;
  return exchange().query(Command(message::kQueryPps2Frequency), [&](const Reply& reply) {
    frequency = reply.u32(2);
    std::printf("interval_hz: %d\n", static_cast<int>(frequency));
  });
}

unsigned int orbController_QN4470T01::gpsObtFreqOutputConfigure(unsigned int frequency) {
  if (frequency > kHighestFrequency) {
    return orb::kRejected;
  }
  unsigned int kept = 0;
  return exchange().configure(
      Command(message::kSetPps2Frequency).u32(frequency).u8(attribute_), CommandExchange::kAtOnce,
      [&] { return gpsObtGetFreqOutput(kept); }, [&] { return kept == frequency; });
}

unsigned int orbController_QN4470T01::gpsObtGetCableDelayConfig(int& delay) {
  delay = 0;
  return exchange().query(Command(message::kQueryCableDelay), [&](const Reply& reply) {
    delay = static_cast<int>(reply.u32(1)) / kDelayUnits;
  });
}

unsigned int orbController_QN4470T01::gpsObtCableDelayConfig(int delay) {
  const int units = inDelayUnits(delay);
  if (units < -kLongestDelay || units > kLongestDelay) {
    return orb::kRejected;
  }
  int kept = 0;
  return exchange().configure(
      Command(message::kSetCableDelay).u32(static_cast<unsigned int>(units)).u8(attribute_),
      CommandExchange::kAtOnce, [&] { return gpsObtGetCableDelayConfig(kept); },
      [&] { return kept == delay; });
}

unsigned int orbController_QN4470T01::getAntennaDelay(int& delay) {
  return gpsObtGetCableDelayConfig(delay);
}

unsigned int orbController_QN4470T01::setAntennaDelay(int delay) {
  return gpsObtCableDelayConfig(delay);
}
