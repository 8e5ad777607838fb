#include "operations.h"

#include <cmath>

namespace orb::sim::test {
namespace {

using Driver = orbController_QN4470T01;

std::string powerModeName(unsigned int mode) {
  return mode == 0 ? "NORMAL" : mode == 1 ? "POWERSAVE" : "";
}

std::string fixName(unsigned int fix) { return fix == 0 ? "3D" : fix == 1 ? "2D" : ""; }

std::vector<Operation> statusOperations() {
  return {
      {"read the firmware version", 0x8000,
       [](Driver& driver, const Receiver&, Numbers&) {
         std::string kernel;
         std::string odm;
         std::string revision;
         const unsigned int result = driver.gpsOrbGetFwVersion(kernel, odm, revision);
         return Outcome{result, kernel == "KernelVersion: 1.0.12" && odm == "ODMVersion: 1.2.0" &&
                                    revision == "Revision: 2024.3.15"};
       }},
      {"read the GPS time", 0x648E,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         unsigned int fields[5] = {};
         const unsigned int result =
             driver.gpsObtGetGpsTime(fields[0], fields[1], fields[2], fields[3], fields[4]);
         const GpsTime time = receiver.state().time;
         return Outcome{result, fields[2] == time.week && fields[3] == time.leapSeconds};
       }},
      {"read the power mode", 0xB900,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         std::string mode;
         const unsigned int result = driver.getRxMode(mode);
         return Outcome{result, mode == powerModeName(receiver.state().powerMode)};
       }},
      {"set the power mode", 0xB900,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const std::string mode = powerModeName(numbers.coin() ? 1 : 0);
         const unsigned int result = driver.setRxMode(mode);
         return Outcome{result, mode == powerModeName(receiver.state().powerMode)};
       }},
      {"read the update rate", 0x8600,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         unsigned char rate = 0;
         const unsigned int result = driver.gpsOrbGetCfgRate(rate);
         return Outcome{result, rate == receiver.state().updateRate};
       }},
      {"set the update rate", 0x8600,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto rate = static_cast<unsigned char>(numbers.between(1, 10));
         const unsigned int result = driver.gpsObtSetCfgRate(rate);
         return Outcome{result, rate == receiver.state().updateRate};
       }},
      {"set the output type", 0x8300,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const bool binary = numbers.coin();
         const unsigned int result = driver.gpsObtSetMsgType(binary ? "BINARY" : "NMEA");
         const OutputType wanted = binary ? OutputType::Binary : OutputType::Nmea;
         return Outcome{result, receiver.state().outputType == wanted, false};
       }},
      {"read the interval of the navigation data", 0x6498,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         unsigned char interval = 0;
         const unsigned int result = driver.gpsObtGetNavMsg(interval);
         return Outcome{result, interval == receiver.state().navMessageInterval};
       }},
  };
}

std::vector<Operation> maskOperations() {
  return {
      {"read the masks", 0xB000,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         unsigned int mode = 0;
         unsigned int elevation = 0;
         unsigned int cnr = 0;
         const unsigned int result = driver.gpsOrbGetElevConfigure(mode, elevation, cnr);
         const ElevationCnrMask mask = receiver.state().elevationCnrMask;
         return Outcome{result,
                        mode == mask.mode && elevation == mask.elevation && cnr == mask.cnr};
       }},
      {"set the masks", 0xB000,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto elevation = static_cast<unsigned int>(numbers.between(0, 90));
         const auto cnr = static_cast<unsigned int>(numbers.between(0, 50));
         const unsigned int result = driver.gpsObtElevConfigure(1, elevation, cnr);
         const ElevationCnrMask mask = receiver.state().elevationCnrMask;
         return Outcome{result, mask.mode == 1 && mask.elevation == elevation && mask.cnr == cnr};
       }},
      {"set the carrier-to-noise ratio mask", 0xB000,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto minimum = static_cast<signed char>(numbers.between(0, 40));
         const unsigned int result = driver.setMinCNo(minimum);
         return Outcome{result, receiver.state().elevationCnrMask.cnr == minimum};
       }},
      {"set the elevation mask", 0xB000,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto limit = static_cast<unsigned char>(numbers.between(3, 85));
         const unsigned int result = driver.setElevationLimit(limit);
         return Outcome{result, receiver.state().elevationCnrMask.elevation == limit};
       }},
      {"read the DOP mask", 0xAF00,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         unsigned int mode = 0;
         unsigned int limits[3] = {};
         const unsigned int result =
             driver.gpsObtGetDopConfigure(mode, limits[0], limits[1], limits[2]);
         const DopMask mask = receiver.state().dopMask;
         return Outcome{result, mode == mask.mode && limits[0] == mask.limits[0] &&
                                    limits[1] == mask.limits[1] && limits[2] == mask.limits[2]};
       }},
      {"read the fix mask", 0x6488,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         std::string first;
         std::string second;
         const unsigned int result = driver.gpsObtGetFixNavConfigure(first, second);
         const FixNavMask mask = receiver.state().fixNavMask;
         return Outcome{result, first == fixName(mask.first) && second == fixName(mask.second)};
       }},
      {"set the fix mask", 0x6488,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const unsigned int first = numbers.coin() ? 1 : 0;
         const unsigned int second = numbers.coin() ? 1 : 0;
         const unsigned int result = driver.gpsObtFixNavConfigure(fixName(first), fixName(second));
         const FixNavMask mask = receiver.state().fixNavMask;
         return Outcome{result, mask.first == first && mask.second == second};
       }},
      {"set the navigation model", 0x648B,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         constexpr unsigned int kModes[] = {1, 1, 1, 2, 3, 4, 5, 5, 0};
         const auto model = static_cast<unsigned int>(numbers.between(0, 8));
         const unsigned int result = driver.gpsObtChangeDynamicMode(model);
         return Outcome{result, receiver.state().navigationMode == kModes[model]};
       }},
      {"switch interference detection", 0x6483,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const bool on = numbers.coin();
         const unsigned int result = driver.gpsObtJamDetectConfig(on);
         return Outcome{result, ((receiver.state().interferenceDetection & 1) != 0) == on};
       }},
  };
}

std::vector<Operation> timingOperations() {
  return {
      {"read the cable delay", 0xBB00,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         int delay = 0;
         const unsigned int result = driver.gpsObtGetCableDelayConfig(delay);
         return Outcome{result, delay == receiver.state().cableDelay / 100};
       }},
      {"set the cable delay", 0xBB00,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const int delay = numbers.between(-5000, 5000);
         const unsigned int result = driver.gpsObtCableDelayConfig(delay);
         return Outcome{result, delay == receiver.state().cableDelay / 100};
       }},
      {"set the pulse width", 0x6580,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto width = static_cast<unsigned int>(numbers.between(1, 100000));
         const unsigned int result = driver.gpsObtTimePulseConfigure(width);
         return Outcome{result, receiver.state().ppsPulseWidth == width};
       }},
      {"set the second pulse's frequency", 0x6581,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto frequency = static_cast<unsigned int>(numbers.between(0, 19200000));
         const unsigned int result = driver.gpsObtFreqOutputConfigure(frequency);
         return Outcome{result, receiver.state().pps2Frequency == frequency};
       }},
      {"set the 1PPS output mode", 0xC300,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto mode = static_cast<unsigned int>(numbers.between(0, 3));
         const unsigned int source = numbers.coin() ? 1 : 0;
         const unsigned int result = driver.gpsOrb1ppsOutputMode(mode, source);
         const PpsOutput output = receiver.state().ppsOutput;
         return Outcome{result, output.mode == mode && output.alignSource == source};
       }},
      {"read the timing mode", 0xC200,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         unsigned int mode = 0;
         unsigned int length = 0;
         unsigned int deviation = 0;
         double latitude = 0;
         double longitude = 0;
         float altitude = 0;
         const unsigned int result =
             driver.gpsObtGetTimeMode(mode, length, deviation, latitude, longitude, altitude);
         const Timing timing = receiver.state().timing;
         return Outcome{result,
                        length == timing.surveyLength && deviation == timing.standardDeviation};
       }},
      {"survey at a fixed position", 0xC200,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const unsigned int result =
             driver.setSurveyStatic(numbers.between(-90, 90), numbers.between(-180, 180), 500, 10);
         return Outcome{result, receiver.state().timing.mode == TimingMode::Static};
       }},
      {"survey automatically", 0xC200,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         constexpr int kLongest = 1209600;
         const unsigned int result = driver.setSurveyAuto(
             static_cast<unsigned int>(numbers.between(kLongest / 2, kLongest)), 1.0F);
         return Outcome{result, receiver.state().timing.mode == TimingMode::AutoSurvey};
       }},
  };
}

std::vector<Operation> systemOperations() {
  return {
      {"read the constellations", 0x648C,
       [](Driver& driver, const Receiver& receiver, Numbers&) {
         unsigned short mask = 0;
         const unsigned int result = driver.gpsObtGetGnssConfigure(mask);
         return Outcome{result, mask == receiver.state().constellations};
       }},
      {"set the constellations", 0x648C,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const bool glonass = numbers.coin();
         const unsigned int result = driver.gpsObtGnssConfigure(glonass ? 0x41 : 0x01);
         return Outcome{result, receiver.state().constellations == (glonass ? 3 : 1)};
       }},
      {"switch SBAS", 0x6280,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const bool on = numbers.coin();
         const unsigned int result = driver.gpsObtSbasConfigure(on);
         return Outcome{result, (receiver.state().sbas[0] != 0) == on};
       }},
      {"switch QZSS", 0x6281,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const bool on = numbers.coin();
         const unsigned int result = driver.gpsObtQzssConfigure(on);
         return Outcome{result, (receiver.state().qzss[0] != 0) == on};
       }},
      {"switch the second band", 0x649F,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const bool on = numbers.coin();
         const unsigned int result = driver.gpsObtL2BandConfigure(on);
         return Outcome{result, (receiver.state().secondBand != 0) == on};
       }},
      {"set the intervals of the sentences", 0x6481,
       [](Driver& driver, const Receiver& receiver, Numbers& numbers) {
         const auto interval = static_cast<unsigned int>(numbers.between(1, 255));
         const unsigned int result = driver.gpsObtNmeaExtendedConfigure(interval);
         return Outcome{result, receiver.state().nmeaIntervals[0] == interval};
       }},
  };
}

}  // namespace

const std::vector<Operation>& operations() {
  static const std::vector<Operation> kAll = [] {
    std::vector<Operation> all;
    for (const auto& part :
         {statusOperations(), maskOperations(), timingOperations(), systemOperations()}) {
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }();
  return kAll;
}

}  // namespace orb::sim::test
