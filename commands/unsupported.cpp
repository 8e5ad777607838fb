#include "orb-gnss/module_driver.h"

// Operations that the driver does not carry out yet: they answer as the null controller does.

unsigned int orbController_QN4470T01::resetFactoryDefaults() { return 0; }
unsigned int orbController_QN4470T01::setDefaultConfiguration() { return 0; }
unsigned int orbController_QN4470T01::setApplicationDefaults() { return 0; }
unsigned int orbController_QN4470T01::setAntennaDelay(int) { return 0; }
unsigned int orbController_QN4470T01::getAntennaDelay(int&) { return 0; }
unsigned int orbController_QN4470T01::setGnssSystem(unsigned short, bool) { return 0; }
unsigned int orbController_QN4470T01::setGnssSystem(unsigned short) { return 0; }
unsigned int orbController_QN4470T01::getGnssSystem(unsigned short&) { return 0; }
unsigned int orbController_QN4470T01::setJammingDetection(bool) { return 0; }
unsigned int orbController_QN4470T01::getJammingDetection(bool&) { return 0; }
unsigned int orbController_QN4470T01::getNavsolution(std::string, std::string&) { return 0; }
unsigned int orbController_QN4470T01::setSurveyMode(std::string) { return 0; }
unsigned int orbController_QN4470T01::getSurveyMode(std::string&) { return 0; }
unsigned int orbController_QN4470T01::setSurveyStatic(double, double, double, double) { return 0; }
unsigned int orbController_QN4470T01::setSurveyAuto(unsigned int, float) { return 0; }
unsigned int orbController_QN4470T01::setSurveyDynamic() { return 0; }
unsigned int orbController_QN4470T01::getSurveyInfo(unsigned char&, double&, double&, double&,
                                                    double&, unsigned int&, float&) {
  return 0;
}
unsigned int orbController_QN4470T01::getSatelliteInfo(std::string&) { return 0; }
unsigned int orbController_QN4470T01::getNofSatellitesInNavSol(unsigned char&) { return 0; }
unsigned int orbController_QN4470T01::setMinCNo(signed char) { return 0; }
unsigned int orbController_QN4470T01::getMinCNo(signed char&) { return 0; }
unsigned int orbController_QN4470T01::setElevationLimit(unsigned char) { return 0; }
unsigned int orbController_QN4470T01::getElevationLimit(unsigned char&) { return 0; }
unsigned int orbController_QN4470T01::setDynamicModel(unsigned char) { return 0; }
unsigned int orbController_QN4470T01::setDynamicModel(unsigned char, unsigned char) { return 0; }
unsigned int orbController_QN4470T01::getDynamicModel(unsigned char&, unsigned char&) { return 0; }
unsigned int orbController_QN4470T01::setFixMode(unsigned char) { return 0; }
unsigned int orbController_QN4470T01::setTimeReference(std::string) { return 0; }
unsigned int orbController_QN4470T01::getTimeReference(std::string&) { return 0; }
unsigned int orbController_QN4470T01::setRxMode(std::string) { return 0; }
unsigned int orbController_QN4470T01::getRxMode(std::string&) { return 0; }
unsigned int orbController_QN4470T01::configureOrbPolling(unsigned char) { return 0; }
unsigned int orbController_QN4470T01::configureSBAS() { return 0; }
unsigned int orbController_QN4470T01::configureNmeaPolling(unsigned char) { return 0; }
unsigned int orbController_QN4470T01::configurNmeaPollingPartial(unsigned char) { return 0; }
unsigned int orbController_QN4470T01::configTimePulse(unsigned short, unsigned char, bool) {
  return 0;
}
unsigned int orbController_QN4470T01::gpsObtSetMsgType(std::string) { return 1; }
