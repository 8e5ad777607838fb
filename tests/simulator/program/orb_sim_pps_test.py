"""Reads the edges of the 1PPS output that `orb-sim --pps` notes."""

import os
import re
import signal
import unittest

from orb_sim import OrbSimTest, runs_a_command, wait_until

EDGE = r"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{9})Z pps (rising|falling)\n"


class Pps(OrbSimTest):
    def setUp(self):
        super().setUp()
        self.pulses = self.folder / "pulses"

    def scenario(self, text):
        (self.folder / "my.toml").write_text("[time]\nrate = 100\n" + text)
        return "my.toml"

    def test_appends_lines_to_a_file(self):
        self.pulses.write_text("what was there\n")
        scenario = self.scenario('[receiver]\npps-pulse-width = "20ms"\npps2-frequency = 10\n')
        with self.offered_line("serve", "gps", "--scenario", scenario,
                               "--pps", "pulses") as (process, _):
            wait_until(lambda: self.pulses.read_text().count("\n") > 5, "pulses")
            self.end(process, signal.SIGTERM)
        lines = self.pulses.read_text().splitlines(keepends=True)
        self.assertEqual(lines[:4], ["what was there\n",
                                     "2024-02-08T00:00:59.999999993Z pps2 10 Hz\n",
                                     "2024-02-08T00:01:00.999999993Z pps rising\n",
                                     "2024-02-08T00:01:01.019999993Z pps falling\n"])

    def test_writes_to_whoever_reads_a_fifo(self):
        os.mkfifo(self.pulses)
        with self.offered_line("serve", "gps", "--scenario", self.scenario(""),
                               "--pps", "pulses") as (process, _):
            for _ in range(2):  # readers come and go
                with open(self.pulses, encoding="ascii") as reader:
                    lines = [reader.readline() for _ in range(5)]
                begun = lines[0].endswith(" falling\n")  # the pulse, before there was a reader
                edges = [re.fullmatch(EDGE, line) for line in lines[begun:][:4]]
                self.assertTrue(all(edges), lines)
                self.assertEqual([edge[2] for edge in edges], ["rising", "falling"] * 2)
            self.end(process, signal.SIGTERM)

    @runs_a_command
    def test_notes_those_of_a_run(self):
        self.run_shell("until grep -qs falling pulses; do sleep 0.1; done", cwd=self.folder,
                       options=["--scenario", str(self.folder / self.scenario("")),
                                "--pps", "pulses"])
        self.assertRegex(self.pulses.read_text().split("\n", 1)[1], EDGE)

    def test_says_where_it_cannot_write(self):
        self.check_failure("orb-sim: none/pulses: No such file or directory\n",
                           "serve", "--link", "gps", "--pps", "none/pulses")


if __name__ == "__main__":
    unittest.main()
