#include <cstdio>
#include <string>

#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::Reply;
namespace message = orb::message;
using std::chrono::milliseconds;

namespace {

constexpr unsigned int kAlignedToGnss = 0;
constexpr unsigned int kAlignedToUtc = 1;
constexpr unsigned int kModeOfTimeReference = 2;

}  // namespace

unsigned int orbController_QN4470T01::gpsOrbGet1ppsOutputMode(unsigned int& mode,
                                                              unsigned int& alignSource) {
  return exchange().query(Command(message::kQueryPpsOutput), [&](const Reply& reply) {
    mode = reply.u8(1);
    alignSource = reply.u8(2);
    std::printf("1PPS output mode: %d \n", static_cast<int>(mode));
    std::printf("1PPS Align source: %d \n", static_cast<int>(alignSource));
  });
}

unsigned int orbController_QN4470T01::gpsOrb1ppsOutputMode(unsigned int mode,
                                                           unsigned int alignSource) {
  unsigned int keptMode = 0;
  unsigned int keptSource = 0;
  const unsigned int result = exchange().configure(
      Command(message::kSetPpsOutput).u8(mode).u8(alignSource).u8(attribute_), milliseconds(100),
      [&] { return gpsOrbGet1ppsOutputMode(keptMode, keptSource); });
  if (result != orb::kSucceeded) {
    return result;
  }
  return keptMode == mode && keptSource == alignSource ? orb::kSucceeded : orb::kRejected;
}

// After a failed query the align source is still 0, and the reference "GNSS".
unsigned int orbController_QN4470T01::getTimeReference(std::string& reference) {
  unsigned int mode = 0;
  unsigned int alignSource = kAlignedToGnss;
  const unsigned int result = gpsOrbGet1ppsOutputMode(mode, alignSource);
  if (alignSource == kAlignedToGnss) {
    reference = "GNSS";
  } else if (alignSource == kAlignedToUtc) {
    reference = "UTC";
  }
  return result;
}

unsigned int orbController_QN4470T01::setTimeReference(std::string reference) {
  if (reference != "UTC" && reference != "GPS") {
    return orb::kRejected;
  }
  return gpsOrb1ppsOutputMode(kModeOfTimeReference, kAlignedToUtc);
}

unsigned int orbController_QN4470T01::configTimePulse(unsigned short /*period*/, unsigned char mode,
                                                      bool /*enable*/) {
  return gpsOrb1ppsOutputMode(mode, kAlignedToGnss);
}
