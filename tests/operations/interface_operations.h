#pragma once

#include <limits>
#include <string>
#include <tuple>
#include <type_traits>

#include "operations/outcome.h"
#include "orb-gnss/control_interface.h"

namespace orb::test {

/// A member function type, to choose one of several overloads.
template <typename Class, typename... Parameters>
using Overload = unsigned int (Class::*)(Parameters...);

/// Calls `visit(name, member of Class)` for each operation of the control interface, in the order
/// that clients rely on.
template <typename Class, typename Visitor>
void visitOperations(Visitor visit) {
  using U8 = unsigned char;
  using U16 = unsigned short;
  using Text = std::string;
  visit("Init", &Class::Init);
  visit("save", &Class::save);
  visit("load", &Class::load);
  visit("resetFactoryDefaults", &Class::resetFactoryDefaults);
  visit("resetorbitekDefaults", &Class::resetorbitekDefaults);
  visit("restart", &Class::restart);
  visit("forceRestart", &Class::forceRestart);
  visit("setDefaultConfiguration", &Class::setDefaultConfiguration);
  visit("setApplicationDefaults", &Class::setApplicationDefaults);
  visit("turnOff", &Class::turnOff);
  visit("turnOn", &Class::turnOn);
  visit("isOn", &Class::isOn);
  visit("getResetInfo", &Class::getResetInfo);
  visit("getInfo", &Class::getInfo);
  visit("setAntennaDelay", &Class::setAntennaDelay);
  visit("getAntennaDelay", &Class::getAntennaDelay);
  visit("setAntennaType", &Class::setAntennaType);
  visit("getAntennaType", &Class::getAntennaType);
  visit("setGnssSystem", Overload<Class, U16, bool>(&Class::setGnssSystem));
  visit("setGnssSystem", Overload<Class, U16>(&Class::setGnssSystem));
  visit("getGnssSystem", &Class::getGnssSystem);
  visit("setJammingDetection", &Class::setJammingDetection);
  visit("getJammingDetection", &Class::getJammingDetection);
  visit("getNavsolution", &Class::getNavsolution);
  visit("setSurveyMode", &Class::setSurveyMode);
  visit("getSurveyMode", &Class::getSurveyMode);
  visit("setSurveyStatic", &Class::setSurveyStatic);
  visit("setSurveyAuto", Overload<Class, unsigned int, float>(&Class::setSurveyAuto));
  visit("setSurveyAuto", Overload<Class>(&Class::setSurveyAuto));
  visit("setSurveyDynamic", &Class::setSurveyDynamic);
  visit("getSurveyInfo", &Class::getSurveyInfo);
  visit("getSatelliteInfo", &Class::getSatelliteInfo);
  visit("getNofSatellitesInNavSol", &Class::getNofSatellitesInNavSol);
  visit("setMinCNo", &Class::setMinCNo);
  visit("getMinCNo", &Class::getMinCNo);
  visit("setElevationLimit", &Class::setElevationLimit);
  visit("getElevationLimit", &Class::getElevationLimit);
  visit("setDynamicModel", Overload<Class, U8>(&Class::setDynamicModel));
  visit("setDynamicModel", Overload<Class, U8, U8>(&Class::setDynamicModel));
  visit("getDynamicModel", &Class::getDynamicModel);
  visit("setFixMode", &Class::setFixMode);
  visit("setTimeReference", &Class::setTimeReference);
  visit("getTimeReference", &Class::getTimeReference);
  visit("setRxMode", &Class::setRxMode);
  visit("getRxMode", &Class::getRxMode);
  visit("setUtcStandardAuto", &Class::setUtcStandardAuto);
  visit("setUtsStandardTime", &Class::setUtsStandardTime);
  visit("configureOrbPolling", &Class::configureOrbPolling);
  visit("configureSBAS", &Class::configureSBAS);
  visit("configureNmeaPolling", &Class::configureNmeaPolling);
  visit("configurNmeaPollingPartial", &Class::configurNmeaPollingPartial);
  visit("configureProtocols", &Class::configureProtocols);
  visit("configExtendedPowerManagment", &Class::configExtendedPowerManagment);
  visit("getUtcGrid", &Class::getUtcGrid);
  visit("configTimePulse", &Class::configTimePulse);
  visit("timeStamp", &Class::timeStamp);
  visit("programGroupDelayCal", &Class::programGroupDelayCal);
  visit("gpsObtChipDetect", Overload<Class>(&Class::gpsObtChipDetect));
  visit("gpsObtChipDetect", Overload<Class, Text>(&Class::gpsObtChipDetect));
  visit("gpsObtSetMsgType", Overload<Class, Text>(&Class::gpsObtSetMsgType));
}

/// Which arguments an operation is called with: of each type the lowest or the highest value, and
/// where a type comes repeatedly, the next ones.
enum class Arguments { kLowest, kHighest };

/// A call of an operation: what it returned, and its arguments before and after it, as texts.
struct SampleCall {
  std::string result{};
  std::string before{};
  std::string after{};
};

template <typename Value>
Value sampleArgument(Arguments arguments, int place) {
  using Limits = std::numeric_limits<Value>;
  const bool isLowest = arguments == Arguments::kLowest;
  if constexpr (std::is_same_v<Value, std::string>) {
    return isLowest ? "" : "any text, unchecked " + std::to_string(place);
  } else if constexpr (std::is_same_v<Value, bool>) {
    return !isLowest;
  } else if constexpr (std::is_floating_point_v<Value>) {
    return static_cast<Value>(isLowest ? -0.5 - place : 0.25 + place);
  } else {
    const auto next = static_cast<Value>(place);
    return static_cast<Value>(isLowest ? Limits::lowest() + next : Limits::max() - next);
  }
}

template <typename Class, typename Result, typename... Parameters>
SampleCall callWithSamples(Class& object, Result (Class::*member)(Parameters...),
                           [[maybe_unused]] Arguments arguments) {
  SampleCall call;
  [[maybe_unused]] int place = 0;
  std::tuple<std::decay_t<Parameters>...> values;
  std::apply(
      [&](auto&... value) {
        ((value = sampleArgument<std::decay_t<Parameters>>(arguments, place++)), ...);
        call.before = text(value...);
        if constexpr (std::is_void_v<Result>) {
          (object.*member)(value...);
        } else {
          call.result = text((object.*member)(value...));
        }
        call.after = text(value...);
      },
      values);
  return call;
}

}  // namespace orb::test
