"""Prints bytes of every kind with `orb-sim decode`."""

import contextlib
import json
import os
import pty
import resource
import select
import subprocess
import unittest

from orb_sim import ACKNOWLEDGED, ASK_VERSION, LIMIT, ORB_SIM, OrbSimTest, not_emulated

NOTHING = "0 good packets (0 unknown), 0 bad packets, 0 sentences, 0 other bytes\n"

SET_MASKS = bytes.fromhex("A0A100052B01050C00230D0A")
SENTENCE = b"$GPZDA*48\r\n"
TRACE = b'{"orb-sim-trace":1}\n{"time":1.5,"from":"client","bytes":"A0A100020201030D0A"}\n'


class Decode(OrbSimTest):
    def decode(self, data, *arguments):
        result = self.orb_sim("decode", *arguments, input=data, text=False)
        return self.output_of(result).decode("ascii")

    def test_prints_messages_sentences_and_counts(self):
        damaged = ASK_VERSION[:-3] + b"\x00\x0D\x0A"
        unknown = bytes.fromhex("A0A1000170700D0A")
        data = ASK_VERSION + b"\x00" + ACKNOWLEDGED + damaged + unknown + b"$GPZDA*48\r\n"
        self.assertEqual(self.decode(data), """\
         0  02     Query revision information of software: 01 (type 1)
         9  other  1 byte: 00
        10  83     Message Acknowledged: 02 (message 0x02)
        19  bad    wrong checksum: A0 A1 00 02 02 01 00 0D 0A
        28  70     unknown message
        36  nmea   $GPZDA*48
3 good packets (1 unknown), 1 bad packet, 1 sentence, 1 other byte
""")

    def test_reads_a_file_or_standard_input(self):
        (self.folder / "bytes").write_bytes(ASK_VERSION)
        expected = self.decode(ASK_VERSION)
        self.assertEqual(self.decode(b"", "bytes"), expected)
        self.assertEqual(self.decode(ASK_VERSION, "-"), expected)

    def test_prints_a_trace(self):
        self.assertEqual(self.decode(TRACE), """\
    1.500000  client    02     Query revision information of software: 01 (type 1)
client: 1 good packet (0 unknown), 0 bad packets, 0 sentences, 0 other bytes
receiver: """ + NOTHING)

    def test_names_fields(self):
        self.assertIn("  2B     Configure values of Elevation and CNR Mask: 01 05 0C 00 (mode on, "
                      "elevation mask 5 degrees, CNR mask 12 dB-Hz, attribute 0)\n",
                      self.decode(SET_MASKS))

    def test_prints_an_object_on_each_line(self):
        masks, sentence = map(json.loads, self.decode(SET_MASKS + SENTENCE, "--json").splitlines())
        self.assertEqual(masks, {
            "offset": 0, "kind": "message", "id": "0x2B00", "message": "set-elevation-cnr-mask",
            "description": "Configure values of Elevation and CNR Mask",
            "fields": {"mode": "on", "elevation_mask": 5, "CNR_mask": 12, "attribute": 0},
            "bytes": SET_MASKS.hex().upper()})
        self.assertEqual((sentence["kind"], sentence["text"]), ("sentence", "$GPZDA*48"))
        record, = self.decode(TRACE, "--json").splitlines()
        self.assertEqual(list(json.loads(record))[:3], ["time", "from", "kind"])

    def test_prints_what_is_wanted(self):
        data = SET_MASKS + SENTENCE + b"noise" + ASK_VERSION + ACKNOWLEDGED
        counts = "3 good packets (0 unknown), 0 bad packets, 1 sentence, 5 other bytes"
        for options, expected in (
                (("--no-nmea",), ["2B", "text", "02", "83"]),
                (("--only", "0x2B00"), ["2B"]),
                (("--only", "0x2b"), ["2B"]),
                (("--only", "set-elevation-cnr-mask"), ["2B"]),
                (("--only", "elevation-cnr-mask"), []),
                (("--only", "acknowledged", "--only", "0x0200", "-"), ["02", "83"])):
            *lines, last = self.decode(data, *options).splitlines()
            self.assertEqual([line.split()[1] for line in lines], expected, options)
            self.assertEqual(last, counts)  # of all that there is

    def test_tells_the_time_of_day_where_the_trace_does(self):
        started = TRACE.replace(b"1}", b'1,"started":"2026-11-21T23:59:59.25Z"}', 1)
        self.assertIn("2026-11-22T00:00:00.750000Z  client    02  ",
                      self.decode(started, "--wall-clock"))
        record, = self.decode(started, "--wall-clock", "--json").splitlines()
        self.assertEqual(json.loads(record)["clock"], "2026-11-22T00:00:00.750000Z")
        for data, what in ((TRACE, "does not tell when it began"),
                           (SENTENCE, "is no trace, and tells no time")):
            self.check_result(
                self.orb_sim("decode", "--wall-clock", input=data.decode()), 125, "",
                f"orb-sim: --wall-clock: standard input {what}\n")

    def on_a_terminal(self, *arguments, **environment):
        """What is printed on a terminal."""
        (self.folder / "bytes").write_bytes(SENTENCE)
        terminal, stdout = pty.openpty()
        with open(terminal, "rb", buffering=0) as output:
            with open(stdout, "wb") as end:
                subprocess.run([ORB_SIM, "decode", *arguments, "bytes"], check=True, stdout=end,
                               cwd=self.folder, timeout=LIMIT,
                               env=self.environment | {"TERM": "xterm"} | environment)
            printed = b""
            with contextlib.suppress(OSError):  # at the end, which no process has open any more
                while some := output.read(4096):
                    printed += some
            self.assertTrue(printed.endswith(b"\n"), printed)
            return printed.decode()

    def test_is_in_colour_on_a_terminal_alone(self):
        self.environment.pop("NO_COLOR", None)
        coloured = self.on_a_terminal()
        self.assertIn("\033[2m         0  nmea   $GPZDA*48\033[0m\r\n", coloured)
        self.assertEqual(self.on_a_terminal(NO_COLOR=""), coloured)
        for environment in ({"NO_COLOR": "1"}, {"TERM": "dumb"}, {"TERM": ""}):
            self.assertNotIn("\033", self.on_a_terminal(**environment))
        self.assertNotIn("\033", self.on_a_terminal("--json"))
        self.environment["TERM"] = "xterm"
        self.assertNotIn("\033", self.decode(SENTENCE))

    def test_takes_what_only_begins_like_a_trace_for_bytes(self):
        for text, count in ((b"", "0 other bytes"), (b"{", "1 other byte"),
                            (b'{"orb-sim', "9 other bytes"),
                            (b'{"orb-sim-tracer":1}', "20 other bytes")):
            self.assertTrue(self.decode(text).endswith(f", {count}\n"), text)

    def test_tells_where_a_trace_is_damaged(self):
        self.check_result(self.orb_sim("decode", input='{"orb-sim-trace":1}\n{}\n'), 125, "",
                          "orb-sim: standard input:2: \"time\" is missing\n")

    def test_tells_what_cannot_be_read(self):
        self.check_failure("orb-sim: none: No such file or directory\n", "decode", "none")
        self.check_failure("orb-sim: /: Is a directory\n", "decode", "/")

    def test_prints_what_comes_as_it_comes(self):
        with subprocess.Popen([ORB_SIM, "decode"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              env=self.environment) as process:
            process.stdin.write(ASK_VERSION)
            process.stdin.flush()
            self.assertTrue(select.select([process.stdout], [], [], LIMIT)[0])
            self.assertIn(b"Query revision", process.stdout.readline())
            process.stdin.close()
            self.assertEqual(process.wait(LIMIT), 0)

    # A stream of 64 MB in a process that may have but little more memory than it starts with.
    @unittest.skipIf(os.environ.get("ORB_SANITIZE"), "sanitizers take memory of their own")
    @not_emulated("orb-sim shares its memory with the emulator")
    def test_needs_little_memory_for_much(self):
        def few_megabytes():
            resource.setrlimit(resource.RLIMIT_DATA, (24 << 20, 24 << 20))
        output = self.folder / "output"
        with open(output, "wb") as stdout, subprocess.Popen(
                [ORB_SIM, "decode"], stdin=subprocess.PIPE, stdout=stdout, env=self.environment,
                preexec_fn=few_megabytes) as process:
            block = bytes(1 << 20)
            for _ in range(64):
                process.stdin.write(block)
            process.stdin.close()
            self.assertEqual(process.wait(LIMIT), 0)
        last = output.read_text().splitlines()[-1]
        self.assertTrue(last.endswith(f", {64 << 20} other bytes"), last)


if __name__ == "__main__":
    unittest.main(verbosity=2)
