#pragma once

#include <array>
#include <chrono>
#include <fstream>
#include <string>

#include "orb-gnss/control_interface.h"
#include "orb-gnss/message.h"

namespace orb {
class CommandExchange;
}

/// Drives a receiver module QN4470T01 on /dev/tty_gps.
///
/// Every command is one exchange: the device is opened, one message is sent, a query's reply is
/// awaited for up to five seconds, and the device is closed. On a line that stays silent a query
/// does not return (see orbIO::ReceiveMessage). A failed exchange adds one line to
/// /var/log/orbset-errors.log; a log that cannot be opened is silent and no error.
///
/// Settings are sent without waiting for the receiver's acknowledgement; those that are verified
/// are read back. Results are those of ORBControlInterface.
class ORB_GNSS_EXPORT orbController_QN4470T01 : public ORBControlInterface {
 public:
  orbController_QN4470T01();
  orbController_QN4470T01(const orbController_QN4470T01&) = delete;
  orbController_QN4470T01& operator=(const orbController_QN4470T01&) = delete;

  // The operations of the interface.

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

  virtual ~orbController_QN4470T01();

  /// Resets the receiver to factory values; no reply is awaited. Returns 0 or 8.
  virtual unsigned int gpsObtSetFactoryDefaults();

  // Detection, restart and serial port.

  /// Requests a restart. Mode 1 sets the time to 1980-01-06 00:00:10, mode 3 is sent without a
  /// time, and any other mode sends an empty request, without the mode. No reply is awaited.
  /// Returns 0 or 8.
  unsigned int gpsObtSendSoftReset(unsigned char mode);

  /// Sets up the receiver's serial port `port` for `baud` bits a second: 4800, 9600, 19200, 38400,
  /// 57600 or 115200. Any other rate selects 9600, without a word. No reply is awaited. Returns 0
  /// or 8.
  unsigned int gpsObtSetUartPort(unsigned char port, unsigned int baud);

  // Firmware version.

  /// Reads the firmware version into the members below, and appends it to `info` as getInfo()
  /// does. Prints "nOrbRevision " and revisionNumber to standard output. Returns 0, 4 or 8; on
  /// failure `info` and the members are untouched.
  unsigned int gpsObtGetFwVersion(std::string& info);

  /// Reads the firmware version as three texts, "KernelVersion: 1.0.12", "ODMVersion: 1.2.0" and
  /// "Revision: 2024.3.15". Returns 0, 4 or 8; on failure they are untouched.
  unsigned int gpsOrbGetFwVersion(std::string& kernel, std::string& odm, std::string& rev);

  /// Asks whether the receiver answers the version extension query: 0, 4 or 8. The argument is not
  /// used.
  unsigned int gpsObtGetFwVersionString(std::string version);

  // Tools.

  /// Sends `message` on /dev/tty_gps. Always returns 0; a failure to send is only logged.
  unsigned int sendORBMessage(ORBMessage message);

  /// Sleeps for `duration`, also when signals come in between.
  void wait(const std::chrono::nanoseconds& duration);

  /// The date of a modified Julian day.
  void MjdToDate(int mjd, int* year, int* month, int* day);
  /// The modified Julian day of a date.
  int DateToMjd(int year, int month, int day);
  /// The modified Julian day of a GPS week and second of week. A negative second counts back from
  /// the start of the week.
  int GpsToMjd(int week, int seconds);

  /// Does nothing. The query of the timing mode takes six arguments.
  void gpsObtGetTimeMode();

 private:
  friend class orb::CommandExchange;

  ORB_GNSS_HIDDEN orb::CommandExchange exchange();

  int replyTimeoutSeconds_ = 5;
  std::ofstream errorLog_;

 public:
  // What gpsObtGetFwVersion() read last; for reading only.

  /// Kernel version, such as "1.0.12".
  std::string kernelVersion;
  /// ODM version, such as "1.2.0".
  std::string odmVersion;
  /// Revision date without padding, such as "2024.3.15".
  std::string revision;
  /// The digits of `revision` as one number, such as 2024315: without padding, so later dates can
  /// have smaller numbers.
  int revisionNumber = 0;

 private:
  /// Room for a further text of the firmware; nothing uses it yet.
  [[maybe_unused]] std::string spareText_;
  std::array<unsigned char, 300> scratch_{};
  /// The receiver's storage attribute for new settings: the last byte of configuration messages.
  unsigned char attribute_ = 0;
};
