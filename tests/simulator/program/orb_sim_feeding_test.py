"""Runs the commands of docs/feeding.md, which feed programs that only listen."""

import datetime
import os
import pathlib
import re
import shutil
import subprocess
import unittest
import xml.etree.ElementTree

from orb_sim import ORB_SIM, OrbSimTest

PAGE = pathlib.Path(os.environ["ORB_FEEDING_PAGE"]).read_text()
NTPSEC = os.environ["ORB_NTPSEC"]  # where ./test unpacks it; an installed one does as well

NAMESPACES = ("unshare", "--user", "--map-root-user", "--net", "--pid", "--fork", "true")
PLACE = {"lat": 48.3712345, "lon": 11.5678901}
TOLERANCE = 1e-5  # degrees


def commands_of(*headings):
    """The commands below these headings of the page."""
    blocks = []
    for heading in headings:
        section = re.search(rf"^## {heading}\n(.*?)(?=^## |\Z)", PAGE, re.M | re.S)
        blocks += re.findall(r"^```sh\n(.*?)^```$", section[1], re.M | re.S)
    return blocks


class Feeding(OrbSimTest):
    def setUp(self):
        super().setUp()
        programs = self.folder / "programs"
        programs.mkdir()
        (programs / "orb-sim").symlink_to(ORB_SIM)
        self.environment["PATH"] = ":".join((str(programs), os.environ["PATH"],
                                             f"{NTPSEC}/usr/bin", f"{NTPSEC}/usr/sbin",
                                             "/usr/sbin", "/sbin"))

    def follow(self, *headings):
        """Runs the commands below these headings, with a receiver that talks; returns what they
        print."""
        blocks = commands_of("A receiver that talks", *headings, "The end")
        self.assertEqual(len(blocks), 2 + len(headings))
        # The receiver must end even where a command before the last one fails.
        script = "set -eu\ntrap 'kill $!' EXIT\n" + "".join(blocks) + "trap - EXIT\nwait\n"
        result = self.run_program("bash", "-c", script, cwd=self.folder)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def test_gives_a_parser_and_a_plotter_the_place_and_the_time(self):
        before = datetime.datetime.now(datetime.timezone.utc)
        lines = self.follow("A parser", "A plotter").splitlines()
        after = datetime.datetime.now(datetime.timezone.utc)
        self.assertGreaterEqual(len(lines), 3)
        times = []
        for line in lines:
            date, time, status, latitude, longitude = line.split()
            self.assertEqual(status, "A")
            self.assertAlmostEqual(float(latitude), PLACE["lat"], delta=TOLERANCE)
            self.assertAlmostEqual(float(longitude), PLACE["lon"], delta=TOLERANCE)
            times.append(datetime.datetime.fromisoformat(f"{date} {time[:8]}+00:00"))
        self.assertEqual([next - first for first, next in zip(times, times[1:])],
                         [datetime.timedelta(seconds=1)] * (len(times) - 1))
        self.assertLess(before - datetime.timedelta(seconds=1), times[0])
        self.assertLess(times[-1], after)

        gpx = xml.etree.ElementTree.parse(self.folder / "track.gpx")
        points = list(gpx.iter("{http://www.topografix.com/GPX/1/0}trkpt"))
        self.assertGreaterEqual(len(points), len(times))
        for point in points:
            for name, degrees in PLACE.items():
                self.assertAlmostEqual(float(point.get(name)), degrees, delta=TOLERANCE)
        told = {point.findtext("{http://www.topografix.com/GPX/1/0}time")[:19] for point in points}
        self.assertLessEqual({time.isoformat()[:19] for time in times}, told)
        self.assertIn("11.56789", (self.folder / "track.kml").read_text())

    def test_is_a_clock_that_an_ntp_server_reaches(self):
        for program in ("ntpd", "ntpq", "ip"):
            if shutil.which(program, path=self.environment["PATH"]) is None:
                self.skipTest(f"there is no {program}")
        namespaces = subprocess.run(NAMESPACES, capture_output=True, text=True)
        if namespaces.returncode != 0:
            self.skipTest(f"ntpd needs namespaces of its own: {namespaces.stderr.strip()}")
        peer = self.follow("An NTP server").splitlines()[-1].split()
        name, reach, offset = peer[0].lstrip("* "), peer[-4], float(peer[-2])
        self.assertEqual((name, reach), ("NMEA(0)", "377"))
        self.assertLess(abs(offset), 1000)  # milliseconds: it is the right second


if __name__ == "__main__":
    unittest.main(verbosity=2)
