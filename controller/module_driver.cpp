#include "orb-gnss/module_driver.h"

#include <sys/time.h>

#include <cstdio>
#include <ctime>
#include <utility>

#include "base/sleep.h"
#include "controller/log_file.h"
#include "transport/command_exchange.h"
#include "transport/default_device.h"

namespace {

constexpr const char* kErrorLogPath = "/var/log/orbset-errors.log";

}  // namespace

orbController_QN4470T01::orbController_QN4470T01() { orb::openLog(errorLog_, kErrorLogPath); }

orbController_QN4470T01::~orbController_QN4470T01() = default;

orb::CommandExchange orbController_QN4470T01::exchange() {
  return exchange(std::string(orb::kDefaultDevice), lentChannel_, replyTimeoutSeconds_);
}

orb::CommandExchange orbController_QN4470T01::exchange(std::string device, orbIO*& lentChannel,
                                                       int replyTimeoutSeconds) {
  return orb::CommandExchange({.device = std::move(device),
                               .lentChannel = lentChannel,
                               .replyTimeoutSeconds = replyTimeoutSeconds,
                               .errorLog = errorLog_,
                               .timeStamp = [this] { return timeStamp(); }});
}

unsigned int orbController_QN4470T01::sendORBMessage(ORBMessage message) {
  exchange().send(message);
  return 0;
}

std::string orbController_QN4470T01::timeStamp() {
  const std::time_t now = std::time(nullptr);
  tm local{};
  ::localtime_r(&now, &local);
  char clock[100];
  if (std::strftime(clock, sizeof clock, "%X", &local) == 0) {
    clock[0] = '\0';
  }

  timeval fraction{};
  ::gettimeofday(&fraction, nullptr);
  constexpr long kMicrosecondsPerMillisecond = 1000;
  char stamp[128];  // room for any clock text and number
  std::snprintf(stamp, sizeof stamp, "%s_%03ld", clock,
                static_cast<long>(fraction.tv_usec) / kMicrosecondsPerMillisecond);
  return std::string(stamp) + ": ";
}

void orbController_QN4470T01::wait(const std::chrono::nanoseconds& duration) {
  orb::sleepFor(duration);
}

// Operations that this module has no use for.

void orbController_QN4470T01::Init() {}
unsigned int orbController_QN4470T01::save() { return 0; }
unsigned int orbController_QN4470T01::load() { return 0; }
unsigned int orbController_QN4470T01::turnOff() { return 0; }
unsigned int orbController_QN4470T01::turnOn() { return 0; }
unsigned int orbController_QN4470T01::isOn(bool& /*on*/) { return 0; }
unsigned int orbController_QN4470T01::setUtcStandardAuto() { return 0; }
unsigned int orbController_QN4470T01::setUtsStandardTime(signed char /*standard*/) { return 0; }
unsigned int orbController_QN4470T01::configureProtocols() { return 0; }
unsigned int orbController_QN4470T01::configExtendedPowerManagment() { return 0; }
unsigned int orbController_QN4470T01::getUtcGrid(unsigned short /*grid*/) { return 0; }
unsigned int orbController_QN4470T01::programGroupDelayCal(int /*delay*/) { return 0; }
void orbController_QN4470T01::gpsObtGetTimeMode() {}

// Operations that this module does not support.

unsigned int orbController_QN4470T01::setAntennaType(std::string /*type*/) {
  return orb::kNotSupported;
}
unsigned int orbController_QN4470T01::getAntennaType(std::string& /*type*/) {
  return orb::kNotSupported;
}
