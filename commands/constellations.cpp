#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::Reply;
namespace message = orb::message;
using std::chrono::milliseconds;

namespace {

// Interface and receiver agree on the bits of GPS, Galileo and BeiDou; GLONASS is bit 6 for the
// interface and bit 1 for the receiver. Neither mask carries anything else.
constexpr unsigned int kCommonBits = 0x0D;
constexpr unsigned int kInterfaceGlonass = 0x40;
constexpr unsigned int kReceiverGlonass = 0x02;

unsigned short toReceiverMask(unsigned short mask) {
  const unsigned int glonass = (mask & kInterfaceGlonass) != 0 ? kReceiverGlonass : 0;
  return static_cast<unsigned short>((mask & kCommonBits) | glonass);
}

unsigned short toInterfaceMask(unsigned short mask) {
  const unsigned int glonass = (mask & kReceiverGlonass) != 0 ? kInterfaceGlonass : 0;
  return static_cast<unsigned short>((mask & kCommonBits) | glonass);
}

// Later firmware revisions have no switch for the second band.
constexpr int kLastRevisionWithSecondBand = 2024612;

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetGnssConfigure(unsigned short& mask) {
  return exchange().query(Command(message::kQueryConstellations),
                          [&](const Reply& reply) { mask = reply.u16(2); });
}

unsigned int orbController_QN4470T01::gpsObtGnssConfigure(unsigned short mask) {
  const unsigned short wanted = toReceiverMask(mask);
  unsigned short kept = 0;
  return exchange().configure(
      Command(message::kSetConstellations).u16(wanted).u8(attribute_), milliseconds(100),
      [&] { return gpsObtGetGnssConfigure(kept); }, [&] { return kept == wanted; });
}

// Adds to what the caller's mask holds.
unsigned int orbController_QN4470T01::getGnssSystem(unsigned short& mask) {
  unsigned short receiverMask = 0;
  const unsigned int result = gpsObtGetGnssConfigure(receiverMask);
  mask = static_cast<unsigned short>(mask | toInterfaceMask(receiverMask));
  return result;
}

unsigned int orbController_QN4470T01::setGnssSystem(unsigned short mask) {
  unsigned int result = gpsObtGnssConfigure(mask);
  result |= gpsObtSbasConfigure(false);
  result |= gpsObtQzssConfigure(false);
  return result;
}

unsigned int orbController_QN4470T01::setGnssSystem(unsigned short mask, bool secondBand) {
  unsigned int result = setGnssSystem(mask);
  result |= gpsObtL2BandConfigure(secondBand);
  return result;
}

unsigned int orbController_QN4470T01::gpsObtGetSbasConfigure(bool& enabled) {
  return exchange().query(Command(message::kQuerySbas),
                          [&](const Reply& reply) { enabled = reply.u8(2) != 0; });
}

unsigned int orbController_QN4470T01::gpsObtSbasConfigure(bool enable) {
  bool kept = false;
  return exchange().configure(
      Command(message::kSetSbas).u8(enable).u8(1).u8(8).u8(1).u8(3).u8(7).u8(attribute_),
      milliseconds(100), [&] { return gpsObtGetSbasConfigure(kept); },
      [&] { return kept == enable; });
}

unsigned int orbController_QN4470T01::configureSBAS() { return gpsObtSbasConfigure(false); }

unsigned int orbController_QN4470T01::gpsObtGetQzssConfigure(bool& enabled) {
  return exchange().query(Command(message::kQueryQzss),
                          [&](const Reply& reply) { enabled = reply.u8(2) != 0; });
}

unsigned int orbController_QN4470T01::gpsObtQzssConfigure(bool enable) {
  bool kept = false;
  return exchange().configure(
      Command(message::kSetQzss).u8(enable).u8(3).u8(attribute_), milliseconds(100),
      [&] { return gpsObtGetQzssConfigure(kept); }, [&] { return kept == enable; });
}

unsigned int orbController_QN4470T01::gpsObtGetL2BandConfigure(bool& enabled) {
  return exchange().query(Command(message::kQuerySecondBand),
                          [&](const Reply& reply) { enabled = reply.u8(2) != 0; });
}

unsigned int orbController_QN4470T01::gpsObtL2BandConfigure(bool enable) {
  if (revisionNumber > kLastRevisionWithSecondBand) {
    return orb::kSucceeded;
  }
  bool kept = false;
  return exchange().configure(
      Command(message::kSetSecondBand).u8(enable).u8(attribute_), milliseconds(50),
      [&] { return gpsObtGetL2BandConfigure(kept); }, [&] { return kept == enable; });
}
