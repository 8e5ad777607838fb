"""The error log in words, also while it grows, is cut off and replaced."""

import json
import os
import subprocess
import unittest

from orbctl import LIMIT, ORBCTL, ORB_SIM, OrbctlTest

LINE = "14:03:27_042:  Could not send : 45 00: Configure cable delay of 1PPS timing "
OTHER = "14:03:32_107:  Did not receive : 64 07: Query interference detection status"
IN_WORDS = "14:03:27.042  could not send: Configure cable delay of 1PPS timing (45 00)\n"
OTHER_IN_WORDS = "14:03:32.107  no reply to: Query interference detection status (64 07)\n"
LOG = "/var/log/orbset-errors.log"


class Log(OrbctlTest):
    def test_is_in_words(self):
        result = self.shell(f"echo '{LINE}' > {LOG}; echo '{OTHER}' >> {LOG}; "
                            f"echo 'of another program' >> {LOG}; {ORBCTL} log")
        self.check(result, 0, IN_WORDS + OTHER_IN_WORDS + "of another program\n", "")

    def test_cuts_a_line_that_is_longer_than_any_real_one(self):
        start = LINE.split(": ")[0] + ":  Could not send : 45 00: "
        longest = start + "x" * (256 - len(start))
        (self.folder / "log").write_text(f"{longest}\n{longest}x\n{start}{'x' * 300_000}\n")
        result = self.shell(f"cat log > {LOG}; {ORBCTL} log")
        in_words = "14:03:27.042  could not send: " + longest[len(start):] + " (45 00)\n"
        self.check(result, 0, in_words + f"{longest}...\n" * 2, "")
        result = self.shell(f"cat log > {LOG}; {ORBCTL} --json log")
        self.assertEqual([entry["line"] for entry in json.loads(result.stdout)["entries"]],
                         [longest, longest + "...", longest + "..."])
        result = self.shell(f"cat log > {LOG}; {ORBCTL} doctor | grep log")
        self.assertTrue(result.stdout.endswith(f"the last entry: {'x' * 256}...\n"), result.stdout)

    @unittest.skipIf(os.environ.get("ORB_SANITIZE"), "sanitizers take memory of their own")
    def test_doctor_reads_its_end_only(self):
        limit = "ulimit -v 700000"  # KiB
        result = self.shell(f"truncate -s 800M {LOG}; echo >> {LOG}; echo '{OTHER}' >> {LOG}; "
                            f"printf 14: >> {LOG}; {limit}; {ORBCTL} doctor | grep log")
        size = (800 << 20) + 1 + len(OTHER) + 1 + 3
        self.check(result, 0, f"note  log        {size} bytes, the last entry: {OTHER_IN_WORDS}", "")

    def test_has_what_the_library_has_written(self):
        result = self.shell(f"{ORBCTL} detect 2> seen; {ORBCTL} log", device=["--no-receiver"])
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertRegex(result.stdout, r"\A\d\d:\d\d:\d\d\.\d{3}  could not send: "
                         r"Query revision information of software \(02 00\)\n\Z")

    def test_says_where_there_is_none(self):
        self.check(self.shell(f"rm -f {LOG}; {ORBCTL} log"), 4, "",
                   f"orbctl: cannot read {LOG}\norbctl: it is made when the library is first used "
                   "by who may write there\n")

    def test_follows_it_through_cuts_and_rotations(self):
        script = (f"echo '{LINE}' > {LOG}; exec 3< /dev/stdin; {ORBCTL} log -f & "
                  f"while read step <&3; do case $step in "
                  f"add) echo '{OTHER}' >> {LOG} ;; "
                  f"cut) : > {LOG} ;; "
                  f"rotate) echo '{LINE}' >> {LOG}; mv {LOG} rotated; echo '{OTHER}' > {LOG} ;; "
                  f"begin) printf '%s' '{LINE}' >> {LOG} ;; "
                  f"end) echo >> {LOG} ;; "
                  "esac; done; kill $!")
        with subprocess.Popen([ORB_SIM, "run", "--", "sh", "-c", script], text=True,
                              cwd=self.folder, env=self.environment, stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as shell:
            def after(step, *expected):
                shell.stdin.write(step + "\n")
                shell.stdin.flush()
                for line in expected:
                    self.assertEqual(shell.stdout.readline(), line)
            self.assertEqual(shell.stdout.readline(), IN_WORDS)
            after("add", OTHER_IN_WORDS)
            after("rotate", IN_WORDS, OTHER_IN_WORDS)
            after("begin")
            after("end", IN_WORDS)
            after("cut")
            after("add", OTHER_IN_WORDS)
            shell.stdin.close()
            self.assertEqual(shell.stdout.read(), "")
            shell.wait(LIMIT)


if __name__ == "__main__":
    unittest.main()
