"""Runs programs in the circumstances that scenarios describe."""

import os
import sys
import unittest

from orb_sim import ASK_FOR_VERSION, ASK_HARDWARE_ID, ASK_VERSION, OrbSimTest

READY = ("chatty-nmea", "cold-start", "flaky-cable", "healthy", "noisy-line", "old-firmware",
         "silent", "slow-uart", "talking", "wrong-module")

# Half of the answers, as chance has it, have a wrong checksum.
HALF_BAD = """description = "Every other answer is damaged."
seed = 1
[device]
module = "11111111-111"
[[fault]]
kind = "bad-checksum"
message = 0x0200
chance = 0.5
"""

# Asks for the version often; prints one digit for each answer: whether it was damaged.
ASK_OFTEN = f"""
import os, tty
line = os.open("/dev/tty_gps", os.O_RDWR | os.O_NOCTTY)
tty.setraw(line)
for turn in range(40):
    os.write(line, {ASK_VERSION!r})
    answer = b""
    while len(answer) < 30:
        answer += os.read(line, 30 - len(answer))
    sum = 0
    for byte in answer[13:27]:
        sum ^= byte
    print(int(sum != answer[27]), end="")
"""


class Scenario(OrbSimTest):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "half bad.toml"
        self.file.write_text(HALF_BAD)

    def damage(self, *options):
        """Which answers are damaged, for these options of run."""
        return self.output_of(self.run_command(sys.executable, "-c", ASK_OFTEN, options=options))

    def version_fields(self, *options):
        return bytes.fromhex(self.run_command(*ASK_FOR_VERSION, options=options).stdout)[14:27]

    def test_draws_from_its_seed(self):
        self.assertEqual(self.damage(), "0" * 40)
        by_seed = {seed: self.damage("--scenario", str(self.file), "--seed", str(seed))
                   for seed in (1, 2, 3, 2 ** 64 - 1)}
        self.assertEqual(self.damage("--scenario", str(self.file)), by_seed[1])
        self.assertEqual(len(set(by_seed.values())), 4)
        self.assertTrue(5 < by_seed[1].count("1") < 35, by_seed)

    def test_gives_way_to_the_other_options(self):
        def module(*options):
            return self.run_shell(ASK_HARDWARE_ID,
                                  options=("--scenario", str(self.file), *options))
        self.assertIn("11111111-111", module())
        self.assertIn("222", module("--hardware-id", "222"))
        self.run_shell("test ! -e /dev/tty_gps",
                       options=("--scenario", str(self.file), "--no-receiver"))
        self.assertEqual(self.version_fields("--scenario", "old-firmware", "--kernel-version",
                                             "9.8.7")[1:5], bytes((0, 9, 8, 7)))

    def test_is_found_by_its_name(self):
        self.assertNotEqual(self.version_fields("--scenario", "old-firmware"),
                            self.version_fields("--scenario", "healthy"))
        self.assertEqual(self.version_fields("--scenario", "healthy"), self.version_fields())

    def test_is_found_as_a_file_in_the_current_folder(self):
        for name in ("half bad.toml", "./half bad.toml"):
            self.output_of(self.orb_sim("run", "--scenario", name, "--", "true"))

    def test_that_does_not_exist_is_refused(self):
        self.check_failure("orb-sim: there is no scenario flaky; orb-sim scenarios lists them\n",
                           "run", "--scenario", "flaky", "--", "true")

    def test_with_mistakes_is_refused_with_a_line_for_each(self):
        (self.folder / "bad.toml").write_text(HALF_BAD + 'sped = 1\nevery = "x"\n')
        result = self.orb_sim("run", "--scenario", "bad.toml", "--", "true")
        self.assertEqual((result.returncode, result.stdout), (125, ""))
        first, second = result.stderr.splitlines()
        self.assertRegex(first, r"^orb-sim: bad\.toml:9: fault\.sped: ")
        self.assertRegex(second, r"^orb-sim: bad\.toml:10: fault\.every: ")


class DocumentedProgram(OrbSimTest):
    """The program and the steps of the CI job in docs/simulator.md."""

    MASKS = "CNR mask: 0\n" * 10

    def check(self, status, output, *options):
        result = self.run_command(os.environ["ORB_SIM_POLL"], options=options)
        self.assertEqual((result.returncode, result.stdout), (status, output), result.stderr)
        return result.stderr

    def test_works_on_a_healthy_device(self):
        self.assertEqual(self.check(0, "reset skipp!\n" + self.MASKS), "")

    def test_puts_up_with_a_flaky_cable(self):
        errors = self.check(0, "reset skipp!\n" + self.MASKS, "--scenario", "flaky-cable",
                            "--seed", "2")
        self.assertIn("Timed out", errors)
        self.assertIn("no answer, attempt 1\n", errors)

    def test_says_when_there_is_no_receiver(self):
        self.assertEqual(self.check(1, "", "--scenario", "wrong-module"), "no receiver\n")


class Scenarios(OrbSimTest):
    def test_are_listed_with_a_sentence_each(self):
        lines = [line.split(None, 1)
                 for line in self.output_of(self.orb_sim("scenarios")).splitlines()]
        self.assertEqual(tuple(name for name, _ in lines), READY)
        for name, sentence in lines:
            self.assertRegex(sentence, r"^[A-Z].*\.$", name)


if __name__ == "__main__":
    unittest.main(verbosity=2)
