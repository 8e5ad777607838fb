"""What is left of an orbctl that is killed: nothing, whenever that happens."""

import os
import pathlib
import random
import signal
import subprocess
import sys
import time
import unittest

from orbctl import LIMIT, ORBCTL, ORB_SIM, OrbctlTest, processes


def workers():
    return processes("orb-gnss-worker", os.environ["TMPDIR"])


def wait_for(condition):
    end = time.monotonic() + LIMIT / 2
    while not (result := condition()):
        if time.monotonic() > end:
            return result
        time.sleep(0.005)
    return result


def say_what_is_left():
    none_left = wait_for(lambda: not workers())
    print("no worker is left" if none_left else "workers are left", flush=True)


def kill_at_random_moments(times, *commands):
    """Runs within a simulated device."""
    moments = random.Random(1)
    for i in range(int(times)):
        with subprocess.Popen([ORBCTL, *commands[i % len(commands)].split()],
                              stdout=subprocess.DEVNULL) as client:
            time.sleep(moments.uniform(0, 0.06))
            client.kill()
    say_what_is_left()


def kill_with_a_stopped_worker():
    """Runs within a simulated device that is silent."""
    with subprocess.Popen([ORBCTL, "--deadline", "60", "get", "sbas"]) as client:
        [worker] = wait_for(workers)
        os.kill(worker, signal.SIGSTOP)
        stat = pathlib.Path(f"/proc/{worker}/stat")
        wait_for(lambda: stat.read_text().split()[2] == "T")
        client.kill()
    say_what_is_left()


class Survival(OrbctlTest):
    def on_device(self, *call, device=(), then):
        """Calls a function of this file on a simulated device, then orbctl on the same one."""
        script = f'python3 {__file__} "$@" && {ORBCTL} {then}'
        return self.run_program(ORB_SIM, "run", *device, "--", "sh", "-c", script, "sh", *call)

    def test_killed_at_any_moment_it_leaves_nothing_behind(self):
        result = self.on_device("kill_at_random_moments", "100", "get elevation-limit",
                                "set elevation-limit 6", "set elevation-limit 5",
                                then=f"-q set elevation-limit 5 && {ORBCTL} get elevation-limit")
        self.check(result, 0, "no worker is left\n5 degrees\n", "")

    def check_after_silence(self, result):
        self.check(result, 3, "no worker is left\n",
                   "orbctl: no answer before the deadline: no byte arrives on the line "
                   "(detection)\norbctl: check the receiver's power and the cable, then: orbctl doctor\n")

    def test_killed_while_the_line_is_silent_it_leaves_nothing_behind(self):
        self.check_after_silence(
            self.on_device("kill_at_random_moments", "50", "--deadline 60 get elevation-limit",
                           device=["--silent"], then="--deadline 0.3 get elevation-limit"))

    def test_killed_while_its_worker_is_stopped_it_leaves_nothing_behind(self):
        self.check_after_silence(
            self.on_device("kill_with_a_stopped_worker", device=["--silent"],
                           then="--deadline 0.3 get elevation-limit"))


if __name__ == "__main__":
    if len(sys.argv) > 1 and sys.argv[1] in globals():
        globals()[sys.argv[1]](*sys.argv[2:])
    else:
        unittest.main()
