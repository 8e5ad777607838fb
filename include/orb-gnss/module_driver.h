#pragma once

#include <array>
#include <chrono>
#include <fstream>
#include <string>

#include "orb-gnss/control_interface.h"
#include "orb-gnss/message.h"

class orbIO;
namespace orb {
class CommandExchange;
struct Timing;
}  // namespace orb

/// A navigation model, 0 to 8 (see orbController_QN4470T01::gpsObtChangeDynamicMode()), or the
/// receiver's navigation mode where one is read.
using obt_DynamicState_t = unsigned int;

/// Drives a receiver module QN4470T01 on /dev/tty_gps.
///
/// Commands are of three kinds, with the results of ORBControlInterface. Unless stated otherwise
///
/// - a query sends one message and awaits its reply for up to five seconds. It returns 0, 4 or 8,
///   and on failure leaves its arguments untouched and prints nothing.
/// - a setting sends one message, without waiting for the receiver's acknowledgement, and reads the
///   setting back: at once, or after the time named. It adds 1 to the results of both when the
///   value read back differs.
/// - an order sends one message and awaits nothing. It returns 0 or 8.
///
/// The device is opened for each command and closed after it. On a line that stays silent a query
/// does not return (see orbIO::ReceiveMessage). A failed exchange adds one line to
/// /var/log/orbset-errors.log; a log that cannot be opened is silent and no error. "Prints" means
/// to standard output. One thread at a time uses a driver, and one driver at a time the line.
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

  /// Resets the receiver to factory values: an order.
  virtual unsigned int gpsObtSetFactoryDefaults();

  /// Reads the timing mode (0 dynamic, 1 auto survey, 2 static), the survey's length (s), the
  /// standard deviation as the receiver holds it, and the saved position (degrees, m).
  virtual unsigned int gpsObtGetTimeMode(unsigned int& mode, unsigned int& surveyLength,
                                         unsigned int& stdDev, double& latitude, double& longitude,
                                         float& altitude);

  /// Reads the 1PPS output mode and what it is aligned to (0 GNSS time, 1 UTC), and prints both.
  virtual unsigned int gpsOrbGet1ppsOutputMode(unsigned int& mode, unsigned int& alignSource);

  /// Sets the 1PPS output mode and what it is aligned to, and reads both back after 100 ms. The low
  /// bytes are sent and the whole values compared, so one above 255 returns 1; but nothing is
  /// compared, and 1 not added, when either message failed.
  virtual unsigned int gpsOrb1ppsOutputMode(unsigned int mode, unsigned int alignSource);

  // Detection, restart and serial port.

  /// Requests a restart: an order. Mode 1 is sent with the date and time 1980-01-06 00:00:10, mode
  /// 3 without; any other mode sends an empty request, without the mode.
  unsigned int gpsObtSendSoftReset(unsigned char mode);

  /// Orders the receiver to set up its serial port `port` for `baud` bits a second: 4800, 9600,
  /// 19200, 38400, 57600 or 115200. Any other rate selects 9600, without a word.
  unsigned int gpsObtSetUartPort(unsigned char port, unsigned int baud);

  // Firmware version.

  /// Reads the firmware version into the members below, and appends it to `info` as getInfo() does.
  /// Prints "nOrbRevision " and revisionNumber.
  unsigned int gpsObtGetFwVersion(std::string& info);

  /// Reads the firmware version as three texts, "KernelVersion: 1.0.12", "ODMVersion: 1.2.0" and
  /// "Revision: 2024.3.15".
  unsigned int gpsOrbGetFwVersion(std::string& kernel, std::string& odm, std::string& rev);

  /// Asks whether the receiver answers the version extension query. The argument is not used.
  unsigned int gpsObtGetFwVersionString(std::string version);

  // Navigation data and GPS time.

  /// Replaces `report` by the navigation solution, one "name=value" line for each of fix mode,
  /// satellites in the fix, GPS week, time of week (s), latitude and longitude (degrees), ellipsoid
  /// and sea level altitude (m). Awaits the next navigation data message, which comes only while
  /// the output type is "BINARY". Signs are lost: southern, western and negative values come out
  /// large.
  unsigned int gpsObtGetMsgUserNavDataBinary(std::string& report);

  /// Reads the GPS time in the receiver's own units, and prints the fields and the reply's bytes.
  unsigned int gpsObtGetGpsTime(unsigned int& Tow, unsigned int& sTow, unsigned int& week,
                                unsigned int& nCurrentLeap, unsigned int& valid);

  // Output rate, message type and power mode.

  /// Reads the power mode: 0 normal, 1 power saving.
  unsigned int gpsObtGetPowerMode(unsigned int& mode);

  /// Sets the power mode, "POWERSAVE" or normal for any other text, and reads it back at once.
  /// setRxMode() checks the text.
  unsigned int gpsObtSetPowerMode(std::string mode);

  /// Reads the position update rate and prints it.
  unsigned int gpsOrbGetCfgRate(unsigned char& rate);

  /// Sets the position update rate, whatever its value, and reads it back after 0.8 s. Prints the
  /// requested and the kept rate.
  unsigned int gpsObtSetCfgRate(unsigned char rate);

  /// Reads the interval of the navigation data message.
  unsigned int gpsObtGetNavMsg(unsigned char& interval);

  /// Sets the interval of the navigation data message: an order, since it is not read back.
  unsigned int gpsObtNavMsgConfigure(unsigned char interval);

  // Masks and fix settings.

  /// Reads the position fix mask: "2D", "3D", or an empty text for anything else.
  unsigned int gpsObtGetFixNavConfigure(std::string& first, std::string& second);

  /// Sets the position fix mask and reads it back at once. Each is "2D" or "3D"; otherwise the
  /// result is 1 and nothing is sent.
  unsigned int gpsObtFixNavConfigure(std::string first, std::string second);

  /// Reads the DOP mask and prints it.
  unsigned int gpsObtGetDopConfigure(unsigned int& mode, unsigned int& first, unsigned int& second,
                                     unsigned int& third);

  /// Sets the DOP mask to mode 1 and three limits of 250, and reads it back at once.
  unsigned int gpsObtDopConfigure();

  /// Reads the elevation mask (degrees) and the carrier-to-noise ratio mask (dB-Hz).
  unsigned int gpsOrbGetElevConfigure(unsigned int& mode, unsigned int& elevation,
                                      unsigned int& cnr);

  /// Sets the elevation and carrier-to-noise ratio masks and reads them back at once. The low bytes
  /// are sent and the whole values compared, so one above 255 returns 1.
  unsigned int gpsObtElevConfigure(unsigned int mode, unsigned int elevation, unsigned int cnr);

  // Navigation model and interference detection.

  /// Reads whether interference detection is on, and its status; prints both. On failure the
  /// arguments are false and 0.
  unsigned int gpsOrbGetJamDetectConfig(bool& control, unsigned char& status);

  /// Switches interference detection and reads it back at once.
  unsigned int gpsObtJamDetectConfig(bool enable);

  /// Reads the receiver's navigation mode, which is not the number that was set: see
  /// gpsObtChangeDynamicMode().
  unsigned int gpsObtGetChangeDynamicMode(obt_DynamicState_t& mode);

  /// Sets the navigation mode for a model, and reads it back after 100 ms. Models 0 to 8 become the
  /// modes 1, 1, 1, 2, 3, 4, 5, 5, 0; any other model becomes mode 0.
  unsigned int gpsObtChangeDynamicMode(obt_DynamicState_t model);

  // Timing pulse outputs. A query sets its argument to 0 first, and leaves it so on failure.

  /// Reads the width of the 1PPS pulse, in microseconds, and prints it.
  unsigned int gpsObtGetTimePulse(unsigned int& width);

  /// Sets the width of the 1PPS pulse, 1 .. 100000 microseconds, and reads it back at once. Another
  /// width returns 1, with nothing sent.
  unsigned int gpsObtTimePulseConfigure(unsigned int width);

  /// Reads the frequency of the second pulse output, in hertz, and prints it.
  unsigned int gpsObtGetFreqOutput(unsigned int& frequency);

  /// Sets the frequency of the second pulse output, 0 .. 19200000 hertz, and reads it back at once.
  /// Another frequency returns 1, with nothing sent.
  unsigned int gpsObtFreqOutputConfigure(unsigned int frequency);

  /// Reads the cable delay, in nanoseconds; hundredths are cut off.
  unsigned int gpsObtGetCableDelayConfig(int& delay);

  /// Sets the cable delay, -5000 .. 5000 nanoseconds, and reads it back at once. Another delay
  /// returns 1, with nothing sent; but the delay is multiplied by 100 in 32 bits before it is
  /// checked, so a product that wraps into the range passes.
  unsigned int gpsObtCableDelayConfig(int delay);

  // Constellations and augmentation.

  /// Reads the constellations in the receiver's numbering: bit 0 GPS, 1 GLONASS, 2 Galileo, 3
  /// BeiDou.
  unsigned int gpsObtGetGnssConfigure(unsigned short& mask);

  /// Sets the constellations, in the interface's numbering (a bit for each index of `gnssNames`;
  /// SBAS, IMES and QZSS are dropped), and reads them back after 100 ms.
  unsigned int gpsObtGnssConfigure(unsigned short mask);

  /// Reads whether SBAS is on.
  unsigned int gpsObtGetSbasConfigure(bool& enabled);

  /// Switches SBAS and reads it back after 100 ms.
  unsigned int gpsObtSbasConfigure(bool enable);

  /// Reads whether QZSS is on.
  unsigned int gpsObtGetQzssConfigure(bool& enabled);

  /// Switches QZSS and reads it back after 100 ms.
  unsigned int gpsObtQzssConfigure(bool enable);

  /// Reads whether the second frequency band is on.
  unsigned int gpsObtGetL2BandConfigure(bool& enabled);

  /// Switches the second frequency band and reads it back after 50 ms. Does nothing and returns 0
  /// once `revisionNumber` is above 2024612.
  unsigned int gpsObtL2BandConfigure(bool enable);

  /// Reads the interval of the first extended NMEA sentence.
  unsigned int gpsObtGetNmeaExtendedConfigure(unsigned int& interval);

  /// Sets the interval of all extended NMEA sentences and reads it back at once. The low byte is
  /// sent and the whole value compared, so one above 255 returns 1.
  unsigned int gpsObtNmeaExtendedConfigure(unsigned int interval);

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
  /// An exchange on the default device, over the lent channel where there is one.
  ORB_GNSS_HIDDEN orb::CommandExchange exchange();
  ORB_GNSS_HIDDEN orb::CommandExchange exchange(std::string device, orbIO*& lentChannel,
                                                int replyTimeoutSeconds);
  ORB_GNSS_HIDDEN unsigned int updateCnrMask(unsigned char cnr);
  ORB_GNSS_HIDDEN unsigned int updateElevationMask(unsigned char limit);
  ORB_GNSS_HIDDEN unsigned int writeTiming(const orb::Timing& timing,
                                           std::chrono::nanoseconds settle, std::string& keptMode);

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
  /// Nothing uses it yet.
  [[maybe_unused]] std::string spareText_;
  /// All zero; gpsObtSetUartPort() sees to that before it sends, and nothing else uses it.
  std::array<unsigned char, 300> scratch_{};
  /// The receiver's storage attribute for new settings: the last byte of configuration messages.
  unsigned char attribute_ = 0;
  /// The open channel of a setting while its read-back runs, else null.
  orbIO* lentChannel_ = nullptr;
};
