"""Looks at the receiver that `orb-sim serve` offers: who reaches it, and how it ends."""

import contextlib
import itertools
import os
import pathlib
import pty
import re
import select
import shlex
import signal
import socket
import subprocess
import termios
import time
import tty
import unittest

from orb_sim import (ACKNOWLEDGED, ASK_FOR_VERSION, ASK_VERSION, LIMIT, ORB_SIM, OrbSimTest,
                     runs_a_command, wait_until)

CORNERS = """
time = { start = 2016-12-31T23:59:57.5Z, leap-second = 2017-01-01T00:00:00Z }
[[event]]
at = "4s"
signals = false
[[event]]
at = "5s"
signals = true
"""

ANSWER_LENGTH = 30  # acknowledgement and version


def read_some(descriptor):
    if not select.select([descriptor], [], [], LIMIT)[0]:
        raise AssertionError("timed out")
    data = os.read(descriptor, 4096)
    if not data:
        raise AssertionError("the line has ended")
    return data


def read_exactly(descriptor, length):
    data = b""
    while len(data) < length:
        data += read_some(descriptor)
    return data


def read_answer(descriptor):
    """Reads until the version has been told, whatever else comes; returns the answer."""
    data = b""
    while len(data[data.find(ACKNOWLEDGED):]) < ANSWER_LENGTH or ACKNOWLEDGED not in data:
        data += read_some(descriptor)
    return data[data.find(ACKNOWLEDGED):][:ANSWER_LENGTH]


@contextlib.contextmanager
def opened(path):
    line = os.open(path, os.O_RDWR | os.O_NOCTTY)
    try:
        tty.setraw(line)
        termios.tcflush(line, termios.TCIFLUSH)
        yield line
    finally:
        os.close(line)


def ask(path):
    """Asks for the version; returns the answer."""
    with opened(path) as line:
        os.write(line, ASK_VERSION)
        return read_answer(line)


def processor_seconds(process):
    stat = pathlib.Path(f"/proc/{process.pid}/stat").read_text()
    fields = stat.rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def check_goes_on(test, redirection, subcommand, link, *options):
    """With its output lost, a subcommand that offers a line goes on. Returns what it says besides
    where the line is and what ended it."""
    command = shlex.join([ORB_SIM, subcommand, "--link", str(link), *options])
    with subprocess.Popen(["bash", "-c", f"exec {command} {redirection}"], text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          env=test.environment) as process:
        try:
            process.stderr.readline()  # nothing where it is redirected
            process.stdout.close()
            wait_until(link.is_symlink, "no link")
            for _ in range(3):
                test.assertEqual(ask(link)[:9], ACKNOWLEDGED)
            process.terminate()
            errors = process.stderr.read()
            process.wait(LIMIT)
        finally:
            process.kill()
    test.assertEqual(process.returncode, 0)
    test.assertFalse(os.path.lexists(link))
    return re.sub("orb-sim: (for|other|ended) .*\n", "", errors)


class Serve(OrbSimTest):
    def setUp(self):
        super().setUp()
        self.link = self.folder / "gps"

    def test_says_how_clients_find_it(self):
        with self.offered_line("serve", "gps") as (process, said):
            tty_path = os.readlink(self.link)
            self.assertEqual(said, f"""\
orb-sim: the line is at {self.link}, which now points to {tty_path}
orb-sim: for one program, without any rights: orb-sim run --tty {self.link} -- COMMAND
orb-sim: for all of your programs, once, as root: ln -s {self.link} /dev/tty_gps
orb-sim: other users' programs need rights to read and write {tty_path}
""")

    @runs_a_command
    def test_says_it_in_words_that_a_shell_takes(self):
        self.link = self.folder / "Ann's line"
        with self.offered_line("serve", self.link) as (process, said):
            where, for_one, for_all, _ = said.splitlines()
            self.assertEqual(shlex.split(where.partition(" is at ")[2].partition(", which")[0]),
                             [str(self.link)])
            hint = for_one.partition("rights: orb-sim")[2].replace("COMMAND", "readlink -f gps")
            self.assertEqual(shlex.split(hint)[:3], ["run", "--tty", str(self.link)])
            made = for_all.partition("as root: ")[2].replace("/dev/tty_gps", "gps")
            said = subprocess.run(["bash", "-c", f"{made} && {shlex.quote(ORB_SIM)} {hint}"],
                                  cwd=self.folder, env=self.environment, timeout=LIMIT,
                                  capture_output=True, text=True)
            self.assertEqual((said.stdout, said.stderr), (os.readlink(self.link) + "\n", ""))
            refusal = self.orb_sim("serve", "--link", str(self.link)).stderr
            remove = refusal.rstrip().partition("or: ")[2]
            self.assertEqual(shlex.split(remove), ["rm", str(self.link)])
            self.end(process, signal.SIGTERM)

    def test_ends_well_by_each_signal_and_takes_its_link_along(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.offered_line("serve", self.link) as (process, _):
                self.end(process, number)
                self.assertFalse(os.path.lexists(self.link), number)

    def test_goes_on_where_hangups_are_ignored(self):
        before = signal.signal(signal.SIGHUP, signal.SIG_IGN)  # as under nohup
        try:
            with self.offered_line("serve", self.link) as (process, _):
                process.send_signal(signal.SIGHUP)
                with self.assertRaises(subprocess.TimeoutExpired):
                    process.wait(1)
                self.assertEqual(ask(self.link)[:9], ACKNOWLEDGED)
                self.end(process, signal.SIGTERM)
        finally:
            signal.signal(signal.SIGHUP, before)

    def test_replaces_the_link_that_a_killed_one_has_left(self):
        with self.offered_line("serve", self.link) as (process, _):
            process.kill()
            process.wait()
        self.assertTrue(os.path.lexists(self.link))
        with contextlib.ExitStack() as stack:
            # Its number may have gone to any other program meanwhile, another orb-sim included.
            others = pty.openpty()
            for descriptor in others:
                stack.callback(os.close, descriptor)
            other = self.folder / "other"
            stack.enter_context(self.offered_line("serve", other))
            for target in ("/dev/pts/no-more", os.ttyname(others[1]), os.readlink(other)):
                self.link.unlink(missing_ok=True)
                self.link.symlink_to(target)
                with self.offered_line("serve", self.link) as (process, _):
                    self.assertEqual(ask(self.link)[:9], ACKNOWLEDGED)
                    self.end(process, signal.SIGINT)
                self.assertFalse(os.path.lexists(self.link))

    def test_leaves_the_line_of_a_living_one_alone(self):
        (self.folder / "x.trace").write_text(
            '{"orb-sim-trace":1}\n{"time":0,"from":"client","bytes":"00"}\n')
        with self.offered_line("serve", self.link) as (process, _):
            tty_path = os.readlink(self.link)
            for command in (("serve",), ("replay", "x.trace"), ("tap", tty_path)):
                self.check_failure(f"orb-sim: --link: {self.link} points to {tty_path} already; "
                                   f"end the orb-sim that offers it, or: rm {self.link}\n",
                                   *command, "--link", str(self.link))
            self.assertEqual(os.readlink(self.link), tty_path)
            self.assertEqual(ask(self.link)[:9], ACKNOWLEDGED)
            self.end(process, signal.SIGTERM)

    def test_keeps_its_line_and_does_not_spin_when_its_client_hangs_up(self):
        with self.offered_line("serve", self.link) as (process, _):
            tty_path = os.readlink(self.link)
            ask(self.link)  # opens and closes the tty
            before = processor_seconds(process)
            time.sleep(2)
            # One that spins takes all of a processor, even a shared one's better part.
            self.assertLess(processor_seconds(process) - before, 0.3)
            self.assertEqual(os.readlink(self.link), tty_path)
            self.assertEqual(ask(self.link)[:9], ACKNOWLEDGED)

    @runs_a_command
    def test_is_the_line_of_a_command_without_any_rights(self):
        with self.offered_line("serve", self.link, "--kernel-version", "9.8.7"):
            result = self.run_command(*ASK_FOR_VERSION, options=("--tty", self.link))
            self.assertIn(bytes((9, 8, 7)), bytes.fromhex(self.output_of(result)))

    @runs_a_command
    def test_tells_a_command_who_uses_the_line_already(self):
        with self.offered_line("serve", self.link), \
                self.background("run", "--tty", str(self.link), "--", "sh", "-c",
                                "echo ready; exec sleep 60") as first:
            self.assertEqual(first.stdout.readline(), "ready\n")
            result = self.run_command("true", options=("--tty", self.link))
            self.assertEqual(result.returncode, 0)
            self.assertRegex(result.stderr, rf"^orb-sim: process \d+ uses {self.link} too: each "
                             r"takes replies of the other\n$")
            first.terminate()
            first.communicate(timeout=LIMIT)
            self.assertEqual(self.run_command("true", options=("--tty", self.link)).stderr, "")

    @runs_a_command
    def test_has_no_other_reader_when_it_is_the_line_of_a_command(self):
        with self.offered_line("serve", self.link):
            orbctl = pathlib.Path(ORB_SIM).with_name("orbctl")
            result = self.run_command(str(orbctl), "doctor", options=("--tty", self.link))
            self.assertIn("ok    users      nobody else has it open\n", result.stdout)
            self.assertEqual(result.returncode, 0, result.stdout)

    def test_has_the_circumstances_of_its_scenario(self):
        with self.offered_line("serve", self.link, "--scenario", "silent"):
            with opened(self.link) as line:
                os.write(line, ASK_VERSION)
                self.assertEqual(select.select([line], [], [], 0.3)[0], [])

    def test_talks_to_a_program_that_only_listens_where_it_is_told_to(self):
        for options in (("--talk",), ("--talk", "--scenario", "healthy"),
                        ("--scenario", "talking")):
            with self.offered_line("serve", self.link, *options):
                with opened(self.link) as line:
                    self.assertEqual(read_exactly(line, 3)[:3], b"$GN", options)

    def test_tells_a_leap_second_and_a_loss_of_signals_to_one_that_listens(self):
        (self.folder / "corners.toml").write_text(CORNERS)
        with self.offered_line("serve", self.link, "--talk", "--scenario", "corners.toml"), \
                opened(self.link) as line, os.fdopen(os.dup(line), encoding="ascii") as sentences:
            rmc = (text.split(",") for text in sentences if text.startswith("$GNRMC,"))
            told = list(itertools.takewhile(lambda pair: pair[0] != "000002.000",
                                            (fields[1:3] for fields in rmc)))
        expected = [["235958.000", "A"], ["235959.000", "A"], ["235960.000", "A"],
                    ["000000.000", "A"], ["000001.000", "V"]]
        # The first ones may have been told before the line was opened.
        self.assertGreaterEqual(len(told), 3)
        self.assertEqual(told, expected[-len(told):])

    def test_waits_to_be_spoken_to_otherwise(self):
        with self.offered_line("serve", self.link), opened(self.link) as line:
            self.assertEqual(select.select([line], [], [], 1.5)[0], [])

    def test_goes_on_where_nobody_reads_what_it_says(self):
        self.assertEqual(check_goes_on(self, "2>/dev/full", "serve", self.link), "")


class Tcp(OrbSimTest):
    @contextlib.contextmanager
    def served(self, *options):
        """Offers the receiver at a TCP port; yields process and port."""
        with self.background("serve", "--tcp", "0", *options) as process:
            for line in process.stderr:
                found = re.fullmatch(r"orb-sim: the line is at TCP port 127\.0\.0\.1:(\d+)\n", line)
                if found:
                    break
            yield process, int(found[1])

    def connect(self, port):
        return contextlib.closing(socket.create_connection(("127.0.0.1", port), LIMIT))

    def test_is_the_same_line_as_the_link(self):
        link = self.folder / "gps"
        with self.served("--link", str(link)) as (process, port):
            with self.connect(port) as client, opened(link) as line:
                for writing, other in ((client.fileno(), line), (line, client.fileno())):
                    os.write(writing, ASK_VERSION)
                    self.assertEqual(read_answer(writing), read_answer(other))
            self.end(process, signal.SIGTERM)
        self.assertFalse(os.path.lexists(link))

    def test_of_another_is_refused(self):
        with self.served() as (_, port):
            result = self.orb_sim("serve", "--tcp", str(port))
            self.assertEqual((result.returncode, result.stdout), (125, ""))
            self.assertRegex(result.stderr, r"^orb-sim: .*Address already in use\n$")


if __name__ == "__main__":
    unittest.main(verbosity=2)
