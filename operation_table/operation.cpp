#include "operation_table/operation.h"

#include "operation_table/binding.h"
#include "transport/result_bits.h"

namespace orb {
namespace {

using Interface = ORBControlInterface;
using Facade = orbController;
using Driver = orbController_QN4470T01;

constexpr unsigned int kNone = 0;
constexpr unsigned int kNoMask = Operation::kNoMask;
constexpr unsigned int kQuery = kNoReply | kNotSent;
constexpr unsigned int kSetting = kRejected | kQuery;
constexpr unsigned int kOrder = kNotSent;

// A row: name and arguments (name, unit, lowest, highest), what the operation does, the bits of its
// result, how many replies it can await and the milliseconds that it waits or sleeps besides, what
// is good to know.
constexpr Operation kOperations[] = {
    // The operations of every controller, by their slots.
    operation<&Interface::Init>("Init", {}, "does nothing", kNone, {0, 0}, ""),
    operation<&Interface::save>("save", {}, "does nothing", kNone, {0, 0}, ""),
    operation<&Interface::load>("load", {}, "does nothing", kNone, {0, 0}, ""),
    operation<&Interface::resetFactoryDefaults>(
        "resetFactoryDefaults", {},
        "resets to factory values, then applies the default configuration", kSetting, {17, 1600},
        ""),
    operation<&Interface::resetorbitekDefaults>(
        "resetorbitekDefaults", {}, "resets the receiver to factory values", kOrder, {0, 0},
        "applies nothing afterwards; see resetFactoryDefaults"),
    operation<&Interface::restart>(
        "restart", {{"flag"}}, "restarts the receiver", kOrder, {0, 0},
        R"(the flag, 0 or 1, is passed on. Logged as "64 3F: Unknown message type")"),
    operation<&Interface::forceRestart>("forceRestart", {{"mode"}},
                                        "requests a restart; the low byte of mode counts", kOrder,
                                        {0, 0}, "forceRestart(0x103) is mode 3"),
    operation<&Interface::setDefaultConfiguration>("setDefaultConfiguration", {},
                                                   "applies the configuration of a timing receiver",
                                                   kSetting, {14, 1600}, ""),
    operation<&Interface::setApplicationDefaults>(
        "setApplicationDefaults", {}, "applies the application's output and navigation settings",
        kSetting, {4, 300}, ""),
    operation<&Interface::turnOff>(
        "turnOff", {}, "does nothing", kNone, {0, 0},
        "call orbController::setAntennaPower, for the antenna's supply instead"),
    operation<&Interface::turnOn>(
        "turnOn", {}, "does nothing", kNone, {0, 0},
        "call orbController::setAntennaPower, for the antenna's supply instead"),
    operation<&Interface::isOn>("isOn", {{"on"}}, "does nothing", kNone, {0, 0},
                                "call gpsObtChipDetect instead"),
    operation<&Interface::getResetInfo>("getResetInfo", {},
                                        "requests a restart with an empty request", kNone, {0, 0},
                                        "reads nothing. A failure to send is only logged"),
    operation<&Interface::getInfo>(
        "getInfo", {{"info"}}, "appends the firmware's versions to info", kQuery, {1, 0},
        R"(set info to "" first. Numbers are not padded. Also notes the )"
        "revision, see setGnssSystem(mask, secondBand). Prints"),
    operation<&Interface::setAntennaDelay>(
        "setAntennaDelay", {{"delay", "ns", -5000, 5000}}, "sets the cable delay, -5000 to 5000 ns",
        kSetting, {1, 0},
        "sent in hundredths of a nanosecond. Another delay returns 1, with nothing sent; but the "
        "product is checked after it has wrapped to 32 bits: 42949673 is sent as 4, and then "
        "returns 1"),
    operation<&Interface::getAntennaDelay>("getAntennaDelay", {{"delay", "ns"}},
                                           "reads the cable delay, ns, hundredths cut off", kQuery,
                                           {1, 0}, "on failure 0"),
    operation<&Interface::setAntennaType>("setAntennaType", {{"type"}},
                                          "not supported by the module", kNotSupported, {0, 0}, ""),
    operation<&Interface::getAntennaType>("getAntennaType", {{"type"}},
                                          "not supported by the module", kNotSupported, {0, 0}, ""),
    operation<overload<unsigned int(unsigned short, bool)>(&Interface::setGnssSystem)>(
        "setGnssSystem", {{"mask"}, {"secondBand"}},
        "sets the constellations as setGnssSystem(mask) does, then switches the second frequency "
        "band",
        kSetting, {4, 350},
        "the band is left alone, without a bit, when the last getInfo of this controller found a "
        "revision above 2024612; before any getInfo it is sent"),
    operation<overload<unsigned int(unsigned short)>(&Interface::setGnssSystem)>(
        "setGnssSystem", {{"mask"}},
        "sets the constellations, then switches SBAS off, then QZSS off", kSetting, {3, 300},
        "all three in every case. The bits of SBAS and QZSS do not switch them on: call "
        "gpsObtSbasConfigure(true), gpsObtQzssConfigure(true) afterwards"),
    operation<&Interface::getGnssSystem>(
        "getGnssSystem", {{"mask"}}, "adds the constellations to mask", kQuery, {1, 0},
        "set mask to 0 first. SBAS, IMES and QZSS are never added"),
    operation<&Interface::setJammingDetection>("setJammingDetection", {{"enable"}},
                                               "switches interference detection", kSetting, {1, 0},
                                               "prints"),
    operation<&Interface::getJammingDetection>(
        "getJammingDetection", {{"enabled"}}, "sets enabled to false, whatever the receiver says",
        kQuery, {1, 0},
        "false on failure too. Prints the true state; gpsOrbGetJamDetectConfig reports it"),
    operation<&Interface::getNavsolution>(
        "getNavsolution", {{"key"}, {"solution"}}, "replaces solution by the navigation solution",
        kQuery, {1, 0},
        R"(the key is ignored. A8 comes only while the output is "BINARY", else 4: call )"
        R"(gpsObtSetMsgType("BINARY") first. Signs are lost, see below)"),
    operation<&Interface::setSurveyMode>(
        "setSurveyMode", {{"mode"}}, R"("DYNAMIC", in any case, does what setSurveyDynamic does)",
        kSetting, {3, 800},
        R"(1 when the first query fails. "AUTO" and "STATIC" give 1 and set nothing: call )"
        "setSurveyAuto, setSurveyStatic. Any other word gives 0 and sets nothing"),
    operation<&Interface::getSurveyMode>("getSurveyMode", {{"mode"}}, "reads the mode as a word",
                                         kQuery, {1, 0}, "empty for a mode beyond 2"),
    operation<&Interface::setSurveyStatic>(
        "setSurveyStatic",
        {{"latitude", "degrees", -90, 90},
         {"longitude", "degrees", -180, 180},
         {"altitude", "m", -1000, 10000},
         {"stdDev", "m", 0.01, 200}},
        "holds a position: -90 to 90 and -180 to 180 degrees, -1000 to 10000 m, 0.01 to 200 m",
        kSetting, {2, 100},
        "a value out of range returns 1, with nothing sent. stdDev is only checked: the receiver "
        "keeps its own. The mode alone is read back"),
    operation<overload<unsigned int(unsigned int, float)>(&Interface::setSurveyAuto)>(
        "setSurveyAuto", {{"surveyLength", "s", 1, 1209600}, {"stdDev", "m", 0.01, 50}},
        "surveys the position for 1 to 1209600 s (14 days); 0.01 to 50 m", kSetting, {2, 100},
        "a value out of range returns 1, with nothing sent. stdDev is only checked: the receiver "
        "keeps its own. The mode alone is read back"),
    operation<overload<unsigned int()>(&Interface::setSurveyAuto)>(
        "setSurveyAuto", {}, "surveys the position for three hours: setSurveyAuto(10800, 1)",
        kSetting, {2, 100}, ""),
    operation<&Interface::setSurveyDynamic>("setSurveyDynamic", {}, "navigates, without a survey",
                                            kSetting, {2, 800},
                                            "prints, once the first query is answered"),
    operation<&Interface::getSurveyInfo>(
        "getSurveyInfo",
        {{"mode"},
         {"latitude", "degrees"},
         {"longitude", "degrees"},
         {"altitude", "m"},
         {"reserved"},
         {"surveyLength", "s"},
         {"stdDev", "m"}},
        "reads mode, saved position (degrees, m) and survey length (s)", 1, {1, 0},
        "1 for any failure, arguments untouched. reserved and stdDev become 0: call "
        "gpsObtGetTimeMode for the deviation"),
    operation<&Interface::getSatelliteInfo>("getSatelliteInfo", {{"info"}}, "does nothing", kNone,
                                            {0, 0}, "getNavsolution has the number of satellites"),
    operation<&Interface::getNofSatellitesInNavSol>(
        "getNofSatellitesInNavSol", {{"count"}}, "reads the number of satellites in the fix",
        kOrder, {1, 0},
        R"(A8 as above. No reply returns 8, and is logged as "Could not send". A query that could )"
        "not be sent gives 0 and no log line. count is untouched in both: preset it, or call "
        "getNavsolution"),
    operation<&Interface::setMinCNo>("setMinCNo", {{"minimum", "dB-Hz", 0, 40}},
                                     "sets the carrier-to-noise ratio mask, 0 to 40 dB-Hz",
                                     kSetting, {3, 800},
                                     "another value returns 1, with nothing sent. The elevation "
                                     "mask is kept, the mask mode becomes 1"),
    operation<&Interface::getMinCNo>("getMinCNo", {{"minimum", "dB-Hz"}},
                                     "reads the carrier-to-noise ratio mask, dB-Hz", kQuery, {1, 0},
                                     ""),
    operation<&Interface::setElevationLimit>(
        "setElevationLimit", {{"limit", "degrees", 3, 85}},
        "sets the elevation mask, 3 to 85 degrees", kSetting, {2, 100},
        "another value returns 1, with nothing sent. The carrier-to-noise ratio mask is kept, the "
        "mask mode becomes 1"),
    operation<&Interface::getElevationLimit>("getElevationLimit", {{"limit", "degrees"}},
                                             "reads the elevation mask, degrees", kQuery, {1, 0},
                                             ""),
    operation<overload<unsigned int(unsigned char)>(&Interface::setDynamicModel)>(
        "setDynamicModel", {{"model", "", 0, 8}}, "sets the navigation model, 0 to 8", kSetting,
        {1, 100}, "a model above 8 is sent as mode 0, without complaint"),
    operation<overload<unsigned int(unsigned char, unsigned char)>(&Interface::setDynamicModel)>(
        "setDynamicModel", {{"model", "", 0, 8}, {"fixMode", "", 0, 2}},
        "sets the navigation model and the fix mode", kSetting | kNotSupported, {2, 200},
        "a fix mode above 2 gives exactly 256, after the model was set and read back"),
    operation<&Interface::getDynamicModel>("getDynamicModel", {{"model"}, {"fixMode"}},
                                           "reads the receiver's navigation mode and the fix mode",
                                           kQuery, {2, 0},
                                           "the first failure ends it, both arguments untouched. "
                                           "Neither number is the one that was set, see below"),
    operation<&Interface::setFixMode>("setFixMode", {{"fixMode", "", 0, 2}},
                                      "sets the fix mode: 0 is 2D, 1 is 3D, 2 is the pair 3D, 2D",
                                      kSetting | kNotSupported, {1, 0},
                                      "another mode returns 256, with nothing sent"),
    operation<&Interface::setTimeReference>(
        "setTimeReference", {{"reference"}},
        R"("UTC" and "GPS": aligns 1PPS to UTC, in output mode 2)", kSetting, {1, 100},
        R"(exact texts; another, "GNSS" too, returns 1, with nothing sent. For GNSS time call )"
        "configTimePulse. Prints"),
    operation<&Interface::getTimeReference>(
        "getTimeReference", {{"reference"}}, R"(reads what 1PPS is aligned to: "GNSS" or "UTC")",
        kQuery, {1, 0}, R"(on failure "GNSS"; untouched for an alignment that is neither. Prints)"),
    operation<&Interface::setRxMode>(
        "setRxMode", {{"mode"}}, R"(sets the power mode: "NORMAL" (0) or "POWERSAVE" (1))",
        kSetting, {1, 0}, "exact texts; another returns 1, with nothing sent"),
    operation<&Interface::getRxMode>("getRxMode", {{"mode"}}, "reads the power mode", kQuery,
                                     {1, 0}, R"(on failure "NORMAL"; empty for a mode beyond 1)"),
    operation<&Interface::setUtcStandardAuto>("setUtcStandardAuto", {}, "does nothing", kNone,
                                              {0, 0}, ""),
    operation<&Interface::setUtsStandardTime>("setUtsStandardTime", {{"standard"}}, "does nothing",
                                              kNone, {0, 0}, ""),
    operation<&Interface::configureOrbPolling>(
        "configureOrbPolling", {{"interval"}},
        "reads the interval of the navigation data message and drops it", kQuery, {1, 0},
        "configures nothing, interval is not sent: call gpsObtNavMsgConfigure"),
    operation<&Interface::configureSBAS>("configureSBAS", {}, "switches SBAS off", kSetting,
                                         {1, 100}, "gpsObtSbasConfigure(true) switches it on"),
    operation<&Interface::configureNmeaPolling>(
        "configureNmeaPolling", {{"interval"}},
        "sets one interval, 0 to 255, for all seven extended NMEA sentences", kNone, {1, 0},
        "call configurNmeaPollingPartial for the result"),
    operation<&Interface::configurNmeaPollingPartial>(
        "configurNmeaPollingPartial", {{"interval"}},
        "sets one interval, 0 to 255, for all seven extended NMEA sentences", kSetting, {1, 0},
        "the unit is the receiver's. The first sentence alone is read back"),
    operation<&Interface::configureProtocols>("configureProtocols", {}, "does nothing", kNone,
                                              {0, 0}, "call gpsObtSetMsgType instead"),
    operation<&Interface::configExtendedPowerManagment>("configExtendedPowerManagment", {},
                                                        "does nothing", kNone, {0, 0},
                                                        "call setRxMode instead"),
    operation<&Interface::getUtcGrid>("getUtcGrid", {{"grid"}}, "does nothing", kNone, {0, 0}, ""),
    operation<&Interface::configTimePulse>(
        "configTimePulse", {{"period"}, {"mode"}, {"enable"}},
        "sets the output mode of 1PPS, aligned to GNSS time", kSetting, {1, 100},
        "period and enable are ignored; mode is the receiver's number. Prints"),
    operation<&Interface::timeStamp>("timeStamp", {},
                                     R"(the start of a log line, such as "14:03:27_042: ")",
                                     kNoMask, {0, 0}, "a null controller throws std::logic_error"),
    operation<&Interface::programGroupDelayCal>("programGroupDelayCal", {{"delay"}}, "does nothing",
                                                kNone, {0, 0}, "call setAntennaDelay instead"),
    operation<overload<unsigned int()>(&Interface::gpsObtChipDetect)>(
        "gpsObtChipDetect", {}, "whether a receiver answers on /dev/tty_gps", kNoMask, {0, 1000},
        "not a mask; present is a receiver that acknowledges message 02. A device that cannot be "
        "opened also gives 0: the log tells them apart"),
    operation<overload<unsigned int(std::string)>(&Interface::gpsObtChipDetect)>(
        "gpsObtChipDetect", {{"device"}}, "whether a receiver answers on device", kNoMask,
        {0, 1000}, "device serves this exchange only; every other command opens /dev/tty_gps"),
    operation<&Interface::gpsObtSetMsgType>(
        "gpsObtSetMsgType", {{"type"}}, R"(chooses the output: "NO" (0), "NMEA" (1), "BINARY" (2))",
        kQuery, {1, 0},
        R"(exact texts: any other, such as "nmea", switches the output off. Takes an )"
        "acknowledgement of any message; nothing is read back. Null controller: 1"),

    // What the facade has besides.
    operation<&Facade::setAntennaPower>(
        "setAntennaPower", {{"state"}},
        R"(switches the antenna's supply at the carrier board's port expander: "ON" or "OFF", in )"
        "any case. 1 for another word, where the bus can be opened; else 0, also where the board "
        "does not answer, and without a receiver. Its bus is asked of the inventory, for 4 s at "
        "most",
        1, {0, 4000}, ""),
    operation<&Facade::IsOrbitek>(
        "IsOrbitek", {}, "whether the module was found and the receiver answered at construction",
        kNoMask, {0, 0}, ""),
    operation<&Facade::isVersionValid>("isVersionValid", {{"version"}},
                                       "the same as IsOrbitek(); version is ignored", kNoMask,
                                       {0, 0}, ""),
    operation<&Facade::getDefaultInfo>("getDefaultInfo", {{"info"}}, "the same as getInfo(info)",
                                       kQuery, {1, 0}, ""),
    operation<&Facade::configuraProtocolsDefault>("configuraProtocolsDefault", {}, "does nothing",
                                                  kNone, {0, 0}, ""),
    operation<&Facade::CreateOrbitek>(
        "CreateOrbitek", {{"device"}},
        "looks for module and receiver again; on a line that carries bytes, for 5 s at most", kNone,
        {0, 5000}, ""),
    operation<&Facade::saveorbitekChipInfo>("saveorbitekChipInfo", {},
                                            "writes /tmp/orbitekChip-info.txt, unless it is there: "
                                            "whether there is a receiver, and its firmware's date",
                                            kNone, {1, 0}, ""),
    operation<&Facade::checkorbitekCheckId>(
        "checkorbitekCheckId", {},
        "puts a new module driver in use, receiver or not, and does what saveorbitekChipInfo does",
        kNone, {1, 0}, ""),

    // The driver's own commands.
    operation<overload<unsigned int(unsigned int&, unsigned int&, unsigned int&, double&, double&,
                                    float&)>(&Driver::gpsObtGetTimeMode)>(
        "gpsObtGetTimeMode",
        {{"mode"},
         {"surveyLength", "s"},
         {"stdDev"},
         {"latitude", "degrees"},
         {"longitude", "degrees"},
         {"altitude", "m"}},
        "reads the timing configuration: mode, s, the receiver's deviation, degrees, m", kQuery,
        {1, 0}, "virtual. Without arguments gpsObtGetTimeMode() does nothing"),
    operation<&Driver::gpsObtSetFactoryDefaults>(
        "gpsObtSetFactoryDefaults", {},
        "resets the receiver to factory values: resetorbitekDefaults()", kOrder, {0, 0}, "virtual"),
    operation<&Driver::gpsOrbGet1ppsOutputMode>(
        "gpsOrbGet1ppsOutputMode", {{"mode"}, {"alignSource"}},
        "reads the output mode of 1PPS and what it is aligned to: 0 GNSS time, 1 UTC", kQuery,
        {1, 0}, "virtual. Prints"),
    operation<&Driver::gpsOrb1ppsOutputMode>(
        "gpsOrb1ppsOutputMode", {{"mode", "", 0, 255}, {"alignSource", "", 0, 255}},
        "sets the output mode of 1PPS and what it is aligned to: 0 GNSS time, 1 UTC", kSetting,
        {1, 100},
        "virtual. Compared only when nothing failed. Low bytes are sent and whole values compared: "
        "above 255 returns 1. Prints"),
    operation<&Driver::gpsObtSendSoftReset>("gpsObtSendSoftReset", {{"mode"}},
                                            "requests a restart: forceRestart(mode)", kOrder,
                                            {0, 0}, ""),
    operation<&Driver::gpsObtSetUartPort>(
        "gpsObtSetUartPort", {{"port"}, {"baud", "bit/s", 4800, 115200}},
        "sets up the receiver's serial port", kOrder, {0, 0},
        "4800, 9600, 19200, 38400, 57600, 115200 are sent as 0 to 5. Any other rate selects 9600, "
        "without complaint. The tty keeps its own speed: set it too"),
    operation<&Driver::gpsObtGetFwVersion>(
        "gpsObtGetFwVersion", {{"info"}}, "reads the firmware's versions as getInfo does", kQuery,
        {1, 0},
        R"(fills kernelVersion "1.0.12", odmVersion "1.2.0", revision "2024.3.15" and )"
        "revisionNumber 2024315, which keep their values on failure. Prints"),
    operation<&Driver::gpsOrbGetFwVersion>(
        "gpsOrbGetFwVersion", {{"kernel"}, {"odm"}, {"rev"}},
        R"(reads "KernelVersion: 1.0.12", "ODMVersion: 1.2.0", "Revision: 2024.3.15")", kQuery,
        {1, 0}, "leaves the four members alone"),
    operation<&Driver::gpsObtGetFwVersionString>(
        "gpsObtGetFwVersionString", {{"version"}}, "whether the receiver answers this query",
        kQuery, {1, 0}, "the text is not handed out; the argument is not used"),
    operation<&Driver::gpsObtGetMsgUserNavDataBinary>(
        "gpsObtGetMsgUserNavDataBinary", {{"report"}},
        "reads the navigation solution as getNavsolution does, without a key", kQuery, {1, 0}, ""),
    operation<&Driver::gpsObtGetGpsTime>(
        "gpsObtGetGpsTime", {{"Tow"}, {"sTow"}, {"week"}, {"nCurrentLeap"}, {"valid"}},
        "reads the GPS time", kQuery, {1, 0}, "in the receiver's units. Prints"),
    operation<&Driver::gpsObtGetPowerMode>("gpsObtGetPowerMode", {{"mode"}},
                                           "reads the power mode: 0 normal, 1 power saving", kQuery,
                                           {1, 0}, ""),
    operation<&Driver::gpsObtSetPowerMode>("gpsObtSetPowerMode", {{"mode"}},
                                           R"(sets the power mode: "POWERSAVE")", kSetting, {1, 0},
                                           "any other text means normal; setRxMode checks it"),
    operation<&Driver::gpsOrbGetCfgRate>("gpsOrbGetCfgRate", {{"rate", "Hz"}},
                                         "reads the position update rate", kQuery, {1, 0},
                                         "prints"),
    operation<&Driver::gpsObtSetCfgRate>("gpsObtSetCfgRate", {{"rate", "Hz"}},
                                         "sets the position update rate, 0 to 255", kSetting,
                                         {1, 800}, "not checked before it is sent. Prints"),
    operation<&Driver::gpsObtGetNavMsg>("gpsObtGetNavMsg", {{"interval"}},
                                        "reads the interval of the navigation data message", kQuery,
                                        {1, 0}, ""),
    operation<&Driver::gpsObtNavMsgConfigure>(
        "gpsObtNavMsgConfigure", {{"interval"}},
        "sets the interval of the navigation data message, 0 to 255", kOrder, {0, 0},
        "not read back: call gpsObtGetNavMsg"),
    operation<&Driver::gpsObtGetFixNavConfigure>(
        "gpsObtGetFixNavConfigure", {{"first"}, {"second"}},
        R"(reads the position fix mask: "2D" or "3D" each)", kQuery, {1, 0},
        "empty for anything else"),
    operation<&Driver::gpsObtFixNavConfigure>(
        "gpsObtFixNavConfigure", {{"first"}, {"second"}}, "sets the position fix mask", kSetting,
        {1, 0},
        R"(exact texts; another returns 1, with nothing sent. "2D" is sent as 1, "3D" as 0)"),
    operation<&Driver::gpsObtGetDopConfigure>(
        "gpsObtGetDopConfigure", {{"mode"}, {"first"}, {"second"}, {"third"}},
        "reads the DOP mask: mode and three limits", kQuery, {1, 0}, "prints"),
    operation<&Driver::gpsObtDopConfigure>("gpsObtDopConfigure", {},
                                           "sets the DOP mask to mode 1 and three limits of 250",
                                           kSetting, {1, 0}, "prints"),
    operation<&Driver::gpsOrbGetElevConfigure>(
        "gpsOrbGetElevConfigure", {{"mode"}, {"elevation", "degrees"}, {"cnr", "dB-Hz"}},
        "reads the elevation mask (degrees) and the carrier-to-noise ratio mask (dB-Hz)", kQuery,
        {1, 0}, ""),
    operation<&Driver::gpsObtElevConfigure>(
        "gpsObtElevConfigure",
        {{"mode", "", 0, 255}, {"elevation", "degrees", 0, 255}, {"cnr", "dB-Hz", 0, 255}},
        "sets the elevation mask (degrees) and the carrier-to-noise ratio mask (dB-Hz)", kSetting,
        {1, 0}, "not checked; low bytes are sent and whole values compared: above 255 returns 1"),
    operation<&Driver::gpsOrbGetJamDetectConfig>(
        "gpsOrbGetJamDetectConfig", {{"control"}, {"status"}},
        "reads whether interference detection is on, and its status", kQuery, {1, 0},
        "on failure false and 0. Prints"),
    operation<&Driver::gpsObtJamDetectConfig>(
        "gpsObtJamDetectConfig", {{"enable"}},
        "switches interference detection: setJammingDetection(enable)", kSetting, {1, 0},
        "this message has no storage attribute. Prints"),
    operation<&Driver::gpsObtGetChangeDynamicMode>("gpsObtGetChangeDynamicMode", {{"mode"}},
                                                   "reads the receiver's navigation mode", kQuery,
                                                   {1, 0}, "not the model that was set"),
    operation<&Driver::gpsObtChangeDynamicMode>("gpsObtChangeDynamicMode", {{"model", "", 0, 8}},
                                                "sets the navigation model: setDynamicModel(model)",
                                                kSetting, {1, 100},
                                                "a model above 8 is sent as mode 0"),
    operation<&Driver::gpsObtGetTimePulse>("gpsObtGetTimePulse", {{"width", "us"}},
                                           "reads the width of the 1PPS pulse, µs", kQuery, {1, 0},
                                           "on failure 0. Prints"),
    operation<&Driver::gpsObtTimePulseConfigure>(
        "gpsObtTimePulseConfigure", {{"width", "us", 1, 100000}},
        "sets the width of the 1PPS pulse, 1 to 100000 µs", kSetting, {1, 0},
        "another width returns 1, with nothing sent. Prints"),
    operation<&Driver::gpsObtGetFreqOutput>("gpsObtGetFreqOutput", {{"frequency", "Hz"}},
                                            "reads the frequency of the second pulse output, Hz",
                                            kQuery, {1, 0}, "on failure 0. Prints"),
    operation<&Driver::gpsObtFreqOutputConfigure>(
        "gpsObtFreqOutputConfigure", {{"frequency", "Hz", 0, 19200000}},
        "sets the frequency of the second pulse output, 0 to 19200000 Hz", kSetting, {1, 0},
        "another frequency returns 1, with nothing sent. Prints"),
    operation<&Driver::gpsObtGetCableDelayConfig>("gpsObtGetCableDelayConfig", {{"delay", "ns"}},
                                                  "reads the cable delay: getAntennaDelay(delay)",
                                                  kQuery, {1, 0}, "on failure 0"),
    operation<&Driver::gpsObtCableDelayConfig>(
        "gpsObtCableDelayConfig", {{"delay", "ns", -5000, 5000}},
        "sets the cable delay: setAntennaDelay(delay)", kSetting, {1, 0}, ""),
    operation<&Driver::gpsObtGetGnssConfigure>(
        "gpsObtGetGnssConfigure", {{"mask"}}, "reads the constellations as the receiver's mask",
        kQuery, {1, 0}, "replaces mask, while getGnssSystem adds to it"),
    operation<&Driver::gpsObtGnssConfigure>("gpsObtGnssConfigure", {{"mask"}},
                                            "sets the constellations from the client's mask",
                                            kSetting, {1, 100}, "leaves SBAS and QZSS alone"),
    operation<&Driver::gpsObtGetSbasConfigure>("gpsObtGetSbasConfigure", {{"enabled"}},
                                               "reads whether SBAS is on", kQuery, {1, 0}, ""),
    operation<&Driver::gpsObtSbasConfigure>("gpsObtSbasConfigure", {{"enable"}}, "switches SBAS",
                                            kSetting, {1, 100}, ""),
    operation<&Driver::gpsObtGetQzssConfigure>("gpsObtGetQzssConfigure", {{"enabled"}},
                                               "reads whether QZSS is on", kQuery, {1, 0}, ""),
    operation<&Driver::gpsObtQzssConfigure>("gpsObtQzssConfigure", {{"enable"}}, "switches QZSS",
                                            kSetting, {1, 100}, ""),
    operation<&Driver::gpsObtGetL2BandConfigure>("gpsObtGetL2BandConfigure", {{"enabled"}},
                                                 "reads whether the second frequency band is on",
                                                 kQuery, {1, 0}, ""),
    operation<&Driver::gpsObtL2BandConfigure>(
        "gpsObtL2BandConfigure", {{"enable"}}, "switches the second frequency band", kSetting,
        {1, 50}, "nothing and 0 while revisionNumber is above 2024612"),
    operation<&Driver::gpsObtGetNmeaExtendedConfigure>(
        "gpsObtGetNmeaExtendedConfigure", {{"interval"}},
        "reads the interval of the first extended NMEA sentence", kQuery, {1, 0}, ""),
    operation<&Driver::gpsObtNmeaExtendedConfigure>(
        "gpsObtNmeaExtendedConfigure", {{"interval", "", 0, 255}},
        "sets the interval of all seven extended NMEA sentences", kSetting, {1, 0},
        "the low byte is sent and the whole value compared: above 255 returns 1"),

    // For people who look at the line.
    operation<&Receiver::exchangeRaw>(
        "exchangeRaw", {{"payload"}, {"replies"}},
        "sends a message of your own, and takes what comes within 2 s", kQuery, {0, 2000}, "")};

}  // namespace

std::span<const Operation> operations() { return kOperations; }

const Operation* findOperation(std::string_view name, std::size_t argumentCount) {
  for (const Operation& operation : kOperations) {
    if (operation.name == name && operation.arguments().size() == argumentCount) {
      return &operation;
    }
  }
  return nullptr;
}

}  // namespace orb
