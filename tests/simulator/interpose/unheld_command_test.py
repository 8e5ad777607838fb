"""Runs programs with `orb-sim run` that make system calls without the C library."""

import os
import pathlib
import subprocess
import unittest

ORB_SIM = os.environ["ORB_SIM"]
PROGRAMS = pathlib.Path(os.environ["ORB_SIM_TEST_PROGRAMS"])
LIMIT = 60  # seconds for one run


class CommandWithSystemCallsOfItsOwn(unittest.TestCase):
    NAMED = "makes system calls without the C library: they reach the real machine"

    def run_command(self, *command):
        return subprocess.run([ORB_SIM, "run", "--", *command], capture_output=True, text=True,
                              timeout=LIMIT)

    def test_is_named(self):
        program = str(PROGRAMS / "direct_calls")
        result = self.run_command(program, "/dev/tty_gps")
        self.assertEqual(result.stderr, f"orb-sim: {program} {self.NAMED}\n")

    def test_is_named_where_a_shell_starts_it(self):
        program = str(PROGRAMS / "direct_calls")
        result = self.run_command("sh", "-c", f"'{program}' /dev/tty_gps; exit 0")
        self.assertEqual((result.returncode, result.stderr),
                         (0, f"orb-sim: {program} {self.NAMED}\n"))

    def test_is_refused_where_all_its_calls_are(self):
        program = str(PROGRAMS / "go_note")
        result = self.run_command(program)
        self.assertEqual(
            (result.returncode, result.stderr),
            (126, f"orb-sim: {program} is a Go program, which makes system calls without the C "
             "library: it would use the real device, so it is not started\n"))


if __name__ == "__main__":
    unittest.main(verbosity=2)
