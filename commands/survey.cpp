#include <algorithm>
#include <cctype>
#include <ostream>
#include <string>

#include "base/console.h"
#include "orb-gnss/module_driver.h"
#include "protocol/messages.h"
#include "transport/command_exchange.h"

using orb::Command;
using orb::Reply;
namespace message = orb::message;
using std::chrono::milliseconds;

namespace orb {

/// The receiver's timing configuration, which is always written whole.
struct Timing {
  unsigned int mode = 0;
  unsigned int surveyLength = 0;  ///< seconds
  unsigned int stdDev = 0;        ///< as the receiver holds it
  double latitude = 0;            ///< degrees
  double longitude = 0;           ///< degrees
  float altitude = 0;             ///< metres
};

}  // namespace orb

using orb::Timing;

namespace {

enum TimingMode : unsigned int { kDynamic = 0, kAutoSurvey = 1, kStatic = 2 };

constexpr unsigned int kLongestSurvey = 1209600;  // seconds: 14 days

Command configureTiming(const Timing& timing, unsigned char attribute) {
  return Command(message::kSetTiming)
      .u8(timing.mode)
      .u32(timing.surveyLength)
      .u32(timing.stdDev)
      .f64(timing.latitude)
      .f64(timing.longitude)
      .f32(timing.altitude)
      .u8(attribute);
}

const char* surveyModeName(unsigned int mode) {
  switch (mode) {
    case kDynamic:
      return "DYNAMIC";
    case kAutoSurvey:
      return "AUTO";
    case kStatic:
      return "STATIC";
    default:
      return "";
  }
}

template <typename Number>
bool isWithin(Number value, Number lowest, Number highest) {
  return value >= lowest && value <= highest;
}

unsigned int readTiming(orbController_QN4470T01& driver, Timing& timing) {
  return driver.gpsObtGetTimeMode(timing.mode, timing.surveyLength, timing.stdDev, timing.latitude,
                                  timing.longitude, timing.altitude);
}

}  // namespace

unsigned int orbController_QN4470T01::gpsObtGetTimeMode(unsigned int& mode,
                                                        unsigned int& surveyLength,
                                                        unsigned int& stdDev, double& latitude,
                                                        double& longitude, float& altitude) {
  return exchange().query(Command(message::kQueryTiming), [&](const Reply& reply) {
    mode = reply.u8(1);
    surveyLength = reply.u32(2);
    stdDev = reply.u32(6);
    latitude = reply.f64(10);
    longitude = reply.f64(18);
    altitude = reply.f32(26);
  });
}

unsigned int orbController_QN4470T01::writeTiming(const Timing& timing,
                                                  std::chrono::nanoseconds settle,
                                                  std::string& keptMode) {
  return exchange().configure(
      configureTiming(timing, attribute_), settle, [&] { return getSurveyMode(keptMode); },
      [&] { return keptMode == surveyModeName(timing.mode); });
}

// The standard deviation is only checked: the receiver keeps the one it has.
unsigned int orbController_QN4470T01::setSurveyStatic(double latitude, double longitude,
                                                      double altitude, double stdDev) {
  if (!isWithin(latitude, -90.0, 90.0) || !isWithin(longitude, -180.0, 180.0) ||
      !isWithin(altitude, -1000.0, 10000.0) || !isWithin(stdDev, 0.01, 200.0)) {
    return orb::kRejected;
  }
  Timing timing;
  if (readTiming(*this, timing) != orb::kSucceeded) {
    return orb::kRejected;
  }
  timing.mode = kStatic;
  timing.latitude = latitude;
  timing.longitude = longitude;
  timing.altitude = static_cast<float>(altitude);
  std::string kept;
  return writeTiming(timing, milliseconds(100), kept);
}

unsigned int orbController_QN4470T01::setSurveyAuto(unsigned int surveyLength, float stdDev) {
  if (!isWithin(surveyLength, 1U, kLongestSurvey) || !isWithin(stdDev, 0.01F, 50.0F)) {
    return orb::kRejected;
  }
  Timing timing;
  if (readTiming(*this, timing) != orb::kSucceeded) {
    return orb::kRejected;
  }
  timing.mode = kAutoSurvey;
  timing.surveyLength = surveyLength;
  std::string kept;
  return writeTiming(timing, milliseconds(100), kept);
}

unsigned int orbController_QN4470T01::setSurveyAuto() {
  constexpr unsigned int kThreeHours = 10800;
  return setSurveyAuto(kThreeHours, 1.0F);
}

unsigned int orbController_QN4470T01::setSurveyDynamic() {
  Timing timing;
  if (readTiming(*this, timing) != orb::kSucceeded) {
    return orb::kRejected;
  }
  timing.mode = kDynamic;
  std::string kept;
  const unsigned int result = writeTiming(timing, milliseconds(800), kept);
  orb::standardOutput() << "Survey Mode: " << kept << std::endl;
  return result;
}

// Without a standard deviation to pass on, AUTO and STATIC are rejected by their own checks.
unsigned int orbController_QN4470T01::setSurveyMode(std::string mode) {
  std::transform(mode.begin(), mode.end(), mode.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  Timing timing;
  if (readTiming(*this, timing) != orb::kSucceeded) {
    return orb::kRejected;
  }
  if (mode == surveyModeName(kAutoSurvey)) {
    return setSurveyAuto(timing.surveyLength, 0.0F);
  }
  if (mode == surveyModeName(kStatic)) {
    return setSurveyStatic(timing.latitude, timing.longitude, timing.altitude, 0.0);
  }
  if (mode == surveyModeName(kDynamic)) {
    return setSurveyDynamic();
  }
  return orb::kSucceeded;
}

unsigned int orbController_QN4470T01::getSurveyMode(std::string& mode) {
  return exchange().query(Command(message::kQueryTiming),
                          [&](const Reply& reply) { mode = surveyModeName(reply.u8(1)); });
}

unsigned int orbController_QN4470T01::getSurveyInfo(unsigned char& mode, double& latitude,
                                                    double& longitude, double& altitude,
                                                    double& reserved, unsigned int& surveyLength,
                                                    float& stdDev) {
  Timing timing;
  if (readTiming(*this, timing) != orb::kSucceeded) {
    return orb::kRejected;
  }
  mode = static_cast<unsigned char>(timing.mode);
  latitude = timing.latitude;
  longitude = timing.longitude;
  altitude = timing.altitude;
  reserved = 0.0;
  surveyLength = timing.surveyLength;
  stdDev = 0.0F;
  return orb::kSucceeded;
}
