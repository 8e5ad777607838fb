#pragma once

#include <string>

#include "orb-gnss/control_interface.h"

/// The controller of a device without receiver: every operation returns 0 at once, touches none of
/// its arguments, sends nothing and logs nothing. So setters report success without effect, and
/// getters report success and leave what the caller had. Two operations differ: gpsObtSetMsgType()
/// answers 1; timeStamp() throws std::logic_error. The 0 of gpsObtChipDetect() means that no
/// receiver is there. Any thread may call.
class ORB_GNSS_EXPORT orbController_null : public ORBControlInterface {
 public:
  orbController_null();

  void Init() override;
  unsigned int save() override;
  unsigned int load() override;
  unsigned int resetFactoryDefaults() override;
  unsigned int resetorbitekDefaults() override;
  unsigned int restart(bool flag) override;
  unsigned int forceRestart(unsigned short mode) override;
  unsigned int setDefaultConfiguration() override;
  unsigned int setApplicationDefaults() override;
  unsigned int turnOff() override;
  unsigned int turnOn() override;
  unsigned int isOn(bool& on) override;
  unsigned int getResetInfo() override;
  unsigned int getInfo(std::string& info) override;
  unsigned int setAntennaDelay(int delay) override;
  unsigned int getAntennaDelay(int& delay) override;
  unsigned int setAntennaType(std::string type) override;
  unsigned int getAntennaType(std::string& type) override;
  unsigned int setGnssSystem(unsigned short mask, bool secondBand) override;
  unsigned int setGnssSystem(unsigned short mask) override;
  unsigned int getGnssSystem(unsigned short& mask) override;
  unsigned int setJammingDetection(bool enable) override;
  unsigned int getJammingDetection(bool& enabled) override;
  unsigned int getNavsolution(std::string key, std::string& solution) override;
  unsigned int setSurveyMode(std::string mode) override;
  unsigned int getSurveyMode(std::string& mode) override;
  unsigned int setSurveyStatic(double latitude, double longitude, double altitude,
                               double stdDev) override;
  unsigned int setSurveyAuto(unsigned int surveyLength, float stdDev) override;
  unsigned int setSurveyAuto() override;
  unsigned int setSurveyDynamic() override;
  unsigned int getSurveyInfo(unsigned char& mode, double& latitude, double& longitude,
                             double& altitude, double& reserved, unsigned int& surveyLength,
                             float& stdDev) override;
  unsigned int getSatelliteInfo(std::string& info) override;
  unsigned int getNofSatellitesInNavSol(unsigned char& count) override;
  unsigned int setMinCNo(signed char minimum) override;
  unsigned int getMinCNo(signed char& minimum) override;
  unsigned int setElevationLimit(unsigned char limit) override;
  unsigned int getElevationLimit(unsigned char& limit) override;
  unsigned int setDynamicModel(unsigned char model) override;
  unsigned int setDynamicModel(unsigned char model, unsigned char fixMode) override;
  unsigned int getDynamicModel(unsigned char& model, unsigned char& fixMode) override;
  unsigned int setFixMode(unsigned char fixMode) override;
  unsigned int setTimeReference(std::string reference) override;
  unsigned int getTimeReference(std::string& reference) override;
  unsigned int setRxMode(std::string mode) override;
  unsigned int getRxMode(std::string& mode) override;
  unsigned int setUtcStandardAuto() override;
  unsigned int setUtsStandardTime(signed char standard) override;
  unsigned int configureOrbPolling(unsigned char interval) override;
  unsigned int configureSBAS() override;
  unsigned int configureNmeaPolling(unsigned char interval) override;
  unsigned int configurNmeaPollingPartial(unsigned char interval) override;
  unsigned int configureProtocols() override;
  unsigned int configExtendedPowerManagment() override;
  unsigned int getUtcGrid(unsigned short grid) override;
  unsigned int configTimePulse(unsigned short period, unsigned char mode, bool enable) override;
  std::string timeStamp() override;
  unsigned int programGroupDelayCal(int delay) override;
  unsigned int gpsObtChipDetect() override;
  unsigned int gpsObtChipDetect(std::string device) override;
  unsigned int gpsObtSetMsgType(std::string type) override;

  virtual ~orbController_null();
};
