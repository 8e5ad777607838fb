#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>

#include "orb-sim/scenario.h"
#include "support/temporary_folder.h"

namespace orb::sim {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string problemsOf(const std::string& text) {
  try {
    parseScenario(text, "f");
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "(none)";
}

struct BadScenario {
  const char* name;
  const char* text;
  const char* problems;
};

void PrintTo(const BadScenario& scenario, std::ostream* out) { *out << scenario.name; }

class ScenarioProblem : public ::testing::TestWithParam<BadScenario> {};

TEST_P(ScenarioProblem, NamesLineKeyAndWhatIsAccepted) {
  EXPECT_EQ(problemsOf(GetParam().text), GetParam().problems);
}

std::string nameOf(const ::testing::TestParamInfo<BadScenario>& scenario) {
  return scenario.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    File, ScenarioProblem,
    ::testing::Values(
        BadScenario{"UnknownKey", "seed = 1\nsed = 1\n",
                    "f:2: sed: unknown key; it has to be description, seed, device, receiver, "
                    "position, track, satellite, solution, time, start, line or fault"},
        BadScenario{"UnknownTable", "\n[devise]\n",
                    "f:2: devise: unknown key; it has to be description, seed, device, receiver, "
                    "position, track, satellite, solution, time, start, line or fault"},
        BadScenario{"TableOfAnotherType", "line = 3\n",
                    "f:1: line: is an integer; it has to be a table [line]"},
        BadScenario{"TablesOfAnotherType", "[fault]\nkind = 'no-reply'\n",
                    "f:1: fault: is a table; it has to be tables [[fault]]"},
        BadScenario{"ElementOfAnotherType", "fault = [\n 1 ]\n",
                    "f:2: fault: is an integer; it has to be one of the tables [[fault]]"},
        BadScenario{"NegativeSeed", "seed = -1\n",
                    "f:1: seed: is -1; it has to be from 0 to 9223372036854775807"},
        BadScenario{"SeedOfAnotherType", "seed = 1.5\n",
                    "f:1: seed: is a fraction; it has to be an integer"},
        BadScenario{"TextOfAnotherType", "description = true\n",
                    "f:1: description: is true or false; it has to be a text in quotes"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Device, ScenarioProblem,
    ::testing::Values(
        BadScenario{"UnknownKey", "[device]\nmodul = 'x'\n",
                    "f:2: device.modul: unknown key; it has to be module, receiver or "
                    "talks-from-the-start"},
        BadScenario{"NoModuleText", "device.module = ''\n",
                    "f:1: device.module: is \"\"; it has to be the module's identifier, or "
                    "\"none\""},
        BadScenario{"UnknownWord", "[device]\nreceiver = 'off'\n",
                    "f:2: device.receiver: is \"off\"; it has to be \"answering\", \"silent\" or "
                    "\"absent\""},
        BadScenario{"FlagOfAnotherType", "[device]\ntalks-from-the-start = 1\n",
                    "f:2: device.talks-from-the-start: is an integer; it has to be true or "
                    "false"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Receiver, ScenarioProblem,
    ::testing::Values(
        BadScenario{"ShortVersion", "[receiver]\nkernel-version = '1.2'\n",
                    "f:2: receiver.kernel-version: is \"1.2\"; it has to be three numbers from 0 "
                    "to 255, such as \"1.0.12\""},
        BadScenario{"LargeVersion", "[receiver]\nodm-version = '1.256.3'\n",
                    "f:2: receiver.odm-version: is \"1.256.3\"; it has to be three numbers from 0 "
                    "to 255, such as \"1.0.12\""},
        BadScenario{"EmptyVersion", "[receiver]\nodm-version = ''\n",
                    "f:2: receiver.odm-version: is \"\"; it has to be three numbers from 0 to 255, "
                    "such as \"1.0.12\""},
        BadScenario{"DateAsText", "[receiver]\nrevision-date = '2024-03-15'\n",
                    "f:2: receiver.revision-date: is a text; it has to be a date from 2000-01-01 "
                    "to 2099-12-31"},
        BadScenario{"DateTooEarly", "[receiver]\nrevision-date = 1999-12-31\n",
                    "f:2: receiver.revision-date: is 1999-12-31; it has to be a date from "
                    "2000-01-01 to 2099-12-31"},
        BadScenario{"LongExtension",
                    "[receiver]\nversion-extension = '123456789012345678901234567890123'\n",
                    "f:2: receiver.version-extension: has 33 bytes; it has to be a text of at most "
                    "32"},
        BadScenario{"RateTooHigh", "[receiver]\nupdate-rate = 51\n",
                    "f:2: receiver.update-rate: is 51; it has to be from 0 to 50"},
        BadScenario{"WordsOfAnotherType", "[receiver]\nconstellations = 'gps'\n",
                    "f:2: receiver.constellations: is a text; it has to be an array of texts"},
        BadScenario{"UnknownConstellation", "[receiver]\nconstellations = ['gps',\n'navic']\n",
                    "f:3: receiver.constellations: is \"navic\"; it has to be \"gps\", "
                    "\"glonass\", \"galileo\" or \"beidou\""},
        BadScenario{"UnknownSentence", "[receiver.nmea-intervals]\ngns = 1\n",
                    "f:2: receiver.nmea-intervals.gns: unknown key; it has to be gga, gsa, gsv, "
                    "gll, rmc, vtg or zda"},
        BadScenario{"LimitTooLow", "[receiver.dop-mask]\nposition = 0.4\n",
                    "f:2: receiver.dop-mask.position: is 0.4; it has to be from 0.5 to 99.9"},
        BadScenario{"PulseTooWide", "[receiver]\npps-pulse-width = '101ms'\n",
                    "f:2: receiver.pps-pulse-width: is \"101ms\"; it has to be from 1us to 100ms"},
        BadScenario{"PulseTooFine", "[receiver]\npps-pulse-width = '1500ns'\n",
                    "f:2: receiver.pps-pulse-width: is \"1500ns\"; it has to be a multiple of 1us"},
        BadScenario{"DelayTooFine", "[receiver]\ncable-delay = '0.001ns'\n",
                    "f:2: receiver.cable-delay: is \"0.001ns\"; it has to be a multiple of "
                    "0.01ns"},
        BadScenario{"SurveyedTooLong",
                    "[receiver.timing]\nsurvey-length = '1min'\nsurveyed = '61s'\n",
                    "f:3: receiver.timing.surveyed: is \"61s\"; it has to be from 0s to 1min"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Surroundings, ScenarioProblem,
    ::testing::Values(
        BadScenario{"LatitudeTooHigh", "[position]\nlatitude = 90.5\n",
                    "f:2: position.latitude: is 90.5; it has to be from -90 to 90"},
        BadScenario{"LatitudeNotANumber", "[position]\nlatitude = nan\n",
                    "f:2: position.latitude: is nan; it has to be from -90 to 90"},
        BadScenario{"LongitudeOfAnotherType", "[position]\nlongitude = '11 E'\n",
                    "f:2: position.longitude: is a text; it has to be a number"},
        BadScenario{"PositionBesideATrack",
                    "[position]\nlatitude = 1\n[track]\n[[track.waypoint]]\nat = '0s'\n"
                    "latitude = 1\nlongitude = 1\n",
                    "f:2: position.latitude: stands beside [track], which says where the antenna "
                    "is; it has to be left out"},
        BadScenario{"EmptyTrack", "[track]\nrepeats = true\n",
                    "f:1: track.waypoint: is missing; it has to be there"},
        BadScenario{"EmptyWaypoint", "[track]\n[[track.waypoint]]\n",
                    "f:2: track.waypoint.at: is missing; it has to be there\n"
                    "f:2: track.waypoint.latitude: is missing; it has to be there\n"
                    "f:2: track.waypoint.longitude: is missing; it has to be there"},
        BadScenario{"WaypointsOutOfOrder",
                    "[[track.waypoint]]\nat = '5s'\nlatitude = 1\nlongitude = 1\n"
                    "[[track.waypoint]]\nat = '5s'\nlatitude = 1\nlongitude = 1\n",
                    "f:6: track.waypoint.at: is not after the waypoint before; it has to be"},
        BadScenario{"SatelliteWithoutANumber", "[[satellite]]\nconstellation = 'gps'\n",
                    "f:1: satellite.number: is missing; it has to be there"},
        BadScenario{"SatelliteBeyondItsConstellation",
                    "[[satellite]]\nconstellation = 'qzss'\nnumber = 11\n",
                    "f:3: satellite.number: is 11; it has to be from 1 to 10"},
        BadScenario{"SatelliteTwice",
                    "[[satellite]]\nconstellation = 'gps'\nnumber = 1\n"
                    "[[satellite]]\nconstellation = 'gps'\nnumber = 1\n",
                    "f:6: satellite.number: is 1, like that of a satellite above; it has to be "
                    "another one"},
        BadScenario{"SolutionBesideASky",
                    "[solution]\nfix = '3d'\n[[satellite]]\nconstellation = 'gps'\nnumber = 1\n",
                    "f:1: solution: stands beside [[satellite]]; one of them has to be left out"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Time, ScenarioProblem,
    ::testing::Values(
        BadScenario{
            "UnknownWord", "[time]\nstart = 'today'\n",
            "f:2: time.start: is \"today\"; it has to be \"now\" or a date and time such as "
            "2026-03-15T12:00:00Z"},
        BadScenario{"DateAlone", "[time]\nstart = 2024-03-15\n",
                    "f:2: time.start: is a date or a time; it has to be \"now\" or a date and time "
                    "such as 2026-03-15T12:00:00Z"},
        BadScenario{"BeforeTheFirstWeek", "[time]\nstart = 1980-01-05T23:59:59Z\n",
                    "f:2: time.start: is outside the receiver's calendar; it has to be from "
                    "1980-01-06 to 2099-12-31"},
        BadScenario{"AfterTheLastYear", "[time]\nstart = 2100-01-01T00:00:00Z\n",
                    "f:2: time.start: is outside the receiver's calendar; it has to be from "
                    "1980-01-06 to 2099-12-31"},
        BadScenario{"NegativeRate", "[time]\nrate = -1\n",
                    "f:2: time.rate: is -1; it has to be from 0 to 1000"},
        BadScenario{"NoDuration", "[start]\nsilence = 'soon'\n",
                    "f:2: start.silence: is \"soon\"; it has to be a number and its unit (ns, us, "
                    "ms, s, min or h), such as \"250ms\""},
        BadScenario{"DurationWithoutUnit", "[start]\nsilence = 2\n",
                    "f:2: start.silence: is an integer; it has to be a text in quotes"},
        BadScenario{"NegativeDuration", "[start]\ncold-fix = '-1s'\n",
                    "f:2: start.cold-fix: is \"-1s\"; it has to be from 0s to 24h"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Line, ScenarioProblem,
    ::testing::Values(
        BadScenario{"UnusualSpeed", "[line]\nbaud = 14400\n",
                    "f:2: line.baud: is 14400; it has to be 4800, 9600, 19200, 38400, 57600, "
                    "115200, 230400, 460800 or 921600"},
        BadScenario{"SpeedOfAnotherType", "[line]\nbaud = '9600'\n",
                    "f:2: line.baud: is a text; it has to be an integer"},
        BadScenario{"NoKind", "[[fault]]\nchance = 0.5\n",
                    "f:1: fault.kind: is missing; it has to be there"},
        BadScenario{"UnknownKind", "[[fault]]\nkind = 'lost'\n",
                    "f:2: fault.kind: is \"lost\"; it has to be \"no-reply\", \"late-reply\", "
                    "\"refusal\", \"wrong-id\", \"bad-checksum\", \"cut-short\", "
                    "\"overlong-length\", \"doubled\", \"pieces\", \"noise-before\", "
                    "\"noise-inside\", \"nmea-burst\", \"wrong-value\", \"silence\", \"hang-up\" "
                    "or \"slow-restart\""},
        BadScenario{"NoDelay", "[[fault]]\nkind = 'late-reply'\n",
                    "f:1: fault.delay: is missing; it has to be there"},
        BadScenario{"NeedlessDelay", "[[fault]]\nkind = 'no-reply'\ndelay = '1s'\n",
                    "f:3: fault.delay: means nothing to this kind of fault; it has to be left "
                    "out"},
        BadScenario{"NeedlessTarget", "[[fault]]\nkind = 'hang-up'\ntarget = 'both'\n",
                    "f:3: fault.target: means nothing to this kind of fault; it has to be left "
                    "out"},
        BadScenario{"LongBurst", "[[fault]]\nkind = 'nmea-burst'\nlength = 1001\n",
                    "f:3: fault.length: is 1001; it has to be from 1 to 1000"},
        BadScenario{"ZerothOccurrence", "[[fault]]\nkind = 'no-reply'\nfirst = 0\n",
                    "f:3: fault.first: is 0; it has to be from 1 to 1000000000"},
        BadScenario{"CertainlyTooLikely", "[[fault]]\nkind = 'no-reply'\nchance = 1.01\n",
                    "f:3: fault.chance: is 1.01; it has to be from 0 to 1"},
        BadScenario{"MessageWithoutSubId", "[[fault]]\nkind = 'no-reply'\nmessage = 0x1001\n",
                    "f:3: fault.message: is 0x1001, which is no message; it has to be a number "
                    "without quotes such as 0x6501, or a name such as \"query-update-rate\""},
        BadScenario{"MessageTooLarge", "[[fault]]\nkind = 'no-reply'\nmessage = 0x11000\n",
                    "f:3: fault.message: is 0x11000, which is no message; it has to be a number "
                    "without quotes such as 0x6501, or a name such as \"query-update-rate\""},
        BadScenario{"UnknownMessage", "[[fault]]\nkind = 'no-reply'\nmessage = 'rate'\n",
                    "f:3: fault.message: is \"rate\", which is no message; it has to be a number "
                    "without quotes such as 0x6501, or a name such as \"query-update-rate\""},
        BadScenario{"MessageNumberInQuotes", "[[fault]]\nkind = 'no-reply'\nmessage = '0x6501'\n",
                    "f:3: fault.message: is \"0x6501\", which is no message; it has to be a number "
                    "without quotes such as 0x6501, or a name such as \"query-update-rate\""},
        BadScenario{"MessageOfAnotherType", "[[fault]]\nkind = 'no-reply'\nmessage = 1.5\n",
                    "f:3: fault.message: is a fraction; it has to be a number without quotes "
                    "such as 0x6501, or a name such as \"query-update-rate\""},
        BadScenario{"WrongValueOfAQuery",
                    "[[fault]]\nkind = 'wrong-value'\nmessage = 'query-sbas'\n",
                    "f:3: fault.message: sets nothing; it has to be a setting for this kind of "
                    "fault"}),
    nameOf);

TEST(ScenarioProblems, AreReportedAtOnceInTheOrderOfTheLines) {
  EXPECT_EQ(problemsOf("[[fault]]\nkind = 1\nchance = 2\n[line]\nbaud = 1\n[device]\nx = 1\n"),
            "f:2: fault.kind: is an integer; it has to be a text in quotes\n"
            "f:3: fault.chance: is 2; it has to be from 0 to 1\n"
            "f:5: line.baud: is 1; it has to be 4800, 9600, 19200, 38400, 57600, 115200, 230400, "
            "460800 or 921600\n"
            "f:7: device.x: unknown key; it has to be module, receiver or talks-from-the-start");
}

TEST(ScenarioProblems, OfTheFormComeFromTheParser) {
  EXPECT_THAT(problemsOf("seed = 1\nseed = 2\n"), StartsWith("f:2: "));
  EXPECT_THAT(problemsOf("\n\n[device\n"), StartsWith("f:3: "));
  EXPECT_THAT(problemsOf("\n[=]\n"), StartsWith("f:2: "));
}

TEST(ScenarioProblems, NameTheLineOfALetterThatIsOutOfPlace) {
  EXPECT_THAT(problemsOf("seed = 1\n\u00FC = 2\n"), StartsWith("f:2: "));
  EXPECT_THAT(problemsOf("seed = \u0492\n"), StartsWith("f:1: "));
  EXPECT_THAT(problemsOf("seed = \u2C00\n"), StartsWith("f:1: "));
}

TEST(ScenarioProblems, StayOnTheirLines) {
  EXPECT_EQ(problemsOf("device.receiver = \"a\\nb\"\n"),
            "f:1: device.receiver: is \"a b\"; it has to be \"answering\", \"silent\" or "
            "\"absent\"");
}

TEST(ScenarioProblems, NameTheFileThatCannotBeRead) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "missing.toml";
  try {
    loadScenario(path);
    FAIL() << "there is no such file";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), path + ": cannot read it: No such file or directory");
  }
}

TEST(ScenarioProblems, NameTheFileThatIsWrong) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "wrong.toml";
  std::ofstream(path) << "seed = -1\n";
  try {
    loadScenario(path);
    FAIL() << "the seed is wrong";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), StartsWith(path + ":1: seed: "));
  }
}

}  // namespace
}  // namespace orb::sim
