"""Watches a receiver with `orb-sim tap` and plays it back with `orb-sim replay`."""

import contextlib
import datetime
import json
import os
import pty
import re
import select
import signal
import subprocess
import termios
import unittest

from orb_sim import (ASK_VERSION, LIMIT, ORB_SIM, REFUSED, OrbSimTest, runs_a_command,
                     wait_until)
from orb_sim_serve_test import ask, check_goes_on, opened, processor_seconds, read_exactly

POLL = os.environ["ORB_SIM_POLL"]
ANSWER = ("A0A100028302810D0A" "A0A1000E80010001000C000102000018030F9B0D0A")
HEADER = '{"orb-sim-trace":1}\n'


class TapTest(OrbSimTest):
    def setUp(self):
        super().setUp()
        self.device = self.folder / "device"
        self.link = self.folder / "gps"
        self.trace = self.folder / "gps.trace"

    @contextlib.contextmanager
    def tapped(self, *options):
        """A tap in front of a receiver that is served."""
        with self.offered_line("serve", self.device):
            with self.offered_line("tap", self.link, self.device, *options) as (process, _):
                yield process

    def records(self):
        return [json.loads(line) for line in self.trace.read_text().splitlines()]


class Tap(TapTest):
    def test_passes_on_and_tells_in_words(self):
        with self.tapped() as process:
            self.assertEqual(ask(self.link).hex().upper(), ANSWER)
            lines = [process.stdout.readline().rstrip() for _ in range(3)]  # at once
            lines += self.end(process, signal.SIGINT).splitlines()
        self.assertEqual([line[14:] for line in lines[:3]], [
            "client    02     Query revision information of software: 01 (type 1)",
            "receiver  83     Message Acknowledged: 02 (message 0x02)",
            "receiver  80     Software revision of the receiver: "
            "01 00 01 00 0C 00 01 02 00 00 18 03 0F (type 1, kernel version 1.0.12, "
            "ODM version 1.2.0, revision 2024-03-15)"])
        self.assertEqual(lines[-2:], [
            "client: 1 good packet (0 unknown), 0 bad packets, 0 sentences, 0 other bytes",
            "receiver: 2 good packets (0 unknown), 0 bad packets, 0 sentences, 0 other bytes"])
        self.assertFalse(os.path.lexists(self.link))

    def test_records_what_each_side_has_said(self):
        with self.tapped("--trace", str(self.trace)) as process:
            ask(self.link)
            header, *records = self.records()  # while it goes on
            self.end(process, signal.SIGTERM)
        self.assertEqual(header["orb-sim-trace"], 1)
        self.assertEqual(header["device"], str(self.device))
        said = {"client": "", "receiver": ""}
        for record in records:
            said[record["from"]] += record["bytes"]
        self.assertEqual(said, {"client": ASK_VERSION.hex().upper(), "receiver": ANSWER})
        times = [record["time"] for record in records]
        self.assertEqual(times, sorted(times))

    def test_leaves_a_file_that_is_there_alone_unless_it_is_told_otherwise(self):
        for options in ((), ("--append",), ("--force",)):
            with self.tapped("--trace", str(self.trace), *options) as process:
                ask(self.link)
                self.end(process, signal.SIGTERM)
            whole = self.trace.read_text()
            with self.offered_line("serve", self.device):
                self.check_failure(
                    f"orb-sim: {self.trace} is there already; --append goes on with it, --force "
                    "replaces it\n", "tap", str(self.device), "--link", "gps", "--trace",
                    str(self.trace))
                self.check_failure(
                    "orb-sim: --trace is DEVICE itself; the trace needs a file\n", "tap",
                    str(self.device), "--link", "gps", "--trace", str(self.device), "--force")
            self.assertEqual(self.trace.read_text(), whole)
            said = "".join(record["bytes"] for record in self.records()[1:])
            self.assertEqual(said.count(ASK_VERSION.hex().upper()),
                             2 if options == ("--append",) else 1)

    def test_prints_as_it_is_told(self):
        with self.tapped("--json", "--wall-clock", "--only", "software-revision") as process:
            before = datetime.datetime.now(datetime.timezone.utc)
            ask(self.link)
            message = json.loads(process.stdout.readline())
            after = datetime.datetime.now(datetime.timezone.utc)
            self.assertEqual(self.end(process, signal.SIGTERM), "")
        self.assertEqual(message["message"], "software-revision")
        self.assertEqual(message["fields"]["kernel_version"], "1.0.12")
        clock = datetime.datetime.strptime(message["clock"], "%Y-%m-%dT%H:%M:%S.%f%z")
        margin = datetime.timedelta(seconds=1)  # the system's clock may be set meanwhile
        self.assertTrue(before - margin < clock < after + margin, (before, clock, after))

    @contextlib.contextmanager
    def listening(self, *options):
        """A tap without a line of its own. Yields its process and the receiver's end of the port."""
        receiver, port = pty.openpty()
        try:
            with self.background("tap", os.ttyname(port), *options) as process:
                self.assertEqual(process.stderr.readline(),
                                 f"orb-sim: listens to {os.ttyname(port)}\n")
                yield process, receiver
        finally:
            os.close(receiver)
            os.close(port)

    def test_without_a_link_only_listens(self):
        with self.listening("--trace", str(self.trace)) as (process, receiver):
            before = set(os.listdir(self.folder))
            os.write(receiver, b"$GPZDA*48\r\n" + bytes.fromhex("A0A100028302810D0A"))
            lines = [process.stdout.readline()[14:] for _ in range(2)]
            self.assertEqual(lines, ["receiver  nmea   $GPZDA*48\n",
                                     "receiver  83     Message Acknowledged: 02 (message 0x02)\n"])
            self.assertEqual(select.select([receiver], [], [], 0)[0], [], "nothing is sent")
            terminals = [os.readlink(f"/proc/{process.pid}/fd/{number}")
                         for number in os.listdir(f"/proc/{process.pid}/fd")]
            self.assertNotIn("/dev/ptmx", terminals)
            self.assertIn("\nreceiver: 1 good packet ", self.end(process, signal.SIGTERM))
            self.assertEqual(set(os.listdir(self.folder)), before)
        self.assertEqual({record["from"] for record in self.records()[1:]}, {"receiver"})

    def test_keeps_two_files_of_limited_size(self):
        rotated = self.folder / "gps.trace.1"
        options = ("--trace", str(self.trace), "--rotate", "1kB")
        with self.listening(*options) as (process, receiver):
            for number in range(100):
                os.write(receiver, b"sentence %3d\r\n" % number)
                self.assertIn(b"sentence %3d" % number, process.stdout.readline().encode())
            self.end(process, signal.SIGTERM)
        said = ""
        for file in (rotated, self.trace):
            self.assertLessEqual(file.stat().st_size, 1024)
            decoded = self.output_of(self.orb_sim("decode", str(file)))
            said += "".join(re.findall(r"text   (sentence +\d+)\n", decoded))
        self.assertTrue(said.endswith("sentence  98sentence  99"), said)
        self.assertGreater(said.count("sentence"), 6)
        self.trace.unlink()
        self.check_failure(f"orb-sim: {rotated} is there already; with --append or --force, "
                           "--rotate replaces it\n", "tap", "/dev/null", *options)

    def test_does_not_spin_when_its_client_hangs_up(self):
        with self.tapped() as process:
            ask(self.link)
            before = processor_seconds(process)
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(2)
            self.assertIsNone(process.returncode)
            self.assertLess(processor_seconds(process) - before, 0.3)

    def test_ends_where_the_receiver_is_gone(self):
        with self.offered_line("serve", self.device) as (served, _):
            with self.offered_line("tap", self.link, self.device) as (process, _):
                self.end(served, signal.SIGTERM)
                _, errors = process.communicate(timeout=LIMIT)
                self.assertEqual((process.returncode, errors),
                                 (125, f"orb-sim: {self.device} has hung up\n"))
        self.assertFalse(os.path.lexists(self.link))

    def test_makes_its_port_raw_and_sets_the_speed_only_where_it_is_told_to(self):
        receiver, port = pty.openpty()
        try:
            settings = termios.tcgetattr(port)
            settings[4] = settings[5] = termios.B38400
            termios.tcsetattr(port, termios.TCSANOW, settings)
            for options, speed in (((), termios.B38400), (("--baud", "9600"), termios.B9600)):
                with self.offered_line("tap", self.link, os.ttyname(port), *options) as (process, _):
                    settings = termios.tcgetattr(port)
                    self.assertEqual(settings[4:6], [speed, speed])
                    with opened(self.link) as client:
                        os.write(receiver, bytes(range(256)))
                        self.assertEqual(read_exactly(client, 256), bytes(range(256)))
                        os.write(client, bytes(range(256)))
                        self.assertEqual(read_exactly(receiver, 256), bytes(range(256)))
                    # Killed, it would leave its link, and its tty's number to any other process.
                    self.end(process, signal.SIGTERM)
        finally:
            os.close(receiver)
            os.close(port)

    def test_in_the_place_of_its_own_port_is_refused(self):
        self.device.symlink_to("/dev/null")
        self.check_failure("orb-sim: --link is DEVICE itself; clients need another name\n", "tap",
                           "device", "--link", str(self.device))
        self.assertTrue(self.device.is_symlink())

    def test_that_cannot_do_its_work_is_refused(self):
        with self.offered_line("serve", self.device):
            for message, device, *options in (
                    ("/dev/null is no serial port", "/dev/null"),
                    ("/no/such: No such file or directory", "/no/such"),
                    ("--baud: 5 is none of 4800 9600 19200 38400 57600 115200 230400 460800 "
                     "921600", "device", "--baud", "5"),
                    ("/dev/full: No space left on device", "device", "--trace", "/dev/full"),
                    ("/no/file: No such file or directory", "device", "--trace", "/no/file")):
                self.check_failure(f"orb-sim: {message}\n", "tap", device, "--link", "gps",
                                   *options)

    def check_says_once(self, redirection, *options):
        errors = check_goes_on(self, redirection, "tap", self.link, str(self.device), *options)
        self.assertRegex(errors,
                         "^orb-sim: cannot write standard output.*; goes on without it\n$")

    def test_goes_on_where_nobody_sees_what_it_shows(self):
        with self.offered_line("serve", self.device):
            for redirection in (">/dev/full", ">&-", ""):
                with self.subTest(redirection):
                    self.check_says_once(redirection)
                    self.trace.unlink(missing_ok=True)
                    self.check_says_once(redirection, "--trace", str(self.trace))
                    said = "".join(record["bytes"] for record in self.records()[1:]
                                   if record["from"] == "client")
                    self.assertEqual(said, 3 * ASK_VERSION.hex().upper())

    def test_passes_on_while_nobody_reads_what_it_shows(self):
        with self.tapped() as process:
            for _ in range(400):  # twice what a pipe takes of what is shown
                self.assertEqual(ask(self.link).hex().upper(), ANSWER)
            process.terminate()
            self.assertEqual(process.wait(LIMIT), 0)

    def test_ends_when_it_is_told_on_a_terminal_that_nobody_reads(self):
        screen, terminal = pty.openpty()
        receiver, port = pty.openpty()
        tap = subprocess.Popen([ORB_SIM, "tap", os.ttyname(port), "--trace", str(self.trace)],
                               env=self.environment, stdout=terminal, stderr=terminal)
        try:
            self.assertIn(b"listens", os.read(screen, 4096))
            sentences, last = 40000, b"$GPGLL*50\r\n"
            os.write(receiver, b"$GPZDA*48\r\n" * sentences + last)
            wait_until(lambda: last.hex().upper() in self.trace.read_text()[-200:], "the last one")
            tap.terminate()
            self.assertEqual(tap.wait(LIMIT), 0)
        finally:
            tap.kill()
            tap.wait()
            for end in screen, terminal, receiver, port:
                os.close(end)

    def test_says_how_much_it_has_left_out_that_nobody_has_read(self):
        sentences, last = 40000, b"$GPGLL*50\r\n"
        with self.listening("--trace", str(self.trace)) as (process, receiver):
            os.write(receiver, b"$GPZDA*48\r\n" * sentences + last)
            wait_until(lambda: last.hex().upper() in self.trace.read_text()[-200:], "the last one")
            process.terminate()
            self.assertEqual(process.wait(LIMIT), 0)
            left_out = re.search("nobody has read standard output; ([0-9]+) lines are left out of it\n$",
                                 process.stderr.read())
            shown = process.stdout.read().count("\n")
            self.assertGreater(shown, sentences / 100)
            self.assertEqual(shown + int(left_out[1]), sentences + 1 + 2)  # and the counts


class RoundTrip(TapTest):
    def poll(self, *arguments):
        result = self.orb_sim(*arguments, "--", POLL)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    @runs_a_command
    def test_replays_what_the_library_and_a_receiver_said(self):
        with self.tapped("--trace", str(self.trace)) as process:
            first = self.poll("run", "--tty", str(self.link))
            self.end(process, signal.SIGTERM)
        self.assertIn("CNR mask: 0\n", first)
        self.assertEqual(self.poll("replay", str(self.trace)), first)
        self.assertEqual(self.poll("replay", "--fast", str(self.trace)), first)

        decoded = self.orb_sim("decode", str(self.trace)).stdout
        self.assertIn("Elevation and CNR Mask", decoded)
        self.assertRegex(decoded, r"\nclient: \d+ good packets \(\d unknown\), 0 bad packets, ")


class Replay(TapTest):
    UNKNOWN = ("orb-sim: the trace does not have: 02     Query revision information of software: "
               "00 (type 0)\n")

    def write_trace(self, *records):
        lines = [json.dumps({"time": time, "from": speaker, "bytes": data.hex()})
                 for time, speaker, data in records]
        self.trace.write_text(HEADER + "\n".join(lines) + "\n")

    def test_answers_each_occurrence_in_turn(self):
        self.write_trace((0.1, "client", ASK_VERSION), (0.1, "receiver", b"first....\n"),
                         (0.2, "client", ASK_VERSION), (0.2, "receiver", b"second...\n"))
        with self.offered_line("replay", self.link, self.trace) as (process, _):
            with opened(self.link) as line:
                for expected in (b"first....\n", b"second...\n", b"first....\n"):
                    os.write(line, ASK_VERSION)
                    self.assertEqual(read_exactly(line, 10), expected)
                os.write(line, bytes.fromhex("A0A1000202000 20D0A".replace(" ", "")))
                self.assertEqual(read_exactly(line, 9), REFUSED)
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.communicate(timeout=LIMIT)[1], self.UNKNOWN +
                             "orb-sim: ended by SIGTERM\norb-sim: packets that the trace does not have: 1, refused\n")
        self.assertFalse(os.path.lexists(self.link))

    @runs_a_command
    def test_does_with_what_the_trace_does_not_have_as_it_is_told(self):
        self.write_trace((0.1, "client", ASK_VERSION), (0.1, "receiver", b"answer"))
        ask = r"printf '\240\241\0\2\2\0\2\r\n' >&3; "
        for unknown, packets, read, answer, status in (
                ("refuse", 2, "head -c 18 <&3 | od -An -tx1 -w18", 2 * REFUSED, 3),
                ("silent", 2, "timeout 1 cat <&3", b"", 3),
                ("exit", 1, "exec cat <&3", b"", 125)):
            with self.subTest(unknown):
                result = self.orb_sim("replay", str(self.trace), "--unknown", unknown, "--", "sh",
                                      "-c", f"exec 3<>/dev/tty_gps; {packets * ask}{read}; exit 3")
                how = "refused" if unknown == "refuse" else "not answered"
                self.assertEqual(result.stderr, self.UNKNOWN + "orb-sim: packets that the trace "
                                 f"does not have: {packets}, {how}\n")
                self.assertEqual(bytes.fromhex(result.stdout), answer)
                self.assertEqual(result.returncode, status)

    def test_of_a_trace_that_is_cut_off_takes_its_whole_lines(self):
        self.write_trace((0.1, "client", ASK_VERSION), (0.1, "receiver", b"answer"))
        with self.trace.open("a") as trace:
            trace.write('{"time":0.2,"from":"cl')
        warning = f"orb-sim: {self.trace}: the last line is cut off, and left out\n"
        for command in (("replay", str(self.trace), "--", "true"), ("decode", str(self.trace))):
            result = self.orb_sim(*command)
            self.assertEqual((result.returncode, result.stderr), (0, warning))
        self.assertIn("client: 1 good packet ", result.stdout)

    def test_of_what_is_no_trace_is_refused(self):
        self.trace.write_text(HEADER + '{"time":0,"from":"client","bytes":"0"}\n')
        self.check_failure(f"orb-sim: {self.trace}:2: \"bytes\" is not a text of hexadecimal "
                           "digits, two a byte\n", "replay", str(self.trace), "--", "true")
        self.check_failure("orb-sim: none: No such file or directory\n", "replay", "none", "--",
                           "true")


if __name__ == "__main__":
    unittest.main(verbosity=2)
