#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include "orb-sim/scenario.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

using ::testing::StartsWith;

/// What the loader throws.
template <typename Load>
std::string problemsIn(Load load) {
  try {
    load();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "(none)";
}

std::string problemsOf(const std::string& text) {
  return problemsIn([&] { sim::parseScenario(text, "f"); });
}

/// A scenario, what is wrong with it, and what would be right.
struct BadScenario {
  const char* text;
  std::string problem;
  std::string accepted;  ///< what it has to be
};

void expectProblems(std::initializer_list<BadScenario> scenarios) {
  for (const BadScenario& bad : scenarios) {
    const std::string accepted = bad.accepted.empty() ? "" : "; it has to be " + bad.accepted;
    EXPECT_EQ(problemsOf(bad.text), bad.problem + accepted) << bad.text;
  }
}

constexpr char kTopKeys[] =
    "description, seed, device, receiver, settings, survey, position, track, satellite, solution, "
    "time, event, start, line or fault";
constexpr char kVersion[] = "three numbers from 0 to 255, such as \"1.0.12\"";
constexpr char kDate[] = "a date from 2000-01-01 to 2099-12-31";
constexpr char kMessage[] =
    "a number without quotes such as 0x6501, or a name such as \"query-update-rate\"";
constexpr char kThere[] = "there";
constexpr char kLeftOut[] = "left out";
constexpr char kStart[] = "\"now\" or a date and time such as 2026-03-15T12:00:00Z";
constexpr char kCalendar[] = "from 1980-01-06 to 2099-12-31";

TEST(ScenarioProblems, OfTheFile) {
  expectProblems({
      {"seed = 1\nsed = 1", "f:2: sed: unknown key", kTopKeys},
      {"[fault]\nkind = 'no-reply'", "f:1: fault: is a table", "tables [[fault]]"},
      {"seed = -1", "f:1: seed: is -1", "from 0 to 9223372036854775807"},
  });
}

TEST(ScenarioProblems, OfTheDevice) {
  expectProblems({
      {"device.module = ''", "f:1: device.module: is \"\"", "the module's identifier, or \"none\""},
      {"[device]\nreceiver = 'off'", "f:2: device.receiver: is \"off\"",
       "\"answering\", \"silent\" or \"absent\""},
      {"[device]\ntalks-from-the-start = 1", "f:2: device.talks-from-the-start: is an integer",
       "true or false"},
  });
}

TEST(ScenarioProblems, OfTheReceiver) {
  expectProblems({
      {"[receiver]\nkernel-version = '1.2'", "f:2: receiver.kernel-version: is \"1.2\"", kVersion},
      {"[receiver]\nodm-version = '1.256.3'", "f:2: receiver.odm-version: is \"1.256.3\"",
       kVersion},
      {"[receiver]\nrevision-date = '2024-03-15'", "f:2: receiver.revision-date: is a text", kDate},
      {"[receiver]\nrevision-date = 1999-12-31", "f:2: receiver.revision-date: is 1999-12-31",
       kDate},
      {"[receiver]\nversion-extension = '123456789012345678901234567890123'",
       "f:2: receiver.version-extension: has 33 bytes", "a text of at most 32"},
      {"[receiver]\nupdate-rate = 51", "f:2: receiver.update-rate: is 51", "from 0 to 50"},
      {"[receiver]\nconstellations = ['gps',\n'navic']",
       "f:3: receiver.constellations: is \"navic\"",
       "\"gps\", \"glonass\", \"galileo\" or \"beidou\""},
      {"[receiver.dop-mask]\nposition = 0.4", "f:2: receiver.dop-mask.position: is 0.4",
       "from 0.5 to 99.9"},
      {"[receiver]\npps-pulse-width = '101ms'", "f:2: receiver.pps-pulse-width: is \"101ms\"",
       "from 1us to 100ms"},
      {"[receiver]\npps-pulse-width = '1500ns'", "f:2: receiver.pps-pulse-width: is \"1500ns\"",
       "a multiple of 1us"},
      {"[receiver]\ncable-delay = '0.001ns'", "f:2: receiver.cable-delay: is \"0.001ns\"",
       "a multiple of 0.01ns"},
      {"[receiver.timing]\nsurvey-length = '1min'\nsurveyed = '61s'",
       "f:3: receiver.timing.surveyed: is \"61s\"", "from 0s to 1min"},
  });
}

TEST(ScenarioProblems, OfTheSurroundings) {
  expectProblems({
      {"[position]\nlatitude = 90.5", "f:2: position.latitude: is 90.5", "from -90 to 90"},
      {"[position]\nlatitude = 1\n[track]\n[[track.waypoint]]\nat = '0s'\nlatitude = 1\nlongitude "
       "= 1",
       "f:2: position.latitude: stands beside [track], which says where the antenna is", kLeftOut},
      {"[track]\nrepeats = true", "f:1: track.waypoint: is missing", kThere},
      {"[track]\n[[track.waypoint]]",
       "f:2: track.waypoint.at: is missing; it has to be there\nf:2: track.waypoint.latitude: is "
       "missing; it has to be there\nf:2: track.waypoint.longitude: is missing",
       kThere},
      {"[[track.waypoint]]\nat = '5s'\nlatitude = 1\nlongitude = 1\n[[track.waypoint]]\nat = "
       "'5s'\nlatitude = 1\nlongitude = 1",
       "f:6: track.waypoint.at: is not after the waypoint before; it has to be", ""},
      {"[[satellite]]\nconstellation = 'gps'", "f:1: satellite.number: is missing", kThere},
      {"[[satellite]]\nconstellation = 'qzss'\nnumber = 11", "f:3: satellite.number: is 11",
       "from 1 to 10"},
      {"[[satellite]]\nconstellation = 'gps'\nnumber = 1\n[[satellite]]\nconstellation = "
       "'gps'\nnumber = 1",
       "f:6: satellite.number: is 1, like that of a satellite above", "another one"},
      {"[solution]\nfix = '3d'\n[[satellite]]\nconstellation = 'gps'\nnumber = 1",
       "f:1: solution: stands beside [[satellite]]; one of them has to be left out", ""},
  });
}

TEST(ScenarioProblems, OfEvents) {
  constexpr char kNothing[] =
      "is all that there is; signals, interference, jump or rate has to say what happens then";
  expectProblems({
      {"[[event]]\nsignals = false", "f:1: event.at: is missing", kThere},
      {"[[event]]\nat = '1s'", std::string("f:2: event.at: ") + kNothing, ""},
      {"[[event]]\nat = '-1s'\njump = '1s'", "f:2: event.at: is \"-1s\"", "from 0s to 8784h"},
      {"[[event]]\nat = '1s'\njump = '200001h'", "f:3: event.jump: is \"200001h\"",
       "from -200000h to 200000h"},
      {"[[event]]\nat = '1s'\nrate = 1001", "f:3: event.rate: is 1001", "from 0 to 1000"},
      {"[[event]]\nat = '1s'\ninterference = 'much'", "f:3: event.interference: is \"much\"",
       R"("unknown", "none", "some" or "critical")"},
  });
}

TEST(ScenarioProblems, OfTheTimeAndTheStart) {
  expectProblems({
      {"[time]\nstart = 'today'", "f:2: time.start: is \"today\"", kStart},
      {"[time]\nstart = 2024-03-15", "f:2: time.start: is a date or a time", kStart},
      {"[time]\nstart = 1980-01-05T23:59:59Z",
       "f:2: time.start: is outside the receiver's calendar", kCalendar},
      {"[time]\nstart = 2100-01-01T00:00:00Z",
       "f:2: time.start: is outside the receiver's calendar", kCalendar},
      {"[time]\nleap-second = 'now'", "f:2: time.leap-second: is \"now\"",
       "a date and time such as 2027-01-01T00:00:00Z"},
      {"[time]\nleap-second = 2027-01-01T00:00:01Z", "f:2: time.leap-second: is within a minute",
       "the end of one"},
      {"[time]\nleap-second = 2100-01-01T00:00:00Z",
       "f:2: time.leap-second: is outside the receiver's calendar", kCalendar},
      {"[time]\nrate = -1", "f:2: time.rate: is -1", "from 0 to 1000"},
      {"[start]\ncold-fix = '-1s'", "f:2: start.cold-fix: is \"-1s\"", "from 0s to 24h"},
  });
}

TEST(ScenarioProblems, OfTheLineAndTheFaults) {
  expectProblems({
      {"[line]\nchecks-speed = true\nbaud = 230400",
       "f:3: line.baud: is 230400, beside checks-speed",
       "at most 115200, as the receiver's serial port"},
      {"[line]\nbaud = 14400", "f:2: line.baud: is 14400",
       "4800, 9600, 19200, 38400, 57600, 115200, 230400, 460800 or 921600"},
      {"[[fault]]\nchance = 0.5", "f:1: fault.kind: is missing", kThere},
      {"[[fault]]\nkind = 'lost'", "f:2: fault.kind: is \"lost\"",
       "\"no-reply\", \"late-reply\", \"refusal\", \"wrong-id\", \"bad-checksum\", \"cut-short\", "
       "\"overlong-length\", \"doubled\", \"pieces\", \"noise-before\", \"noise-inside\", "
       "\"nmea-burst\", \"wrong-value\", \"silence\", \"hang-up\" or \"slow-restart\""},
      {"[[fault]]\nkind = 'late-reply'", "f:1: fault.delay: is missing", kThere},
      {"[[fault]]\nkind = 'no-reply'\ndelay = '1s'",
       "f:3: fault.delay: means nothing to this kind of fault", kLeftOut},
      {"[[fault]]\nkind = 'hang-up'\ntarget = 'both'",
       "f:3: fault.target: means nothing to this kind of fault", kLeftOut},
      {"[[fault]]\nkind = 'nmea-burst'\nlength = 1001", "f:3: fault.length: is 1001",
       "from 1 to 1000"},
      {"[[fault]]\nkind = 'no-reply'\nfirst = 0", "f:3: fault.first: is 0", "from 1 to 1000000000"},
      {"[[fault]]\nkind = 'no-reply'\nchance = 1.01", "f:3: fault.chance: is 1.01", "from 0 to 1"},
      {"[[fault]]\nkind = 'no-reply'\nmessage = 0x1001",
       "f:3: fault.message: is 0x1001, which is no message", kMessage},
      {"[[fault]]\nkind = 'no-reply'\nmessage = 0x11000",
       "f:3: fault.message: is 0x11000, which is no message", kMessage},
      {"[[fault]]\nkind = 'no-reply'\nmessage = 'rate'",
       "f:3: fault.message: is \"rate\", which is no message", kMessage},
      {"[[fault]]\nkind = 'no-reply'\nmessage = '0x6501'",
       "f:3: fault.message: is \"0x6501\", which is no message", kMessage},
      {"[[fault]]\nkind = 'no-reply'\nmessage = 1.5", "f:3: fault.message: is a fraction",
       kMessage},
      {"[[fault]]\nkind = 'wrong-value'\nmessage = 'query-sbas'",
       "f:3: fault.message: sets nothing", "a setting for this kind of fault"},
  });
}

TEST(ScenarioProblems, AreReportedAtOnceInTheOrderOfTheLines) {
  EXPECT_EQ(problemsOf("[[fault]]\nkind = 1\nchance = 2\n[time]\nrate = -1\n[device]\nx = 1\n"),
            "f:2: fault.kind: is an integer; it has to be a text in quotes\nf:3: fault.chance: is "
            "2; it has to be from 0 to 1\nf:5: time.rate: is -1; it has to be from 0 to 1000\n"
            "f:7: device.x: unknown key; it has to be module, receiver or talks-from-the-start");
}

TEST(ScenarioProblems, OfTheFormComeFromTheParser) {
  EXPECT_THAT(problemsOf("seed = 1\nseed = 2\n"), StartsWith("f:2: "));
  EXPECT_THAT(problemsOf("\n\n[device\n"), StartsWith("f:3: "));
  EXPECT_THAT(problemsOf("\n[=]\n"), StartsWith("f:2: "));
  // Letters that are out of place.
  EXPECT_THAT(problemsOf("seed = 1\n\u00FC = 2\n"), StartsWith("f:2: "));
  EXPECT_THAT(problemsOf("seed = \u0492\n"), StartsWith("f:1: "));
  EXPECT_THAT(problemsOf("seed = \u2C00\n"), StartsWith("f:1: "));
}

TEST(ScenarioProblems, StayOnTheirLines) {
  EXPECT_EQ(
      problemsOf("device.receiver = \"a\\nb\"\n"),
      "f:1: device.receiver: is \"a b\"; it has to be \"answering\", \"silent\" or \"absent\"");
}

TEST(ScenarioProblems, NameTheFile) {
  const TemporaryFolder folder;
  const std::string path = folder / "scenario.toml";
  const auto load = [&] { sim::loadScenario(path); };
  EXPECT_EQ(problemsIn(load), path + ": cannot read it: No such file or directory");
  std::ofstream(path) << "seed = -1\n";
  EXPECT_THAT(problemsIn(load), StartsWith(path + ":1: seed: "));
}

}  // namespace
}  // namespace orb::test
