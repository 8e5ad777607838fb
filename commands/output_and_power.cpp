#include <chrono>
#include <cstdio>
#include <string>
#include <utility>

#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::CommandExchange;
using orb::Reply;
namespace message = orb::message;
using std::chrono::milliseconds;

namespace {

constexpr unsigned int kNormalPower = 0;
constexpr unsigned int kPowerSaving = 1;

const char* powerModeName(unsigned int mode) {
  switch (mode) {
    case kNormalPower:
      return "NORMAL";
    case kPowerSaving:
      return "POWERSAVE";
    default:
      return "";
  }
}

// An unknown type switches the output off.
unsigned char outputTypeByte(const std::string& type) {
  if (type == "NMEA") {
    return 1;
  }
  if (type == "BINARY") {
    return 2;
  }
  return 0;
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetPowerMode(unsigned int& mode) {
  return exchange().query(Command(message::kQueryPowerMode),
                          [&](const Reply& reply) { mode = reply.u8(1); });
}

unsigned int orbController_QN4470T01::gpsObtSetPowerMode(std::string mode) {
  const unsigned int wanted = mode == "POWERSAVE" ? kPowerSaving : kNormalPower;
  unsigned int kept = 0;
  return exchange().configure(
      Command(message::kSetPowerMode).u8(wanted).u8(0), CommandExchange::kAtOnce,
      [&] { return gpsObtGetPowerMode(kept); }, [&] { return kept == wanted; });
}

unsigned int orbController_QN4470T01::getRxMode(std::string& mode) {
  unsigned int reported = kNormalPower;
  const unsigned int result = gpsObtGetPowerMode(reported);
  mode = powerModeName(reported);
  return result;
}

unsigned int orbController_QN4470T01::setRxMode(std::string mode) {
  if (mode != "POWERSAVE" && mode != "NORMAL") {
    return orb::kRejected;
  }
  return gpsObtSetPowerMode(std::move(mode));
}

unsigned int orbController_QN4470T01::gpsOrbGetCfgRate(unsigned char& rate) {
  return exchange().query(Command(message::kQueryUpdateRate), [&](const Reply& reply) {
    rate = reply.u8(1);
    std::printf("nUpdateRate: %d\n", rate);
  });
}

unsigned int orbController_QN4470T01::gpsObtSetCfgRate(unsigned char rate) {
  unsigned char kept = 0;
  const unsigned int result = exchange().configure(
      Command(message::kSetUpdateRate).u8(rate).u8(attribute_), milliseconds(800),
      [&] { return gpsOrbGetCfgRate(kept); }, [&] { return kept == rate; });
  std::printf("applyUpdateRate:%d nUpdateRate:%d\n", rate, kept);
  return result;
}

unsigned int orbController_QN4470T01::gpsObtSetMsgType(std::string type) {
  return exchange().query(Command(message::kSetOutputType).u8(outputTypeByte(type)).u8(attribute_),
                          [](const Reply& /*acknowledgement*/) {});
}

unsigned int orbController_QN4470T01::gpsObtGetNavMsg(unsigned char& interval) {
  return exchange().query(Command(message::kQueryNavigationInterval),
                          [&](const Reply& reply) { interval = reply.u8(2); });
}

unsigned int orbController_QN4470T01::gpsObtNavMsgConfigure(unsigned char interval) {
  return exchange().send(Command(message::kSetNavigationInterval).u8(interval).u8(attribute_));
}

unsigned int orbController_QN4470T01::configureOrbPolling(unsigned char interval) {
  return gpsObtGetNavMsg(interval);
}
