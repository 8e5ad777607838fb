#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::CommandExchange;
using orb::Reply;
namespace message = orb::message;

namespace {

constexpr unsigned int kSentences = 7;
constexpr unsigned int kUnusedIntervals = 5;

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetNmeaExtendedConfigure(unsigned int& interval) {
  return exchange().query(Command(message::kQueryNmeaIntervals),
                          [&](const Reply& reply) { interval = reply.u8(2); });
}

unsigned int orbController_QN4470T01::gpsObtNmeaExtendedConfigure(unsigned int interval) {
  unsigned int kept = 0;
  return exchange().configure(
      Command(message::kSetNmeaIntervals)
          .repeated(kSentences, interval)
          .repeated(kUnusedIntervals, 0)
          .u8(attribute_),
      CommandExchange::kAtOnce, [&] { return gpsObtGetNmeaExtendedConfigure(kept); },
      [&] { return kept == interval; });
}

unsigned int orbController_QN4470T01::configurNmeaPollingPartial(unsigned char interval) {
  return gpsObtNmeaExtendedConfigure(interval);
}

unsigned int orbController_QN4470T01::configureNmeaPolling(unsigned char interval) {
  gpsObtNmeaExtendedConfigure(interval);
  return orb::kSucceeded;
}
