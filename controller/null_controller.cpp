#include "orb-gnss/null_controller.h"

#include <stdexcept>

orbController_null::orbController_null() = default;
orbController_null::~orbController_null() = default;

void orbController_null::Init() {}
unsigned int orbController_null::save() { return 0; }
unsigned int orbController_null::load() { return 0; }
unsigned int orbController_null::resetFactoryDefaults() { return 0; }
unsigned int orbController_null::resetorbitekDefaults() { return 0; }
unsigned int orbController_null::restart(bool) { return 0; }
unsigned int orbController_null::forceRestart(unsigned short) { return 0; }
unsigned int orbController_null::setDefaultConfiguration() { return 0; }
unsigned int orbController_null::setApplicationDefaults() { return 0; }
unsigned int orbController_null::turnOff() { return 0; }
unsigned int orbController_null::turnOn() { return 0; }
unsigned int orbController_null::isOn(bool&) { return 0; }
unsigned int orbController_null::getResetInfo() { return 0; }
unsigned int orbController_null::getInfo(std::string&) { return 0; }
unsigned int orbController_null::setAntennaDelay(int) { return 0; }
unsigned int orbController_null::getAntennaDelay(int&) { return 0; }
unsigned int orbController_null::setAntennaType(std::string) { return 0; }
unsigned int orbController_null::getAntennaType(std::string&) { return 0; }
unsigned int orbController_null::setGnssSystem(unsigned short, bool) { return 0; }
unsigned int orbController_null::setGnssSystem(unsigned short) { return 0; }
unsigned int orbController_null::getGnssSystem(unsigned short&) { return 0; }
unsigned int orbController_null::setJammingDetection(bool) { return 0; }
unsigned int orbController_null::getJammingDetection(bool&) { return 0; }
unsigned int orbController_null::getNavsolution(std::string, std::string&) { return 0; }
unsigned int orbController_null::setSurveyMode(std::string) { return 0; }
unsigned int orbController_null::getSurveyMode(std::string&) { return 0; }
unsigned int orbController_null::setSurveyStatic(double, double, double, double) { return 0; }
unsigned int orbController_null::setSurveyAuto(unsigned int, float) { return 0; }
unsigned int orbController_null::setSurveyAuto() { return 0; }
unsigned int orbController_null::setSurveyDynamic() { return 0; }
unsigned int orbController_null::getSurveyInfo(unsigned char&, double&, double&, double&, double&,
                                               unsigned int&, float&) {
  return 0;
}
unsigned int orbController_null::getSatelliteInfo(std::string&) { return 0; }
unsigned int orbController_null::getNofSatellitesInNavSol(unsigned char&) { return 0; }
unsigned int orbController_null::setMinCNo(signed char) { return 0; }
unsigned int orbController_null::getMinCNo(signed char&) { return 0; }
unsigned int orbController_null::setElevationLimit(unsigned char) { return 0; }
unsigned int orbController_null::getElevationLimit(unsigned char&) { return 0; }
unsigned int orbController_null::setDynamicModel(unsigned char) { return 0; }
unsigned int orbController_null::setDynamicModel(unsigned char, unsigned char) { return 0; }
unsigned int orbController_null::getDynamicModel(unsigned char&, unsigned char&) { return 0; }
unsigned int orbController_null::setFixMode(unsigned char) { return 0; }
unsigned int orbController_null::setTimeReference(std::string) { return 0; }
unsigned int orbController_null::getTimeReference(std::string&) { return 0; }
unsigned int orbController_null::setRxMode(std::string) { return 0; }
unsigned int orbController_null::getRxMode(std::string&) { return 0; }
unsigned int orbController_null::setUtcStandardAuto() { return 0; }
unsigned int orbController_null::setUtsStandardTime(signed char) { return 0; }
unsigned int orbController_null::configureOrbPolling(unsigned char) { return 0; }
unsigned int orbController_null::configureSBAS() { return 0; }
unsigned int orbController_null::configureNmeaPolling(unsigned char) { return 0; }
unsigned int orbController_null::configurNmeaPollingPartial(unsigned char) { return 0; }
unsigned int orbController_null::configureProtocols() { return 0; }
unsigned int orbController_null::configExtendedPowerManagment() { return 0; }
unsigned int orbController_null::getUtcGrid(unsigned short) { return 0; }
unsigned int orbController_null::configTimePulse(unsigned short, unsigned char, bool) { return 0; }
std::string orbController_null::timeStamp() {
  throw std::logic_error("a null controller has no time stamp");
}
unsigned int orbController_null::programGroupDelayCal(int) { return 0; }
unsigned int orbController_null::gpsObtChipDetect() { return 0; }
unsigned int orbController_null::gpsObtChipDetect(std::string) { return 0; }
unsigned int orbController_null::gpsObtSetMsgType(std::string) { return 1; }
