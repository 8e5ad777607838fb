#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "operations/outcome.h"
#include "orb-gnss/control_interface.h"

namespace orb::test {

/// A controller that records which operation was called, with which arguments, as a text such
/// as "setGnssSystem(3, true)". Output arguments are shown as they come in, and leave changed.
///
/// Of an operation of `Base`, a test calls the original by its qualified name; what that calls
/// through virtual members is recorded.
template <typename Base>
class Recording : public Base {
 public:
  // NOLINTNEXTLINE(modernize-use-override): not every base has a virtual one.
  virtual ~Recording() = default;

  std::vector<std::string> calls;
  /// What the n-th call comes to, counted from 1.
  std::function<unsigned int(std::size_t)> resultOf = [](std::size_t /*n*/) { return 0U; };
  std::string left;  ///< the arguments of the last call, as it left them

  void Init() override { note("Init"); }
  unsigned int save() override { return note("save"); }
  unsigned int load() override { return note("load"); }
  unsigned int resetFactoryDefaults() override { return note("resetFactoryDefaults"); }
  unsigned int resetorbitekDefaults() override { return note("resetorbitekDefaults"); }
  unsigned int restart(bool flag) override { return note("restart", flag); }
  unsigned int forceRestart(unsigned short mode) override { return note("forceRestart", mode); }
  unsigned int setDefaultConfiguration() override { return note("setDefaultConfiguration"); }
  unsigned int setApplicationDefaults() override { return note("setApplicationDefaults"); }
  unsigned int turnOff() override { return note("turnOff"); }
  unsigned int turnOn() override { return note("turnOn"); }
  unsigned int isOn(bool& on) override { return change("isOn", on); }
  unsigned int getResetInfo() override { return note("getResetInfo"); }
  unsigned int getInfo(std::string& info) override { return change("getInfo", info); }
  unsigned int setAntennaDelay(int delay) override { return note("setAntennaDelay", delay); }
  unsigned int getAntennaDelay(int& delay) override { return change("getAntennaDelay", delay); }
  unsigned int setAntennaType(std::string type) override { return note("setAntennaType", type); }
  unsigned int getAntennaType(std::string& type) override { return change("getAntennaType", type); }
  unsigned int setGnssSystem(unsigned short mask, bool secondBand) override {
    return note("setGnssSystem", mask, secondBand);
  }
  unsigned int setGnssSystem(unsigned short mask) override { return note("setGnssSystem", mask); }
  unsigned int getGnssSystem(unsigned short& mask) override {
    return change("getGnssSystem", mask);
  }
  unsigned int setJammingDetection(bool enable) override {
    return note("setJammingDetection", enable);
  }
  unsigned int getJammingDetection(bool& enabled) override {
    return change("getJammingDetection", enabled);
  }
  unsigned int getNavsolution(std::string key, std::string& solution) override {
    const unsigned int result = note("getNavsolution", key, solution);
    alter(solution);
    left = text(key, solution);
    return result;
  }
  unsigned int setSurveyMode(std::string mode) override { return note("setSurveyMode", mode); }
  unsigned int getSurveyMode(std::string& mode) override { return change("getSurveyMode", mode); }
  unsigned int setSurveyStatic(double latitude, double longitude, double altitude,
                               double stdDev) override {
    return note("setSurveyStatic", latitude, longitude, altitude, stdDev);
  }
  unsigned int setSurveyAuto(unsigned int surveyLength, float stdDev) override {
    return note("setSurveyAuto", surveyLength, stdDev);
  }
  unsigned int setSurveyAuto() override { return note("setSurveyAuto"); }
  unsigned int setSurveyDynamic() override { return note("setSurveyDynamic"); }
  unsigned int getSurveyInfo(unsigned char& mode, double& latitude, double& longitude,
                             double& altitude, double& reserved, unsigned int& surveyLength,
                             float& stdDev) override {
    return change("getSurveyInfo", mode, latitude, longitude, altitude, reserved, surveyLength,
                  stdDev);
  }
  unsigned int getSatelliteInfo(std::string& info) override {
    return change("getSatelliteInfo", info);
  }
  unsigned int getNofSatellitesInNavSol(unsigned char& count) override {
    return change("getNofSatellitesInNavSol", count);
  }
  unsigned int setMinCNo(signed char minimum) override { return note("setMinCNo", minimum); }
  unsigned int getMinCNo(signed char& minimum) override { return change("getMinCNo", minimum); }
  unsigned int setElevationLimit(unsigned char limit) override {
    return note("setElevationLimit", limit);
  }
  unsigned int getElevationLimit(unsigned char& limit) override {
    return change("getElevationLimit", limit);
  }
  unsigned int setDynamicModel(unsigned char model) override {
    return note("setDynamicModel", model);
  }
  unsigned int setDynamicModel(unsigned char model, unsigned char fixMode) override {
    return note("setDynamicModel", model, fixMode);
  }
  unsigned int getDynamicModel(unsigned char& model, unsigned char& fixMode) override {
    return change("getDynamicModel", model, fixMode);
  }
  unsigned int setFixMode(unsigned char fixMode) override { return note("setFixMode", fixMode); }
  unsigned int setTimeReference(std::string reference) override {
    return note("setTimeReference", reference);
  }
  unsigned int getTimeReference(std::string& reference) override {
    return change("getTimeReference", reference);
  }
  unsigned int setRxMode(std::string mode) override { return note("setRxMode", mode); }
  unsigned int getRxMode(std::string& mode) override { return change("getRxMode", mode); }
  unsigned int setUtcStandardAuto() override { return note("setUtcStandardAuto"); }
  unsigned int setUtsStandardTime(signed char standard) override {
    return note("setUtsStandardTime", standard);
  }
  unsigned int configureOrbPolling(unsigned char interval) override {
    return note("configureOrbPolling", interval);
  }
  unsigned int configureSBAS() override { return note("configureSBAS"); }
  unsigned int configureNmeaPolling(unsigned char interval) override {
    return note("configureNmeaPolling", interval);
  }
  unsigned int configurNmeaPollingPartial(unsigned char interval) override {
    return note("configurNmeaPollingPartial", interval);
  }
  unsigned int configureProtocols() override { return note("configureProtocols"); }
  unsigned int configExtendedPowerManagment() override {
    return note("configExtendedPowerManagment");
  }
  unsigned int getUtcGrid(unsigned short grid) override { return note("getUtcGrid", grid); }
  unsigned int configTimePulse(unsigned short period, unsigned char mode, bool enable) override {
    return note("configTimePulse", period, mode, enable);
  }
  std::string timeStamp() override {
    note("timeStamp");
    return "stamp of the controller";
  }
  unsigned int programGroupDelayCal(int delay) override {
    return note("programGroupDelayCal", delay);
  }
  unsigned int gpsObtChipDetect() override { return note("gpsObtChipDetect"); }
  unsigned int gpsObtChipDetect(std::string device) override {
    return note("gpsObtChipDetect", device);
  }
  unsigned int gpsObtSetMsgType(std::string type) override {
    return note("gpsObtSetMsgType", type);
  }

 protected:
  template <typename... Arguments>
  unsigned int note(const std::string& operation, const Arguments&... arguments) {
    left = text(arguments...);
    calls.push_back(operation + "(" + left + ")");
    return resultOf(calls.size());
  }

 private:
  template <typename... Arguments>
  unsigned int change(const std::string& operation, Arguments&... arguments) {
    const unsigned int result = note(operation, arguments...);
    (alter(arguments), ...);
    left = text(arguments...);
    return result;
  }

  static void alter(std::string& text) { text += "!"; }
  static void alter(bool& flag) { flag = !flag; }
  template <typename Number>
  static void alter(Number& number) {
    number = static_cast<Number>(number > 0 ? number - 1 : number + 1);
  }
};

using RecordingController = Recording<ORBControlInterface>;

}  // namespace orb::test
