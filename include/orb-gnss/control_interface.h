#pragma once

#include <string>

#include "orb-gnss/export.h"

/// Everything that a client can ask of the GNSS receiver.
///
/// Unless said otherwise an operation returns a mask of what went wrong, 0 for nothing:
///
///   1    an argument was rejected, or a setting read back differs from what was requested
///   4    the expected reply did not arrive in time
///   8    a message could not be sent
///   256  the module does not support the operation or the argument's value
///
/// Results of several steps are OR-ed. An operation blocks its caller until it is done; one thread
/// at a time uses a controller.
///
/// The order of the operations is binding: clients reach them by their slot. There is no virtual
/// destructor among them, so controllers are made with std::make_shared of their own type and
/// never deleted through this interface.
class ORB_GNSS_EXPORT ORBControlInterface {
 public:
  /// Does nothing.
  virtual void Init() = 0;
  /// Does nothing; the receiver keeps its settings itself.
  virtual unsigned int save() = 0;
  /// Does nothing.
  virtual unsigned int load() = 0;
  /// Resets the receiver to factory values and applies the default configuration.
  virtual unsigned int resetFactoryDefaults() = 0;
  /// Resets the receiver to factory values; no reply is awaited.
  virtual unsigned int resetorbitekDefaults() = 0;
  /// Restarts the receiver; the flag is passed on to it. No reply is awaited.
  virtual unsigned int restart(bool flag) = 0;
  /// Restarts the receiver. The low byte of `mode` counts: 1 sets the time to the start of the GPS
  /// epoch, 3 is sent without a time, others send an empty request. No reply is awaited.
  virtual unsigned int forceRestart(unsigned short mode) = 0;
  /// Applies the default configuration of a timing receiver.
  virtual unsigned int setDefaultConfiguration() = 0;
  /// Applies the application's output and navigation settings.
  virtual unsigned int setApplicationDefaults() = 0;
  /// Does nothing; antenna power is switched by orbController::setAntennaPower().
  virtual unsigned int turnOff() = 0;
  /// Does nothing.
  virtual unsigned int turnOn() = 0;
  /// Does nothing; the argument is untouched.
  virtual unsigned int isOn(bool& on) = 0;
  /// Sends an empty restart request. Always returns 0; a failure to send is only logged.
  virtual unsigned int getResetInfo() = 0;
  /// Appends the receiver's versions to `info`: "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision
  /// 2024.3.15". On failure `info` is untouched.
  virtual unsigned int getInfo(std::string& info) = 0;
  /// Sets the antenna cable delay, in nanoseconds.
  virtual unsigned int setAntennaDelay(int delay) = 0;
  /// Reads the antenna cable delay, in nanoseconds.
  virtual unsigned int getAntennaDelay(int& delay) = 0;
  /// Not supported by the module: 256.
  virtual unsigned int setAntennaType(std::string type) = 0;
  /// Not supported by the module: 256; the argument is untouched.
  virtual unsigned int getAntennaType(std::string& type) = 0;
  /// Chooses the constellations (a bit for each index of `gnssNames`) and switches the second
  /// frequency band.
  virtual unsigned int setGnssSystem(unsigned short mask, bool secondBand) = 0;
  /// Chooses the constellations: a bit for each index of `gnssNames`.
  virtual unsigned int setGnssSystem(unsigned short mask) = 0;
  /// Reads the constellations: a bit for each index of `gnssNames`.
  virtual unsigned int getGnssSystem(unsigned short& mask) = 0;
  /// Switches interference detection on or off.
  virtual unsigned int setJammingDetection(bool enable) = 0;
  /// Reads interference detection.
  virtual unsigned int getJammingDetection(bool& enabled) = 0;
  /// Reads the navigation solution as text; the key is ignored.
  virtual unsigned int getNavsolution(std::string key, std::string& solution) = 0;
  /// Chooses the survey mode by name.
  virtual unsigned int setSurveyMode(std::string mode) = 0;
  /// Reads the survey mode: "DYNAMIC", "AUTO" or "STATIC".
  virtual unsigned int getSurveyMode(std::string& mode) = 0;
  /// Holds a position: latitude and longitude in degrees, altitude and standard deviation in
  /// metres.
  virtual unsigned int setSurveyStatic(double latitude, double longitude, double altitude,
                                       double stdDev) = 0;
  /// Surveys the position for `surveyLength` seconds; standard deviation in metres.
  virtual unsigned int setSurveyAuto(unsigned int surveyLength, float stdDev) = 0;
  /// Surveys the position for three hours, with a standard deviation of one metre.
  virtual unsigned int setSurveyAuto() = 0;
  /// Navigates normally, without a survey.
  virtual unsigned int setSurveyDynamic() = 0;
  /// Reads the survey: mode, saved position in degrees and metres, length in seconds.
  virtual unsigned int getSurveyInfo(unsigned char& mode, double& latitude, double& longitude,
                                     double& altitude, double& reserved, unsigned int& surveyLength,
                                     float& stdDev) = 0;
  /// Does nothing; the argument is untouched.
  virtual unsigned int getSatelliteInfo(std::string& info) = 0;
  /// Reads the number of satellites used in the fix.
  virtual unsigned int getNofSatellitesInNavSol(unsigned char& count) = 0;
  /// Sets the carrier-to-noise ratio mask, in dB-Hz.
  virtual unsigned int setMinCNo(signed char minimum) = 0;
  /// Reads the carrier-to-noise ratio mask, in dB-Hz.
  virtual unsigned int getMinCNo(signed char& minimum) = 0;
  /// Sets the elevation mask, in degrees.
  virtual unsigned int setElevationLimit(unsigned char limit) = 0;
  /// Reads the elevation mask, in degrees.
  virtual unsigned int getElevationLimit(unsigned char& limit) = 0;
  /// Sets the navigation model.
  virtual unsigned int setDynamicModel(unsigned char model) = 0;
  /// Sets the navigation model and the fix mode.
  virtual unsigned int setDynamicModel(unsigned char model, unsigned char fixMode) = 0;
  /// Reads the navigation model and the fix mode.
  virtual unsigned int getDynamicModel(unsigned char& model, unsigned char& fixMode) = 0;
  /// Sets the fix mode.
  virtual unsigned int setFixMode(unsigned char fixMode) = 0;
  /// Chooses what the 1PPS output is aligned to, by name.
  virtual unsigned int setTimeReference(std::string reference) = 0;
  /// Reads what the 1PPS output is aligned to.
  virtual unsigned int getTimeReference(std::string& reference) = 0;
  /// Sets the power mode: "NORMAL" or "POWERSAVE".
  virtual unsigned int setRxMode(std::string mode) = 0;
  /// Reads the power mode.
  virtual unsigned int getRxMode(std::string& mode) = 0;
  /// Does nothing.
  virtual unsigned int setUtcStandardAuto() = 0;
  /// Does nothing.
  virtual unsigned int setUtsStandardTime(signed char standard) = 0;
  /// Reads the interval of the navigation message; configures nothing.
  virtual unsigned int configureOrbPolling(unsigned char interval) = 0;
  /// Switches SBAS off.
  virtual unsigned int configureSBAS() = 0;
  /// Sets the interval of the extended NMEA sentences. Always returns 0.
  virtual unsigned int configureNmeaPolling(unsigned char interval) = 0;
  /// Sets the interval of the extended NMEA sentences.
  virtual unsigned int configurNmeaPollingPartial(unsigned char interval) = 0;
  /// Does nothing.
  virtual unsigned int configureProtocols() = 0;
  /// Does nothing.
  virtual unsigned int configExtendedPowerManagment() = 0;
  /// Does nothing.
  virtual unsigned int getUtcGrid(unsigned short grid) = 0;
  /// Sets the 1PPS output mode, aligned to GNSS time. Only `mode` counts.
  virtual unsigned int configTimePulse(unsigned short period, unsigned char mode, bool enable) = 0;
  /// The text that starts each line of the error log: local time and milliseconds, then ": ".
  virtual std::string timeStamp() = 0;
  /// Does nothing.
  virtual unsigned int programGroupDelayCal(int delay) = 0;
  /// Whether a receiver answers on /dev/tty_gps: 1 when it does, else 0.
  virtual unsigned int gpsObtChipDetect() = 0;
  /// Whether a receiver answers on `device`: 1 when it does, else 0. The device is used for this
  /// exchange only.
  virtual unsigned int gpsObtChipDetect(std::string device) = 0;
  /// Chooses the receiver's output: "NO", "NMEA" or "BINARY".
  virtual unsigned int gpsObtSetMsgType(std::string type) = 0;

 protected:
  ~ORBControlInterface() = default;
};
