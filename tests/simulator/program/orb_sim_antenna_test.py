"""Switches the antenna's supply with the library on the simulated device, and looks at the port
expander's registers that `orb-sim run` leaves."""

import os
import sys
import unittest

from orb_sim import OrbSimTest

SWITCH_ANTENNA = os.environ["ORB_SWITCH_ANTENNA"]

# Switches the antenna's supply as each argument says, after a look without that. Prints the status
# of two RMC sentences each time, of seconds that have begun after it: the receiver has the system's
# time.
LISTEN = f"""
import os, subprocess, sys, tty
from datetime import datetime, timezone
line = os.open("/dev/tty_gps", os.O_RDWR | os.O_NOCTTY)
tty.setraw(line)
sentences = os.fdopen(line, encoding="ascii", newline="\\r\\n")

def next_rmc(after):
    while True:
        fields = sentences.readline().split(",")
        if (fields[0].endswith("RMC")
                and datetime.strptime(fields[9] + fields[1] + "Z", "%d%m%y%H%M%S.%f%z") > after):
            return fields

for state in [None, *sys.argv[1:]]:
    if state:
        subprocess.run(({SWITCH_ANTENNA!r}, state), check=True)
    now = datetime.now(timezone.utc)
    for rmc in (next_rmc(now), next_rmc(now)):
        assert rmc[1].endswith(".000"), rmc
        print(rmc[2], end="")
    print(flush=True)
"""


class AntennaSupply(OrbSimTest):
    def setUp(self):
        super().setUp()
        self.registers = self.folder / "keep" / "i2c-registers.txt"
        self.options = ("--keep", str(self.folder / "keep"))

    def test_is_as_it_was_last_switched_and_begins_anew_in_each_run(self):
        on = ["ff", "ff"], ["ff", "fe"], "on"
        off = ["ff", "fe"], ["ff", "fe"], "off"
        for states, status, (output, direction, supply) in (
                (["on"], 0, on), (["on", "OFF"], 0, off), (["off", "on"], 0, on),
                (["off", "standby"], 1, off), ([], 0, (["ff", "ff"], ["ff", "ff"], "not driven"))):
            with self.subTest(states):
                result = self.run_command(SWITCH_ANTENNA, *states, options=self.options)
                self.assertEqual((result.returncode, result.stderr), (status, ""))
                lines = self.registers.read_text().splitlines()
                self.assertEqual(lines[2].split(), ["2", "3", "output", *output])
                self.assertEqual(lines[4].split(), ["6", "7", "direction", *direction])
                self.assertEqual(lines[6], f"antenna supply{supply:>25}")

    def test_cut_leaves_the_receiver_without_satellites_and_with_its_time(self):
        result = self.run_command(sys.executable, "-c", LISTEN, "off", "on",
                                  options=("--scenario", "talking"))
        self.assertEqual(self.output_of(result), "AA\nVV\nAA\n")

    def test_is_shared_by_the_programs_of_a_run_which_can_look_at_it(self):
        output = self.run_shell(f"""
            set -e
            '{SWITCH_ANTENNA}' off; tail -n 1 '{self.registers}'
            '{SWITCH_ANTENNA}' on & wait; tail -n 1 '{self.registers}'""", options=self.options)
        self.assertEqual([line.split()[-1] for line in output.splitlines()], ["off", "on"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
