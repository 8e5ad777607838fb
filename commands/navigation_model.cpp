#include <array>
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

// The receiver's navigation mode for each model; any other model is sent as 0.
unsigned char navigationMode(obt_DynamicState_t model) {
  constexpr std::array<unsigned char, 9> kModes = {1, 1, 1, 2, 3, 4, 5, 5, 0};
  return model < kModes.size() ? kModes[model] : 0;
}

// The fix mode that is reported, which is not the number that it was set by.
unsigned char reportedFixMode(const std::string& first, const std::string& second) {
  if (first == "2D" && second == "2D") {
    return 1;
  }
  if (first == "3D" && second == "3D") {
    return 0;
  }
  return 2;
}

}  // namespace

unsigned int orbController_QN4470T01::gpsOrbGetJamDetectConfig(bool& control,
                                                               unsigned char& status) {
  control = false;
  status = 0;
  return exchange().query(Command(message::kQueryInterferenceDetection), [&](const Reply& reply) {
    control = (reply.u8(2) & 1) != 0;
    status = reply.u8(3);
    std::printf("control: %d nJamStatus %d\n", control, status);
  });
}

unsigned int orbController_QN4470T01::gpsObtJamDetectConfig(bool enable) {
  bool kept = false;
  unsigned char status = 0;
  // The message has two body bytes: the attribute byte falls on the checksum and is not sent.
  return exchange().configure(
      Command(message::kSetInterferenceDetection).u8(enable).u8(0).u8(attribute_),
      CommandExchange::kAtOnce, [&] { return gpsOrbGetJamDetectConfig(kept, status); },
      [&] { return kept == enable; });
}

// Reports "off" whatever the receiver says; gpsOrbGetJamDetectConfig() tells the state.
unsigned int orbController_QN4470T01::getJammingDetection(bool& enabled) {
  bool control = false;
  unsigned char status = 0;
  const unsigned int result = gpsOrbGetJamDetectConfig(control, status);
  enabled = false;
  return result;
}

unsigned int orbController_QN4470T01::setJammingDetection(bool enable) {
  return gpsObtJamDetectConfig(enable);
}

unsigned int orbController_QN4470T01::gpsObtGetChangeDynamicMode(obt_DynamicState_t& mode) {
  return exchange().query(Command(message::kQueryNavigationMode),
                          [&](const Reply& reply) { mode = reply.u8(2); });
}

unsigned int orbController_QN4470T01::gpsObtChangeDynamicMode(obt_DynamicState_t model) {
  const unsigned char wanted = navigationMode(model);
  obt_DynamicState_t kept = 0;
  return exchange().configure(
      Command(message::kSetNavigationMode).u8(wanted).u8(attribute_), milliseconds(100),
      [&] { return gpsObtGetChangeDynamicMode(kept); }, [&] { return kept == wanted; });
}

// The numbers that this reports are not those that setDynamicModel() takes: 2D is 1 here and 0
// there, 3D the other way round.
unsigned int orbController_QN4470T01::getDynamicModel(unsigned char& model,
                                                      unsigned char& fixMode) {
  std::string first;
  std::string second;
  unsigned int result = gpsObtGetFixNavConfigure(first, second);
  if (result != orb::kSucceeded) {
    return result;
  }
  obt_DynamicState_t mode = 0;
  result = gpsObtGetChangeDynamicMode(mode);
  if (result != orb::kSucceeded) {
    return result;
  }
  fixMode = reportedFixMode(first, second);
  model = static_cast<unsigned char>(mode);
  return orb::kSucceeded;
}

unsigned int orbController_QN4470T01::setDynamicModel(unsigned char model) {
  return gpsObtChangeDynamicMode(model);
}

unsigned int orbController_QN4470T01::setDynamicModel(unsigned char model, unsigned char fixMode) {
  const unsigned int result = gpsObtChangeDynamicMode(model);
  if (fixMode >= orb::kFixModes.size()) {
    return orb::kNotSupported;
  }
  wait(milliseconds(100));
  const orb::FixMode& mask = orb::kFixModes[fixMode];
  return result | gpsObtFixNavConfigure(mask.first, mask.second);
}
