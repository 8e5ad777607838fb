"""What the tests of orbctl have in common: a simulated device for each call."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

ORBCTL = os.environ["ORBCTL"]
ORB_SIM = os.environ["ORB_SIM"]
LIMIT = float(os.environ.get("ORB_TEST_LIMIT", 120))  # seconds for anything that is waited for


def processes(name, folder):
    """Those of this name that are alive and were started by the test with this folder."""
    mark = f"TMPDIR={folder}".encode()
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if ((process / "comm").read_text().strip() == name
                    and mark in (process / "environ").read_bytes().split(b"\0")):
                found.append(int(process.name))
        except OSError:
            continue  # it has ended meanwhile
    return found


def part_of(tests):
    """Of all tests those that this process is to run: they wait more than they compute."""
    each = [test for case in tests for test in case]
    return unittest.TestSuite(each[int(os.environ.get("ORBCTL_SHARD", 0))::
                                   int(os.environ.get("ORBCTL_SHARDS", 1))])


class OrbctlTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        # A short path, since the bus's socket lies below it; and not the one that other runs use.
        folder = tempfile.TemporaryDirectory(prefix="ctl.", dir="/tmp")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = os.environ | {"TMPDIR": folder.name}

    def run_program(self, *command, **more):
        return subprocess.run(command, env=self.environment, timeout=LIMIT, cwd=self.folder,
                              **({"capture_output": True, "text": True} | more))

    def orbctl(self, *arguments, device=()):
        """Runs orbctl on a simulated device of its own."""
        return self.run_program(ORB_SIM, "run", *device, "--", ORBCTL, *arguments)

    def shell(self, script, device=()):
        """Runs a script on one simulated device, which all its calls of $ORBCTL share."""
        return self.run_program(ORB_SIM, "run", *device, "--", "sh", "-c", script)

    def check(self, result, status, output, errors):
        """Compares the whole result."""
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (status, output, errors))

    def json(self, *arguments, device=()):
        result = self.orbctl("--json", *arguments, device=device)
        self.assertEqual(result.returncode, 0, result.stderr)
        return json.loads(result.stdout)
