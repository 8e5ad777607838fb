#include "orb-gnss/supervised_controller.h"

#include <atomic>
#include <stdexcept>

#include "operation_table/value_of.h"
#include "supervised/supervisor.h"

namespace {

/// Of the last call of this thread.
thread_local orbSupervisedController::Call lastCallOfThread;

unsigned int bits(const orb::Value& result) {
  return static_cast<unsigned int>(std::get<long long>(result));
}

const orb::Operation& named(const std::string& name, std::size_t argumentCount) {
  const orb::Operation* const operation = orb::findOperation(name, argumentCount);
  if (operation == nullptr) {
    throw std::invalid_argument("no operation " + name + " takes " + std::to_string(argumentCount) +
                                " arguments");
  }
  return *operation;
}

}  // namespace

struct orbSupervisedController::State {
  explicit State(std::chrono::milliseconds limit) : deadline(limit) {}

  std::atomic<std::chrono::milliseconds> deadline;
  orb::Supervisor supervisor;
};

orbSupervisedController::orbSupervisedController(std::chrono::milliseconds deadline)
    : state_(std::make_unique<State>(deadline)) {}

orbSupervisedController::~orbSupervisedController() = default;

void orbSupervisedController::setDeadline(std::chrono::milliseconds deadline) {
  state_->deadline = deadline;
}

const orbSupervisedController::Call& orbSupervisedController::lastCall() {
  return lastCallOfThread;
}

orbSupervisedController::Value orbSupervisedController::call(const std::string& operation,
                                                             std::vector<Value>& arguments) {
  const orb::Operation& row = named(operation, arguments.size());
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i].index() != static_cast<std::size_t>(row.arguments()[i].type)) {
      throw std::invalid_argument(operation + ": " + std::string(row.arguments()[i].name) +
                                  " is of another type");
    }
  }
  return state_->supervisor.perform(row, arguments, state_->deadline, lastCallOfThread);
}

/// Outputs come back in their places; what was passed by value is a copy already.
template <typename... Arguments>
orbSupervisedController::Value orbSupervisedController::callNamed(const char* operation,
                                                                  Arguments&... arguments) {
  std::vector<Value> values = {orb::toValue(arguments)...};
  const Value result = call(operation, values);
  std::size_t next = 0;
  ((arguments = orb::fromValue<Arguments>(values[next++])), ...);
  return result;
}

void orbSupervisedController::Init() { callNamed("Init"); }
unsigned int orbSupervisedController::save() { return bits(callNamed("save")); }
unsigned int orbSupervisedController::load() { return bits(callNamed("load")); }
unsigned int orbSupervisedController::resetFactoryDefaults() {
  return bits(callNamed("resetFactoryDefaults"));
}
unsigned int orbSupervisedController::resetorbitekDefaults() {
  return bits(callNamed("resetorbitekDefaults"));
}
unsigned int orbSupervisedController::restart(bool flag) {
  return bits(callNamed("restart", flag));
}
unsigned int orbSupervisedController::forceRestart(unsigned short mode) {
  return bits(callNamed("forceRestart", mode));
}
unsigned int orbSupervisedController::setDefaultConfiguration() {
  return bits(callNamed("setDefaultConfiguration"));
}
unsigned int orbSupervisedController::setApplicationDefaults() {
  return bits(callNamed("setApplicationDefaults"));
}
unsigned int orbSupervisedController::turnOff() { return bits(callNamed("turnOff")); }
unsigned int orbSupervisedController::turnOn() { return bits(callNamed("turnOn")); }
unsigned int orbSupervisedController::isOn(bool& on) { return bits(callNamed("isOn", on)); }
unsigned int orbSupervisedController::getResetInfo() { return bits(callNamed("getResetInfo")); }
unsigned int orbSupervisedController::getInfo(std::string& info) {
  return bits(callNamed("getInfo", info));
}
unsigned int orbSupervisedController::setAntennaDelay(int delay) {
  return bits(callNamed("setAntennaDelay", delay));
}
unsigned int orbSupervisedController::getAntennaDelay(int& delay) {
  return bits(callNamed("getAntennaDelay", delay));
}
unsigned int orbSupervisedController::setAntennaType(std::string type) {
  return bits(callNamed("setAntennaType", type));
}
unsigned int orbSupervisedController::getAntennaType(std::string& type) {
  return bits(callNamed("getAntennaType", type));
}
unsigned int orbSupervisedController::setGnssSystem(unsigned short mask, bool secondBand) {
  return bits(callNamed("setGnssSystem", mask, secondBand));
}
unsigned int orbSupervisedController::setGnssSystem(unsigned short mask) {
  return bits(callNamed("setGnssSystem", mask));
}
unsigned int orbSupervisedController::getGnssSystem(unsigned short& mask) {
  return bits(callNamed("getGnssSystem", mask));
}
unsigned int orbSupervisedController::setJammingDetection(bool enable) {
  return bits(callNamed("setJammingDetection", enable));
}
unsigned int orbSupervisedController::getJammingDetection(bool& enabled) {
  return bits(callNamed("getJammingDetection", enabled));
}
unsigned int orbSupervisedController::getNavsolution(std::string key, std::string& solution) {
  return bits(callNamed("getNavsolution", key, solution));
}
unsigned int orbSupervisedController::setSurveyMode(std::string mode) {
  return bits(callNamed("setSurveyMode", mode));
}
unsigned int orbSupervisedController::getSurveyMode(std::string& mode) {
  return bits(callNamed("getSurveyMode", mode));
}
unsigned int orbSupervisedController::setSurveyStatic(double latitude, double longitude,
                                                      double altitude, double stdDev) {
  return bits(callNamed("setSurveyStatic", latitude, longitude, altitude, stdDev));
}
unsigned int orbSupervisedController::setSurveyAuto(unsigned int surveyLength, float stdDev) {
  return bits(callNamed("setSurveyAuto", surveyLength, stdDev));
}
unsigned int orbSupervisedController::setSurveyAuto() { return bits(callNamed("setSurveyAuto")); }
unsigned int orbSupervisedController::setSurveyDynamic() {
  return bits(callNamed("setSurveyDynamic"));
}
unsigned int orbSupervisedController::getSurveyInfo(unsigned char& mode, double& latitude,
                                                    double& longitude, double& altitude,
                                                    double& reserved, unsigned int& surveyLength,
                                                    float& stdDev) {
  return bits(callNamed("getSurveyInfo", mode, latitude, longitude, altitude, reserved,
                        surveyLength, stdDev));
}
unsigned int orbSupervisedController::getSatelliteInfo(std::string& info) {
  return bits(callNamed("getSatelliteInfo", info));
}
unsigned int orbSupervisedController::getNofSatellitesInNavSol(unsigned char& count) {
  return bits(callNamed("getNofSatellitesInNavSol", count));
}
unsigned int orbSupervisedController::setMinCNo(signed char minimum) {
  return bits(callNamed("setMinCNo", minimum));
}
unsigned int orbSupervisedController::getMinCNo(signed char& minimum) {
  return bits(callNamed("getMinCNo", minimum));
}
unsigned int orbSupervisedController::setElevationLimit(unsigned char limit) {
  return bits(callNamed("setElevationLimit", limit));
}
unsigned int orbSupervisedController::getElevationLimit(unsigned char& limit) {
  return bits(callNamed("getElevationLimit", limit));
}
unsigned int orbSupervisedController::setDynamicModel(unsigned char model) {
  return bits(callNamed("setDynamicModel", model));
}
unsigned int orbSupervisedController::setDynamicModel(unsigned char model, unsigned char fixMode) {
  return bits(callNamed("setDynamicModel", model, fixMode));
}
unsigned int orbSupervisedController::getDynamicModel(unsigned char& model,
                                                      unsigned char& fixMode) {
  return bits(callNamed("getDynamicModel", model, fixMode));
}
unsigned int orbSupervisedController::setFixMode(unsigned char fixMode) {
  return bits(callNamed("setFixMode", fixMode));
}
unsigned int orbSupervisedController::setTimeReference(std::string reference) {
  return bits(callNamed("setTimeReference", reference));
}
unsigned int orbSupervisedController::getTimeReference(std::string& reference) {
  return bits(callNamed("getTimeReference", reference));
}
unsigned int orbSupervisedController::setRxMode(std::string mode) {
  return bits(callNamed("setRxMode", mode));
}
unsigned int orbSupervisedController::getRxMode(std::string& mode) {
  return bits(callNamed("getRxMode", mode));
}
unsigned int orbSupervisedController::setUtcStandardAuto() {
  return bits(callNamed("setUtcStandardAuto"));
}
unsigned int orbSupervisedController::setUtsStandardTime(signed char standard) {
  return bits(callNamed("setUtsStandardTime", standard));
}
unsigned int orbSupervisedController::configureOrbPolling(unsigned char interval) {
  return bits(callNamed("configureOrbPolling", interval));
}
unsigned int orbSupervisedController::configureSBAS() { return bits(callNamed("configureSBAS")); }
unsigned int orbSupervisedController::configureNmeaPolling(unsigned char interval) {
  return bits(callNamed("configureNmeaPolling", interval));
}
unsigned int orbSupervisedController::configurNmeaPollingPartial(unsigned char interval) {
  return bits(callNamed("configurNmeaPollingPartial", interval));
}
unsigned int orbSupervisedController::configureProtocols() {
  return bits(callNamed("configureProtocols"));
}
unsigned int orbSupervisedController::configExtendedPowerManagment() {
  return bits(callNamed("configExtendedPowerManagment"));
}
unsigned int orbSupervisedController::getUtcGrid(unsigned short grid) {
  return bits(callNamed("getUtcGrid", grid));
}
unsigned int orbSupervisedController::configTimePulse(unsigned short period, unsigned char mode,
                                                      bool enable) {
  return bits(callNamed("configTimePulse", period, mode, enable));
}
std::string orbSupervisedController::timeStamp() {
  return std::get<std::string>(callNamed("timeStamp"));
}
unsigned int orbSupervisedController::programGroupDelayCal(int delay) {
  return bits(callNamed("programGroupDelayCal", delay));
}
unsigned int orbSupervisedController::gpsObtChipDetect() {
  return bits(callNamed("gpsObtChipDetect"));
}
unsigned int orbSupervisedController::gpsObtChipDetect(std::string device) {
  return bits(callNamed("gpsObtChipDetect", device));
}
unsigned int orbSupervisedController::gpsObtSetMsgType(std::string type) {
  return bits(callNamed("gpsObtSetMsgType", type));
}