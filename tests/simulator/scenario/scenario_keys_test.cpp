#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "orb-sim/scenario.h"

namespace orb::sim {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

Scenario parse(const std::string& text) { return parseScenario(text, "f"); }

TEST(ScenarioKeys, MayAllBeLeftOut) {
  const Scenario scenario = parse("");
  EXPECT_EQ(scenario.description, "");
  EXPECT_EQ(scenario.seed, 1);
  EXPECT_EQ(scenario.hardwareId, kFittedModule);
  EXPECT_EQ(scenario.presence, Scenario::Presence::Answering);
  EXPECT_FALSE(scenario.talksFromTheStart);
  EXPECT_FALSE(scenario.startsCold);
  EXPECT_EQ(scenario.state.sky.size(), ordinarySky().size());
  EXPECT_EQ(scenario.line.baud, 0);
  EXPECT_TRUE(scenario.faults.empty());
}

TEST(ScenarioKeys, DescribeTheRun) {
  const Scenario scenario = parse("description = 'One sentence.'\nseed = 9223372036854775807\n");
  EXPECT_EQ(scenario.description, "One sentence.");
  EXPECT_EQ(scenario.seed, 9223372036854775807U);
}

TEST(ScenarioKeys, DescribeTheDevice) {
  const Scenario scenario =
      parse("[device]\nmodule = 'x'\nreceiver = 'silent'\ntalks-from-the-start = true\n");
  EXPECT_EQ(scenario.hardwareId, "x");
  EXPECT_EQ(scenario.presence, Scenario::Presence::Silent);
  EXPECT_TRUE(scenario.talksFromTheStart);
  EXPECT_EQ(parse("device.module = 'none'").hardwareId, std::nullopt);
  EXPECT_EQ(parse("device.receiver = 'absent'").presence, Scenario::Presence::Absent);
}

TEST(ScenarioKeys, GiveTheReceiverItsIdentity) {
  const Identity identity = parse(R"([receiver]
kernel-version = "0.9.255"
odm-version = "3.2.1"
revision-date = 2099-12-31
version-extension = "ABC"
)")
                                .state.identity;
  EXPECT_EQ(identity.kernel.x, 0);
  EXPECT_EQ(identity.kernel.y, 9);
  EXPECT_EQ(identity.kernel.z, 255);
  EXPECT_EQ(identity.odm.x, 3);
  EXPECT_EQ(identity.odm.y, 2);
  EXPECT_EQ(identity.odm.z, 1);
  EXPECT_EQ(identity.revisionYear, 99);
  EXPECT_EQ(identity.revisionMonth, 12);
  EXPECT_EQ(identity.revisionDay, 31);
  EXPECT_EQ(identity.versionExtension, "ABC");
}

TEST(ScenarioKeys, SetWhatTheReceiverSends) {
  const State state = parse(R"([receiver]
power-mode = "power-saving"
output = "binary"
update-rate = 50
navigation-interval = 255
[receiver.nmea-intervals]
gga = 11
gsa = 12
gsv = 13
gll = 14
rmc = 15
vtg = 16
zda = 17
)")
                          .state;
  EXPECT_EQ(state.powerMode, 1);
  EXPECT_EQ(state.outputType, OutputType::Binary);
  EXPECT_EQ(state.updateRate, 50);
  EXPECT_EQ(state.navMessageInterval, 255);
  EXPECT_THAT(state.nmeaIntervals, ElementsAre(11, 12, 13, 14, 15, 16, 17, 0, 0, 0, 0, 0));
}

TEST(ScenarioKeys, SetWhatTheReceiverUses) {
  const State state = parse(R"([receiver]
constellations = ["beidou", "gps"]
sbas = false
qzss = false
second-band = true
elevation-mask = 90
cnr-mask = 60
first-fix = "2d"
later-fixes = "2d"
navigation-mode = 5
interference-detection = true
interference = "critical"
[receiver.dop-mask]
position = 2.5
horizontal = 1
geometric = 99.9
)")
                          .state;
  EXPECT_EQ(state.constellations, 0x0009);
  EXPECT_THAT(state.sbas, ElementsAre(0, 1, 8, 1, 3, 7));
  EXPECT_THAT(state.qzss, ElementsAre(0, 3));
  EXPECT_EQ(state.secondBand, 1);
  EXPECT_EQ(state.elevationCnrMask.elevation, 90);
  EXPECT_EQ(state.elevationCnrMask.cnr, 60);
  EXPECT_EQ(state.fixNavMask.first, 1);
  EXPECT_EQ(state.fixNavMask.second, 1);
  EXPECT_EQ(state.navigationMode, 5);
  EXPECT_EQ(state.interferenceDetection, 1);
  EXPECT_EQ(state.interferenceStatus, 3);
  EXPECT_EQ(state.dopMask.mode, 1);
  EXPECT_THAT(state.dopMask.limits, ElementsAre(25, 10, 999));
  EXPECT_EQ(parse("receiver.constellations = []").state.constellations, 0);
  EXPECT_EQ(parse("receiver.dop-mask.enabled = false").state.dopMask.mode, 0);
}

TEST(ScenarioKeys, SetThePulses) {
  const State state = parse(R"([receiver]
pps = "with-a-fix"
time-reference = "utc"
pps-pulse-width = "100ms"
pps2-frequency = 19200000
cable-delay = "-12.25ns"
)")
                          .state;
  EXPECT_EQ(state.ppsOutput.mode, 1);
  EXPECT_EQ(state.ppsOutput.alignSource, 1);
  EXPECT_EQ(state.ppsPulseWidth, 100'000);
  EXPECT_EQ(state.pps2Frequency, 19'200'000);
  EXPECT_EQ(state.cableDelay, -1225);
}

TEST(ScenarioKeys, SetTheTimingMode) {
  const State state = parse(R"([receiver.timing]
mode = "survey"
survey-length = "3h"
surveyed = "2h"
standard-deviation = 4294967295
latitude = -89.5
longitude = 179.25
altitude = 10000
)")
                          .state;
  EXPECT_EQ(state.timing.mode, TimingMode::AutoSurvey);
  EXPECT_EQ(state.timing.surveyLength, 10'800);
  EXPECT_EQ(state.surveyed, 2h);
  EXPECT_EQ(state.timing.standardDeviation, 4294967295);
  EXPECT_EQ(state.timing.latitude, -89.5);
  EXPECT_EQ(state.timing.longitude, 179.25);
  EXPECT_EQ(state.timing.altitude, 10'000);
}

TEST(ScenarioKeys, PutTheAntennaInItsPlace) {
  const Navigation navigation = parse(R"([position]
latitude = -33.8567844
longitude = -151.2152967
altitude = 30.05
geoid-separation = -22.5
)")
                                    .state.navigation;
  EXPECT_EQ(navigation.latitude, -338567844);
  EXPECT_EQ(navigation.longitude, -1512152967);
  EXPECT_EQ(navigation.ellipsoidAltitude, 3005);
  EXPECT_EQ(navigation.meanSeaLevelAltitude, 5255);
}

TEST(ScenarioKeys, MoveTheAntenna) {
  const Track track = parse(R"([track]
repeats = true
[[track.waypoint]]
at = "0s"
latitude = 48
longitude = 11
altitude = 500
[[track.waypoint]]
at = "1.5min"
latitude = 49.5
longitude = 11
)")
                          .state.track;
  EXPECT_TRUE(track.repeats);
  ASSERT_EQ(track.waypoints.size(), 2);
  EXPECT_EQ(track.waypoints[0].at, 0s);
  EXPECT_EQ(track.waypoints[1].at, 90s);
  EXPECT_EQ(track.waypoints[1].latitude, 49.5);
  EXPECT_EQ(track.waypoints[1].longitude, 11);
  EXPECT_EQ(track.waypoints[1].altitude, 500) << "as at the waypoint before";
}

TEST(ScenarioKeys, FillTheSky) {
  const std::vector<Satellite> sky = parse(R"([[satellite]]
constellation = "gps"
number = 32
elevation = 12.5
azimuth = 359
cnr = 0
[[satellite]]
constellation = "sbas"
number = 32
)")
                                         .state.sky;
  ASSERT_EQ(sky.size(), 2);
  EXPECT_EQ(sky[0].constellation, Constellation::Gps);
  EXPECT_EQ(sky[0].number, 32);
  EXPECT_EQ(sky[0].elevation, 12.5);
  EXPECT_EQ(sky[0].azimuth, 359);
  EXPECT_EQ(sky[0].cnr, 0);
  EXPECT_EQ(sky[1].constellation, Constellation::Sbas);
  EXPECT_EQ(sky[1].elevation, Satellite{}.elevation);
}

TEST(ScenarioKeys, GiveTheSolutionInPlaceOfASky) {
  const State state = parse(R"([solution]
fix = "2d"
satellites = 4
geometric-dop = 5.01
position-dop = 4.02
horizontal-dop = 3.03
vertical-dop = 2.04
time-dop = 1.05
)")
                          .state;
  EXPECT_TRUE(state.sky.empty());
  EXPECT_EQ(state.navigation.fixMode, 1);
  EXPECT_EQ(state.navigation.satellites, 4);
  EXPECT_THAT(state.navigation.dops, ElementsAre(501, 402, 303, 204, 105));
}

TEST(ScenarioKeys, SetTheClock) {
  const auto timeAt = [](const std::string& start) {
    return parse("time.start = " + start).state.time;
  };
  EXPECT_EQ(timeAt("1980-01-06T00:00:00Z").week, 0);
  EXPECT_EQ(timeAt("1980-01-06T00:00:00Z").timeOfWeek, 18s) << "leap seconds";
  const GpsTime byDefault = parse("").state.time;
  EXPECT_EQ(timeAt("2024-02-08T00:01:00Z").week, byDefault.week);
  EXPECT_EQ(timeAt("2024-02-08T00:01:00Z").timeOfWeek, byDefault.timeOfWeek);
  EXPECT_EQ(timeAt("2024-02-08T01:01:00+01:00").timeOfWeek, byDefault.timeOfWeek);
  EXPECT_EQ(timeAt("2024-02-08T00:01:00.25").timeOfWeek, byDefault.timeOfWeek + 250ms);
  EXPECT_EQ(timeAt("2024-02-10T23:59:42Z").week, byDefault.week + 1);
  EXPECT_EQ(timeAt("2024-02-10T23:59:42Z").timeOfWeek, 0s);

  const State fast =
      parse("[time]\nrate = 60\nleap-seconds = 19\nstart = 1980-01-06T00:00:00Z\n").state;
  EXPECT_EQ(fast.clockRate, 60);
  EXPECT_EQ(fast.time.leapSeconds, 19);
  EXPECT_EQ(fast.time.timeOfWeek, 19s);
}

TEST(ScenarioKeys, SetTheClockToNow) {
  constexpr std::chrono::sys_days kGpsEpoch = std::chrono::year(1980) / 1 / 6;
  const auto before =
      std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  const GpsTime time = parse("time.start = 'now'").state.time;
  const auto utc = kGpsEpoch + std::chrono::weeks(time.week) + time.timeOfWeek -
                   std::chrono::seconds(time.leapSeconds);
  EXPECT_GE(utc, before);
  EXPECT_LE(utc, std::chrono::system_clock::now());
}

TEST(ScenarioKeys, DescribeTheStart) {
  const Scenario scenario = parse(R"([start]
cold = true
silence = "2s"
cold-fix = "1min"
warm-fix = "30s"
hot-fix = "0.5s"
)");
  EXPECT_TRUE(scenario.startsCold);
  EXPECT_EQ(scenario.state.startTimes.silence, 2s);
  EXPECT_EQ(scenario.state.startTimes.cold, 1min);
  EXPECT_EQ(scenario.state.startTimes.warm, 30s);
  EXPECT_EQ(scenario.state.startTimes.hot, 500ms);
}

TEST(ScenarioKeys, DescribeTheLine) {
  const LineConditions line = parse(R"([line]
latency = "120ms"
spread = "80ms"
baud = 921600
chatter-interval = "50ms"
chatter = "x"
)")
                                  .line;
  EXPECT_EQ(line.latency, 120ms);
  EXPECT_EQ(line.spread, 80ms);
  EXPECT_EQ(line.baud, 921'600);
  EXPECT_EQ(line.chatterInterval, 50ms);
  EXPECT_EQ(line.chatter, "x");
}

TEST(ScenarioKeys, MakeAFault) {
  const std::vector<FaultRule> faults = parse(R"([[fault]]
kind = "pieces"
message = 0x6501
target = "both"
first = 3
every = 2
times = 7
chance = 0.25
delay = "20ms"
length = 4
[[fault]]
kind = "no-reply"
message = "query-update-rate"
)")
                                            .faults;
  ASSERT_EQ(faults.size(), 2);
  EXPECT_EQ(faults[0].kind, FaultKind::Pieces);
  EXPECT_EQ(faults[0].message, 0x6501);
  EXPECT_EQ(faults[0].target, FaultTarget::Both);
  EXPECT_EQ(faults[0].first, 3);
  EXPECT_EQ(faults[0].every, 2);
  EXPECT_EQ(faults[0].times, 7);
  EXPECT_EQ(faults[0].chance, 0.25);
  EXPECT_EQ(faults[0].delay, 20ms);
  EXPECT_EQ(faults[0].length, 4);
  EXPECT_EQ(faults[1].kind, FaultKind::NoReply);
  EXPECT_EQ(faults[1].message, 0x1000);
  EXPECT_EQ(faults[1].target, FaultTarget::Reply);
  EXPECT_EQ(faults[1].times, FaultRule::kUnlimited);
}

struct KindOfFault {
  const char* keys;
  FaultKind kind;
};

TEST(ScenarioKeys, NameEachKindOfFault) {
  for (const KindOfFault& fault : {
           KindOfFault{"kind = 'no-reply'", FaultKind::NoReply},
           KindOfFault{"kind = 'late-reply', delay = '1s'", FaultKind::LateReply},
           KindOfFault{"kind = 'refusal'", FaultKind::Refusal},
           KindOfFault{"kind = 'wrong-id'", FaultKind::WrongId},
           KindOfFault{"kind = 'bad-checksum'", FaultKind::BadChecksum},
           KindOfFault{"kind = 'cut-short', length = 1", FaultKind::CutShort},
           KindOfFault{"kind = 'overlong-length', length = 1", FaultKind::OverlongLength},
           KindOfFault{"kind = 'doubled'", FaultKind::Doubled},
           KindOfFault{"kind = 'pieces', length = 1, delay = '1s'", FaultKind::Pieces},
           KindOfFault{"kind = 'noise-before', length = 1", FaultKind::NoiseBefore},
           KindOfFault{"kind = 'noise-inside', length = 1", FaultKind::NoiseInside},
           KindOfFault{"kind = 'nmea-burst', length = 1", FaultKind::NmeaBurst},
           KindOfFault{"kind = 'wrong-value'", FaultKind::WrongValue},
           KindOfFault{"kind = 'silence'", FaultKind::Silence},
           KindOfFault{"kind = 'hang-up'", FaultKind::HangUp},
           KindOfFault{"kind = 'slow-restart', delay = '1s'", FaultKind::SlowRestart},
       }) {
    const Scenario scenario = parse("fault = [ { " + std::string(fault.keys) + " } ]");
    ASSERT_EQ(scenario.faults.size(), 1) << fault.keys;
    EXPECT_EQ(scenario.faults[0].kind, fault.kind) << fault.keys;
  }
}

}  // namespace
}  // namespace orb::sim
