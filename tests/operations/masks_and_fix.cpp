#include <array>

#include "operations/operation.h"

namespace orb::test {

namespace {

const Sent kQueryFix{"A0 A1 00 02 64 12 76 0D 0A",
                     "64 12: Query the position fix of GNSS receiver "};
const Sent kQueryDop{"A0 A1 00 01 2E 2E 0D 0A",
                     "2E 00: Query the information of DOP mask used by GNSS receiver "};
const Sent kQueryMasks{
    "A0 A1 00 01 2F 2F 0D 0A",
    "2F 00: Query the values of elevation mask and CNR mask used by GNSS receiver"};
constexpr const char* kConfigureMasks = "2B 00: Configure values of Elevation and CNR Mask ";

constexpr const char* kSet2D2D = "A0 A1 00 05 64 11 01 01 00 75 0D 0A";
constexpr const char* kSet2D3D = "A0 A1 00 05 64 11 01 00 00 74 0D 0A";
constexpr const char* kSet3D2D = "A0 A1 00 05 64 11 00 01 00 74 0D 0A";
constexpr const char* kSet3D3D = "A0 A1 00 05 64 11 00 00 00 75 0D 0A";
constexpr const char* kReports2D2D = "A0 A1 00 04 64 88 01 01 EC 0D 0A";
constexpr const char* kReports2D3D = "A0 A1 00 04 64 88 01 00 ED 0D 0A";
constexpr const char* kReports3D2D = "A0 A1 00 04 64 88 00 01 ED 0D 0A";
constexpr const char* kReports3D3D = "A0 A1 00 04 64 88 00 00 EC 0D 0A";
constexpr const char* kReportsNoFix = "A0 A1 00 02 64 88 EC 0D 0A";  // which reads as 3D, 3D

constexpr const char* kReportsDop = "A0 A1 00 08 AF 01 00 FA 00 FA 00 FA 54 0D 0A";

// Elevation 5, carrier-to-noise ratio 20.
constexpr const char* kSetsMasks = "A0 A1 00 05 2B 01 05 14 00 3B 0D 0A";
constexpr const char* kReportsMasks = "A0 A1 00 04 B0 01 05 14 A0 0D 0A";
constexpr const char* kReportsModeOnly = "A0 A1 00 02 B0 01 B1 0D 0A";

std::string printsDop(int mode, int first, int second, int third) {
  return "Dop Mode: " + std::to_string(mode) + " \nnDop: " + std::to_string(first) +
         " \nhDop: " + std::to_string(second) + " \ngDop: " + std::to_string(third) + " \n";
}

std::string fixName(unsigned int fix) { return fix == 0 ? "3D" : fix == 1 ? "2D" : ""; }

Drawn drawFix(Numbers& numbers) {
  const auto first = numbers.between<std::uint8_t>(0, 1);
  const auto second = numbers.between<std::uint8_t>(0, 1);
  return {calling(&Driver::gpsObtFixNavConfigure, fixName(first), fixName(second)), 0,
          [=](auto& state) {
            state.fixNavMask = {first, second};
          }};
}

Drawn drawFixMode(Numbers& numbers) {
  constexpr std::array<sim::FixNavMask, 3> kMasks = {{{1, 1}, {0, 0}, {0, 1}}};
  const auto mode = numbers.between<unsigned char>(0, 3);
  if (mode >= kMasks.size()) {
    return {calling(&Driver::setFixMode, mode), 256};
  }
  return {calling(&Driver::setFixMode, mode), 0,
          [=](auto& state) { state.fixNavMask = kMasks[mode]; }};
}

Drawn drawDop(Numbers& /*numbers*/) {
  return {calling(&Driver::gpsObtDopConfigure), 0, [](auto& state) {
            state.dopMask = {1, {250, 250, 250}};
          }};
}

Drawn drawMasks(Numbers& numbers) {
  const sim::ElevationCnrMask mask{numbers.byte(), numbers.byte(), numbers.byte()};
  return {calling(&Driver::gpsObtElevConfigure, mask.mode, mask.elevation, mask.cnr), 0,
          [=](auto& state) { state.elevationCnrMask = mask; }};
}

Drawn drawMinCNo(Numbers& numbers) {
  const auto minimum = numbers.between<signed char>(-5, 45);
  return drawnInRange(minimum >= 0 && minimum <= 40, calling(&Driver::setMinCNo, minimum),
                      [=](auto& state) {
                        state.elevationCnrMask.mode = 1;
                        state.elevationCnrMask.cnr = static_cast<std::uint8_t>(minimum);
                      });
}

Drawn drawElevationLimit(Numbers& numbers) {
  const auto limit = numbers.between<unsigned char>(0, 90);
  return drawnInRange(limit >= 3 && limit <= 85, calling(&Driver::setElevationLimit, limit),
                      [=](auto& state) {
                        state.elevationCnrMask.mode = 1;
                        state.elevationCnrMask.elevation = limit;
                      });
}

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
std::vector<Query> queries() {
  return {
      {.name = "GetFixNavConfigure",
       .call = reading(&Driver::gpsObtGetFixNavConfigure, "before", "before too"),
       .sends = kQueryFix,
       .reply = {kReports2D3D, {0, R"("2D", "3D")"}},
       .shortReply = {"A0 A1 00 03 64 88 01 ED 0D 0A", {0, R"("2D", "3D")"}},
       .untouched = R"("before", "before too")",
       .readings = {{"00 00", R"("3D", "3D")"},
                    {"01 01", R"("2D", "2D")"},
                    {"01 07", R"("2D", "")"},
                    {"02 00", R"("", "3D")"},
                    {"80 FF", R"("", "")"}},
       .decoded = [](auto& reply) { return text(fixName(reply.u8(2)), fixName(reply.u8(3))); },
       .inState =
           [](auto& state) {
             return text(fixName(state.fixNavMask.first), fixName(state.fixNavMask.second));
           }},
      {.name = "GetDopConfigure",
       .call = reading(&Driver::gpsObtGetDopConfigure, 71, 72, 73, 74),
       .sends = kQueryDop,
       .reply = {kReportsDop, {0, "1, 250, 250, 250", printsDop(1, 250, 250, 250)}},
       .shortReply = {"A0 A1 00 05 AF 01 00 FA 01 55 0D 0A",
                      {0, "1, 250, 256, 0", printsDop(1, 250, 256, 0)}},
       .untouched = "71, 72, 73, 74",
       .readings = {{"01 02 03 04 05 06 07", "1, 515, 1029, 1543", printsDop(1, 515, 1029, 1543)},
                    {"FF FF FF FF FF FF FF", "255, 65535, 65535, 65535",
                     printsDop(255, 65535, 65535, 65535)},
                    {"80 80 00 7F FF 00 01", "128, 32768, 32767, 1",
                     printsDop(128, 32768, 32767, 1)},
                    {"00 00 00 00 00 00 00", "0, 0, 0, 0", printsDop(0, 0, 0, 0)}},
       .decoded =
           [](auto& reply) { return text(reply.u8(1), reply.u16(2), reply.u16(4), reply.u16(6)); },
       .inState =
           [](auto& state) {
             const auto& [mode, limits] = state.dopMask;
             return text(mode, limits[0], limits[1], limits[2]);
           }},
      {.name = "GetElevConfigure",
       .call = reading(&Driver::gpsOrbGetElevConfigure, 71, 72, 73),
       .sends = kQueryMasks,
       .reply = {kReportsMasks, {0, "1, 5, 20"}},
       .shortReply = {kReportsModeOnly, {0, "1, 0, 0"}},
       .untouched = "71, 72, 73",
       .readings = {{"01 02 03", "1, 2, 3"},
                    {"00 00 00", "0, 0, 0"},
                    {"7F 80 FF", "127, 128, 255"},
                    {"FF 7F 80", "255, 127, 128"}},
       .decoded = [](auto& reply) { return text(reply.u8(1), reply.u8(2), reply.u8(3)); },
       .inState =
           [](auto& state) {
             const auto& [mode, elevation, cnr] = state.elevationCnrMask;
             return text(mode, elevation, cnr);
           }},
      // The low byte with its sign.
      {.name = "GetMinCNo",
       .call = reading(&Driver::getMinCNo, 77),
       .sends = kQueryMasks,
       .reply = {kReportsMasks, {0, "20"}},
       .shortReply = {kReportsModeOnly, {0, "0"}},
       .untouched = "77",
       .readings = {{"01 05 00", "0"},
                    {"01 05 28", "40"},
                    {"01 05 7F", "127"},
                    {"01 05 80", "-128"},
                    {"01 05 FF", "-1"}},
       .decoded = [](auto& reply) { return text(static_cast<signed char>(reply.u8(3))); },
       .inState =
           [](auto& state) { return text(static_cast<signed char>(state.elevationCnrMask.cnr)); }},
      {.name = "GetElevationLimit",
       .call = reading(&Driver::getElevationLimit, 77),
       .sends = kQueryMasks,
       .reply = {kReportsMasks, {0, "5"}},
       .shortReply = {kReportsModeOnly, {0, "0"}},
       .untouched = "77",
       .readings =
           {{"01 00 14", "0"}, {"01 55 14", "85"}, {"01 80 14", "128"}, {"01 FF 14", "255"}},
       .decoded = [](auto& reply) { return text(reply.u8(2)); },
       .inState = [](auto& state) { return text(state.elevationCnrMask.elevation); }},
  };
}

Setting settingFix(const std::string& name, const Call& call, const std::string& packet,
                   const std::string& reply, const std::string& otherReply) {
  return {.name = name,
          .call = call,
          .sends = {packet, "64 11: Configure the position fix mask of GNSS receiver "},
          .reads = kQueryFix,
          .reply = {reply},
          .otherReply = {otherReply},
          .shortReply = {kReportsNoFix, {reply == kReports3D3D ? 0U : 1U}}};
}

Setting settingFixNames(const char* first, const char* second, const std::string& packet,
                        const std::string& reply, const std::string& otherReply) {
  return settingFix(std::string("FixNavConfigureTo") + first + second,
                    calling(&Driver::gpsObtFixNavConfigure, first, second), packet, reply,
                    otherReply);
}

// reply has the value that call sets, otherReply and mismatches another one, shortReply ends before
// it: a packet, and what it comes to: result (0 for reply, otherwise 1 by default), outputs, print.
// values: further calls, packets, and what they come to.
std::vector<Setting> settings() {
  Setting fix = settingFixNames("3D", "2D", kSet3D2D, kReports3D2D, kReports2D2D);
  fix.mismatches = {"01 01", "00 00", "01 00", "00 02", "02 01", "07 07"};
  fix.draw = drawFix;
  for (const char* wrong : {"2d", "3d", "", "2D ", " 2D", "2", "D", "4D", "2D3D"}) {
    fix.rejected.push_back(calling(&Driver::gpsObtFixNavConfigure, wrong, "2D"));
    fix.rejected.push_back(calling(&Driver::gpsObtFixNavConfigure, "3D", wrong));
    fix.rejected.push_back(calling(&Driver::gpsObtFixNavConfigure, wrong, wrong));
  }
  const auto fixMode = [](unsigned char mode) { return calling(&Driver::setFixMode, mode); };
  Setting modeZero = settingFix("SetFixModeZero", fixMode(0), kSet2D2D, kReports2D2D, kReports3D3D);
  modeZero.draw = drawFixMode;
  const auto masks = [](unsigned int mode, unsigned int elevation, unsigned int cnr) {
    return calling(&Driver::gpsObtElevConfigure, mode, elevation, cnr);
  };
  return {
      fix,
      settingFixNames("2D", "2D", kSet2D2D, kReports2D2D, kReports2D3D),
      settingFixNames("2D", "3D", kSet2D3D, kReports2D3D, kReports3D3D),
      settingFixNames("3D", "3D", kSet3D3D, kReports3D3D, kReports3D2D),
      modeZero,
      settingFix("SetFixModeOne", fixMode(1), kSet3D3D, kReports3D3D, kReports2D2D),
      settingFix("SetFixModeTwo", fixMode(2), kSet3D2D, kReports3D2D, kReports2D3D),
      {.name = "DopConfigure",
       .call = calling(&Driver::gpsObtDopConfigure),
       .sends = {"A0 A1 00 09 2A 01 00 FA 00 FA 00 FA 00 D1 0D 0A",
                 "2A 00: Configure values of DOP mask "},
       .reads = kQueryDop,
       .reply = {kReportsDop, {0, "", printsDop(1, 250, 250, 250)}},
       .otherReply = {"A0 A1 00 08 AF 01 00 FA 00 FA 00 FB 55 0D 0A",
                      {1, "", printsDop(1, 250, 250, 251)}},
       .shortReply = {"A0 A1 00 01 AF AF 0D 0A", {1, "", printsDop(0, 0, 0, 0)}},
       .mismatches = {"00 00 FA 00 FA 00 FA", "02 00 FA 00 FA 00 FA", "01 01 FA 00 FA 00 FA",
                      "01 00 F9 00 FA 00 FA", "01 00 FA FA 00 00 FA", "01 00 FA 00 FB 00 FA",
                      "01 00 FA 00 FA FF FA", "01 00 FA 00 FA 00 00"},
       .draw = drawDop},
      // Above a byte, the low byte is sent, and the whole value compared with what is read back.
      {.name = "ElevConfigure",
       .call = masks(1, 5, 20),
       .sends = {kSetsMasks, kConfigureMasks},
       .reads = kQueryMasks,
       .reply = {kReportsMasks},
       .otherReply = {"A0 A1 00 04 B0 01 05 15 A1 0D 0A"},
       .shortReply = {kReportsModeOnly},
       .mismatches = {"00 05 14", "02 05 14", "01 04 14", "01 05 13", "01 14 05"},
       .values = {{masks(0x101, 5, 20), kSetsMasks, {1}},
                  {masks(1, 0xFFFFFF05, 20), kSetsMasks, {1}},
                  {masks(1, 5, 0x80000014), kSetsMasks, {1}}},
       .draw = drawMasks},
      {.name = "ElevConfigureToZero",
       .call = masks(0, 0, 0),
       .sends = {"A0 A1 00 05 2B 00 00 00 00 2B 0D 0A", kConfigureMasks},
       .reads = kQueryMasks,
       .reply = {"A0 A1 00 04 B0 00 00 00 B0 0D 0A"},
       .otherReply = {kReportsMasks},
       .shortReply = {"A0 A1 00 01 B0 B0 0D 0A", {0}},
       .noReply = {4}},
      {.name = "ElevConfigureToTheHighestBytes",
       .call = masks(255, 254, 253),
       .sends = {"A0 A1 00 05 2B FF FE FD 00 D7 0D 0A", kConfigureMasks},
       .reads = kQueryMasks,
       .reply = {"A0 A1 00 04 B0 FF FE FD 4C 0D 0A"},
       .otherReply = {"A0 A1 00 04 B0 FF FE FF 4E 0D 0A"},
       .shortReply = {kReportsModeOnly}},
  };
}

}  // namespace

Family masksAndFix() {
  return {.queries = queries(),
          .settings = settings(),
          .composites = {{"SetMinCNo", {0xB000}, drawMinCNo},
                         {"SetElevationLimit", {0xB000}, drawElevationLimit}}};
}

}  // namespace orb::test
