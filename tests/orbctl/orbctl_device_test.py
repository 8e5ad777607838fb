"""What orbctl does on the simulated device, in success and in each kind of failure."""

import functools
import json
import operator
import os
import socket
import unittest

from orbctl import ORBCTL, ORB_SIM, OrbctlTest, part_of

SILENT = ("--silent",)
NO_DEVICE = ("--no-receiver",)
NO_MODULE = ("--no-module",)

# A command, and what it prints on the healthy device.
GOOD = [
    (["detect"], "A receiver QN4470T01 is fitted and answers on /dev/tty_gps.\n"),
    (["info"], "kernel    1.0.12\nodm       1.2.0\nrevision  2024.3.15\n"),
    (["get", "elevation-limit"], "5 degrees\n"),
    (["get", "elevation-limit", "sbas"],
     "elevation-limit         5 degrees\nsbas                    on\n"),
    (["set", "elevation-limit", "15"], "elevation-limit: 5 -> 15 degrees\n"),
    (["set", "elevation-limit", "5"], "elevation-limit: 5 degrees already\n"),
    (["set", "--dry-run", "elevation-limit", "15"], "elevation-limit: would set 5 -> 15 degrees\n"),
    (["set", "constellations", "glonass,GPS,galileo"],
     "constellations: gps,glonass -> gps,galileo,glonass\n"),
    (["set", "fix-mode", "2d-3d"], "fix-mode: 3d -> 2d-3d\n"),
    (["set", "time-reference", "utc"], "time-reference: gnss -> utc\n"),
    (["set", "pulse-width", "2000"], "pulse-width: 1000 -> 2000 us\n"),
    (["set", "navigation-mode", "3"], "navigation-mode: 0 -> 3\n"),
    (["set", "dop-mask", "default"], "dop-mask: mode 0, limits 300 300 300 -> default\n"),
    (["set", "output", "binary"], "output: binary\n"),
    (["backup", "saved.toml"],
     "saved.toml has 18 settings and the survey.\n"
     "Left out: dop-mask, since no operation sets mode 0, limits 300 300 300\n"
     "Left out: output, since no query reads it\n"),
    (["constellations"],
     "constellations          gps,glonass\nsbas                    on\n"
     "qzss                    on\nsecond-band             off\n"),
    (["interference"], "detection off\n"),
    (["satellites"], "11 satellites in the fix (3D+DGNSS)\n"),
    (["survey"], "dynamic\n"),
    (["survey", "static", "48.25", "11.5", "520"],
     "static at 48.2500000 degrees, 11.5000000 degrees, 520.00 m\n"),
    (["antenna-power", "on"],
     "The antenna's supply was switched on. A board that does not answer cannot be told from one "
     "that does.\n"),
    (["reset", "cold"], "A cold start was requested.\n"),
    (["restart"], "A restart was requested.\n"),
    (["raw", "64", "07"],
     "> 64 07  Query interference detection status of GNSS receiver \n"
     "< 83 64  Message Acknowledged\n"
     "    message = 64\n"
     "< 64 83 00 00  Interference detection status of GNSS receiver \n"
     "    detection = 0\n"
     "    status = 0\n"),
    (["call", "getElevationLimit"], "result = 0\nlimit = 5 degrees\n"),
    (["-q", "set", "elevation-limit", "15"], ""),
    (["-q", "get", "elevation-limit"], "5 degrees\n"),
]

# A command, the device, its exit status, and what it says.
BAD = [
    (["get", "elevation-limit", "--deadline", "0.3"], SILENT, 3,
     "no answer before the deadline: no byte arrives on the line (detection)",
     "check the receiver's power and the cable, then: orbctl doctor"),
    (["keys", "--values", "--deadline", "0.3"], SILENT, 3,
     "no answer before the deadline: no byte arrives on the line (detection)",
     "check the receiver's power and the cable, then: orbctl doctor"),
    (["get", "elevation-limit"], NO_DEVICE, 4,
     "/dev/tty_gps does not exist", "check the device node with: orbctl doctor"),
    (["get", "elevation-limit"], NO_MODULE, 5,
     "no module: the inventory tells of none at location 1",
     "ask the inventory service with: orbctl doctor"),
    (["get", "elevation-limit"], ("--hardware-id", "99999999-999"), 5,
     "another module is fitted at location 1: 99999999-999",
     "ask the inventory service with: orbctl doctor"),
    (["doctor", "--deadline", "0.3"], SILENT, 3,
     "receiver: no answer before the deadline: no byte arrives on the line (detection)",
     "check the receiver's power and the cable"),
    (["doctor"], NO_DEVICE, 4, "device: /dev/tty_gps No such file or directory",
     "is the driver of the serial port loaded, and the udev rule for tty_gps installed?"),
    (["doctor"], NO_MODULE, 5, "inventory: no module is known at location 1",
     "is one fitted, and does the inventory's file tell of it?"),
]


# What raw decodes: a query, and fields of its reply on the healthy device.
REPLIES = {
    "0200": {"kernel": "1.0.12", "odm": "1.2.0", "revision": "24.3.15"},
    "10": {"rate": "1 Hz"},
    "15": {"mode": "0"},
    "2E": {"mode": "0", "first limit": "300", "second limit": "300", "third limit": "300"},
    "2F": {"mode": "1", "elevation": "5 degrees", "cnr": "0 dB-Hz"},
    "44": {"mode": "0", "survey length": "2000 s", "deviation": "30", "latitude": "0 degrees",
           "longitude": "0 degrees", "altitude": "0 m", "present mode": "0", "surveyed": "0 s"},
    "46": {"delay": "0 0.01 ns"},
    "56": {"mode": "0", "alignment": "0"},
    "6202": {"enabled": "1"},
    "6204": {"enabled": "1"},
    "6403": {"interval": "1"},
    "6407": {"detection": "0", "status": "0"},
    "6412": {"first fix": "0", "later fixes": "0"},
    "6418": {"mode": "0"},
    "641A": {"constellations": "3"},
    "6420": {"leap seconds": "18 s", "next leap seconds": "18 s", "valid": "7"},
    "6430": {"interval": "1"},
    "6451": {"enabled": "0"},
    "647D": {"version": "ORB-SIM"},
    "6502": {"width": "1000 us"},
    "6504": {"frequency": "0 Hz"},
}


def packet(payload):
    """The packet with a payload that is given in hexadecimal."""
    data = bytes.fromhex(payload)
    return (b"\xA0\xA1" + len(data).to_bytes(2, "big") + data
            + bytes([functools.reduce(operator.xor, data, 0)]) + b"\r\n")


DETECTION = {"0201": [packet("8302") + packet("8001000100 0C00010200 0018030F")]}


# The clock of the receiver goes a hundred times as fast.
FAST = """
[time]
rate = 100
"""
# The first query of the detection stays unanswered.
SLOW_TO_START = """
[[fault]]
kind = "no-reply"
message = "query-software-revision"
target = "both"
times = 1
"""
NOISY = """
[line]
chatter-interval = "200ms"
chatter = "\\u00E4\\u00F6\\u00FC"
[receiver]
output = "none"
"""
LOST_ANSWER = """
[device]
talks-from-the-start = true
[[fault]]
kind = "no-reply"
message = "set-output-type"
times = 1
"""
# The queries of one setting are refused, the values of another are not kept.
PARTLY = """
[[fault]]
kind = "refusal"
message = "query-pps2-frequency"
[[fault]]
kind = "wrong-value"
message = "set-pps-pulse-width"
[[fault]]
kind = "refusal"
message = "query-gps-time"
"""
NOT_READ = """orbctl: frequency-output is left out: the receiver refuses the query; its firmware \
does not know it (gpsObtGetFreqOutput)
orbctl: not read: frequency-output
orbctl: see which query it is with: orbctl log
"""
ENDING = """
[[fault]]
kind = "silence"
message = "query-pps2-frequency"
"""
LOST_ONCE = """
[[fault]]
kind = "no-reply"
message = "query-software-revision"
first = 4
times = 1
"""
NO_MASKS = """
[[fault]]
kind = "no-reply"
message = "query-elevation-cnr-mask"
"""
INTERFERENCE = """
[receiver]
interference-detection = true
interference = "some"
"""


class OnTheDevice(OrbctlTest):
    def test_prints_what_is_asked(self):
        for arguments, output in GOOD:
            with self.subTest(arguments):
                self.check(self.orbctl(*arguments), 0, output, "")

    def test_says_what_is_wrong_and_what_to_do(self):
        for arguments, device, status, text, hint in BAD:
            with self.subTest(arguments, device=device):
                result = self.orbctl(*arguments, device=device)
                self.assertEqual((result.returncode, result.stderr),
                                 (status, f"orbctl: {text}\norbctl: {hint}\n"))

    def scenario(self, text):
        """Options for a device of this scenario."""
        file = self.folder / "scenario.toml"
        file.write_text('description = "of a test"\n' + text)
        return ["--scenario", str(file)]

    def test_waits_for_the_end_of_a_survey_and_says_what_it_found(self):
        result = self.orbctl("survey", "auto", "150", "--wait", device=self.scenario(FAST))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        # As far from the antenna as so short a survey is off.
        self.assertRegex(result.stdout, r"\Asurveyed for 150 s, now static at 48\.3712\d{3} "
                         r"degrees, 11\.5678901 degrees, 520\.\d\d m\n\Z")

    def test_tells_how_far_a_survey_has_come(self):
        result = self.shell(f"{ORBCTL} survey auto 7200 && {ORBCTL} status | grep survey")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertRegex(result.stdout, r"\Aauto, \d+ s of 7200 s\n"
                         r"survey        auto, \d+ s of 7200 s\n\Z")

    def test_shows_the_mean_so_far_and_its_shrinking_deviation(self):
        result = self.shell(f"{ORBCTL} -q survey auto 1000000 && "
                            f"for i in 1 2 3; do {ORBCTL} --json survey; sleep 0.2; echo ,; done",
                            self.scenario(FAST))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        surveys = json.loads(f"[{result.stdout.rstrip().removesuffix(',')}]")
        deviations = [survey["deviation"] for survey in surveys]
        self.assertTrue(deviations[0] >= deviations[1] >= deviations[2], deviations)
        self.assertLess(deviations[2], deviations[0])
        for survey in surveys:
            self.assertAlmostEqual(survey["latitude"], 48.3712345, delta=1e-5)
            self.assertAlmostEqual(survey["longitude"], 11.5678901, delta=1e-5)

    def test_does_not_wait_for_a_survey_that_is_none(self):
        self.check(self.orbctl("survey", "--wait"), 0, "dynamic\n", "")

    def test_looks_twice_for_a_receiver(self):
        device = self.scenario(SLOW_TO_START)
        self.check(self.orbctl("detect", device=device), 0, GOOD[0][1], "")
        result = self.orbctl("doctor", device=device)
        self.assertIn("ok    receiver   answers\n", result.stdout)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_finds_no_fault_with_a_receiver_that_is_silent_until_it_is_asked(self):
        result = self.shell(f"{ORBCTL} -q set output none; {ORBCTL} doctor")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("ok    line       no byte arrives on the line unasked, and the receiver "
                      "answers when it is asked\n", result.stdout)
        self.assertTrue(result.stdout.endswith("All is well.\n"), result.stdout)

    def test_takes_noise_for_noise_where_the_receiver_answers(self):
        result = self.orbctl("doctor", device=self.scenario(NOISY))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("note  line       bytes arrive that are neither text nor packets, but the "
                      "receiver answers: noise\n", result.stdout)

    def test_leaves_the_output_as_it_was_where_an_answer_is_lost(self):
        result = self.shell(f"{ORBCTL} position; {ORBCTL} doctor | grep line",
                            self.scenario(LOST_ANSWER))
        self.assertIn("(gpsObtSetMsgType)", result.stderr)
        self.assertIn("NMEA text is arriving", result.stdout)

    def test_says_in_words_how_much_interference_there_is(self):
        result = self.orbctl("interference", device=self.scenario(INTERFERENCE))
        self.check(result, 0, "detection on, interference: some\n", "")

    def test_reads_back_what_it_has_set(self):
        result = self.shell(f"{ORBCTL} -q set elevation-limit 15 && {ORBCTL} get elevation-limit")
        self.check(result, 0, "15 degrees\n", "")

    def test_changes_nothing_that_nobody_is_told_of(self):
        result = self.shell(f"{ORBCTL} set elevation-limit 15 >&-; echo $?; "
                            f"{ORBCTL} get elevation-limit")
        self.check(result, 0, "2\n5 degrees\n",
                   "orbctl: standard output cannot be written to; nothing was done\n"
                   "orbctl: to drop what is printed: orbctl ... > /dev/null\n")

    def test_shows_and_saves_what_can_be_read(self):
        result = self.shell(f"{ORBCTL} pulse; echo $?; {ORBCTL} backup saved.toml; echo $?; "
                            "head -n 4 saved.toml", self.scenario(PARTLY))
        left_out = ("dop-mask, since no operation sets mode 0, limits 300 300 300",
                    "frequency-output, since the receiver does not tell it",
                    "output, since no query reads it")
        self.check(result, 0,
                   "pulse-width             1000 us\npps-mode                0\n"
                   "time-reference          gnss\nantenna-delay           0 ns\n1\n"
                   "saved.toml has 17 settings and the survey.\n"
                   + "".join(f"Left out: {line}\n" for line in left_out) + "1\n"
                   + "".join(f"# Left out: {line}\n" for line in left_out) + "[settings]\n",
                   NOT_READ + NOT_READ)

    def test_takes_no_earlier_refusal_for_that_of_another_message(self):
        result = self.shell(f"{ORBCTL} get frequency-output; {ORBCTL} raw 10",
                            self.scenario(PARTLY + '[[fault]]\nkind = "no-reply"\n'
                                          'message = "query-update-rate"\ntarget = "both"\n'))
        self.assertEqual(result.returncode, 3)
        self.assertIn("did not answer in time: NMEA text is arriving, so the line is alive "
                      "(exchangeRaw)\n", result.stderr)

    def test_shows_a_status_with_gaps(self):
        result = self.orbctl("status", device=self.scenario(PARTLY))
        self.assertEqual(result.returncode, 1)
        self.assertEqual([line.split()[0] for line in result.stdout.splitlines()],
                         ["receiver", "fix", "position", "survey", "interference"])
        self.assertIn("\norbctl: not read: time\n", result.stderr)

    def test_asks_no_more_of_a_receiver_that_has_gone(self):
        result = self.orbctl("--deadline", "4", "keys", "--values", device=self.scenario(ENDING))
        self.check(result, 3, "",
                   "orbctl: no answer before the deadline: no byte arrives on the line (detection)\n"
                   "orbctl: check the receiver's power and the cable, then: orbctl doctor\n")

    def test_keeps_the_old_backup_where_another_cannot_be_written(self):
        (self.folder / "saved.toml").write_text("old")
        result = self.shell(f"trap '' XFSZ; ulimit -f 1; {ORBCTL} backup saved.toml")
        self.check(result, 7, "", "orbctl: cannot write saved.toml: File too large\n")
        self.assertEqual((self.folder / "saved.toml").read_text(), "old")
        self.assertEqual(list(self.folder.glob("saved*")), [self.folder / "saved.toml"])

    @unittest.skipIf(os.environ.get("ORB_SANITIZE"), "sanitizers take descriptors of their own")
    def test_ends_in_order_where_descriptors_are_few(self):
        tries = "".join(f"(ulimit -n {limit}; exec {ORBCTL} get elevation-limit); echo $?; "
                        for limit in range(4, 17))
        output = self.shell(tries).stdout.replace("5 degrees\n0\n", "done\n").split()
        self.assertEqual(sorted(set(output)), ["4", "done"])
        self.assertEqual(output, sorted(output))

    def test_says_what_was_changed_before_a_failure(self):
        (self.folder / "wanted.toml").write_text(
            "[settings]\nelevation-limit = 15\npulse-width = 2000\nsbas = false\n"
            '[survey]\nmode = "auto"\nlength = 7200\n')
        result = self.shell(f"{ORBCTL} set cnr-limit 20 qzss on pulse-width 2000 sbas off; echo $?; "
                            f"{ORBCTL} -q restore wanted.toml; echo $?", self.scenario(PARTLY))
        said = ("orbctl: pulse-width: refused, or the receiver kept another value "
                "(gpsObtTimePulseConfigure); changed before: {}; not tried: {}\n"
                "orbctl: see what it holds with: orbctl get\n")
        self.check(result, 0, "cnr-limit: 0 -> 20 dB-Hz\nqzss: on already\n1\n1\n",
                   said.format("cnr-limit", "sbas") + said.format("elevation-limit", "sbas, survey"))

    def test_restores_what_it_has_saved(self):
        result = self.shell(
            f"{ORBCTL} -q backup saved.toml && {ORBCTL} -q set elevation-limit 15 sbas off && "
            f"{ORBCTL} restore --dry-run saved.toml && {ORBCTL} restore saved.toml && "
            f"{ORBCTL} restore saved.toml")
        difference = ("elevation-limit         15 -> 5 degrees\n"
                      "sbas                    off -> on\n")
        self.check(result, 0, difference + difference + "Restored, and read back.\n"
                   "The receiver holds all of it already.\n", "")

    def test_saves_to_and_restores_from_standard_streams(self):
        result = self.shell(
            f"{ORBCTL} backup - > saved.toml && {ORBCTL} -q set elevation-limit 15 && "
            f"{ORBCTL} restore - < saved.toml")
        self.check(result, 0, "elevation-limit         15 -> 5 degrees\n"
                   "Restored, and read back.\n", "")

    def test_restores_from_a_socket(self):
        """As standard input can be one, over the network."""
        ours, theirs = socket.socketpair()
        with ours, theirs:
            ours.sendall(b"[settings]\nelevation-limit = 15\n")
            ours.shutdown(socket.SHUT_WR)
            result = self.run_program(ORB_SIM, "run", "--", ORBCTL, "restore", "-", stdin=theirs)
        self.check(result, 0, "elevation-limit         5 -> 15 degrees\n"
                   "Restored, and read back.\n", "")

    def test_restores_nothing_from_a_wrong_file(self):
        (self.folder / "wrong.toml").write_text("[settings]\nelevation-limit = 99\n")
        result = self.orbctl("restore", "wrong.toml")
        self.check(result, 2, "", "orbctl: wrong.toml:2: elevation-limit takes a whole number, "
                   "3 .. 85 degrees, not '99'\n"
                   "orbctl: nothing was sent; see: orbctl keys elevation-limit\n")

    def test_restores_what_cannot_be_read(self):
        (self.folder / "output.toml").write_text('[settings]\noutput = "nmea"\n')
        result = self.orbctl("restore", "output.toml")
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_saves_what_starts_a_simulated_receiver_that_saves_the_same(self):
        """Each setting is another than a receiver has by itself."""
        changed = {"antenna-delay": "-28", "constellations": "galileo,beidou", "sbas": "off",
                   "qzss": "off", "second-band": "on", "cnr-limit": "20", "elevation-limit": "15",
                   "fix-mode": "2d-3d", "dop-mask": "default", "navigation-mode": "3",
                   "interference-detection": "on", "time-reference": "utc", "pps-mode": "2",
                   "pulse-width": "2000", "frequency-output": "10000000",
                   "power-mode": "powersave", "update-rate": "20", "navigation-interval": "3",
                   "nmea-interval": "2"}
        words = " ".join(f"{key} {value}" for key, value in changed.items() if key != "second-band")
        script = (f"{ORBCTL} -q backup plain.toml && {ORBCTL} -q set {words} && "
                  f"{ORBCTL} -q survey static 48.123456789 -11.5 -20.25 && "
                  f"{ORBCTL} -q backup first.toml")
        self.check(self.shell(script, self.scenario("[receiver]\nsecond-band = true\n")), 0, "", "")
        self.check(self.orbctl("-q", "backup", "second.toml",
                               device=["--scenario", "first.toml"]), 0, "", "")
        plain, first, second = ((self.folder / f"{name}.toml").read_text()
                                for name in ("plain", "first", "second"))
        self.assertEqual(second, first)
        unchanged = set(plain.splitlines()) & set(first.splitlines())
        self.assertEqual({line.split(" =")[0] for line in unchanged if " = " in line} - {"length"},
                         {"second-band"})
        self.assertIn("second-band = true\n", first)

    def test_simulates_a_receiver_that_it_has_saved(self):
        (self.folder / "saved.toml").write_text(
            '[settings]\noutput = "binary"\n[survey]\nmode = "auto"\nlength = 7200\n')
        result = self.run_program(ORBCTL, "--simulate", "saved.toml", "status")
        self.assertRegex(result.stdout, r"survey        auto, \d+ s of 7200 s\n")

    def test_refuses_a_survey_that_is_none(self):
        for survey, text, hint in [
                ('mode = "static"', "[survey] latitude has to be -90 .. 90 degrees",
                 "nothing was sent"),
                ('mode = "static"\nlatitude = "a"', "[survey] latitude has to be -90 .. 90 degrees",
                 "nothing was sent"),
                ('mode = "auto"\nlength = 0', "[survey] length is 1 .. 1209600 s, not 0",
                 "nothing was sent"),
                ('mode = "stattic"', "there is no survey mode 'stattic'",
                 "it is dynamic, auto or static; nothing was sent")]:
            with self.subTest(survey):
                (self.folder / "survey.toml").write_text("[settings]\n[survey]\n" + survey + "\n")
                result = self.orbctl("restore", "survey.toml")
                self.check(result, 2, "",
                           f"orbctl: survey.toml:2: {text}\norbctl: {hint}\n")

    def test_restores_an_altitude_as_the_receiver_holds_it(self):
        (self.folder / "survey.toml").write_text(
            '[settings]\n[survey]\nmode = "static"\nlatitude = 48.1\nlongitude = 11.1\n'
            "altitude = 520.3\n")
        self.check(self.orbctl("-q", "restore", "survey.toml"), 0, "", "")

    def test_restores_a_survey(self):
        result = self.shell(
            f"{ORBCTL} -q survey static 48.25 11.5 520 && {ORBCTL} -q backup saved.toml && "
            f"{ORBCTL} -q survey dynamic && {ORBCTL} -q restore saved.toml && {ORBCTL} survey")
        self.check(result, 0, "static at 48.2500000 degrees, 11.5000000 degrees, 520.00 m\n", "")

    def test_decodes_every_reply_that_the_library_reads(self):
        """Each query's fields, of those that are not of this moment."""
        for query, fields in REPLIES.items():
            with self.subTest(query):
                [*_, reply] = self.json("raw", query)["replies"]
                shown = {field["name"]: f"{field['value']} {field['unit']}".strip()
                         for field in reply["fields"]}
                self.assertEqual(shown | fields, shown)
                self.assertNotEqual(fields, {})

    def on_answers(self, answers, *command):
        """Runs a command on a receiver that answers these payloads with those packets."""
        records = [(0, "client", b"")]
        for query, replies in answers.items():
            time = records[-1][0] + 10
            records.append((time, "client", packet(query)))
            records += [(time + 0.2 * (i + 1), "receiver", reply)
                        for i, reply in enumerate(replies)]
        lines = [{"orb-sim-trace": 1}] + [{"time": time, "from": speaker, "bytes": data.hex()}
                                          for time, speaker, data in records[1:]]
        (self.folder / "a.trace").write_text("".join(json.dumps(line) + "\n" for line in lines))
        return self.run_program(ORB_SIM, "replay", "a.trace", "--", *command)

    def test_takes_a_packet_without_a_message_for_no_answer(self):
        answers = DETECTION | {"10": [packet(""), packet("8310") + packet("8601")]}
        result = self.on_answers(answers, ORBCTL, "raw", "10")
        self.check(result, 0, "> 10  Query the position update rate of GNSS system \n"
                   "< 83 10  Message Acknowledged\n    message = 10\n"
                   "< 86 01  Position update rate of GNSS system \n    rate = 1 Hz\n", "")

    def test_shows_what_others_say_in_plain_characters(self):
        """Nobody else writes the terminal's title, or lines of orbctl's."""
        evil = "a\x1b]0;b\x07\nc\x7f\u009b"
        plain = r"a\x1b]0;b\x07\x0ac\x7f\xc2\x9b"
        answers = DETECTION | {"647D": [packet("64FE" + evil.encode().hex())]}
        result = self.on_answers(answers, ORBCTL, "raw", "647D")
        self.assertEqual(result.stdout.splitlines()[2:], [f"    version = {plain}"])
        result = self.on_answers(answers, ORBCTL, "call", "exchangeRaw", "d}")
        self.assertEqual(result.stdout.splitlines()[1:],
                         [r"replies = \x00\x0ed\xfe" + plain])
        self.assertIn(f": {plain}\n", self.orbctl(
            "get", "sbas", device=("--hardware-id", evil)).stderr)
        (self.folder / evil).symlink_to("/bin/sleep")
        result = self.shell(f"'{self.folder / evil}' 100 3< /dev/tty_gps & "
                            f"until grep -q c /proc/$!/comm; do sleep 0.1; done; "
                            f"{ORBCTL} doctor; kill $!")
        self.assertIn(rf" (a\x1b]0;b\x07", result.stdout)
        result = self.shell(f"printf 'a\\033b\\n' > /var/log/orbset-errors.log; {ORBCTL} log; "
                            f"printf 'a\\033b\\nc' > /tmp/orbitekChip-info.txt; {ORBCTL} identity")
        self.check(result, 0, "a\\x1bb\n" + "a\\x1bb\nc", "")

    def test_decodes_numbers_of_every_size(self):
        result = self.shell(f"{ORBCTL} -q survey static 48.25 11.5 -520 && {ORBCTL} raw 44")
        self.assertEqual(result.returncode, 0, result.stderr)
        fields = [line for line in result.stdout.splitlines() if line.startswith("    ")]
        self.assertEqual(fields, [
            "    message = 44", "    mode = 2", "    survey length = 2000 s", "    deviation = 30",
            "    latitude = 48.25 degrees", "    longitude = 11.5 degrees", "    altitude = -520 m",
            "    present mode = 2", "    surveyed = 0 s"])

    def test_tells_of_a_refused_message(self):
        result = self.orbctl("raw", "02")
        self.assertEqual((result.returncode, result.stderr),
                         (1, "orbctl: the receiver refuses this message\norbctl: compare its length "
                             "with: orbctl messages; else the firmware does not know it\n"))

    def test_doctor_prints_one_object(self):
        result = self.orbctl("--json", "doctor", device=NO_MODULE)
        data = json.loads(result.stdout)
        self.assertEqual((result.returncode, data["ok"]), (5, False))
        self.assertIn({"what": "inventory", "state": "BAD",
                       "found": "no module is known at location 1",
                       "next_step": "is one fitted, and does the inventory's file tell of it?"},
                      data["findings"])

    def test_leaves_the_output_as_it_was(self):
        result = self.shell(f"{ORBCTL} -q set output nmea && sleep 1.2 && {ORBCTL} position && "
                            f"{ORBCTL} doctor | grep line")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("NMEA text is arriving", result.stdout)

    def test_says_who_holds_the_line(self):
        for option, wait in [("-q", ""), ("", ""), ("-v", "orbctl: waiting for "
                             "process {}, which holds the line\n")]:
            with self.subTest(option):
                result = self.shell("echo $$ > /run/lock/LCK..tty_gps && "
                                    f"{ORBCTL} --deadline 0.2 {option} get elevation-limit; "
                                    "echo $? $$")
                status, holder = result.stdout.split()
                self.assertEqual(status, "6")
                self.assertEqual(result.stderr, wait.format(holder) +
                                 f"orbctl: process {holder} holds /dev/tty_gps\n"
                                 "orbctl: wait for it to end, or give more time with --deadline\n")

    def test_finds_a_line_that_loses_answers(self):
        result = self.orbctl("doctor", device=self.scenario(LOST_ONCE))
        self.assertEqual(result.returncode, 3)
        self.assertIn("BAD   receiver   answers only now and then\n", result.stdout)
        self.assertEqual(result.stderr, "orbctl: receiver: answers only now and then\norbctl: a "
                         "loose connector, a bad cable, or noise on the line? orbctl log tells "
                         "what was lost\n")

    def test_says_what_was_interrupted(self):
        result = self.shell(f"env --default-signal=INT {ORBCTL} set sbas off elevation-limit 20 "
                            "cnr-limit 9 > said & until grep -qs sbas said; do sleep 0.1; done; "
                            "kill -INT $!; wait $!; echo $?", self.scenario(NO_MASKS))
        self.check(result, 0, "130\n", "orbctl: interrupted at elevation-limit, which may be set "
                   "or not; changed before: sbas; not tried: cnr-limit\n")

    def test_says_that_defaults_were_interrupted(self):
        result = self.shell(f"env --default-signal=INT {ORBCTL} defaults configuration & "
                            "until grep -qs . /var/log/orbset-errors.log; do sleep 0.1; done; "
                            "kill -INT $!; wait $!; echo $?", self.scenario(NO_MASKS))
        self.assertEqual((result.stdout, result.stderr.splitlines()[-1]), (
            "130\n", "orbctl: interrupted; the configuration defaults may be set in part; "
            "see: orbctl keys --values"))

    def test_leads_from_a_group_to_set(self):
        self.check(self.orbctl("masks", "15"), 2, "",
                   "orbctl: The following argument was not expected: 15\n"
                   "orbctl: masks only shows settings; change one with: orbctl set KEY VALUE\n")

    def test_names_another_reader_of_the_line(self):
        result = self.shell(f"exec 3< /dev/tty_gps; {ORBCTL} --deadline 0.3 get sbas 3<&-; echo $$",
                            SILENT)
        self.check(result, 0, result.stdout,
                   "orbctl: no answer before the deadline: no byte arrives on the line; /dev/tty_gps "
                   f"is also open in {result.stdout.strip()} (sh) (detection)\n"
                   "orbctl: a second reader takes replies away: end it, and try again\n")

    def test_tells_why_the_inventory_cannot_be_asked(self):
        result = self.shell("export DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nowhere; "
                            f"{ORBCTL} get sbas; echo $?; {ORBCTL} doctor | grep inventory")
        problem = "cannot be asked: cannot connect to the system bus: No such file or directory\n"
        hint = "orbctl: is the inventory service running? systemctl status orb-inventoryd\n"
        self.check(result, 0, f"5\nBAD   inventory  {problem}",
                   f"orbctl: the inventory {problem}{hint}orbctl: inventory: {problem}{hint}")

    def test_waits_for_nobody_who_writes_the_identity(self):
        result = self.shell(f"mkfifo fifo; ln -s $PWD/fifo /tmp/orbitekChip-info.txt; "
                            f"timeout 20 {ORBCTL} identity")
        self.check(result, 1, "", "orbctl: cannot read /tmp/orbitekChip-info.txt\norbctl: what "
                   "stands there already is not replaced: remove it and try again\n")

    def test_shows_no_other_file_as_the_identity(self):
        file = "/tmp/orbitekChip-info.txt"
        hint = "orbctl: what stands there already is not replaced: remove it and try again\n"
        for made, problem in [
                (f"echo secret > other; ln -s $PWD/other {file}", f"cannot read {file}"),
                (f"truncate -s 4097 {file}", f"{file} is too long for an identity file")]:
            with self.subTest(made):
                self.check(self.shell(f"{made}; {ORBCTL} identity"), 1, "",
                           f"orbctl: {problem}\n{hint}")
        result = self.shell(f"yes | head -c 4096 > {file}; {ORBCTL} identity")
        self.check(result, 0, "y\n" * 2048, "")

    def test_has_the_same_status_where_nobody_can_be_told(self):
        result = self.shell(f"{ORBCTL} get sbas 2> /dev/full; echo $?; "
                            "printf '\\344\\n' > /var/log/orbset-errors.log; "
                            f"{ORBCTL} --json doctor > found; echo $?", NO_MODULE)
        self.assertEqual((result.returncode, result.stdout), (0, "5\n5\n"))
        self.assertFalse(json.loads((self.folder / "found").read_text())["ok"])

    def test_shows_the_librarys_prints_only_when_told(self):
        quiet = self.orbctl("get", "pulse-width")
        self.check(quiet, 0, "1000 us\n", "")
        verbose = self.orbctl("-v", "get", "pulse-width")
        self.assertEqual((verbose.returncode, verbose.stdout), (0, "1000 us\n"))
        self.assertIn("pulse_length_us: 1000\n", verbose.stderr)

    def test_simulates_by_itself(self):
        result = self.run_program(ORBCTL, "--simulate", "get", "elevation-limit")
        self.check(result, 0, "5 degrees\n", "")
        result = self.run_program(ORBCTL, "get", "elevation-limit", "--simulate", "wrong-module")
        self.assertEqual(result.returncode, 5)
        (self.folder / "detect").touch()
        self.check(self.run_program(ORBCTL, "--simulate", "detect"), 0, GOOD[0][1], "")
        result = self.run_program(ORBCTL, "--simulate", "silnt", "--", "detect")
        self.assertEqual(result.stderr, "orb-sim: there is no scenario silnt; orb-sim scenarios lists "
                         "them\n")


def load_tests(_loader, tests, _pattern):
    return part_of(tests)


if __name__ == "__main__":
    unittest.main()
