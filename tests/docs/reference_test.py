"""The reference is made from the public headers without a warning, and nothing is missing in it."""

import os
import pathlib
import re
import shutil
import subprocess
import unittest
import xml.etree.ElementTree as xml

from pages import signatures_of

SOURCE = pathlib.Path(os.environ["ORB_SOURCE"])
REFERENCE = pathlib.Path(os.environ["ORB_REFERENCE"])


class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(REFERENCE, ignore_errors=True)
        REFERENCE.mkdir(parents=True)
        made = subprocess.run(["doxygen", SOURCE / "docs/Doxyfile"], cwd=SOURCE,
                              capture_output=True, text=True)
        if made.returncode != 0 or made.stderr:
            raise AssertionError(made.stderr)
        cls.classes = {}
        for file in REFERENCE.glob("xml/class*.xml"):
            described = xml.parse(file).find("compounddef")
            cls.classes[described.findtext("compoundname")] = described

    def test_has_every_class_that_the_headers_offer(self):
        declared = set()
        for header in SOURCE.glob("**/include/orb-*/*.h"):
            if "build" not in header.relative_to(SOURCE).parts:
                declared |= set(re.findall(r"^class (?:ORB_\w+ )?([\w:]+)[^;]*\{",
                                           header.read_text(), re.MULTILINE))
        self.assertGreater(len(declared), 25)
        known = {name.removeprefix("orb::sim::") for name in self.classes}
        self.assertEqual(declared - known, set())

    def test_has_every_operation(self):
        operations = signatures_of((SOURCE / "docs/operations.md").read_text())
        self.assertGreater(len(operations), 110)
        for owner, name, _ in operations:
            members = {member.text for member in self.classes[owner].findall(".//memberdef/name")}
            self.assertIn(name, members)

    def test_tells_which_threads_may_use_each_class(self):
        for name, described in self.classes.items():
            bases = [base.text for base in described.findall("basecompoundref")]
            texts = [text for each in (described, *(self.classes[base] for base in bases))
                     for part in ("briefdescription", "detaileddescription")
                     for text in each.find(part).itertext()]
            with self.subTest(name):
                self.assertIn("thread", " ".join(texts))


if __name__ == "__main__":
    unittest.main()
