#include <array>

#include "operations/operation.h"

namespace orb::test {

namespace {

const Sent kQueryTiming{"A0 A1 00 01 44 44 0D 0A", "44 00: Query 1PPS timing of the GNSS receiver"};

// Every field different: an hour's survey, a standard deviation that only the receiver understands,
// a position, and five bytes more that nobody reads.
constexpr const char* kSurveyTiming =
    "A0 A1 00 23 C2 01 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 01 00 00 00 07 58 0D 0A";
constexpr const char* kStaticTiming =
    "A0 A1 00 23 C2 02 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "44 02 20 00 01 00 00 00 07 5B 0D 0A";
constexpr const char* kTimingWithoutAltitude =
    "A0 A1 00 1A C2 02 00 00 0E 10 12 34 56 78 40 48 2F 85 EA 7C 12 34 C0 27 22 BA 21 8F 56 78 "
    "3B 0D 0A";

std::string modeName(unsigned int mode) {
  constexpr std::array<const char*, 3> kNames = {"DYNAMIC", "AUTO", "STATIC"};
  return mode < kNames.size() ? kNames[mode] : "";
}

Drawn drawStatic(Numbers& numbers) {
  const double latitude = numbers.between(-9000, 9000) / 100.0;
  const double longitude = numbers.between(-18000, 18000) / 100.0;
  const auto altitude = numbers.between<float>(-1000, 10000);
  return {calling(&Driver::setSurveyStatic, latitude, longitude, altitude, 1), 0, [=](auto& state) {
            state.timing.mode = sim::TimingMode::Static;
            state.timing.latitude = latitude;
            state.timing.longitude = longitude;
            state.timing.altitude = altitude;
          }};
}

// A survey that does not end meanwhile; one time in five, a longer one than there can be.
Drawn drawAuto(Numbers& numbers) {
  constexpr int kLongest = 1209600;
  const bool isTooLong = numbers.between(0, 4) == 0;
  const auto length = isTooLong ? numbers.between<unsigned int>(kLongest + 1, 2 * kLongest)
                                : numbers.between<unsigned int>(kLongest / 2, kLongest);
  return drawnInRange(
      !isTooLong, [=](auto& driver) { return Outcome(driver.setSurveyAuto(length, 1.0F)); },
      [=](auto& state) {
        state.timing.mode = sim::TimingMode::AutoSurvey;
        state.timing.surveyLength = length;
      });
}

// "auto" and "static" are rejected; for any other word nothing happens.
Drawn drawMode(Numbers& numbers) {
  switch (numbers.between(0, 4)) {
    case 0:
      return {calling(&Driver::setSurveyMode, "auto"), 1};
    case 1:
      return {calling(&Driver::setSurveyMode, "static"), 1};
    case 2:
      return {calling(&Driver::setSurveyMode, "other")};
    case 3:
      return {calling(&Driver::setSurveyDynamic), 0,
              [](auto& state) { state.timing.mode = sim::TimingMode::Dynamic; }};
    default:
      return {calling(&Driver::setSurveyMode, "dynamic"), 0,
              [](auto& state) { state.timing.mode = sim::TimingMode::Dynamic; }};
  }
}

std::string modeIn(const sim::State& state) {
  return text(modeName(static_cast<unsigned int>(state.timing.mode)));
}

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
std::vector<Query> queries() {
  return {
      // Numbers are unsigned, up to their extremes.
      {.name = "GetTimeMode",
       .call = reading(&Driver::gpsObtGetTimeMode, 70, 71, 72, 73, 74, 75),
       .sends = kQueryTiming,
       .reply = {kStaticTiming,
                 {0, "2, 3600, 305419896, 48.371274290639491, -11.567826317546164, 520.5"}},
       .shortReply = {kTimingWithoutAltitude,
                      {0, "2, 3600, 305419896, 48.371274290639491, -11.567826317546164, 0"}},
       .untouched = "70, 71, 72, 73, 74, 75",
       .readings = {{"FF FF FF FF FF FF FF FF FF 7F EF FF FF FF FF FF FF FF EF FF FF FF FF FF FF "
                     "FF 7F FF FF FF FF FF FF FF",
                     "255, 4294967295, 4294967295, 1.7976931348623157e+308, "
                     "-1.7976931348623157e+308, -3.4028234663852886e+38"},
                    {"80 80 00 00 00 80 00 00 00 80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 "
                     "80 00 00 00 00 00 00 00 00",
                     "128, 2147483648, 2147483648, -0, 4.9406564584124654e-324, -0"}},
       .decoded =
           [](auto& reply) {
             return text(reply.u8(1), reply.u32(2), reply.u32(6), reply.f64(10), reply.f64(18),
                         reply.f32(26));
           },
       .inState =
           [](auto& state) {
             const auto& [mode, length, deviation, latitude, longitude, altitude] = state.timing;
             return text(static_cast<int>(mode), length, deviation, latitude, longitude, altitude);
           }},
      {.name = "GetSurveyMode",
       .call = reading(&Driver::getSurveyMode, "before"),
       .sends = kQueryTiming,
       .reply = {kStaticTiming, {0, "\"STATIC\""}},
       .shortReply = {"A0 A1 00 01 C2 C2 0D 0A", {0, "\"DYNAMIC\""}},
       .untouched = "\"before\"",
       .readings = {{"00", "\"DYNAMIC\""}, {"01", "\"AUTO\""}, {"03", "\"\""}, {"FF", "\"\""}},
       .decoded = [](auto& reply) { return text(modeName(reply.u8(1))); },
       .inState = modeIn},
      // Any failure of the query is 1. The standard deviation is not passed on.
      {.name = "GetSurveyInfo",
       .call = reading(&Driver::getSurveyInfo, 70, 71, 72, 73, 74, 75, 76),
       .sends = kQueryTiming,
       .reply = {kSurveyTiming,
                 {0, "1, 48.371274290639491, -11.567826317546164, 520.5, 0, 3600, 0"}},
       .shortReply = {"A0 A1 00 05 C2 01 00 00 0E CD 0D 0A", {0, "1, 0, 0, 0, 0, 3584, 0"}},
       .untouched = "70, 71, 72, 73, 74, 75, 76",
       .noReply = {1},
       .noDevice = {1},
       .readings = {{"FF FF FF FF FE 11 11 11 11 7F F0 00 00 00 00 00 00 80 00 00 00 00 00 00 00 "
                     "FF 7F FF FF 00 00 00 00 00",
                     "255, inf, -0, -3.4028234663852886e+38, 0, 4294967294, 0"}},
       .decoded =
           [](auto& reply) {
             return text(reply.u8(1), reply.f64(10), reply.f64(18), double{reply.f32(26)}, 0,
                         reply.u32(2), 0);
           },
       .inState =
           [](auto& state) {
             const auto& [mode, length, deviation, latitude, longitude, altitude] = state.timing;
             return text(static_cast<int>(mode), latitude, longitude, altitude, 0, length, 0);
           }},
  };
}

}  // namespace

Family survey() {
  return {.queries = queries(),
          .composites = {{"SetSurveyStatic", {0xC200}, drawStatic, modeIn},
                         {"SetSurveyAuto", {0xC200}, drawAuto, modeIn},
                         {"SetSurveyMode", {0xC200}, drawMode}}};
}

}  // namespace orb::test
