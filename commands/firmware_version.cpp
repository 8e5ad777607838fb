#include <algorithm>
#include <cstdlib>
#include <limits>
#include <ostream>
#include <string>

#include "base/console.h"
#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::Reply;
namespace message = orb::message;

namespace {

// Where a group of three numbers starts in the reply.
constexpr unsigned long kKernelVersion = 3;
constexpr unsigned long kOdmVersion = 7;
constexpr unsigned long kRevisionDate = 11;

std::string joined(const Reply& reply, unsigned long first, const char* separator) {
  return std::to_string(reply.u8(first)) + separator + std::to_string(reply.u8(first + 1)) +
         separator + std::to_string(reply.u8(first + 2));
}

std::string version(const Reply& reply, unsigned long first) { return joined(reply, first, "."); }

// The receiver counts years from 2000. Nothing is padded: year 5 becomes "205".
std::string revisionDate(const Reply& reply) { return "20" + joined(reply, kRevisionDate, "."); }

int revisionDigits(const Reply& reply) {
  const std::string digits = "20" + joined(reply, kRevisionDate, "");
  const long number = std::strtol(digits.c_str(), nullptr, 10);
  return static_cast<int>(std::min<long>(number, std::numeric_limits<int>::max()));
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetFwVersion(std::string& info) {
  return exchange().query(Command(message::kQuerySoftwareRevision), [&](const Reply& reply) {
    kernelVersion = version(reply, kKernelVersion);
    odmVersion = version(reply, kOdmVersion);
    revision = revisionDate(reply);
    revisionNumber = revisionDigits(reply);
    info +=
        "KernelVersion " + kernelVersion + ": ODMVersion " + odmVersion + ": Revision " + revision;
    // As text: the stream may be set to another base or to a locale that groups digits.
    orb::standardOutput() << "nOrbRevision " << std::to_string(revisionNumber) << std::endl;
  });
}

unsigned int orbController_QN4470T01::getInfo(std::string& info) {
  return gpsObtGetFwVersion(info);
}

unsigned int orbController_QN4470T01::gpsOrbGetFwVersion(std::string& kernel, std::string& odm,
                                                         std::string& rev) {
  return exchange().query(Command(message::kQuerySoftwareRevision), [&](const Reply& reply) {
    kernel = "KernelVersion: " + version(reply, kKernelVersion);
    odm = "ODMVersion: " + version(reply, kOdmVersion);
    rev = "Revision: " + revisionDate(reply);
  });
}

// Tells only whether the receiver replies; the text is not decoded.
unsigned int orbController_QN4470T01::gpsObtGetFwVersionString(std::string /*version*/) {
  return exchange().query(Command(message::kQueryVersionExtension), [](const Reply& /*reply*/) {});
}
