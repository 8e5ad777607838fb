#include <array>

#include "operations/operation.h"

namespace orb::test {

namespace {

const Sent kPrompt{"A0 A1 00 02 64 30 54 0D 0A",
                   "64 30: Query the navigation output message interval of GNSS receiver "};

// 3D, 9 satellites, week 2300, 345678 s, 48.3712345 N 11.5678901 E, 520.12 m and 475.9 m.
constexpr const char* kNavigationData =
    "A0 A1 00 3B A8 02 09 08 FC 02 0F 76 78 1C D4 DD 59 06 E5 1E B5 00 00 CB 2C 00 00 B9 E6"
    " 00 B4 00 A0 00 5A 00 82 00 55 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    " 00 00 00 71 0D 0A";
constexpr const char* kEmptyNavigationData = "A0 A1 00 01 A8 A8 0D 0A";

std::string report(const std::string& fixMode, const std::string& satellites,
                   const std::string& week, const std::string& timeOfWeek,
                   const std::string& latitude, const std::string& longitude,
                   const std::string& ellipsoidAltitude, const std::string& seaLevelAltitude) {
  return text("fix mode=" + fixMode + "\nnumber if sv in fix=" + satellites + "\nGPS Week=" + week +
              "\nGPS TOW=" + timeOfWeek + "\nlatitude=" + latitude + "\nlongitude=" + longitude +
              "\nellipsoid altitude=" + ellipsoidAltitude +
              "\nsea level altitude=" + seaLevelAltitude + "\n");
}

std::string emptyReport(const std::string& fixMode, const std::string& satellites = "0",
                        const std::string& week = "0") {
  return report(fixMode, satellites, week, "0.000000", "0.000000", "0.000000", "0.000000",
                "0.000000");
}

const std::string kReport = report("3D", "9", "2300", "345678.000000", "48.371234", "11.567890",
                                   "520.120000", "475.900000");

std::string decodedReport(const Payload& reply) {
  constexpr std::array<const char*, 4> kFixModes = {"NO-FIX", "2D", "3D", "3D+DGNSS"};
  const auto scaled = [&](std::size_t index, double units) {
    return std::to_string(reply.u32(index) / units);
  };
  return report(reply.u8(1) < kFixModes.size() ? kFixModes[reply.u8(1)] : "",
                std::to_string(reply.u8(2)), std::to_string(reply.u16(3)), scaled(5, 100),
                scaled(9, 1e7), scaled(13, 1e7), scaled(17, 100), scaled(21, 100));
}

// Unsigned, and from where the reply ends on, zero. What stands after the altitudes is not read.
std::vector<Reading> reports() {
  std::vector<Reading> readings = {
      {"01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18",
       report("2D", "2", "772", "842810.960000", "15.165313", "21.902517", "2863972.040000",
              "3537692.400000")},
      {"02 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
       report("3D", "255", "65535", "42949672.950000", "429.496730", "429.496730",
              "42949672.950000", "42949672.950000")},
      {"02 80 80 00 80 00 00 00 80 00 00 00 80 00 00 00 80 00 00 00 80 00 00 00",
       report("3D", "128", "32768", "21474836.480000", "214.748365", "214.748365",
              "21474836.480000", "21474836.480000")},
      {"02 7F 7F FF 7F FF FF FF 7F FF FF FF 7F FF FF FF 7F FF FF FF 7F FF FF FF",
       report("3D", "127", "32767", "21474836.470000", "214.748365", "214.748365",
              "21474836.470000", "21474836.470000")},
      {"00 01 00 01 00 00 00 01 00 00 00 01 00 00 00 01 00 00 00 01 00 00 00 01",
       report("NO-FIX", "1", "1", "0.010000", "0.000000", "0.000000", "0.010000", "0.010000")},
      {"02 09 08", emptyReport("3D", "9", "2048")},
      {"04 01", emptyReport("", "1")},
      {"02 09 08 FC 02 0F 76 78 1C D4 DD 59 06 E5 1E B5 00 00 CB 2C 00 00 B9 E6 FF FF FF FF FF FF "
       "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
       kReport}};
  for (const auto& [mode, name] : {std::pair{"00", "NO-FIX"},
                                   {"01", "2D"},
                                   {"02", "3D"},
                                   {"03", "3D+DGNSS"},
                                   {"7F", ""},
                                   {"80", ""},
                                   {"FF", ""}}) {
    readings.push_back({mode, emptyReport(name)});
  }
  return readings;
}

Query readingReport(const std::string& name, const Call& call) {
  return {.name = name,
          .call = call,
          .sends = kPrompt,
          .reply = {kNavigationData, {0, kReport}},
          .shortReply = {kEmptyNavigationData, {0, emptyReport("NO-FIX")}},
          .untouched = "\"before\"",
          .readings = reports(),
          .decoded = decodedReport};
}

Query navigationSolution(const std::string& name, const std::string& key) {
  return readingReport(name, [key](auto& driver) {
    std::string solution = "before";
    const unsigned int result = driver.getNavsolution(key, solution);
    return Outcome(result, solution);
  });
}

}  // namespace

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
// A receiver sends the reply only while its output is binary, so these queries are not drawn at
// random.
Family navigationData() {
  return {.queries = {
              readingReport("GetMsgUserNavDataBinary",
                            reading(&Driver::gpsObtGetMsgUserNavDataBinary, "before")),
              navigationSolution("GetNavsolution", "all"),
              // Any key will do.
              navigationSolution("GetNavsolutionWithoutKey", ""),
              navigationSolution("GetNavsolutionWithAnUnknownKey", "no such key"),
              // It has a way of its own to fail.
              {.name = "GetNofSatellitesInNavSol",
               .call = reading(&Driver::getNofSatellitesInNavSol, 77),
               .sends = kPrompt,
               .reply = {kNavigationData, {0, "9"}},
               .shortReply = {kEmptyNavigationData, {0, "0"}},
               .untouched = "77",
               .noReply = {8},
               .noDevice = {0},
               .noReplyLog = "Could not send : ",
               .noDeviceLog = "",
               .readings = {{"02 00 2A", "0"},
                            {"02 01 2A", "1"},
                            {"02 7F 2A", "127"},
                            {"02 80 2A", "128"},
                            {"02 FF 2A", "255"}},
               .decoded = [](auto& reply) { return text(reply.u8(2)); }},
          }};
}

}  // namespace orb::test
