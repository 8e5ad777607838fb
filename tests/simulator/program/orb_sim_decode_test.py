"""Prints bytes of every kind with `orb-sim decode`."""

import os
import resource
import select
import subprocess
import unittest

from orb_sim import ACKNOWLEDGED, ASK_VERSION, LIMIT, ORB_SIM, OrbSimTest, not_emulated

NOTHING = "0 good packets (0 unknown), 0 bad packets, 0 sentences, 0 other bytes\n"


class Decode(OrbSimTest):
    def decode(self, data, *arguments):
        result = self.orb_sim("decode", *arguments, input=data, text=False)
        return self.output_of(result).decode("ascii")

    def test_prints_messages_sentences_and_counts(self):
        damaged = ASK_VERSION[:-3] + b"\x00\x0D\x0A"
        unknown = bytes.fromhex("A0A1000170700D0A")
        data = ASK_VERSION + b"\x00" + ACKNOWLEDGED + damaged + unknown + b"$GPZDA*48\r\n"
        self.assertEqual(self.decode(data), """\
         0  02     Query revision information of software: 01
         9  other  1 byte: 00
        10  83     Message Acknowledged: 02
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
        self.assertEqual(self.decode(
            b'{"orb-sim-trace":1}\n{"time":1.5,"from":"client","bytes":"A0A100020201030D0A"}\n'),
            """\
    1.500000  client    02     Query revision information of software: 01
client: 1 good packet (0 unknown), 0 bad packets, 0 sentences, 0 other bytes
receiver: """ + NOTHING)

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
