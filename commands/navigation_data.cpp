#include <array>
#include <memory>
#include <string>

#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::Reply;
namespace message = orb::message;

namespace {

constexpr unsigned long kSatelliteCount = 2;

constexpr double kUnitsPerSecond = 100.0;
constexpr double kUnitsPerDegree = 1e7;
constexpr double kUnitsPerMetre = 100.0;

// Its own answer is not awaited: the next navigation data message is.
Command queryNavigationInterval() { return Command(message::kQueryNavigationInterval); }

const char* fixModeName(unsigned char mode) {
  constexpr std::array<const char*, 4> kNames = {"NO-FIX", "2D", "3D", "3D+DGNSS"};
  return mode < kNames.size() ? kNames[mode] : "";
}

// Positions are taken without their sign: southern, western and negative values come out large.
std::string navigationReport(const Reply& reply) {
  const auto scaled = [&](unsigned long index, double units) {
    return std::to_string(reply.u32(index) / units);
  };
  return std::string("fix mode=") + fixModeName(reply.u8(1)) + '\n' +
         "number if sv in fix=" + std::to_string(reply.u8(kSatelliteCount)) + '\n' +
         "GPS Week=" + std::to_string(reply.u16(3)) + '\n' +
         "GPS TOW=" + scaled(5, kUnitsPerSecond) + '\n' + "latitude=" + scaled(9, kUnitsPerDegree) +
         '\n' + "longitude=" + scaled(13, kUnitsPerDegree) + '\n' +
         "ellipsoid altitude=" + scaled(17, kUnitsPerMetre) + '\n' +
         "sea level altitude=" + scaled(21, kUnitsPerMetre) + '\n';
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetMsgUserNavDataBinary(std::string& report) {
  return exchange().query(queryNavigationInterval(), message::kNavigationData,
                          [&](const Reply& reply) { report = navigationReport(reply); });
}

unsigned int orbController_QN4470T01::getNavsolution(std::string /*key*/, std::string& solution) {
  return gpsObtGetMsgUserNavDataBinary(solution);
}

// Its failures are its own: a failed send is none and is not logged; a missing reply is logged as
// not sent.
unsigned int orbController_QN4470T01::getNofSatellitesInNavSol(unsigned char& count) {
  Command query = queryNavigationInterval();
  orbIO channel;
  if (channel.SendMessage(&query.message()) != 0) {
    return orb::kSucceeded;
  }
  const std::unique_ptr<ORBMessage> reply(
      channel.ReceiveMessage(message::kNavigationData, replyTimeoutSeconds_));
  if (reply == nullptr) {
    exchange().logNotSent(query.message());
    return orb::kNotSent;
  }
  count = Reply(*reply).u8(kSatelliteCount);
  return orb::kSucceeded;
}

unsigned int orbController_QN4470T01::getSatelliteInfo(std::string& /*info*/) {
  return orb::kSucceeded;
}
