#include "model/nmea_sentences.h"

#include <gtest/gtest.h>

#include <sstream>

#include "model/nmea_format.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;

const std::string kGga =
    "$GNGGA,000100.000,4822.2740,N,01134.0734,E,1,09,0.9,475.9,M,44.2,M,,*44\r\n";
const std::string kGsa = "$GNGSA,A,3,,,,,,,,,,,,,1.6,0.9,1.3*20\r\n";
const std::string kGsv = "$GPGSV,1,1,00*79\r\n";
const std::string kGll = "$GNGLL,4822.2740,N,01134.0734,E,000100.000,A,A*4C\r\n";
const std::string kRmc =
    "$GNRMC,000100.000,A,4822.2740,N,01134.0734,E,000.0,000.0,080224,,,A*77\r\n";
const std::string kVtg = "$GNVTG,000.0,T,,M,000.0,N,000.0,K,A*13\r\n";
const std::string kZda = "$GNZDA,000100.000,08,02,2024,00,00*47\r\n";

constexpr std::array<std::uint8_t, 12> only(std::size_t kind) {
  std::array<std::uint8_t, 12> intervals{};
  intervals[kind] = 1;
  return intervals;
}

std::string sentences(const sim::State& state, unsigned int epoch = 1) {
  return sim::nmeaSentences(state, sim::solve(state), epoch);
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line + "\n");
  }
  return lines;
}

TEST(NmeaSentence, EndsWithItsChecksum) {
  EXPECT_EQ(sim::nmeaSentence("GPGLL"), "$GPGLL*50\r\n");
  EXPECT_EQ(sim::nmeaSentence(""), "$*00\r\n");
}

TEST(NmeaSentences, ReportTheSolution) {
  EXPECT_EQ(sentences(sim::State{}), kGga + kGsa + kGsv + kGll + kRmc + kVtg + kZda);
}

TEST(NmeaSentences, ReportSouthWest) {
  sim::State state;
  state.time = {1042, milliseconds(518412500), 13, 7};
  state.navigation = {1, 4, -101, -1799999999, -1000, -1200, {0, 0, 9990, 0, 0}};
  state.constellations = 0x01;
  state.nmeaIntervals = {1, 0, 0, 0, 1};
  EXPECT_EQ(sentences(state),
            "$GPGGA,235959.500,0000.0006,S,17959.9999,W,1,04,99.9,-12.0,M,2.0,M,,*43\r\n"
            "$GPRMC,235959.500,A,0000.0006,S,17959.9999,W,000.0,000.0,311299,,,A*61\r\n");
}

TEST(NmeaSentences, LeaveOutWhatOnlyAFixTells) {
  sim::State state;
  state.navigation.fixMode = 0;
  EXPECT_EQ(linesOf(sentences(state)),
            (std::vector{sim::nmeaSentence("GNGGA,000100.000,,,,,0,00,99.9,,,,,,"),
                         sim::nmeaSentence("GNGSA,A,1,,,,,,,,,,,,,99.9,99.9,99.9"), kGsv,
                         sim::nmeaSentence("GNGLL,,,,,000100.000,V,N"),
                         sim::nmeaSentence("GNRMC,000100.000,V,,,,,,,080224,,,N"),
                         sim::nmeaSentence("GNVTG,,,,,,,,,N"), kZda}));
}

TEST(NmeaSentences, LeaveATimeOutThatTheReceiverDoesNotKnow) {
  sim::State state;
  state.time.valid = 0;
  state.nmeaIntervals = {0, 0, 0, 0, 1, 0, 1};
  EXPECT_EQ(sentences(state),
            "$GNRMC,,A,4822.2740,N,01134.0734,E,000.0,000.0,,,,A*64\r\n"
            "$GNZDA,,,,,00,00*56\r\n");
  state.time.valid = 2;
  EXPECT_EQ(linesOf(sentences(state))[1], "$GNZDA,,,,,00,00*56\r\n");
  state.time.valid = 1;
  EXPECT_EQ(sentences(state),
            "$GNRMC,000100.000,A,4822.2740,N,01134.0734,E,000.0,000.0,,,,A*7B\r\n"
            "$GNZDA,000100.000,,,,00,00*49\r\n");
}

TEST(NmeaSentences, NameTheConstellationInUse) {
  const auto talker = [](std::uint16_t constellations) {
    sim::State state;
    state.constellations = constellations;
    return sentences(state).substr(1, 2);
  };
  EXPECT_EQ(talker(0x01), "GP");
  EXPECT_EQ(talker(0x02), "GL");
  EXPECT_EQ(talker(0x04), "GA");
  EXPECT_EQ(talker(0x08), "GB");
  EXPECT_EQ(talker(0x0F), "GN");
}

TEST(NmeaSentences, FollowTheirIntervals) {
  const std::string kKinds[] = {kGga, kGsa, kGsv, kGll, kRmc, kVtg, kZda};
  for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
    sim::State state;
    state.nmeaIntervals = {};
    EXPECT_EQ(sentences(state, 6), "");
    state.nmeaIntervals[kind] = 3;
    EXPECT_EQ(sentences(state, 1), "");
    EXPECT_EQ(sentences(state, 2), "");
    EXPECT_EQ(sentences(state, 3), kKinds[kind]);
    EXPECT_EQ(sentences(state, 6), kKinds[kind]);
  }
}

TEST(NmeaSentences, TellSpeedAndCourseOnATrack) {
  sim::State state;
  // A hundredth of a degree to the east in 100 s, on the equator: 11.13 m/s.
  state.track.waypoints = {{milliseconds(0), 0, 0, 0}, {milliseconds(100000), 0, 0.01, 0}};
  state.nmeaIntervals = only(5);
  EXPECT_EQ(sentences(state), sim::nmeaSentence("GNVTG,090.0,T,,M,021.6,N,040.1,K,A"));
  // To the north-west, where a degree of longitude is half as long.
  state.track.waypoints = {{milliseconds(0), 60, 0, 0}, {milliseconds(100000), 60.01, -0.021, 500}};
  EXPECT_EQ(sentences(state), sim::nmeaSentence("GNVTG,313.6,T,,M,031.4,N,058.2,K,A"));
  state.navigation.fixMode = 0;
  EXPECT_EQ(sentences(state), sim::nmeaSentence("GNVTG,,,,,,,,,N"));
}

/// Six satellites of GPS and one each of the others.
sim::State underAMixedSky() {
  sim::State state;
  state.constellations = 0x0F;
  for (std::uint8_t number = 1; number <= 6; ++number) {
    const double place = number * 10;
    state.sky.push_back({sim::Constellation::Gps, number, place, place * 6, 40});
  }
  state.sky.push_back({sim::Constellation::Glonass, 24, 33.4, 359.6, 41});
  state.sky.push_back({sim::Constellation::Galileo, 36, 44, -100, 42});
  state.sky.push_back({sim::Constellation::Beidou, 37, 55, 200, 43});
  state.sky.push_back({sim::Constellation::Qzss, 1, 66, 300, 0});
  state.sky.push_back({sim::Constellation::Sbas, 3, 30, 160, 38});
  return state;
}

TEST(NmeaSentences, ListTheSatellitesInViewUnderTheirOwnTalkers) {
  sim::State state = underAMixedSky();
  state.nmeaIntervals = only(2);
  EXPECT_EQ(sentences(state),
            sim::nmeaSentence("GPGSV,2,1,07,01,10,060,40,02,20,120,40,03,30,180,40,04,40,240,40") +
                sim::nmeaSentence("GPGSV,2,2,07,05,50,300,40,06,60,000,40,35,30,160,38") +
                sim::nmeaSentence("GLGSV,1,1,01,88,33,000,41") +
                sim::nmeaSentence("GQGSV,1,1,01,193,66,300,") +
                sim::nmeaSentence("GAGSV,1,1,01,336,44,260,42") +
                sim::nmeaSentence("GBGSV,1,1,01,437,55,200,43"));
}

TEST(NmeaSentences, ListTheSatellitesInUseConstellationByConstellation) {
  sim::State state = underAMixedSky();
  state.nmeaIntervals = only(1);
  const std::vector<std::string> lines = linesOf(sentences(state));
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].substr(0, 35), "$GNGSA,A,3,01,02,03,04,05,06,,,,,,,");
  EXPECT_EQ(lines[1].substr(0, 25), "$GNGSA,A,3,88,,,,,,,,,,,,");
  EXPECT_EQ(lines[2].substr(0, 26), "$GNGSA,A,3,336,,,,,,,,,,,,");
  EXPECT_EQ(lines[3].substr(0, 26), "$GNGSA,A,3,437,,,,,,,,,,,,");
  state.constellations = 0x01;
  EXPECT_EQ(linesOf(sentences(state)).size(), 1U);
  EXPECT_EQ(sentences(state).substr(0, 35), "$GPGSA,A,3,01,02,03,04,05,06,,,,,,,");
}

TEST(NmeaSentences, ListNoSatellitesWhileTheReceiverStarts) {
  sim::State state = underAMixedSky();
  state.startup.untilFix = milliseconds(1);
  state.nmeaIntervals = {0, 1, 1};
  EXPECT_EQ(sentences(state), sim::nmeaSentence("GNGSA,A,1,,,,,,,,,,,,,99.9,99.9,99.9") +
                                  sim::nmeaSentence("GPGSV,1,1,00"));
}

TEST(NmeaSentences, CallAFixDifferentialWithSbas) {
  sim::State state = underAMixedSky();
  state.nmeaIntervals = {1, 1, 0, 1, 1, 1};
  const std::vector<std::string> lines = linesOf(sentences(state));
  EXPECT_NE(lines.front().find(",E,2,09,"), std::string::npos);
  EXPECT_EQ(lines[1].substr(0, 10), "$GNGSA,A,3");
  for (std::size_t line = 5; line < lines.size(); ++line) {
    EXPECT_NE(lines[line].find(",D*"), std::string::npos) << lines[line];
  }
}

TEST(NmeaSentences, StayWithinEightyTwoCharacters) {
  sim::State state;
  state.constellations = 0x0F;
  for (std::uint8_t number = 50; number < 64; ++number) {
    for (const int constellation : {0, 1, 2, 3, 4, 5}) {
      state.sky.push_back({sim::Constellation{static_cast<std::uint8_t>(constellation)}, number,
                           number + 26.0, number + 290.0, 60});
    }
  }
  state.track.waypoints = {{milliseconds(0), -80, -179, 9000}, {milliseconds(9000), 80, -179, 0}};
  for (const std::string& line : linesOf(sentences(state))) {
    EXPECT_LE(line.size(), 82U) << line;
  }
}

}  // namespace
}  // namespace orb::test
