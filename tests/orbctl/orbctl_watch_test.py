"""orbctl watch in a real terminal: what it shows, and the terminal that it leaves."""

import os
import re
import signal
import time
import unittest

from orbctl import LIMIT, ORBCTL, ORB_SIM, OrbctlTest, processes

TITLE = r"orbctl watch  /dev/tty_gps  q quits\n\n"
READINGS = TITLE + r"""fix           3D\+DGNSS, 11 satellites
position      48\.3712340 11\.5678900 degrees, 475\.90 m
time          \d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} UTC, GPS week \d{4}, 18 leap seconds
survey        dynamic
interference  detection off
line          \d+ exchanges, 0 failed"""
SCATTER = READINGS + r"""

  positions around their mean, 0\.5 m to each side
\n+ +\+"""
NARROW = TITLE + r"""fix           3D\+DGNSS, 11 satellites
position      48\.3712340 11\.5678900 degr
time          \d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} UT
survey        dynamic
interference  detection off
line          \d+ exchanges, 0 failed"""
WAITING = TITLE + r"""fix           waiting
position      none
time          waiting
survey        waiting
interference  waiting
"""
STARTED = WAITING + "line          0 exchanges, 0 failed"
SILENT = WAITING + r"""line          \d+ exchanges, \d+ failed
  no answer before the deadline:
  no byte arrives on the line \(detection\)
  check the receiver's power and the cable, then: orbctl doctor"""


class Watch(OrbctlTest):
    def tmux(self, *arguments):
        result = self.run_program("tmux", "-S", str(self.folder / "tmux"), "-f", "/dev/null",
                                  *arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def type(self, *keys):
        self.tmux("send-keys", *keys)

    def wait_for_screen(self, pattern):
        """Waits until the whole screen matches, but for empty lines at its end."""
        end = time.monotonic() + LIMIT / 2
        while True:
            lines = self.tmux("capture-pane", "-p").splitlines()
            screen = "\n".join(line.rstrip() for line in lines).rstrip()
            if re.fullmatch(pattern, screen):
                return
            if time.monotonic() > end:
                self.fail(f"the screen is\n{screen}\ninstead of\n{pattern}")
            time.sleep(0.02)

    def watch(self, options="", device="", before="clear"):
        """Watches a simulated device in a terminal of 80 columns and 24 rows."""
        self.environment["LC_ALL"] = "C.UTF-8"
        self.tmux("new-session", "-d", "-x", "80", "-y", "24",
                  f"{ORB_SIM} run {device} -- sh")
        self.addCleanup(self.tmux, "kill-server")
        self.type("PS1='ready> '; clear", "Enter")
        self.wait_for_screen("ready>")
        self.type(f"{before}; clear; {ORBCTL} {options} watch; echo status $?; "
                  "stty -a | grep -ow -e '-*echo' -e '-*icanon'", "Enter")

    def check_end(self, how):
        """The shell goes on where it was, in a terminal that shows what is typed."""
        self.wait_for_screen(rf"{how}\nicanon\necho\nready>")
        self.assertEqual(self.tmux("display-message", "-p", "#{cursor_flag} #{alternate_on}"),
                         "1 0\n")

    def test_shows_the_receiver_in_a_window_of_any_size_until_q(self):
        self.watch(before=f"{ORBCTL} set output none")
        self.wait_for_screen(SCATTER)
        self.tmux("resize-window", "-x", "40", "-y", "12")
        self.wait_for_screen(NARROW)
        self.tmux("resize-window", "-x", "100", "-y", "30")
        self.wait_for_screen(SCATTER)
        self.type("q")
        self.check_end("status 0")
        # The receiver's output is as it was.
        self.type(f"clear; {ORBCTL} doctor | grep -o 'no byte arrives'", "Enter")
        self.wait_for_screen("no byte arrives\nready>")

    def test_says_what_is_wrong(self):
        self.watch("--deadline 0.3", "--silent")
        self.wait_for_screen(SILENT)
        self.type("q")
        self.check_end("status 0")

    def test_waits_a_second_before_it_tries_again(self):
        self.watch("", "--hardware-id 99999999-999")
        self.wait_for_screen(WAITING + r"line          \d+ exchanges, [1-9]\d* failed\n[^$]*")
        time.sleep(2)
        [tries] = re.findall(r"(\d+) failed", self.tmux("capture-pane", "-p"))
        self.assertLess(int(tries), 10)
        self.type("q")
        self.check_end("status 0")

    def test_does_not_wait_for_a_silent_line_at_the_end(self):
        self.watch(f"--deadline {LIMIT}", "--silent")
        self.wait_for_screen(STARTED)
        self.type("q")
        self.check_end("status 0")

    def test_prints_no_json(self):
        self.watch("--json")
        self.wait_for_screen(r'(?s)\{.*"watch prints no JSON: it draws on a terminal".*status 2\n.*')
        self.type("q")

    def test_gives_the_terminal_back_after_sigterm(self):
        self.watch(f"--deadline {LIMIT}", "--silent")
        self.wait_for_screen(STARTED)
        [watch] = processes("orbctl", self.folder)
        os.kill(watch, signal.SIGTERM)
        self.check_end(r"Terminated\nstatus 143")


if __name__ == "__main__":
    unittest.main()
