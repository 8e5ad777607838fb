#include <utility>

#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"
#include "transport/default_device.h"

using orb::Command;
using orb::Reply;
namespace message = orb::message;

namespace {

// Less than for other replies, so that construction without a receiver is not held up.
constexpr int kDetectionTimeoutSeconds = 1;

constexpr unsigned char kRestartAtGpsEpoch = 1;
constexpr unsigned char kRestartWithoutTime = 3;
constexpr unsigned char kEmptyRestart = 4;

// Fixed bytes of these commands.
constexpr unsigned char kFixedByte = 1;
constexpr unsigned char kFixedAttribute = 1;

// The date and time 1980-01-06 00:00:10, then three fixed bytes.
Command restartAtGpsEpoch() {
  return Command(message::kSoftReset)
      .u8(kRestartAtGpsEpoch)
      .u16(1980)
      .u8(1)
      .u8(6)
      .u8(0)
      .u8(0)
      .u8(10)
      .u8(0x0E)
      .u8(0xA3)
      .u8(0x31);
}

Command restartCommand(unsigned char mode) {
  switch (mode) {
    case kRestartAtGpsEpoch:
      return restartAtGpsEpoch();
    case kRestartWithoutTime:
      return Command(message::kSoftReset).u8(mode);
    default:
      return Command(message::kSoftReset);  // without the mode
  }
}

unsigned char baudCode(unsigned int baud) {
  switch (baud) {
    case 4800:
      return 0;
    case 19200:
      return 2;
    case 38400:
      return 3;
    case 57600:
      return 4;
    case 115200:
      return 5;
    default:
      return 1;  // 9600
  }
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtChipDetect() {
  return orbController_QN4470T01::gpsObtChipDetect(std::string(orb::kDefaultDevice));
}

unsigned int orbController_QN4470T01::gpsObtChipDetect(std::string device) {
  constexpr unsigned char kQueryRevisionId = message::kQuerySoftwareRevision.id >> 8;
  orbIO* noChannel = nullptr;  // it opens its own: the device may be another one
  bool present = false;
  exchange(std::move(device), noChannel, kDetectionTimeoutSeconds)
      .query(Command(message::kQuerySoftwareRevision).u8(kFixedByte), message::kAcknowledged,
             [&](const Reply& reply) { present = reply.u8(1) == kQueryRevisionId; });
  return present ? 1 : 0;
}

unsigned int orbController_QN4470T01::restart(bool flag) {
  return exchange().send(Command(message::kRestart).u8(flag));
}

unsigned int orbController_QN4470T01::gpsObtSendSoftReset(unsigned char mode) {
  return exchange().send(restartCommand(mode));
}

unsigned int orbController_QN4470T01::forceRestart(unsigned short mode) {
  return gpsObtSendSoftReset(static_cast<unsigned char>(mode));
}

unsigned int orbController_QN4470T01::getResetInfo() {
  gpsObtSendSoftReset(kEmptyRestart);
  return 0;
}

unsigned int orbController_QN4470T01::gpsObtSetUartPort(unsigned char port, unsigned int baud) {
  scratch_.fill(0);
  return exchange().send(
      Command(message::kSetSerialPort).u8(port).u8(baudCode(baud)).u8(kFixedAttribute));
}

unsigned int orbController_QN4470T01::gpsObtSetFactoryDefaults() {
  return exchange().send(Command(message::kSetFactoryDefaults).u8(kFixedByte));
}

unsigned int orbController_QN4470T01::resetorbitekDefaults() { return gpsObtSetFactoryDefaults(); }
