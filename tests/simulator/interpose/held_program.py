"""What the tests of the preloaded library share: programs that are held by it."""

import os
import pathlib
import subprocess
import tempfile
import unittest

LIBRARY = pathlib.Path(os.environ["ORB_SIM_PRELOAD"])
PROGRAMS = pathlib.Path(os.environ["ORB_SIM_TEST_PROGRAMS"])
LIMIT = 60  # seconds for one program

# Those of which there are variants with the address sanitizer, as their names end.
SANITIZED = sorted(file.name[len("file_calls"):] for file in PROGRAMS.glob("file_calls_asan_*[+]"))


def escaped(path):
    """A path as ORB_SIM_PATHS takes it."""
    return "".join("\\" + c if c in ":=\\" else c for c in str(path))


class HeldProgramTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="preload: odd=name.")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = os.environ | {"LD_PRELOAD": str(LIBRARY)}

    def run_program(self, *command, status=0, error=""):
        """Runs a program, which must end as expected; returns its output."""
        result = subprocess.run([str(part) for part in command], env=self.environment,
                                capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual((result.returncode, result.stderr), (status, error), result.stdout)
        return result.stdout

    def run_child(self, *command):
        """The same for a program that another program, the shell, starts."""
        return self.run_program("sh", "-c", '"$@"; exit $?', "sh", *command)

    def check_fails_without_the_library(self, *command):
        result = subprocess.run(command, capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(result.returncode, 1)
        self.assertIn("open: No such file or directory\n", result.stderr)
