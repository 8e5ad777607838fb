#include "orb-gnss/module_driver.h"

// Every step is taken, also after one that failed.

unsigned int orbController_QN4470T01::setApplicationDefaults() {
  unsigned int result = configureSBAS();
  result |= setDynamicModel(8, 2);
  result |= setUtcStandardAuto();
  result |= gpsObtSetMsgType("NMEA");
  return result;
}

unsigned int orbController_QN4470T01::setDefaultConfiguration() {
  constexpr int kAntennaDelay = 28;                 // nanoseconds
  constexpr unsigned short kConstellations = 0x4D;  // GPS, GALILEO, BEIDOU, GLONASS
  constexpr unsigned char kElevationLimit = 10;     // degrees

  unsigned int result = setAntennaDelay(kAntennaDelay);
  result |= setGnssSystem(kConstellations);
  result |= setMinCNo(0);
  result |= setElevationLimit(kElevationLimit);
  result |= setDynamicModel(1, 1);
  result |= setSurveyAuto();
  result |= configureSBAS();
  return result;
}

unsigned int orbController_QN4470T01::resetFactoryDefaults() {
  unsigned int result = gpsObtSetFactoryDefaults();
  result |= configureOrbPolling(1);
  result |= configureNmeaPolling(0);
  result |= setDefaultConfiguration();
  result |= gpsObtSetMsgType("NMEA");
  result |= save();
  return result;
}
