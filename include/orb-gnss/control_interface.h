#pragma once

#include <string>

#include "orb-gnss/export.h"

/// Everything that a client can ask of the GNSS receiver.
///
/// Unless stated otherwise an operation returns a mask of what went wrong, 0 for nothing:
///
///   1    an argument was rejected, or a setting read back differs from what was requested
///   4    the expected reply did not arrive in time
///   8    a message could not be sent
///   256  the module does not support the operation or the argument's value
///
/// Results of several steps are OR-ed. An operation blocks its caller until it is done; one thread
/// at a time uses a controller.
///
/// The operations below are described as the module's driver does them. A facade without a receiver
/// holds a null controller: it sends nothing, leaves every argument as it was and returns 0, but 1
/// from gpsObtSetMsgType(), and its timeStamp() throws std::logic_error. Most operations are one of
///
///   query    asks and waits up to 5 s for the reply; returns 0, 4 or 8, and leaves its arguments
///            untouched on failure
///   setting  is sent and then read back with its query, also when it could not be sent; any of
///            the bits 1, 4 and 8. A reading that does not come counts as 0, false or "": most
///            often 5 says that a setting was sent and its read-back stayed without an answer. An
///            argument out of range returns 1, with nothing sent
///   order    is sent, and no answer is awaited; returns 0 or 8
///
/// The clock is read only when bytes arrive: what awaits a reply on a silent line does not
/// return.
///
/// The order of the operations is binding: clients reach them by their slot. There is no virtual
/// destructor among them, so controllers are made with std::make_shared of their own type and
/// never deleted through this interface.
class ORB_GNSS_EXPORT ORBControlInterface {
 public:
  /// Does nothing.
  virtual void Init() = 0;
  /// Does nothing and returns 0: nothing is sent, and whether a setting outlives a restart is up to
  /// the receiver.
  virtual unsigned int save() = 0;
  /// Does nothing and returns 0.
  virtual unsigned int load() = 0;
  /// Takes six steps, each also after a failure: the reset of resetorbitekDefaults(),
  /// configureOrbPolling(1), configureNmeaPolling(0), setDefaultConfiguration(),
  /// gpsObtSetMsgType("NMEA") and save(). Returns their results OR-ed.
  virtual unsigned int resetFactoryDefaults() = 0;
  /// Order: resets the receiver to factory values. The default configuration is not applied; see
  /// resetFactoryDefaults().
  virtual unsigned int resetorbitekDefaults() = 0;
  /// Order: restarts the receiver. The flag is passed on to it, 0 or 1.
  virtual unsigned int restart(bool flag) = 0;
  /// Order: requests a restart. Only the low byte of `mode` counts: 1 sends the date and time
  /// 1980-01-06 00:00:10 with it, 3 is sent without a time, and any other mode sends an empty
  /// request, without the mode.
  virtual unsigned int forceRestart(unsigned short mode) = 0;
  /// Applies the configuration of a timing receiver in seven steps, each also after a failure:
  /// setAntennaDelay(28), setGnssSystem(0x4D), setMinCNo(0), setElevationLimit(10),
  /// setDynamicModel(1, 1), setSurveyAuto() and configureSBAS(). Returns their results OR-ed. The
  /// waits alone take 1.6 s.
  virtual unsigned int setDefaultConfiguration() = 0;
  /// Applies the application's settings in four steps, each also after a failure: configureSBAS(),
  /// setDynamicModel(8, 2), setUtcStandardAuto() and gpsObtSetMsgType("NMEA"). Returns their
  /// results OR-ed. The waits alone take 0.3 s.
  virtual unsigned int setApplicationDefaults() = 0;
  /// Does nothing and returns 0; orbController::setAntennaPower() switches the antenna's supply.
  virtual unsigned int turnOff() = 0;
  /// Does nothing and returns 0; orbController::setAntennaPower() switches the antenna's supply.
  virtual unsigned int turnOn() = 0;
  /// Does nothing and returns 0; the argument is untouched. gpsObtChipDetect() tells whether a
  /// receiver answers.
  virtual unsigned int isOn(bool& on) = 0;
  /// Reads nothing: it sends an empty restart request, as forceRestart(4) does, and always returns
  /// 0. A failure to send is only logged.
  virtual unsigned int getResetInfo() = 0;
  /// Query: appends the firmware's versions to what `info` holds, "KernelVersion 1.0.12: ODMVersion
  /// 1.2.0: Revision 2024.3.15"; pass an empty text for them alone. Prints one line to standard
  /// output.
  virtual unsigned int getInfo(std::string& info) = 0;
  /// Setting: the delay of the antenna cable, -5000 .. 5000 nanoseconds, read back at once. The
  /// delay is multiplied by 100 in 32 bits before it is checked: one whose product wraps into the
  /// range is sent wrapped, and returns 1 when it is read back.
  virtual unsigned int setAntennaDelay(int delay) = 0;
  /// Query: the delay of the antenna cable in nanoseconds, hundredths cut off. On failure `delay`
  /// is 0.
  virtual unsigned int getAntennaDelay(int& delay) = 0;
  /// Not supported by the module: 256, and nothing is sent.
  virtual unsigned int setAntennaType(std::string type) = 0;
  /// Not supported by the module: 256; the argument is untouched.
  virtual unsigned int getAntennaType(std::string& type) = 0;
  /// Does setGnssSystem(mask), then switches the second frequency band and reads it back after
  /// 50 ms. The band is left alone, without a bit in the result, when the revision that this
  /// controller read last with getInfo() is above 2024612.
  virtual unsigned int setGnssSystem(unsigned short mask, bool secondBand) = 0;
  /// Three settings, each read back after 100 ms: the constellations, a bit for each index of
  /// `gnssNames` (0x01 GPS, 0x04 GALILEO, 0x08 BEIDOU, 0x40 GLONASS), then SBAS off, then QZSS off.
  /// Other bits of the mask are dropped: SBAS (0x02) and QZSS (0x20) are switched off even when
  /// asked for; the driver's gpsObtSbasConfigure() and gpsObtQzssConfigure() switch them on.
  virtual unsigned int setGnssSystem(unsigned short mask) = 0;
  /// Query: adds the constellations, numbered as in setGnssSystem(), to what `mask` holds; set it
  /// to 0 first. SBAS and QZSS are never among them.
  virtual unsigned int getGnssSystem(unsigned short& mask) = 0;
  /// Setting: interference detection, read back at once. Prints one line to standard output.
  virtual unsigned int setJammingDetection(bool enable) = 0;
  /// Query, but `enabled` is always set to false, whatever the receiver says; the driver's
  /// gpsOrbGetJamDetectConfig() tells the state. Prints one line, with the state, to standard
  /// output.
  virtual unsigned int getJammingDetection(bool& enabled) = 0;
  /// Query: replaces `solution` by eight lines "name=value": fix, satellites, GPS week and time of
  /// week, position. The key is ignored. Data come only while gpsObtSetMsgType("BINARY") is in
  /// force; else the result is 4. Signs are lost: southern, western and negative values come out
  /// large.
  virtual unsigned int getNavsolution(std::string key, std::string& solution) = 0;
  /// "DYNAMIC", in any case, does setSurveyDynamic(). "AUTO" and "STATIC" are always rejected with
  /// 1, nothing set: call setSurveyAuto() or setSurveyStatic(). Any other word returns 0 and sets
  /// nothing. The survey is read first; 1 when that fails.
  virtual unsigned int setSurveyMode(std::string mode) = 0;
  /// Query: "DYNAMIC", "AUTO" or "STATIC"; empty for a mode beyond these.
  virtual unsigned int getSurveyMode(std::string& mode) = 0;
  /// Setting: holds a position, read back (the mode alone) after 100 ms. Latitude -90 .. 90 and
  /// longitude -180 .. 180 degrees, altitude -1000 .. 10000 and standard deviation 0.01 .. 200
  /// metres. The standard deviation is only checked: the receiver keeps its own. The survey is read
  /// first; 1, not 4 or 8, when that fails.
  virtual unsigned int setSurveyStatic(double latitude, double longitude, double altitude,
                                       double stdDev) = 0;
  /// Setting: surveys the position for 1 .. 1209600 seconds, read back (the mode alone) after
  /// 100 ms. The standard deviation, 0.01 .. 50 metres, is only checked: the receiver keeps its
  /// own. The survey is read first; 1, not 4 or 8, when that fails.
  virtual unsigned int setSurveyAuto(unsigned int surveyLength, float stdDev) = 0;
  /// The same as setSurveyAuto(10800, 1): three hours.
  virtual unsigned int setSurveyAuto() = 0;
  /// Setting: navigates normally, without a survey; read back after 800 ms. Prints the mode that
  /// was read back to standard output. The survey is read first; 1, not 4 or 8, when that fails.
  virtual unsigned int setSurveyDynamic() = 0;
  /// Query: the mode (0 dynamic, 1 auto, 2 static), the saved position in degrees and metres, and
  /// the survey's length in seconds. `reserved` and `stdDev` are set to 0: the driver's
  /// gpsObtGetTimeMode() reads the standard deviation. Returns 0, or 1 (not 4 or 8) when the query
  /// fails, with the arguments untouched.
  virtual unsigned int getSurveyInfo(unsigned char& mode, double& latitude, double& longitude,
                                     double& altitude, double& reserved, unsigned int& surveyLength,
                                     float& stdDev) = 0;
  /// Does nothing and returns 0; the argument is untouched. getNavsolution() tells the number of
  /// satellites.
  virtual unsigned int getSatelliteInfo(std::string& info) = 0;
  /// Reads the number of satellites in the fix; as for getNavsolution(), data come only while the
  /// output is "BINARY". Returns 8, not 4, when none come, and 0 also when the query could not be
  /// sent. On failure `count` is untouched: preset it, or call getNavsolution().
  virtual unsigned int getNofSatellitesInNavSol(unsigned char& count) = 0;
  /// Setting: the carrier-to-noise ratio mask, 0 .. 40 dB-Hz, read back at once and again after
  /// 800 ms. The masks are read first; 4 or 8, with nothing set, when that fails. When the last
  /// reading differs, or does not come and `minimum` is not 0, the result is exactly 1.
  virtual unsigned int setMinCNo(signed char minimum) = 0;
  /// Query: the carrier-to-noise ratio mask, in dB-Hz.
  virtual unsigned int getMinCNo(signed char& minimum) = 0;
  /// Setting: the elevation mask, 3 .. 85 degrees, read back at once. The masks are read 100 ms
  /// before; 4 or 8, with nothing set, when that fails.
  virtual unsigned int setElevationLimit(unsigned char limit) = 0;
  /// Query: the elevation mask, in degrees.
  virtual unsigned int getElevationLimit(unsigned char& limit) = 0;
  /// Setting: the navigation model, read back after 100 ms. Models 0 to 8 become the receiver's
  /// modes 1, 1, 1, 2, 3, 4, 5, 5, 0; any other model is sent as mode 0, without complaint.
  virtual unsigned int setDynamicModel(unsigned char model) = 0;
  /// Does what setDynamicModel(model) does and, 100 ms later, what setFixMode(fixMode) does. A fix
  /// mode above 2 returns exactly 256, after the model was set.
  virtual unsigned int setDynamicModel(unsigned char model, unsigned char fixMode) = 0;
  /// Two queries, the second only after the first succeeded: the receiver's navigation mode, which
  /// is not the model that was set (see setDynamicModel()), and the fix mode in other numbers than
  /// setFixMode() takes: 0 is 3D, 1 is 2D, 2 anything else.
  virtual unsigned int getDynamicModel(unsigned char& model, unsigned char& fixMode) = 0;
  /// Setting: the fix mode, 0 for 2D, 1 for 3D, 2 for the mask pair 3D and 2D, read back at once.
  /// Another mode returns 256, with nothing sent. getDynamicModel() numbers them otherwise.
  virtual unsigned int setFixMode(unsigned char fixMode) = 0;
  /// Setting: "UTC" and "GPS" both align the 1PPS output to UTC, in output mode 2; read back after
  /// 100 ms. Any other word, "GNSS" too, returns 1, with nothing sent: configTimePulse() aligns to
  /// GNSS time. 1 is not combined with 4 or 8. Prints two lines to standard output.
  virtual unsigned int setTimeReference(std::string reference) = 0;
  /// Query: what the 1PPS output is aligned to, "GNSS" or "UTC"; for anything else `reference` is
  /// untouched. On failure it is "GNSS": look at the result. Prints two lines to standard output.
  virtual unsigned int getTimeReference(std::string& reference) = 0;
  /// Setting: the power mode, "NORMAL" or "POWERSAVE" in capitals, read back at once.
  virtual unsigned int setRxMode(std::string mode) = 0;
  /// Query: the power mode, "NORMAL" or "POWERSAVE"; empty for a mode beyond these. On failure it
  /// is "NORMAL": look at the result.
  virtual unsigned int getRxMode(std::string& mode) = 0;
  /// Does nothing and returns 0.
  virtual unsigned int setUtcStandardAuto() = 0;
  /// Does nothing and returns 0.
  virtual unsigned int setUtsStandardTime(signed char standard) = 0;
  /// Query whose answer is dropped: it configures nothing, and `interval` is not sent. The driver's
  /// gpsObtNavMsgConfigure() sets the interval of the navigation data message.
  virtual unsigned int configureOrbPolling(unsigned char interval) = 0;
  /// Setting: switches SBAS off, read back after 100 ms. The driver's gpsObtSbasConfigure() also
  /// switches it on.
  virtual unsigned int configureSBAS() = 0;
  /// Does configurNmeaPollingPartial(), but always returns 0.
  virtual unsigned int configureNmeaPolling(unsigned char interval) = 0;
  /// Setting: one interval for all extended NMEA sentences, in the receiver's unit, read back (the
  /// first sentence alone) at once.
  virtual unsigned int configurNmeaPollingPartial(unsigned char interval) = 0;
  /// Does nothing and returns 0; gpsObtSetMsgType() chooses the receiver's output.
  virtual unsigned int configureProtocols() = 0;
  /// Does nothing and returns 0; setRxMode() sets the power mode.
  virtual unsigned int configExtendedPowerManagment() = 0;
  /// Does nothing and returns 0.
  virtual unsigned int getUtcGrid(unsigned short grid) = 0;
  /// Setting: the output mode of 1PPS, aligned to GNSS time; read back after 100 ms. Only `mode`
  /// counts, in the receiver's numbers; `period` and `enable` are ignored. 1 is not combined with 4
  /// or 8. Prints two lines to standard output.
  virtual unsigned int configTimePulse(unsigned short period, unsigned char mode, bool enable) = 0;
  /// The text that starts each line of the error log: local time and milliseconds, then ": ".
  virtual std::string timeStamp() = 0;
  /// Does nothing and returns 0; setAntennaDelay() sets the cable delay.
  virtual unsigned int programGroupDelayCal(int delay) = 0;
  /// Whether a receiver answers on /dev/tty_gps within a second: 1 when it does, else 0. Not a
  /// mask: 0 also stands for a device that cannot be opened.
  virtual unsigned int gpsObtChipDetect() = 0;
  /// The same on `device`, which is used for this exchange only: later commands open /dev/tty_gps.
  virtual unsigned int gpsObtChipDetect(std::string device) = 0;
  /// Chooses the receiver's output: "NO", "NMEA" or "BINARY" in capitals; any other text switches
  /// it off. Waits up to 5 s for an acknowledgement, of whichever message; nothing is read back.
  /// Returns 0, 4 or 8. With the output off the line can fall silent, and then queries that get no
  /// reply do not return.
  virtual unsigned int gpsObtSetMsgType(std::string type) = 0;

 protected:
  ~ORBControlInterface() = default;
};
