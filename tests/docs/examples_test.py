"""Each program of examples/ does on the simulated device what it says, and meets its faults."""

import os
import pathlib
import subprocess
import tempfile
import threading
import unittest

SOURCE = pathlib.Path(os.environ["ORB_SOURCE"])
PROGRAMS = pathlib.Path(os.environ["ORB_BUILD"]) / "bin"
LIMIT = 60  # seconds
VERSION = "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15"

# What each prints on a healthy device, and with which arguments.
PRINTED = {
    "antenna": ((), "reset skipp!\nantenna OFF\nantenna ON\n"),
    "constellations": ((), "reset skipp!\nGPS GALILEO with SBAS\n"),
    "deadline": ((), VERSION + "\n"),
    "defaults": ((), "reset skipp!\ncable delay 28 ns, elevation mask 10 degrees, "
                     "CNR mask 0 dB-Hz, survey AUTO\n"),
    "identify": ((), (SOURCE / "tests/package/identify.expected").read_text()),
    "pps": ((), "reset skipp!\npulse_length_us: 10000\n1PPS output mode: 1 \n"
                "1PPS Align source: 1 \n"),
    "survey": (("3",), "reset skipp!\nsurveyed: 48.3712 11.5679\n"),
}
# What goes wrong with a setting or a query that each of these uses, and what it then says.
FAULTS = {
    "antenna": ("set-output-type", "the output was not switched: result 4"),
    "constellations": ("query-sbas", "failed: result 5"),
    "defaults": ("query-cable-delay",
                 "not all was set: result 5, see /var/log/orbset-errors.log\n"
                 "not all was read: result 4"),
    "pps": ("query-pps-pulse-width", "the pulse width failed: result 5"),
    "survey": ("query-timing", "the survey was not begun: result 1"),
}
OTHERS = {"client_test", "status"}  # client_page_test.py runs status
FAULT = """
[device]
talks-from-the-start = true

[[fault]]
kind = "no-reply"
target = "both"
message = "{}"
"""


class Examples(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="examples.", dir="/tmp")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_on_device(self, name, arguments, *options):
        return subprocess.run([PROGRAMS / "orb-sim", "run", *options, "--", PROGRAMS / name,
                               *arguments], capture_output=True, text=True, timeout=LIMIT)

    def test_knows_every_example(self):
        names = {path.stem for path in SOURCE.glob("examples/*.cpp")}
        self.assertEqual(names, set(PRINTED) | OTHERS)

    def test_prints_on_a_healthy_device(self):
        for name, (arguments, printed) in PRINTED.items():
            with self.subTest(name):
                result = self.run_on_device(name, arguments)
                self.assertEqual((result.returncode, result.stdout, result.stderr),
                                 (0, printed, ""))

    def test_says_that_there_is_no_receiver(self):
        for name, (arguments, _) in PRINTED.items():
            with self.subTest(name):
                result = self.run_on_device(name, arguments, "--scenario", "wrong-module")
                self.assertIn("no receiver\n", result.stdout + result.stderr)
                self.assertEqual(result.returncode, 0 if name == "deadline" else 1)

    def test_says_what_failed(self):
        def check(name, message, said):
            scenario = self.folder / f"{name}.toml"
            scenario.write_text(FAULT.format(message))
            result = self.run_on_device(name, PRINTED[name][0], "--scenario", scenario)
            lines = [line for line in result.stderr.splitlines() if "Timed out" not in line]
            results[name] = (result.returncode, "\n".join(lines)), (1, said)

        results = {}
        threads = [threading.Thread(target=check, args=(name, *fault))
                   for name, fault in FAULTS.items()]  # each waits for time-outs
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(set(results), set(FAULTS))
        for name, (found, expected) in results.items():
            with self.subTest(name):
                self.assertEqual(found, expected)

    def test_pulses_come_out_as_they_were_set(self):
        pulses = self.folder / "pulses.txt"
        subprocess.run([PROGRAMS / "orb-sim", "run", "--pps", pulses, "--", "sh", "-c",
                        f"{PROGRAMS / 'pps'} && sleep 3"], check=True, timeout=LIMIT,
                       stdout=subprocess.DEVNULL)
        # UTC, with the delay of the cable taken off, and 10 ms wide.
        self.assertRegex(pulses.read_text(),
                         r"\.999999972Z pps rising\n.*\.009999972Z pps falling\n")

    def test_client_test_passes(self):
        subprocess.run([PROGRAMS / "client_test"], check=True, timeout=LIMIT,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, cwd=self.folder)


if __name__ == "__main__":
    unittest.main()
