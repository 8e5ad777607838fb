"""Reads the receiver's NMEA sentences with a parser that is not ours, and believes only that."""

import collections
import datetime
import os
import subprocess
import unittest

import pynmea2

POSITION_TOLERANCE = 1e-4 / 60  # degrees: the last digit of the minutes
SECONDS = 10

STANDING = "receiver.constellations = ['gps', 'glonass', 'galileo', 'beidou']\n"
# Northwards and upwards, south of the equator and west of Greenwich.
MOVING = STANDING + """
[[track.waypoint]]
at = "0s"
latitude = -33.0
longitude = -70.5
altitude = 600
[[track.waypoint]]
at = "100s"
latitude = -32.99
longitude = -70.5
altitude = 700
"""
CASES = (STANDING, MOVING, "receiver = { constellations = ['gps'], sbas = false, qzss = false }",
         "start = { cold = true, cold-fix = '5s' }", "solution = {}")


def sentences(scenario):
    output = subprocess.run([os.environ["PRINT_NMEA"], scenario], check=True, capture_output=True,
                            timeout=30).stdout.decode("ascii")
    lines = output.split("\r\n")
    assert lines.pop() == "", "the last line is complete"
    return [pynmea2.parse(line, check=True) for line in lines]


def of_kind(messages, kind):
    return [message for message in messages if message.sentence_type == kind]


def fields(message, name, numbers):
    """The fields with this name and a number that are not empty."""
    return {getattr(message, name.format(number)) for number in numbers} - {""}


class NmeaParser(unittest.TestCase):
    def test_accepts_every_sentence_of_every_case(self):
        for case in CASES:
            with self.subTest(case):
                kinds = collections.Counter(m.sentence_type for m in sentences(case))
                self.assertEqual(set(kinds), {"GGA", "GSA", "GSV", "GLL", "RMC", "VTG", "ZDA"})
                self.assertEqual(kinds["GGA"], SECONDS)

    def test_reads_the_place(self):
        for message in sentences(STANDING):
            if message.sentence_type in ("GGA", "RMC", "GLL"):
                self.assertAlmostEqual(message.latitude, 48.3712345, delta=POSITION_TOLERANCE)
                self.assertAlmostEqual(message.longitude, 11.5678901, delta=POSITION_TOLERANCE)
            if message.sentence_type == "GGA":
                self.assertAlmostEqual(message.altitude, 475.9)
                self.assertAlmostEqual(float(message.geo_sep), 44.2)
                self.assertEqual((message.gps_qual, int(message.num_sats)), (2, 19))

    def test_reads_the_time(self):
        # Week 2300 began on 2024-02-04; the receiver's clock stands at 345,678 s of GPS time.
        now = datetime.datetime(2024, 2, 4) + datetime.timedelta(seconds=345678 - 18)
        for message in sentences(STANDING):
            if message.sentence_type == "GGA":  # the first of each second
                now += datetime.timedelta(seconds=1)
            if message.sentence_type in ("GGA", "RMC", "GLL", "ZDA"):
                self.assertEqual(message.timestamp.replace(tzinfo=None), now.time())
            if message.sentence_type == "RMC":
                self.assertEqual(message.datestamp, now.date())
            if message.sentence_type == "ZDA":
                self.assertEqual((message.year, message.month, message.day),
                                 (now.year, now.month, now.day))

    def test_lists_the_satellites_in_use_and_in_view(self):
        messages = sentences(STANDING)
        in_use = set().union(*(fields(gsa, "sv_id{:02d}", range(1, 13))
                               for gsa in of_kind(messages, "GSA")))
        in_view = set().union(*(fields(gsv, "sv_prn_num_{}", range(1, 5))
                                for gsv in of_kind(messages, "GSV")))
        self.assertEqual((len(in_use), len(in_view)), (19, 23))
        self.assertLess(in_use, in_view)

    def test_reads_speed_and_course_on_a_track(self):
        # A degree of latitude is 110,905 m long at 33 degrees south, plus its share of the height.
        metres_per_second = (110905 + 11) * 0.01 / 100
        messages = sentences(MOVING)
        for second, rmc in enumerate(of_kind(messages, "RMC"), start=1):
            self.assertAlmostEqual(rmc.latitude, -33 + second * 1e-4, delta=POSITION_TOLERANCE)
            self.assertAlmostEqual(rmc.longitude, -70.5, delta=POSITION_TOLERANCE)
            self.assertAlmostEqual(rmc.spd_over_grnd, metres_per_second * 3600 / 1852, delta=0.06)
            self.assertEqual(rmc.true_course, 0)
        for vtg in of_kind(messages, "VTG"):
            self.assertAlmostEqual(float(vtg.spd_over_grnd_kmph), metres_per_second * 3.6,
                                   delta=0.06)


if __name__ == "__main__":
    unittest.main(verbosity=2)
