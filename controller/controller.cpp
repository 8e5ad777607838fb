#include "orb-gnss/controller.h"

#include <memory>
#include <utility>

#include "board/expected_module.h"
#include "controller/log_file.h"
#include "orb-gnss/hardware_discovery.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/null_controller.h"
#include "transport/default_device.h"

namespace {

constexpr const char* kGeneralLogPath = "/var/log/orbset.log";

}  // namespace

orbController::orbController() : orbController(std::string(orb::kDefaultDevice)) {}

orbController::orbController(std::string device) { CreateOrbitek(std::move(device)); }

orbController::~orbController() = default;

// Builds everything first, so that an exception changes nothing.
void orbController::CreateOrbitek(std::string device) {
  if (!generalLog_.is_open()) {
    orb::openLog(generalLog_, kGeneralLogPath);
  }
  std::shared_ptr<ORBControlInterface> controller;
  std::shared_ptr<OrbChipEnableInterface> chip;
  bool isOrbitek = false;
  if (getModuleHardwareID(orb::kModuleLocation).find(orb::kModulePartNumber) != std::string::npos) {
    controller = std::make_shared<orbController_QN4470T01>();
    chip = std::make_shared<BrdOrbChipInterface>();
    isOrbitek = controller->gpsObtChipDetect(std::move(device)) != 0;
  }
  if (isOrbitek) {
    chip->resetOrbChip();
  } else {
    controller = std::make_shared<orbController_null>();
    chip = std::make_shared<NullChipInterface>();
  }
  controller_ = std::move(controller);
  chip_ = std::move(chip);
  isOrbitek_ = isOrbitek;
}

int orbController::setAntennaPower(std::string state) {
  return chip_->antennaPowerEnable(std::move(state));
}

bool orbController::IsOrbitek() const { return isOrbitek_; }

bool orbController::isVersionValid(std::string /*version*/) const { return IsOrbitek(); }

unsigned int orbController::getDefaultInfo(std::string& info) { return getInfo(info); }

unsigned int orbController::configuraProtocolsDefault() { return 0; }

void orbController::Init() { controller_->Init(); }
unsigned int orbController::save() { return controller_->save(); }
unsigned int orbController::load() { return controller_->load(); }
unsigned int orbController::resetFactoryDefaults() { return controller_->resetFactoryDefaults(); }
unsigned int orbController::resetorbitekDefaults() { return controller_->resetorbitekDefaults(); }
unsigned int orbController::restart(bool flag) { return controller_->restart(flag); }
unsigned int orbController::forceRestart(unsigned short mode) {
  return controller_->forceRestart(mode);
}
unsigned int orbController::setDefaultConfiguration() {
  return controller_->setDefaultConfiguration();
}
unsigned int orbController::setApplicationDefaults() {
  return controller_->setApplicationDefaults();
}
unsigned int orbController::turnOff() { return controller_->turnOff(); }
unsigned int orbController::turnOn() { return controller_->turnOn(); }
unsigned int orbController::isOn(bool& on) { return controller_->isOn(on); }
unsigned int orbController::getResetInfo() { return controller_->getResetInfo(); }
unsigned int orbController::getInfo(std::string& info) { return controller_->getInfo(info); }
unsigned int orbController::setAntennaDelay(int delay) {
  return controller_->setAntennaDelay(delay);
}
unsigned int orbController::getAntennaDelay(int& delay) {
  return controller_->getAntennaDelay(delay);
}
unsigned int orbController::setAntennaType(std::string type) {
  return controller_->setAntennaType(std::move(type));
}
unsigned int orbController::getAntennaType(std::string& type) {
  return controller_->getAntennaType(type);
}
unsigned int orbController::setGnssSystem(unsigned short mask, bool secondBand) {
  return controller_->setGnssSystem(mask, secondBand);
}
unsigned int orbController::setGnssSystem(unsigned short mask) {
  return controller_->setGnssSystem(mask);
}
unsigned int orbController::getGnssSystem(unsigned short& mask) {
  return controller_->getGnssSystem(mask);
}
unsigned int orbController::setJammingDetection(bool enable) {
  return controller_->setJammingDetection(enable);
}
unsigned int orbController::getJammingDetection(bool& enabled) {
  return controller_->getJammingDetection(enabled);
}
unsigned int orbController::getNavsolution(std::string key, std::string& solution) {
  return controller_->getNavsolution(std::move(key), solution);
}
unsigned int orbController::setSurveyMode(std::string mode) {
  return controller_->setSurveyMode(std::move(mode));
}
unsigned int orbController::getSurveyMode(std::string& mode) {
  return controller_->getSurveyMode(mode);
}
unsigned int orbController::setSurveyStatic(double latitude, double longitude, double altitude,
                                            double stdDev) {
  return controller_->setSurveyStatic(latitude, longitude, altitude, stdDev);
}
unsigned int orbController::setSurveyAuto(unsigned int surveyLength, float stdDev) {
  return controller_->setSurveyAuto(surveyLength, stdDev);
}
unsigned int orbController::setSurveyAuto() { return controller_->setSurveyAuto(); }
unsigned int orbController::setSurveyDynamic() { return controller_->setSurveyDynamic(); }
unsigned int orbController::getSurveyInfo(unsigned char& mode, double& latitude, double& longitude,
                                          double& altitude, double& reserved,
                                          unsigned int& surveyLength, float& stdDev) {
  return controller_->getSurveyInfo(mode, latitude, longitude, altitude, reserved, surveyLength,
                                    stdDev);
}
unsigned int orbController::getSatelliteInfo(std::string& info) {
  return controller_->getSatelliteInfo(info);
}
unsigned int orbController::getNofSatellitesInNavSol(unsigned char& count) {
  return controller_->getNofSatellitesInNavSol(count);
}
unsigned int orbController::setMinCNo(signed char minimum) {
  return controller_->setMinCNo(minimum);
}
unsigned int orbController::getMinCNo(signed char& minimum) {
  return controller_->getMinCNo(minimum);
}
unsigned int orbController::setElevationLimit(unsigned char limit) {
  return controller_->setElevationLimit(limit);
}
unsigned int orbController::getElevationLimit(unsigned char& limit) {
  return controller_->getElevationLimit(limit);
}
unsigned int orbController::setDynamicModel(unsigned char model) {
  return controller_->setDynamicModel(model);
}
unsigned int orbController::setDynamicModel(unsigned char model, unsigned char fixMode) {
  return controller_->setDynamicModel(model, fixMode);
}
unsigned int orbController::getDynamicModel(unsigned char& model, unsigned char& fixMode) {
  return controller_->getDynamicModel(model, fixMode);
}
unsigned int orbController::setFixMode(unsigned char fixMode) {
  return controller_->setFixMode(fixMode);
}
unsigned int orbController::setTimeReference(std::string reference) {
  return controller_->setTimeReference(std::move(reference));
}
unsigned int orbController::getTimeReference(std::string& reference) {
  return controller_->getTimeReference(reference);
}
unsigned int orbController::setRxMode(std::string mode) {
  return controller_->setRxMode(std::move(mode));
}
unsigned int orbController::getRxMode(std::string& mode) { return controller_->getRxMode(mode); }
unsigned int orbController::setUtcStandardAuto() { return controller_->setUtcStandardAuto(); }
unsigned int orbController::setUtsStandardTime(signed char standard) {
  return controller_->setUtsStandardTime(standard);
}
unsigned int orbController::configureOrbPolling(unsigned char interval) {
  return controller_->configureOrbPolling(interval);
}
unsigned int orbController::configureSBAS() { return controller_->configureSBAS(); }
unsigned int orbController::configureNmeaPolling(unsigned char interval) {
  return controller_->configureNmeaPolling(interval);
}
unsigned int orbController::configurNmeaPollingPartial(unsigned char interval) {
  return controller_->configurNmeaPollingPartial(interval);
}
unsigned int orbController::configureProtocols() { return controller_->configureProtocols(); }
unsigned int orbController::configExtendedPowerManagment() {
  return controller_->configExtendedPowerManagment();
}
unsigned int orbController::getUtcGrid(unsigned short grid) {
  return controller_->getUtcGrid(grid);
}
unsigned int orbController::configTimePulse(unsigned short period, unsigned char mode,
                                            bool enable) {
  return controller_->configTimePulse(period, mode, enable);
}
std::string orbController::timeStamp() { return controller_->timeStamp(); }
unsigned int orbController::programGroupDelayCal(int delay) {
  return controller_->programGroupDelayCal(delay);
}
unsigned int orbController::gpsObtChipDetect() { return controller_->gpsObtChipDetect(); }
unsigned int orbController::gpsObtChipDetect(std::string device) {
  return controller_->gpsObtChipDetect(std::move(device));
}
unsigned int orbController::gpsObtSetMsgType(std::string type) {
  return controller_->gpsObtSetMsgType(std::move(type));
}
