#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <tuple>

#include "orb-sim/scenario.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using sim::FaultKind;
using sim::OutputType;
using sim::TimingMode;
using Dops = std::array<std::uint16_t, 5>;
using Limits = std::array<std::uint16_t, 3>;
using Presence = sim::Scenario::Presence;

sim::Scenario parse(const std::string& text) { return sim::parseScenario(text, "f"); }

/// A key with a value, and whether a scenario, a receiver's state or its settings have that value.
template <typename Part>
struct Key {
  const char* text;
  bool (*isSet)(const Part& part);
};

using S = const sim::Scenario&;
using R = const sim::State&;

bool isOnlyFault(S scenario, const sim::FaultRule& expected) {
  const auto membersOf = [](const sim::FaultRule& rule) {
    return std::tie(rule.kind, rule.target, rule.message, rule.first, rule.every, rule.times,
                    rule.chance, rule.delay, rule.length);
  };
  return scenario.faults.size() == 1 && membersOf(scenario.faults[0]) == membersOf(expected);
}

bool isWaypoint(R state, std::size_t index, const sim::Waypoint& expected) {
  const auto& points = state.track.waypoints;
  return index < points.size() && points[index].at == expected.at &&
         points[index].latitude == expected.latitude &&
         points[index].longitude == expected.longitude &&
         points[index].altitude == expected.altitude;
}

bool isOnlySatellite(R state, const sim::Satellite& expected) {
  const sim::Satellite& first = state.sky.at(0);
  return state.sky.size() == 1 && first.constellation == expected.constellation &&
         first.number == expected.number && first.elevation == expected.elevation &&
         first.azimuth == expected.azimuth && first.cnr == expected.cnr;
}

const Key<sim::Scenario> kKeys[] = {
    {"description = 'One.'", [](S s) { return s.description == "One."; }},
    {"seed = 9223372036854775807", [](S s) { return s.seed == 9223372036854775807U; }},
    {"device.module = 'x'", [](S s) { return s.hardwareId == "x"; }},
    {"device.module = 'none'", [](S s) { return s.hardwareId == std::nullopt; }},
    {"device.receiver = 'silent'", [](S s) { return s.presence == Presence::Silent; }},
    {"device.receiver = 'absent'", [](S s) { return s.presence == Presence::Absent; }},
    {"device.talks-from-the-start = true", [](S s) { return s.talksFromTheStart; }},
    {"start.cold = true", [](S s) { return s.startsCold; }},
    {"line.latency = '120ms'", [](S s) { return s.line.latency == 120ms; }},
    {"line.spread = '80ms'", [](S s) { return s.line.spread == 80ms; }},
    {"line.checks-speed = true", [](S s) { return s.line.checksSpeed; }},
    {"line.baud = 921600", [](S s) { return s.line.baud == 921'600; }},
    {"line.chatter-interval = '50ms'", [](S s) { return s.line.chatterInterval == 50ms; }},
    {"line.chatter = 'x'", [](S s) { return s.line.chatter == "x"; }},
    {"fault = [ { kind = 'pieces', message = 0x6501, target = 'both', first = 3, every = 2, "
     "times = 7, chance = 0.25, delay = '20ms', length = 4 } ]",
     [](S s) {
       return isOnlyFault(
           s, {FaultKind::Pieces, sim::FaultTarget::Both, 0x6501, 3, 2, 7, 0.25, 20ms, 4});
     }},
    {"fault = [ { kind = 'no-reply', message = 'query-update-rate' } ]",
     [](S s) { return isOnlyFault(s, {.message = 0x1000}); }},
};

const Key<sim::State> kStateKeys[] = {
    {"start.silence = '2s'", [](R r) { return r.startTimes.silence == 2s; }},
    {"start.cold-fix = '1min'", [](R r) { return r.startTimes.cold == 1min; }},
    {"start.warm-fix = '30s'", [](R r) { return r.startTimes.warm == 30s; }},
    {"start.hot-fix = '0.5s'", [](R r) { return r.startTimes.hot == 500ms; }},
    {"position.latitude = -33.8567844", [](R r) { return r.navigation.latitude == -338567844; }},
    {"position.longitude = -151.2152967",
     [](R r) { return r.navigation.longitude == -1512152967; }},
    {"position.altitude = 30.05", [](R r) { return r.navigation.ellipsoidAltitude == 3005; }},
    {"position.altitude = 30.05", [](R r) { return r.navigation.meanSeaLevelAltitude == -1417; }},
    {"position.geoid-separation = -22.5",
     [](R r) { return r.navigation.meanSeaLevelAltitude == 52012 + 2250; }},
    {"solution.fix = '2d'", [](R r) { return r.navigation.fixMode == 1; }},
    {"solution.satellites = 4", [](R r) { return r.navigation.satellites == 4; }},
    {"solution = {}", [](R r) { return r.sky.empty(); }},
    {"solution = { geometric-dop = 5.01, position-dop = 4.02, horizontal-dop = 3.03, "
     "vertical-dop = 2.04, time-dop = 1.05 }",
     [](R r) {
       return r.navigation.dops == Dops{501, 402, 303, 204, 105};
     }},
    {"time.rate = 60", [](R r) { return r.clockRate == 60; }},
    {"time.leap-seconds = 19", [](R r) { return r.time.leapSeconds == 19; }},
    {"time.leap-second = 2026-12-31T12:30:00-11:30",
     [](R r) { return r.time.leapSecond == std::chrono::sys_days{2027y / 1 / 1}; }},
    {"event = [ { at = '2min', jump = '-5s' }, { at = '1.5s', rate = 1.5 } ]",
     [](R r) {
       return r.timeline.size() == 2 && r.timeline[0].at == 1500ms && r.timeline[1].at == 2min &&
              r.timeline[0].clockRate == 1.5 && r.timeline[1].jump == -5s;
     }},
    {"event = [ { at = '0s', signals = false, interference = 'some' } ]",
     [](R r) {
       return r.timeline.size() == 1 && r.timeline[0].signals == false &&
              r.timeline[0].interferenceStatus == 2 && !r.timeline[0].clockRate;
     }},
    {"receiver.kernel-version = '0.9.255'", [](R r) { return r.identity.kernel.x == 0; }},
    {"receiver.kernel-version = '0.9.255'", [](R r) { return r.identity.kernel.y == 9; }},
    {"receiver.kernel-version = '0.9.255'", [](R r) { return r.identity.kernel.z == 255; }},
    {"receiver.odm-version = '3.4.1'", [](R r) { return r.identity.odm.x == 3; }},
    {"receiver.odm-version = '3.4.1'", [](R r) { return r.identity.odm.y == 4; }},
    {"receiver.odm-version = '3.4.1'", [](R r) { return r.identity.odm.z == 1; }},
    {"receiver.revision-date = 2099-12-31", [](R r) { return r.identity.revisionYear == 99; }},
    {"receiver.revision-date = 2099-12-31", [](R r) { return r.identity.revisionMonth == 12; }},
    {"receiver.revision-date = 2099-12-31", [](R r) { return r.identity.revisionDay == 31; }},
    {"receiver.version-extension = 'A'", [](R r) { return r.identity.versionExtension == "A"; }},
    {"receiver.interference = 'critical'", [](R r) { return r.interferenceStatus == 3; }},
    {"receiver.power-mode = 'power-saving'", [](R r) { return r.powerMode == 1; }},
    {"receiver.output = 'binary'", [](R r) { return r.outputType == OutputType::Binary; }},
    {"receiver.output = 'none'", [](R r) { return r.outputType == OutputType::None; }},
    {"receiver.update-rate = 50", [](R r) { return r.updateRate == 50; }},
    {"receiver.output-delay = '1s'", [](R r) { return r.outputDelay == 1s; }},
    {"receiver.output-jitter = '50ms'", [](R r) { return r.outputJitter == 50ms; }},
    {"receiver.navigation-interval = 255", [](R r) { return r.navMessageInterval == 255; }},
    {"receiver.nmea-intervals.gga = 11", [](R r) { return r.nmeaIntervals[0] == 11; }},
    {"receiver.nmea-intervals.gsa = 12", [](R r) { return r.nmeaIntervals[1] == 12; }},
    {"receiver.nmea-intervals.gsv = 13", [](R r) { return r.nmeaIntervals[2] == 13; }},
    {"receiver.nmea-intervals.gll = 14", [](R r) { return r.nmeaIntervals[3] == 14; }},
    {"receiver.nmea-intervals.rmc = 15", [](R r) { return r.nmeaIntervals[4] == 15; }},
    {"receiver.nmea-intervals.vtg = 16", [](R r) { return r.nmeaIntervals[5] == 16; }},
    {"receiver.nmea-intervals.zda = 17", [](R r) { return r.nmeaIntervals[6] == 17; }},
    {"receiver.constellations = ['beidou', 'gps']", [](R r) { return r.constellations == 9; }},
    {"receiver.constellations = ['glonass']", [](R r) { return r.constellations == 2; }},
    {"receiver.constellations = ['galileo']", [](R r) { return r.constellations == 4; }},
    {"receiver.constellations = []", [](R r) { return r.constellations == 0; }},
    {"receiver.sbas = false", [](R r) { return r.sbas[0] == 0 && r.sbas[2] == 8; }},
    {"receiver.qzss = false", [](R r) { return r.qzss[0] == 0 && r.qzss[1] == 3; }},
    {"receiver.second-band = true", [](R r) { return r.secondBand == 1; }},
    {"receiver.elevation-mask = 90", [](R r) { return r.elevationCnrMask.elevation == 90; }},
    {"receiver.cnr-mask = 60", [](R r) { return r.elevationCnrMask.cnr == 60; }},
    {"receiver.first-fix = '2d'", [](R r) { return r.fixNavMask.first == 1; }},
    {"receiver.later-fixes = '2d'", [](R r) { return r.fixNavMask.second == 1; }},
    {"receiver.navigation-mode = 5", [](R r) { return r.navigationMode == 5; }},
    {"receiver.interference-detection = true", [](R r) { return r.interferenceDetection == 1; }},
    {"receiver.dop-mask.enabled = true", [](R r) { return r.dopMask.mode == 1; }},
    {"receiver.dop-mask = { position = 2.5, horizontal = 1, geometric = 99.9 }",
     [](R r) {
       return r.dopMask.mode == 1 && r.dopMask.limits == Limits{25, 10, 999};
     }},
    {"receiver.pps = 'with-a-fix'", [](R r) { return r.ppsOutput.mode == 1; }},
    {"receiver.pps = 'with-a-satellite'", [](R r) { return r.ppsOutput.mode == 2; }},
    {"receiver.time-reference = 'utc'", [](R r) { return r.ppsOutput.alignSource == 1; }},
    {"receiver.pps-pulse-width = '100ms'", [](R r) { return r.ppsPulseWidth == 100'000; }},
    {"receiver.pps2-frequency = 19200000", [](R r) { return r.pps2Frequency == 19'200'000; }},
    {"receiver.cable-delay = '-12.25ns'", [](R r) { return r.cableDelay == -1225; }},
    {"receiver.timing.mode = 'survey'",
     [](R r) { return r.timing.mode == TimingMode::AutoSurvey; }},
    {"receiver.timing.mode = 'static'", [](R r) { return r.timing.mode == TimingMode::Static; }},
    {"receiver.timing.survey-length = '3h'", [](R r) { return r.timing.surveyLength == 10'800; }},
    {"receiver.timing = { survey-length = '3h', surveyed = '2h' }",
     [](R r) { return r.surveyed == 2h; }},
    {"settings.output = 'binary'", [](R r) { return r.outputType == OutputType::Binary; }},
    {"settings.nmea-interval = 2",
     [](R r) { return r.nmeaIntervals == decltype(r.nmeaIntervals){2, 2, 2, 2, 2, 2, 2}; }},
    {"survey.mode = 'auto'", [](R r) { return r.timing.mode == TimingMode::AutoSurvey; }},
    {"survey.length = 7200", [](R r) { return r.timing.surveyLength == 7200; }},
    {"receiver.timing.standard-deviation = 4294967295",
     [](R r) { return r.timing.standardDeviation == 4294967295; }},
    {"receiver.timing.latitude = -89.5", [](R r) { return r.timing.latitude == -89.5; }},
    {"receiver.timing.longitude = 179.25", [](R r) { return r.timing.longitude == 179.25; }},
    {"receiver.timing.altitude = 10000", [](R r) { return r.timing.altitude == 10'000; }},
    {"track = { repeats = true, waypoint = [ { at = '1.5min', latitude = 1, longitude = 2 } ] }",
     [](R r) {
       return r.track.repeats && isWaypoint(r, 0, {90s, 1, 2, 520.12});
     }},
    {"track.waypoint = [ { at = '0s', latitude = 48, longitude = 11.5, altitude = 500 },\n"
     "{ at = '1s', latitude = 49, longitude = 11 } ]  # the second is as high as the first",
     [](R r) {
       return isWaypoint(r, 0, {0s, 48, 11.5, 500}) && isWaypoint(r, 1, {1s, 49, 11, 500});
     }},
    {"satellite = [ { constellation = 'sbas', number = 32 } ]",
     [](R r) {
       return isOnlySatellite(r, {sim::Constellation::Sbas, 32});
     }},
    {"satellite = [ { constellation = 'gps', number = 31, elevation = 12.5, azimuth = 359, "
     "cnr = 0 } ]",
     [](R r) {
       return isOnlySatellite(r, {sim::Constellation::Gps, 31, 12.5, 359, 0});
     }},
};

TEST(ScenarioKeys, SetWhatTheyName) {
  for (const auto& [text, isSet] : kKeys) {
    EXPECT_FALSE(isSet(parse(""))) << text;
    EXPECT_TRUE(isSet(parse(text))) << text;
  }
  for (const auto& [text, isSet] : kStateKeys) {
    EXPECT_FALSE(isSet(parse("").state)) << text;
    EXPECT_TRUE(isSet(parse(text).state)) << text;
  }
  EXPECT_EQ(parse("receiver.dop-mask.enabled = false").state.dopMask.mode, 0);
}

TEST(ScenarioKeys, MayAllBeLeftOut) {
  const sim::Scenario scenario = parse("");
  EXPECT_EQ(scenario.description, "");
  EXPECT_EQ(scenario.seed, 1);
  EXPECT_EQ(scenario.hardwareId, sim::kFittedModule);
  EXPECT_EQ(scenario.presence, Presence::Answering);
  EXPECT_EQ(scenario.state.sky.size(), sim::ordinarySky().size());
  EXPECT_EQ(scenario.line.baud, 0);
  EXPECT_TRUE(scenario.faults.empty());
}

TEST(ScenarioKeys, SetTheClock) {
  const auto timeAt = [](const std::string& start) {
    return parse("time.start = " + start).state.time;
  };
  EXPECT_EQ(timeAt("1980-01-06T00:00:00Z").week, 0);
  EXPECT_EQ(timeAt("1980-01-06T00:00:00Z").timeOfWeek, 18s) << "leap seconds";
  const sim::GpsTime byDefault = parse("").state.time;
  EXPECT_EQ(timeAt("2024-02-08T00:01:00Z").week, byDefault.week);
  EXPECT_EQ(timeAt("2024-02-08T00:01:00Z").timeOfWeek, byDefault.timeOfWeek);
  EXPECT_EQ(timeAt("2024-02-08T01:01:00+01:00").timeOfWeek, byDefault.timeOfWeek);
  EXPECT_EQ(timeAt("2024-02-08T00:01:00.25").timeOfWeek, byDefault.timeOfWeek + 250ms);
  EXPECT_EQ(timeAt("2024-02-10T23:59:42Z").week, byDefault.week + 1);
  EXPECT_EQ(timeAt("2024-02-10T23:59:42Z").timeOfWeek, 0s);
  const std::string moreLeapSeconds = "time = { leap-seconds = 19, start = 1980-01-06T00:00:00Z }";
  EXPECT_EQ(parse(moreLeapSeconds).state.time.timeOfWeek, 19s);
}

TEST(ScenarioKeys, SetTheClockToNow) {
  constexpr std::chrono::sys_days kGpsEpoch = std::chrono::year(1980) / 1 / 6;
  const auto before =
      std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  const sim::GpsTime time = sim::ScenarioDevice(parse("time.start = 'now'")).state().time;
  const auto utc = kGpsEpoch + std::chrono::weeks(time.week) + time.timeOfWeek -
                   std::chrono::seconds(time.leapSeconds);
  EXPECT_GE(utc, before);
  EXPECT_LE(utc, std::chrono::system_clock::now());
}

TEST(ScenarioKeys, NameEachKindOfFault) {
  const std::pair<const char*, FaultKind> kKinds[] = {
      {"kind = 'no-reply'", FaultKind::NoReply},
      {"kind = 'late-reply', delay = '1s'", FaultKind::LateReply},
      {"kind = 'refusal'", FaultKind::Refusal},
      {"kind = 'wrong-id'", FaultKind::WrongId},
      {"kind = 'bad-checksum'", FaultKind::BadChecksum},
      {"kind = 'cut-short', length = 1", FaultKind::CutShort},
      {"kind = 'overlong-length', length = 1", FaultKind::OverlongLength},
      {"kind = 'doubled'", FaultKind::Doubled},
      {"kind = 'pieces', length = 1, delay = '1s'", FaultKind::Pieces},
      {"kind = 'noise-before', length = 1", FaultKind::NoiseBefore},
      {"kind = 'noise-inside', length = 1", FaultKind::NoiseInside},
      {"kind = 'nmea-burst', length = 1", FaultKind::NmeaBurst},
      {"kind = 'wrong-value'", FaultKind::WrongValue},
      {"kind = 'silence'", FaultKind::Silence},
      {"kind = 'hang-up'", FaultKind::HangUp},
      {"kind = 'slow-restart', delay = '1s'", FaultKind::SlowRestart},
  };
  for (const auto& [keys, kind] : kKinds) {
    const sim::Scenario scenario = parse("fault = [ { " + std::string(keys) + " } ]");
    ASSERT_EQ(scenario.faults.size(), 1) << keys;
    EXPECT_EQ(scenario.faults[0].kind, kind) << keys;
  }
}

}  // namespace
}  // namespace orb::test
