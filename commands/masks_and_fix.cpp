#include <cstdio>
#include <string>

#include "commands/fix_modes.h"
#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::CommandExchange;
using orb::Reply;
namespace message = orb::message;
using std::chrono::milliseconds;

namespace {

constexpr unsigned int kDopMaskMode = 1;
constexpr unsigned int kDopLimit = 250;

constexpr unsigned int kElevationCnrMaskMode = 1;
constexpr unsigned char kHighestCnr = 40;      // dB-Hz
constexpr unsigned char kLowestElevation = 3;  // degrees
constexpr unsigned char kHighestElevation = 85;

bool isFixName(const std::string& name) { return name == "2D" || name == "3D"; }

unsigned char fixByte(const std::string& name) { return name == "2D" ? 1 : 0; }

const char* fixName(unsigned char fix) {
  switch (fix) {
    case 0:
      return "3D";
    case 1:
      return "2D";
    default:
      return "";
  }
}

struct ElevationCnrMasks {
  unsigned int mode = 0;
  unsigned int elevation = 0;
  unsigned int cnr = 0;
};

unsigned int readMasks(orbController_QN4470T01& driver, ElevationCnrMasks& masks) {
  return driver.gpsOrbGetElevConfigure(masks.mode, masks.elevation, masks.cnr);
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetFixNavConfigure(std::string& first,
                                                               std::string& second) {
  return exchange().query(Command(message::kQueryFixMask), [&](const Reply& reply) {
    first = fixName(reply.u8(2));
    second = fixName(reply.u8(3));
  });
}

unsigned int orbController_QN4470T01::gpsObtFixNavConfigure(std::string first, std::string second) {
  if (!isFixName(first) || !isFixName(second)) {
    return orb::kRejected;
  }
  std::string keptFirst;
  std::string keptSecond;
  return exchange().configure(
      Command(message::kSetFixMask).u8(fixByte(first)).u8(fixByte(second)).u8(attribute_),
      CommandExchange::kAtOnce, [&] { return gpsObtGetFixNavConfigure(keptFirst, keptSecond); },
      [&] { return keptFirst == first && keptSecond == second; });
}

unsigned int orbController_QN4470T01::setFixMode(unsigned char fixMode) {
  if (fixMode >= orb::kFixModes.size()) {
    return orb::kNotSupported;
  }
  const orb::FixMode& mask = orb::kFixModes[fixMode];
  return gpsObtFixNavConfigure(mask.first, mask.second);
}

unsigned int orbController_QN4470T01::gpsObtGetDopConfigure(unsigned int& mode, unsigned int& first,
                                                            unsigned int& second,
                                                            unsigned int& third) {
  return exchange().query(Command(message::kQueryDopMask), [&](const Reply& reply) {
    mode = reply.u8(1);
    first = reply.u16(2);
    second = reply.u16(4);
    third = reply.u16(6);
    std::printf("Dop Mode: %d \n", static_cast<int>(mode));
    std::printf("nDop: %d \n", static_cast<int>(first));
    std::printf("hDop: %d \n", static_cast<int>(second));
    std::printf("gDop: %d \n", static_cast<int>(third));
  });
}

unsigned int orbController_QN4470T01::gpsObtDopConfigure() {
  unsigned int mode = 0;
  unsigned int first = 0;
  unsigned int second = 0;
  unsigned int third = 0;
  return exchange().configure(
      Command(message::kSetDopMask)
          .u8(kDopMaskMode)
          .u16(kDopLimit)
          .u16(kDopLimit)
          .u16(kDopLimit)
          .u8(attribute_),
      CommandExchange::kAtOnce, [&] { return gpsObtGetDopConfigure(mode, first, second, third); },
      [&] {
        return mode == kDopMaskMode && first == kDopLimit && second == kDopLimit &&
               third == kDopLimit;
      });
}

unsigned int orbController_QN4470T01::gpsOrbGetElevConfigure(unsigned int& mode,
                                                             unsigned int& elevation,
                                                             unsigned int& cnr) {
  return exchange().query(Command(message::kQueryElevationCnrMask), [&](const Reply& reply) {
    mode = reply.u8(1);
    elevation = reply.u8(2);
    cnr = reply.u8(3);
  });
}

unsigned int orbController_QN4470T01::gpsObtElevConfigure(unsigned int mode, unsigned int elevation,
                                                          unsigned int cnr) {
  ElevationCnrMasks kept;
  return exchange().configure(
      Command(message::kSetElevationCnrMask).u8(mode).u8(elevation).u8(cnr).u8(attribute_),
      CommandExchange::kAtOnce, [&] { return readMasks(*this, kept); },
      [&] { return kept.mode == mode && kept.elevation == elevation && kept.cnr == cnr; });
}

unsigned int orbController_QN4470T01::getMinCNo(signed char& minimum) {
  ElevationCnrMasks masks;
  const unsigned int result = readMasks(*this, masks);
  if (result == orb::kSucceeded) {
    minimum = static_cast<signed char>(masks.cnr);
  }
  return result;
}

unsigned int orbController_QN4470T01::setMinCNo(signed char minimum) {
  const auto cnr = static_cast<unsigned char>(minimum);
  return cnr <= kHighestCnr ? updateCnrMask(cnr) : orb::kRejected;
}

unsigned int orbController_QN4470T01::updateCnrMask(unsigned char cnr) {
  ElevationCnrMasks present;
  if (const unsigned int failure = readMasks(*this, present); failure != orb::kSucceeded) {
    return failure;
  }
  unsigned int result = gpsObtElevConfigure(kElevationCnrMaskMode, present.elevation, cnr);
  wait(milliseconds(800));
  ElevationCnrMasks kept;
  result |= readMasks(*this, kept);
  // A mismatch outweighs whatever else went wrong.
  return kept.cnr == cnr ? result : orb::kRejected;
}

unsigned int orbController_QN4470T01::getElevationLimit(unsigned char& limit) {
  ElevationCnrMasks masks;
  const unsigned int result = readMasks(*this, masks);
  if (result == orb::kSucceeded) {
    limit = static_cast<unsigned char>(masks.elevation);
  }
  return result;
}

unsigned int orbController_QN4470T01::setElevationLimit(unsigned char limit) {
  const bool isInRange = limit >= kLowestElevation && limit <= kHighestElevation;
  return isInRange ? updateElevationMask(limit) : orb::kRejected;
}

unsigned int orbController_QN4470T01::updateElevationMask(unsigned char limit) {
  ElevationCnrMasks present;
  if (const unsigned int failure = readMasks(*this, present); failure != orb::kSucceeded) {
    return failure;
  }
  wait(milliseconds(100));
  return gpsObtElevConfigure(kElevationCnrMaskMode, limit, present.cnr);
}
