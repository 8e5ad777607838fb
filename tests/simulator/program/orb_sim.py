"""What the tests of orb-sim have in common: a private folder, and processes that are looked after."""

import contextlib
import os
import pathlib
import shlex
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ORB_SIM = os.environ["ORB_SIM"]
LIMIT = float(os.environ.get("ORB_TEST_LIMIT", 60))  # seconds for anything that is waited for

ASK_VERSION = bytes.fromhex("A0A100020201030D0A")
ACKNOWLEDGED = bytes.fromhex("A0A100028302810D0A")
REFUSED = bytes.fromhex("A0A100028402860D0A")

# Sends the version query and prints what comes back within a second as hexadecimal digits: as many
# bytes as the first argument says.
ASK_RECEIVER = f"""
import os, select, sys, tty
length = int(sys.argv[1])
line = os.open("/dev/tty_gps", os.O_RDWR | os.O_NOCTTY)
tty.setraw(line)
os.write(line, {ASK_VERSION!r})
answer = b""
while len(answer) < length and select.select([line], [], [], 1)[0]:
    answer += os.read(line, length - len(answer))
print(answer.hex())
"""
ASK_FOR_ACKNOWLEDGEMENT = (sys.executable, "-c", ASK_RECEIVER, "9")
ASK_FOR_VERSION = (sys.executable, "-c", ASK_RECEIVER, "30")  # the acknowledgement as well


def not_emulated(reason):
    """For tests that cannot run where orb-sim is run by an emulator."""
    return unittest.skipIf(os.environ.get("ORB_EMULATED"), "under an emulator " + reason)


runs_a_command = not_emulated("orb-sim refuses commands, which are programs of another machine")


def ask_inventory(method, *arguments):
    """The shell command that asks the inventory on the system bus."""
    return shlex.join(("dbus-send", "--system", "--print-reply=literal",
                       "--dest=org.orb_gnss.Inventory1", "/org/orb_gnss/Inventory1",
                       "org.orb_gnss.Inventory1." + method) + arguments)


ASK_HARDWARE_ID = ask_inventory("GetSystemRecord", "uint32:1", "string:HardwareSetId")


def wait_until(condition, what):
    end = time.monotonic() + LIMIT
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("timed out: " + what)
        time.sleep(0.01)


def processes_of(folder):
    """The processes that have something to do with a run: its folder is in their command line or
    environment."""
    found = []
    for process in pathlib.Path("/proc").iterdir():
        if not process.name.isdecimal() or int(process.name) == os.getpid():
            continue
        with contextlib.suppress(OSError):
            text = (process / "cmdline").read_bytes() + (process / "environ").read_bytes()
            is_dead = (process / "stat").read_text().rsplit(")", 1)[1].split()[0] in "ZX"
            if os.fsencode(folder) in text and not is_dead:
                found.append(int(process.name))
    return found


class OrbSimTest(unittest.TestCase):
    def setUp(self):
        # A short path, since the bus's socket lies below it; and not the one that other runs use.
        folder = tempfile.TemporaryDirectory(prefix="run.", dir="/tmp")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.temporary = self.folder / "tmp"
        self.temporary.mkdir()
        self.environment = os.environ | {"TMPDIR": str(self.temporary)}
        self.addCleanup(self.assert_nothing_is_left)

    def assert_nothing_is_left(self):
        self.assertEqual(list(self.temporary.iterdir()), [])
        self.assertEqual(processes_of(self.temporary / "orb-sim"), [])

    def run_program(self, *command, **more):
        """Runs a program to its end."""
        return subprocess.run(command, env=self.environment, timeout=LIMIT,
                              **({"capture_output": True, "text": True} | more))

    def orb_sim(self, *arguments, **more):
        """Runs orb-sim to its end."""
        return self.run_program(ORB_SIM, *arguments, cwd=self.folder, **more)

    def output_of(self, result):
        """The output of a program that must succeed silently."""
        self.assertEqual((result.returncode, result.stderr or ""), (0, ""))
        return result.stdout

    def check_result(self, result, status, output, errors):
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (status, output, errors))

    def check_failure(self, message, *arguments):
        self.check_result(self.orb_sim(*arguments), 125, "", message)

    @contextlib.contextmanager
    def background(self, *arguments):
        """Runs orb-sim meanwhile."""
        with subprocess.Popen([ORB_SIM, *arguments], env=self.environment, cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              text=True) as process:
            try:
                yield process
            finally:
                process.kill()

    @contextlib.contextmanager
    def offered_line(self, subcommand, link, *arguments):
        """Runs a subcommand that offers a line at `link`, and waits until it is there. Yields its
        process and what it has said until then."""
        with self.background(subcommand, "--link", str(link), *arguments) as process:
            said = [process.stderr.readline() for _ in range(4)]
            if not said[0]:
                self.fail(f"orb-sim {subcommand} has ended: {process.communicate(timeout=LIMIT)}")
            self.assertTrue(os.path.islink(self.folder / link), said)
            yield process, "".join(said)

    def end(self, process, number):
        """Ends orb-sim by a signal; it has to end well. Returns the rest of its output."""
        process.send_signal(number)
        output, errors = process.communicate(timeout=LIMIT)
        self.assertEqual((process.returncode, errors),
                         (0, f"orb-sim: ended by {signal.Signals(number).name}\n"))
        return output

    def arguments(self, options, command):
        return [ORB_SIM, "run", *options, "--", *command]

    def run_command(self, *command, options=(), **more):
        """Runs a command on a simulated device."""
        return self.run_program(*self.arguments(options, command), **more)

    def run_shell(self, script, options=(), **more):
        """Runs a script on a simulated device, which must succeed silently; returns its output."""
        return self.output_of(self.run_command("sh", "-c", script, options=options, **more))
