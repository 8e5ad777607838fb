"""Reads the receiver's NMEA sentences with a parser that is not ours, and believes only that."""

import collections
import datetime
import os
import subprocess
import unittest

import pynmea2

POSITION_TOLERANCE = 1e-4 / 60  # degrees: the last digit of the minutes
SECONDS = 10


def sentences(case):
    output = subprocess.run([os.environ["PRINT_NMEA"], case], check=True, capture_output=True,
                            timeout=30).stdout.decode("ascii")
    lines = output.split("\r\n")
    assert lines.pop() == "", "the last line is complete"
    return [pynmea2.parse(line, check=True) for line in lines]


def of_kind(messages, kind):
    return [message for message in messages if message.sentence_type == kind]


def used_satellites(gsa):
    return [getattr(gsa, f"sv_id{place:02d}") for place in range(1, 13)
            if getattr(gsa, f"sv_id{place:02d}")]


def epochs(messages):
    """The messages, cut before each GGA."""
    cut = []
    for message in messages:
        if message.sentence_type == "GGA":
            cut.append([])
        cut[-1].append(message)
    return cut


class NmeaParser(unittest.TestCase):
    def test_accepts_every_sentence_of_every_case(self):
        for case in ("standing", "gps-only", "moving", "cold", "fast", "without-sky"):
            with self.subTest(case=case):
                kinds = collections.Counter(m.sentence_type for m in sentences(case))
                expected = {"GGA", "GSA", "GSV", "RMC", "ZDA"}
                self.assertLessEqual(expected, set(kinds))
                if case != "fast":
                    self.assertLessEqual({"GLL", "VTG"}, set(kinds))
                    self.assertEqual(kinds["GGA"], SECONDS)

    def test_reads_the_place(self):
        for message in sentences("standing"):
            if message.sentence_type in ("GGA", "RMC", "GLL"):
                self.assertAlmostEqual(message.latitude, 48.3712345, delta=POSITION_TOLERANCE)
                self.assertAlmostEqual(message.longitude, 11.5678901, delta=POSITION_TOLERANCE)
            if message.sentence_type == "GGA":
                self.assertAlmostEqual(message.altitude, 475.9)
                self.assertAlmostEqual(float(message.geo_sep), 44.2)
                self.assertEqual(message.gps_qual, 2)

    def test_reads_the_time(self):
        # Week 2300 began on 2024-02-04; the receiver's clock stands at 345,678 s of GPS time.
        start = datetime.datetime(2024, 2, 4) + datetime.timedelta(seconds=345678 - 18)
        for second, epoch in enumerate(epochs(sentences("standing")), start=1):
            now = start + datetime.timedelta(seconds=second)
            for message in epoch:
                if message.sentence_type in ("GGA", "RMC", "GLL", "ZDA"):
                    self.assertEqual(message.timestamp.replace(tzinfo=None), now.time())
                if message.sentence_type == "RMC":
                    self.assertEqual(message.datestamp, now.date())
                if message.sentence_type == "ZDA":
                    self.assertEqual((message.year, message.month, message.day),
                                     (now.year, now.month, now.day))

    def test_counts_the_satellites_in_use_as_they_are_listed(self):
        for case, count in (("standing", 19), ("gps-only", 7)):
            for epoch in epochs(sentences(case)):
                listed = [s for gsa in of_kind(epoch, "GSA") for s in used_satellites(gsa)]
                self.assertEqual(len(listed), count)
                self.assertEqual(len(set(listed)), count)
                self.assertEqual(int(of_kind(epoch, "GGA")[0].num_sats), count)

    def test_lists_the_satellites_in_view_in_numbered_sentences(self):
        for epoch in epochs(sentences("standing")):
            groups = collections.defaultdict(list)  # by talker
            in_use = {s for gsa in of_kind(epoch, "GSA") for s in used_satellites(gsa)}
            in_view = set()
            for gsv in of_kind(epoch, "GSV"):
                groups[gsv.talker].append(gsv)
                in_view |= {getattr(gsv, f"sv_prn_num_{place}") for place in range(1, 5)} - {""}
            self.assertEqual(sum(int(g[0].num_sv_in_view) for g in groups.values()), 23)
            self.assertEqual(len(in_view), 23)
            self.assertLess(in_use, in_view)
            for group in groups.values():
                self.assertEqual([int(gsv.msg_num) for gsv in group],
                                 list(range(1, int(group[0].num_messages) + 1)))
            self.assertEqual(set(groups), {"GP", "GL", "GA", "GB", "GQ"})

    def test_hears_the_talker_of_the_constellations(self):
        for case, talker in (("standing", "GN"), ("gps-only", "GP")):
            talkers = {m.talker for m in sentences(case) if m.sentence_type != "GSV"}
            self.assertEqual(talkers, {talker})
        self.assertEqual({m.talker for m in of_kind(sentences("gps-only"), "GSV")}, {"GP"})

    def test_reads_speed_and_course_on_a_track(self):
        # A degree of latitude is 110,905 m long at 33 degrees south, plus its share of the height.
        metres_per_second = (110905 + 11) * 0.01 / 100
        messages = sentences("moving")
        for second, rmc in enumerate(of_kind(messages, "RMC"), start=1):
            self.assertAlmostEqual(rmc.latitude, -33 + second * 1e-4, delta=POSITION_TOLERANCE)
            self.assertAlmostEqual(rmc.longitude, -70.5, delta=POSITION_TOLERANCE)
            self.assertAlmostEqual(rmc.spd_over_grnd, metres_per_second * 3600 / 1852, delta=0.06)
            self.assertEqual(rmc.true_course, 0)
        for vtg in of_kind(messages, "VTG"):
            self.assertAlmostEqual(float(vtg.spd_over_grnd_kmph), metres_per_second * 3.6,
                                   delta=0.06)

    def test_sees_a_cold_receiver_find_its_fix(self):
        rmcs = of_kind(sentences("cold"), "RMC")
        self.assertEqual([rmc.status for rmc in rmcs], ["V"] * 4 + ["A"] * 6)
        self.assertIsNone(rmcs[0].timestamp)
        self.assertIsNone(rmcs[0].datestamp)
        self.assertEqual(rmcs[4].datestamp, datetime.date(2024, 2, 8))

    def test_gets_each_kind_at_its_interval(self):
        kinds = collections.Counter(m.sentence_type for m in sentences("fast"))
        self.assertEqual(kinds["GGA"], 50)
        self.assertEqual(kinds["RMC"], 50)
        self.assertEqual(kinds["ZDA"], 10)
        self.assertEqual(kinds["GSA"], 10 * 4)  # one for each constellation in use
        self.assertEqual(kinds["GSV"], 5 * 7)
        self.assertNotIn("GLL", kinds)


if __name__ == "__main__":
    unittest.main(verbosity=2)
