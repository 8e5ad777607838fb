"""What orbctl refuses before it touches the device, and what needs none."""

import os
import re
import subprocess
import unittest

from orbctl import ORBCTL, OrbctlTest

# Arguments, and what is said of them.
WRONG = [
    (["set", "elevation-limt", "15"],
     "there is no key 'elevation-limt'", "did you mean elevation-limit?"),
    (["get", "elevation"], "there is no key 'elevation'", "did you mean elevation-limit?"),
    (["get", "zzzzzzzz"], "there is no key 'zzzzzzzz'", "see all with: orbctl keys"),
    (["set", "elevation-limit", "86"],
     "elevation-limit takes a whole number, 3 .. 85 degrees, not '86'",
     "nothing was sent; see: orbctl keys elevation-limit"),
    (["set", "elevation-limit", "2"],
     "elevation-limit takes a whole number, 3 .. 85 degrees, not '2'",
     "nothing was sent; see: orbctl keys elevation-limit"),
    (["set", "elevation-limit", "15x"],
     "elevation-limit takes a whole number, 3 .. 85 degrees, not '15x'",
     "nothing was sent; see: orbctl keys elevation-limit"),
    (["set", "sbas", "yes"],
     "sbas takes on, off, not 'yes'", "nothing was sent; see: orbctl keys sbas"),
    (["set", "constellations", "gps,mars"],
     "constellations takes any of gps, galileo, beidou, glonass, separated by commas, not "
     "'mars'", "nothing was sent; see: orbctl keys constellations"),
    (["set", "power-mode", "fast"],
     "power-mode takes normal, powersave, not 'fast'",
     "nothing was sent; see: orbctl keys power-mode"),
    (["set", "elevation-limit", "15", "cnr-limit"],
     "cnr-limit needs a value: 0 .. 40 dB-Hz", None),
    (["get", "output"], "output cannot be read: no query tells it",
     "orbctl doctor tells what arrives on the line"),
    (["survey", "static", "91", "0", "0"], "LAT is -90 .. 90 degrees, not 91", "nothing was sent"),
    (["survey", "static", "0", "nan", "0"], "LON is -180 .. 180 degrees, not nan",
     "nothing was sent"),
    (["survey", "auto", "60s"], "SECONDS: seconds, as a number: 7200, not 60s",
     "see: orbctl survey --help"),
    (["survey", "auto", "0"], "SECONDS is 1 .. 1209600 s, not 0", "nothing was sent"),
    (["raw", "6"], "'6' is no bytes in hexadecimal", "as in: orbctl raw 64 07"),
    (["raw", "xy"], "'xy' is no bytes in hexadecimal", "as in: orbctl raw 64 07"),
    (["messages", "6F", "FE"], "the catalogue has no message 6F FE",
     "ids from 62 to 6F have two bytes, as 64 07; all others one, as 2F; see all with: orbctl "
     "messages"),
    (["call", "setMinCno", "1"], "there is no operation 'setMinCno'", "did you mean setMinCNo?"),
    (["call", "setMinCNo"], "setMinCNo takes 1 arguments, not 0", "see: orbctl operations setMinCNo"),
    (["call", "setMinCNo", "41"], "minimum is 0 .. 40 dB-Hz, not '41'", "nothing was sent"),
    (["call", "setAntennaDelay", "1e400"], "delay is -5000 .. 5000 ns, not '1e400'",
     "nothing was sent"),
    (["call", "setSurveyAuto", "1"], "setSurveyAuto takes 2 or 0 arguments, not 1",
     "see: orbctl operations setSurveyAuto"),
    (["set", "constellations", "gps", "galileo"], "there is no key 'galileo'",
     "separate the words by commas: gps,galileo"),
    (["set", "sbas", "on", "sbas", "off"], "sbas stands there twice", None),
    (["restore", "missing.toml"], None, None),
    (["restore", "-"], "standard input has no table [settings]",
     "write one with: orbctl backup FILE"),
    (["watch"], "watch needs a terminal", "for scripts: orbctl --json status"),
    (["statsu"], None, "did you mean status?"),
    (["help", "survey", "atuo"], "there is no command 'atuo'", "see: orbctl --help"),
    (["antenna-power", "maybe"], None, "see: orbctl antenna-power --help"),
]


class CommandLine(OrbctlTest):
    def run_alone(self, *arguments):
        """Without any device."""
        return self.run_program(ORBCTL, *arguments, stdin=subprocess.DEVNULL)

    def test_refuses_wrong_use_without_a_device(self):
        for arguments, text, hint in WRONG:
            with self.subTest(arguments):
                result = self.run_alone(*arguments)
                self.assertEqual((result.returncode, result.stdout), (2, ""))
                lines = result.stderr.splitlines()
                self.assertTrue(all(line.startswith("orbctl: ") for line in lines), lines)
                if text is not None:
                    self.assertEqual(lines[0], "orbctl: " + text)
                if hint is not None:
                    self.assertEqual(lines[-1], "orbctl: " + hint)

    def test_refuses_more_on_standard_input_than_a_file_may_have(self):
        text = "[settings]\nelevation-limit = 15\n" + 40000 * "# another comment, to fill a line\n"
        result = self.run_program(ORBCTL, "restore", "-", input=text)
        self.check(result, 2, "", "orbctl: standard input: cannot read it: it has more than 1 MiB\n")

    def test_tells_its_version(self):
        for word in "--version", "version":
            self.check(self.run_alone(word), 0, f"orbctl {os.environ['ORB_VERSION']}\n", "")

    def test_helps_by_a_command_too(self):
        for command in [], ["set"], ["survey", "auto"]:
            with self.subTest(command):
                page = self.run_alone(*command, "--help").stdout
                self.assertIn("Usage: " + " ".join(["orbctl"] + command), page)
                self.check(self.run_alone("help", *command), 0, page, "")

    def test_says_where_its_output_cannot_be_written(self):
        for arguments in ["--help"], ["--version"], ["--man"], ["help"], ["keys"]:
            with self.subTest(arguments), open("/dev/full", "w") as full:
                result = self.run_program(ORBCTL, *arguments, stdout=full, capture_output=False,
                                          stderr=subprocess.PIPE)
                self.assertEqual((result.returncode, result.stderr),
                                 (7, "orbctl: cannot write: No space left on device\n"))

    def test_help_names_the_operations_of_each_command(self):
        names = set(re.findall(r"^(\w+)\(", self.run_alone("operations").stdout, re.MULTILINE))
        for command, expected in {
                "info": {"gpsOrbGetFwVersion"}, "survey dynamic": {"setSurveyDynamic", "exchangeRaw",
                                                                   "gpsObtGetTimeMode"}}.items():
            page = self.run_alone(*command.split(), "--help").stdout
            self.assertEqual(set(re.findall(r"\w+", page.split("\n\n")[1])) - {"Operations"}, expected)
        # No other name is left over from what was once called.
        for page in re.findall(r"Operations: (.*?)\n\.", self.run_alone("--man").stdout, re.DOTALL):
            if not page.startswith("those that"):
                self.assertLessEqual(set(re.findall(r"\w+", page)), names)

    def test_tells_of_the_wait_in_the_help_of_the_survey(self):
        self.assertIn("--wait", self.run_alone("survey", "auto", "--help").stdout)

    def test_explains_results(self):
        for result, output in {
            "0": "0: the operation did what it was asked to\n",
            "4": "4: the expected reply did not arrive in time\n",
            "9": "1: an argument was rejected, or the setting read back differs from what was "
                 "requested\n8: a message could not be sent\nA setting was not sent, and the "
                 "receiver does not hold it. Most often the device is not there.\n",
            "256": "256: the module does not support the operation or the argument's value\n",
            "2": "2: no operation returns this\n",
        }.items():
            self.check(self.run_alone("explain", result), 0, output, "")

    def test_help_names_every_command(self):
        result = self.run_alone("--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for command in ("status", "detect", "info", "time", "position", "satellites", "get", "set",
                        "keys", "survey", "pulse", "constellations", "masks", "interference",
                        "antenna-power", "defaults", "restart", "reset", "uart", "identity", "raw",
                        "messages", "log", "explain", "doctor", "watch", "backup", "restore", "help",
                        "version", "completion", "schema"):
            self.assertIn(f"\n  {command} ", result.stdout)

    def test_lists_keys_and_operations_without_a_device(self):
        keys = self.run_alone("keys", "elevation-limit")
        self.check(keys, 0,
                   "elevation-limit         elevation mask: lower satellites are not used\n"
                   "                        3 .. 85 degrees\n"
                   "                        getElevationLimit, setElevationLimit\n", "")
        operations = self.run_alone("operations", "setElevationLimit")
        self.check(operations, 0,
                   "setElevationLimit(limit)\n"
                   "    sets the elevation mask, 3 to 85 degrees\n"
                   "    limit: 3 .. 85 degrees\n"
                   "    another value returns 1, with nothing sent. The carrier-to-noise ratio mask "
                   "is kept, the mask mode becomes 1\n"
                   "    takes at most 10100 ms\n", "")

    def test_knows_the_catalogue(self):
        for words in ["6407"], ["64", "07"]:
            self.check(self.run_alone("messages", *words), 0,
                       "64 07        2  Query interference detection status of GNSS receiver \n", "")
        self.check(self.run_alone("messages", "2F", "00"), 0,
                   "2F           1  Query the values of elevation mask and CNR mask used by GNSS "
                   "receiver\n", "")


if __name__ == "__main__":
    unittest.main()
