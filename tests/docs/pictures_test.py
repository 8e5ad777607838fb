"""The pictures of docs/images/ are of today: of the sources, and of what the receiver says."""

import csv
import os
import pathlib
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ORB_SOURCE"])
BUILD = pathlib.Path(os.environ["ORB_BUILD"])
IMAGES = SOURCE / "docs/images"
LIMIT = 60  # seconds


class Pictures(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="pictures.", dir="/tmp")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = os.environ | {"PATH": f"{BUILD}/bin:{os.environ['PATH']}"}

    def make(self, what):
        subprocess.run(["/usr/bin/python3", IMAGES / "make_pictures.py", what, self.folder],
                       check=True, timeout=LIMIT, env=self.environment)

    def test_are_what_is_drawn(self):
        self.make("draw")
        drawn = {path.name for path in self.folder.iterdir()}
        self.assertEqual(drawn, {"command.svg", "layers.svg", "survey.svg"})
        for name in drawn:
            self.assertEqual((IMAGES / name).read_text(), (self.folder / name).read_text(),
                             f"{name}: run docs/images/make_pictures.py draw docs/images")

    def said(self, trace):
        """Each side's messages, without their times."""
        text = subprocess.run(["orb-sim", "decode", "--json", trace], check=True, text=True,
                              capture_output=True, env=self.environment).stdout
        lines = [line.partition(",")[2] for line in text.splitlines()]
        self.assertGreater(len(lines), 5)
        return lines

    def rows(self, table):
        with table.open() as file:
            return [{key: float(value) for key, value in row.items()}
                    for row in csv.DictReader(file)]

    def test_show_what_the_receiver_says_today(self):
        self.make("record")
        self.assertEqual(self.said(self.folder / "command.trace"),
                         self.said(IMAGES / "command.trace"))

        drawn = self.rows(IMAGES / "survey.csv")
        compared = 0
        for row in self.rows(self.folder / "survey.csv"):
            nearest = min(drawn, key=lambda each: abs(each["seconds"] - row["seconds"]))
            if row["seconds"] >= 60 and abs(nearest["seconds"] - row["seconds"]) < 10:
                compared += 1
                self.assertLess(abs(nearest["deviation_cm"] - row["deviation_cm"]), 5)
                self.assertLess(abs(nearest["latitude"] - row["latitude"]), 1e-6)
        self.assertGreater(compared, 10)


if __name__ == "__main__":
    unittest.main()
