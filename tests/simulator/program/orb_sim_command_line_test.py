"""What orb-sim says of itself, and of command lines that it does not take."""

import os
import re
import shlex
import unittest

from orb_sim import ORB_SIM, OrbSimTest

VERSION = os.environ["ORB_VERSION"]

RECEIVER_OPTIONS = {"--help", "--scenario", "--seed", "--silent", "--talk", "--kernel-version",
                    "--odm-version", "--revision"}
LISTING_OPTIONS = {"--json", "--only", "--no-nmea", "--wall-clock"}
OPTIONS = {
    "run": RECEIVER_OPTIONS | {"--no-receiver", "--hardware-id", "--no-module", "--tty", "--keep",
                              "--pps"},
    "scenarios": {"--help"},
    "serve": RECEIVER_OPTIONS | {"--link", "--tcp", "--pps"},
    "tap": LISTING_OPTIONS | {"--help", "--link", "--trace", "--append", "--force", "--rotate",
                              "--baud"},
    "replay": {"--help", "--link", "--fast", "--unknown"},
    "decode": LISTING_OPTIONS | {"--help"},
}


class Help(OrbSimTest):
    def output(self, *arguments):
        return self.output_of(self.orb_sim(*arguments))

    def test_tells_the_version(self):
        self.assertEqual(self.output("--version"), f"orb-sim {VERSION}\n")

    def test_has_a_line_for_each_subcommand_and_examples(self):
        text = self.output("--help")
        self.assertEqual(re.findall(r"^  ([a-z]+)  +[A-Z].*", text, re.MULTILINE), [
            "run", "scenarios", "serve", "tap", "replay", "decode"])
        self.assertGreaterEqual(len(re.findall(r"^  orb-sim ", text, re.MULTILINE)), 4)

    def test_tells_the_options_of_each_subcommand(self):
        for subcommand, options in OPTIONS.items():
            with self.subTest(subcommand):
                text = self.output(subcommand, "--help")
                self.assertIn(f"Usage: orb-sim {subcommand} ", text)
                self.assertEqual(set(re.findall(r"^  (?:-h,)?(--[a-z-]+)", text, re.MULTILINE)),
                                 options)
                for clutter in ("Excludes", "Needs", "REQUIRED", "TEXT:", "Positionals"):
                    self.assertNotIn(clutter, text)

    def test_says_what_surprises(self):
        text = self.output("run", "--help")
        self.assertRegex(text, "--silent .*waits for ever")
        self.assertRegex(text, "--keep .*makes it")


class CommandLine(OrbSimTest):
    def check(self, message, *arguments, see):
        self.check_failure(f"orb-sim: {message}\norb-sim: see orb-sim {see}--help\n", *arguments)

    def check_run(self, message, *options):
        self.check(message, "run", *options, "--", "true", see="run ")

    def test_without_subcommand_is_answered_with_the_usage(self):
        help_text = self.orb_sim("--help").stdout
        self.check_failure(f"orb-sim: a subcommand is missing\n\n{help_text}")

    def test_with_unknown_words_is_refused(self):
        self.check("The following argument was not expected: swim", "swim", see="")
        self.check_run("The following argument was not expected: --swim", "--swim")
        self.check_run("The following arguments were not expected: -scenario healthy", "-scenario",
                       "healthy")

    def test_with_a_command_that_does_not_follow_dashes_is_refused_with_a_hint(self):
        for subcommand, *others in (("run",), ("run", "--seed", "1"), ("replay", "x.trace")):
            self.check("The following arguments were not expected: ./client x\n"
                       f"orb-sim: write COMMAND after --, as in: orb-sim {subcommand} [...] -- "
                       "./client", subcommand, *others, "./client", "x", see=subcommand + " ")
        self.check("The following argument was not expected: x", "serve", "x", see="serve ")

    def test_with_an_empty_value_is_refused(self):
        for name in ("--scenario", "--tty", "--keep"):
            self.check_run(f"{name}: its value is empty", name, "")
        for name, *arguments in (("--link", "serve", "--link", ""),
                                 ("--scenario", "serve", "--link", "x", "--scenario", ""),
                                 ("DEVICE", "tap", "", "--link", "x"),
                                 ("--link", "tap", "x", "--link", ""),
                                 ("--trace", "tap", "x", "--link", "x", "--trace", ""),
                                 ("TRACE", "replay", "", "--link", "x"),
                                 ("--link", "replay", "x", "--link", ""),
                                 ("FILE", "decode", "")):
            self.check(f"{name}: its value is empty", *arguments, see=arguments[0] + " ")

    def test_with_a_value_too_many_or_too_few_is_refused(self):
        self.check_run("--seed is given more than once", "--seed", "1", "--seed", "2")
        self.check_run("--scenario needs a value: NAME|FILE", "--scenario")

    def test_with_a_command_for_a_subcommand_that_takes_none_is_refused(self):
        self.check_failure("orb-sim: decode takes no COMMAND\n", "decode", "--", "true")

    def test_with_contradictions_is_refused(self):
        self.check_run("--hardware-id excludes --no-module", "--no-module", "--hardware-id", "x")
        self.check_run("--silent excludes --no-receiver", "--silent", "--no-receiver")
        self.check_run("--silent excludes --tty", "--silent", "--tty", "/dev/null")
        self.check_run("--no-receiver excludes --tty", "--no-receiver", "--tty", "/dev/null")

    def test_with_impossible_versions_is_refused(self):
        for option in ("--kernel-version", "--odm-version"):
            self.check_run(f"{option}: 256 is above 255", option, "255.256.257")
            for text in ("1.2", "1.2.3.4", "1.2.x", "1..2", ""):
                self.check_run(f"{option}: {text} is not three numbers with dots between",
                               option, text)

    def test_with_impossible_dates_is_refused(self):
        for date in ("2024.2.30", "2023.2.29", "2024.0.1", "2024.13.1", "2024.1.0", "2024.257.1"):
            self.check_run(f"--revision: {date} is no date", "--revision", date)
        for date in ("1999.1.1", "2256.1.1"):
            self.check_run("--revision: the receiver can only tell years from 2000 to 2255",
                           "--revision", date)

    def test_with_impossible_numbers_is_refused(self):
        for number in ("x", "-1", "1.5", "", "18446744073709551616"):
            self.check_run(f"--seed: {number} is not a whole number from 0 to "
                           "18446744073709551615", "--seed", number)
        self.check("--tcp: 65536 is not a whole number from 0 to 65535", "serve", "--tcp", "65536",
                   see="serve ")

    def test_with_an_impossible_message_is_refused(self):
        for message in ("x", "", "0x", "0x10000", "0x12G", "6501", "serial-port"):
            self.check(f"--only: {message} is no message; it has to be a number such as 0x6501, or "
                       "a name such as set-timing, query-timing or timing", "decode", "--only",
                       message, see="decode ")

    def test_with_an_impossible_size_is_refused(self):
        for size in ("0", "-1", "999", "x", "1X", ""):
            result = self.orb_sim("tap", "/dev/null", "--trace", "x", "--rotate", size)
            self.assertEqual((result.returncode, result.stdout), (125, ""))
            self.assertRegex(result.stderr, "^orb-sim: --rotate: ")

    def test_with_a_link_that_cannot_be_made_is_refused(self):
        file = self.folder / "file"
        file.write_text("kept")
        for subcommand in ("serve", "tap", "replay"):
            self.check(f"--link: {file} is there already, and no symbolic link",
                       subcommand, "--link", str(file), see=subcommand + " ")
            self.check("--link: there is no folder /no/such", subcommand, "--link", "/no/such/x",
                       see=subcommand + " ")
        self.assertEqual(file.read_text(), "kept")
        self.check_failure("orb-sim: cannot make /proc/gps: No such file or directory\n", "serve",
                           "--link", "/proc/gps")

    def test_without_what_it_needs_is_refused(self):
        self.check_failure("orb-sim: give --link PATH or --tcp PORT, or both\n", "serve")
        self.check("DEVICE is required", "tap", "--link", "x", see="tap ")
        self.check("--rotate requires --trace", "tap", "/dev/null", "--rotate", "1MB", see="tap ")
        self.check("TRACE is required", "replay", see="replay ")
        for arguments in (("x",), ("x", "--link", "y", "--", "true")):
            self.check_failure("orb-sim: give either --link PATH or COMMAND, after --\n",
                               "replay", *arguments)


class LostOutput(OrbSimTest):
    def check_lost(self, redirection, reason, *arguments):
        command = shlex.join([ORB_SIM, *arguments])
        self.check_result(self.run_program("sh", "-c", f"{command} {redirection}"), 125, "",
                          f"orb-sim: cannot write standard output: {reason}\n")

    def test_is_an_error(self):
        for arguments in (("scenarios",), ("--help",), ("run", "--help"), ("--version",),
                          ("decode", "/bin/sh")):
            with self.subTest(arguments):
                self.check_lost(">/dev/full", "No space left on device", *arguments)
                self.check_lost(">&-", "Bad file descriptor", *arguments)

    def test_ends_silently_where_the_reader_has_seen_enough(self):
        command = shlex.join([ORB_SIM, "decode", "/bin/sh"])
        result = self.run_program("sh", "-c", f"{command} | head -n 1")
        self.assertEqual((result.stdout.count("\n"), result.stderr), (1, ""))


if __name__ == "__main__":
    unittest.main(verbosity=2)
