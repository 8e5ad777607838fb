#include "support/driver_queries.h"

#include <initializer_list>
#include <sstream>

namespace orb::test {

namespace {

using Driver = orbController_QN4470T01;

/// What an output has before the query.
constexpr unsigned int kUnset = 77;

/// A result and outputs as one text.
template <typename... Values>
std::string outcome(unsigned int result, const Values&... values) {
  std::ostringstream text;
  text.precision(17);
  text << result;
  ((text << " | " << values), ...);
  return text.str();
}

const char* nameOf(unsigned int value, std::initializer_list<const char*> names) {
  return value < names.size() ? names.begin()[value] : "";
}

std::string version(const Payload& reply, std::size_t index, const char* prefix = "") {
  return prefix + std::to_string(reply.u8(index)) + '.' + std::to_string(reply.u8(index + 1)) +
         '.' + std::to_string(reply.u8(index + 2));
}

std::string navigation(const Payload& reply) {
  const auto scaled = [&](std::size_t index, double units) {
    return std::to_string(reply.u32(index) / units) + '\n';
  };
  return std::string("fix mode=") + nameOf(reply.u8(1), {"NO-FIX", "2D", "3D", "3D+DGNSS"}) +
         "\nnumber if sv in fix=" + std::to_string(reply.u8(2)) +
         "\nGPS Week=" + std::to_string(reply.u16(3)) + "\nGPS TOW=" + scaled(5, 100) +
         "latitude=" + scaled(9, 1e7) + "longitude=" + scaled(13, 1e7) +
         "ellipsoid altitude=" + scaled(17, 100) + "sea level altitude=" + scaled(21, 100);
}

/// A query with one output of a plain type.
template <auto kMember, typename Value>
std::string askFor(Driver& driver) {
  Value value = static_cast<Value>(kUnset);
  const unsigned int result = (driver.*kMember)(value);
  return outcome(result, +value);
}

template <std::size_t kIndex>
std::string byteAt(const Payload& reply) {
  return outcome(0, reply.u8(kIndex));
}
template <std::size_t kIndex>
std::string wordAt(const Payload& reply) {
  return outcome(0, reply.u16(kIndex));
}
template <std::size_t kIndex>
std::string longAt(const Payload& reply) {
  return outcome(0, reply.u32(kIndex));
}
template <std::size_t kIndex>
std::string flagAt(const Payload& reply) {
  return outcome(0, reply.u8(kIndex) != 0 ? 1 : 0);
}

std::string askText(unsigned int (Driver::*member)(std::string&), Driver& driver) {
  std::string text = "unset";
  const unsigned int result = (driver.*member)(text);
  return outcome(result, text);
}

constexpr DriverQuery kQueries[] = {
    {0x8000, [](Driver& driver) { return askText(&Driver::getInfo, driver); },
     [](const Payload& reply) {
       return outcome(0, "unset" + version(reply, 3, "KernelVersion ") +
                             version(reply, 7, ": ODMVersion ") +
                             version(reply, 11, ": Revision 20"));
     },
     "4 | unset"},
    {0x8000,
     [](Driver& driver) {
       std::string texts[3];
       const unsigned int result = driver.gpsOrbGetFwVersion(texts[0], texts[1], texts[2]);
       return outcome(result, texts[0], texts[1], texts[2]);
     },
     [](const Payload& reply) {
       return outcome(0, version(reply, 3, "KernelVersion: "), version(reply, 7, "ODMVersion: "),
                      version(reply, 11, "Revision: 20"));
     },
     "4 |  |  | "},
    {0x64FE, [](Driver& driver) { return outcome(driver.gpsObtGetFwVersionString("")); },
     [](const Payload&) { return outcome(0); }, "4"},
    {0x8300, [](Driver& driver) { return outcome(driver.gpsObtSetMsgType("BINARY")); },
     [](const Payload&) { return outcome(0); }, "4"},
    {0x8300, [](Driver& driver) { return outcome(driver.gpsObtChipDetect()); },
     [](const Payload& reply) { return outcome(reply.u8(1) == 2 ? 1 : 0); }, "0"},
    {0xA800,
     [](Driver& driver) {
       std::string solution = "unset";
       const unsigned int result = driver.getNavsolution("", solution);
       return outcome(result, solution);
     },
     [](const Payload& reply) { return outcome(0, navigation(reply)); }, "4 | unset"},
    {0xA800, askFor<&Driver::getNofSatellitesInNavSol, unsigned char>, byteAt<2>, "8 | 77"},
    {0x648E,
     [](Driver& driver) {
       unsigned int values[5] = {kUnset, kUnset, kUnset, kUnset, kUnset};
       const unsigned int result =
           driver.gpsObtGetGpsTime(values[0], values[1], values[2], values[3], values[4]);
       return outcome(result, values[0], values[1], values[2], values[3], values[4]);
     },
     [](const Payload& reply) {
       return outcome(0, reply.u32(2), reply.u32(6), reply.u16(10), reply.u8(12), reply.u8(14));
     },
     "4 | 77 | 77 | 77 | 77 | 77"},
    {0xB900, askFor<&Driver::gpsObtGetPowerMode, unsigned int>, byteAt<1>, "4 | 77"},
    {0xB900, [](Driver& driver) { return askText(&Driver::getRxMode, driver); },
     [](const Payload& reply) {
       return outcome(0, nameOf(reply.u8(1), {"NORMAL", "POWERSAVE"}));
     },
     "4 | NORMAL"},
    {0x8600, askFor<&Driver::gpsOrbGetCfgRate, unsigned char>, byteAt<1>, "4 | 77"},
    {0x6498, askFor<&Driver::gpsObtGetNavMsg, unsigned char>, byteAt<2>, "4 | 77"},
    {0x6488,
     [](Driver& driver) {
       std::string first = "unset";
       std::string second = "unset";
       const unsigned int result = driver.gpsObtGetFixNavConfigure(first, second);
       return outcome(result, first, second);
     },
     [](const Payload& reply) {
       return outcome(0, nameOf(reply.u8(2), {"3D", "2D"}), nameOf(reply.u8(3), {"3D", "2D"}));
     },
     "4 | unset | unset"},
    {0xAF00,
     [](Driver& driver) {
       unsigned int values[4] = {kUnset, kUnset, kUnset, kUnset};
       const unsigned int result =
           driver.gpsObtGetDopConfigure(values[0], values[1], values[2], values[3]);
       return outcome(result, values[0], values[1], values[2], values[3]);
     },
     [](const Payload& reply) {
       return outcome(0, reply.u8(1), reply.u16(2), reply.u16(4), reply.u16(6));
     },
     "4 | 77 | 77 | 77 | 77"},
    {0xB000,
     [](Driver& driver) {
       unsigned int values[3] = {kUnset, kUnset, kUnset};
       const unsigned int result = driver.gpsOrbGetElevConfigure(values[0], values[1], values[2]);
       return outcome(result, values[0], values[1], values[2]);
     },
     [](const Payload& reply) { return outcome(0, reply.u8(1), reply.u8(2), reply.u8(3)); },
     "4 | 77 | 77 | 77"},
    {0xB000, askFor<&Driver::getMinCNo, signed char>,
     [](const Payload& reply) { return outcome(0, int{static_cast<signed char>(reply.u8(3))}); },
     "4 | 77"},
    {0xB000, askFor<&Driver::getElevationLimit, unsigned char>, byteAt<2>, "4 | 77"},
    {0x6483,
     [](Driver& driver) {
       bool isOn = true;
       unsigned char status = kUnset;
       const unsigned int result = driver.gpsOrbGetJamDetectConfig(isOn, status);
       return outcome(result, isOn, unsigned{status});
     },
     [](const Payload& reply) { return outcome(0, reply.u8(2) % 2, reply.u8(3)); }, "4 | 0 | 0"},
    {0x648B,
     [](Driver& driver) {
       obt_DynamicState_t mode = kUnset;
       const unsigned int result = driver.gpsObtGetChangeDynamicMode(mode);
       return outcome(result, mode);
     },
     byteAt<2>, "4 | 77"},
    {0x6580, askFor<&Driver::gpsObtGetTimePulse, unsigned int>, longAt<2>, "4 | 0"},
    {0x6581, askFor<&Driver::gpsObtGetFreqOutput, unsigned int>, longAt<2>, "4 | 0"},
    {0xBB00, askFor<&Driver::getAntennaDelay, int>,
     [](const Payload& reply) { return outcome(0, static_cast<std::int32_t>(reply.u32(1)) / 100); },
     "4 | 0"},
    {0x648C, askFor<&Driver::gpsObtGetGnssConfigure, unsigned short>, wordAt<2>, "4 | 77"},
    {0x648C,
     [](Driver& driver) {
       unsigned short mask = 0;
       const unsigned int result = driver.getGnssSystem(mask);
       return outcome(result, mask);
     },
     [](const Payload& reply) {
       const unsigned int mask = reply.u16(2);
       return outcome(0, (mask & 0x0D) + (mask & 2) * 0x20);
     },
     "4 | 0"},
    {0x6280, askFor<&Driver::gpsObtGetSbasConfigure, bool>, flagAt<2>, "4 | 1"},
    {0x6281, askFor<&Driver::gpsObtGetQzssConfigure, bool>, flagAt<2>, "4 | 1"},
    {0x649F, askFor<&Driver::gpsObtGetL2BandConfigure, bool>, flagAt<2>, "4 | 1"},
    {0x6481, askFor<&Driver::gpsObtGetNmeaExtendedConfigure, unsigned int>, byteAt<2>, "4 | 77"},
    {0xC300,
     [](Driver& driver) {
       unsigned int values[2] = {kUnset, kUnset};
       const unsigned int result = driver.gpsOrbGet1ppsOutputMode(values[0], values[1]);
       return outcome(result, values[0], values[1]);
     },
     [](const Payload& reply) { return outcome(0, reply.u8(1), reply.u8(2)); }, "4 | 77 | 77"},
    {0xC300, [](Driver& driver) { return askText(&Driver::getTimeReference, driver); },
     [](const Payload& reply) {
       return outcome(0, reply.u8(2) < 2 ? nameOf(reply.u8(2), {"GNSS", "UTC"}) : "unset");
     },
     "4 | GNSS"},
    {0xC200, [](Driver& driver) { return askText(&Driver::getSurveyMode, driver); },
     [](const Payload& reply) {
       return outcome(0, nameOf(reply.u8(1), {"DYNAMIC", "AUTO", "STATIC"}));
     },
     "4 | unset"},
    {0xC200,
     [](Driver& driver) {
       unsigned int values[3] = {kUnset, kUnset, kUnset};
       double place[2] = {kUnset, kUnset};
       float altitude = kUnset;
       const unsigned int result =
           driver.gpsObtGetTimeMode(values[0], values[1], values[2], place[0], place[1], altitude);
       return outcome(result, values[0], values[1], values[2], place[0], place[1], altitude);
     },
     [](const Payload& reply) {
       return outcome(0, reply.u8(1), reply.u32(2), reply.u32(6), reply.f64(10), reply.f64(18),
                      reply.f32(26));
     },
     "4 | 77 | 77 | 77 | 77 | 77 | 77"},
    {0xC200,
     [](Driver& driver) {
       unsigned char mode = kUnset;
       double place[4] = {kUnset, kUnset, kUnset, kUnset};
       unsigned int length = kUnset;
       float deviation = kUnset;
       const unsigned int result =
           driver.getSurveyInfo(mode, place[0], place[1], place[2], place[3], length, deviation);
       return outcome(result, unsigned{mode}, place[0], place[1], place[2], place[3], length,
                      deviation);
     },
     [](const Payload& reply) {
       return outcome(0, reply.u8(1), reply.f64(10), reply.f64(18), double{reply.f32(26)}, 0,
                      reply.u32(2), 0);
     },
     "1 | 77 | 77 | 77 | 77 | 77 | 77 | 77"},
};

}  // namespace

std::span<const DriverQuery> driverQueries() { return kQueries; }

}  // namespace orb::test
