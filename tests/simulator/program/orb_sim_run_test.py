"""Runs programs with `orb-sim run` and looks at what they see and at what is left behind."""

import contextlib
import os
import pathlib
import pty
import random
import select
import shlex
import shutil
import signal
import subprocess
import time
import unittest

from orb_sim import (ACKNOWLEDGED, ASK_FOR_ACKNOWLEDGEMENT, ASK_FOR_VERSION, ASK_HARDWARE_ID, LIMIT,
                     ORB_SIM, OrbSimTest, ask_inventory, processes_of, wait_until)

STATIC_PROGRAM = os.environ["ORB_SIM_STATIC_PROGRAM"]

KEPT_FILES = ("/var/log/orbset.log", "/var/log/orbset-errors.log", "/tmp/orbitekChip-info.txt")
REAL_FILES = (*KEPT_FILES, "/run/lock/LCK..tty_gps", "/var/lock/LCK..tty_gps")
FITTED_MODULE = "47205318-001"


class RunTest(OrbSimTest):
    @contextlib.contextmanager
    def started(self, script):
        """Starts a script that says "ready" on its first line of output."""
        with subprocess.Popen(self.arguments((), ("sh", "-c", script)), env=self.environment,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              start_new_session=True) as process:
            try:
                self.assertEqual(process.stdout.readline(), "ready\n")
                yield process
            finally:
                process.kill()


    def program(self, name, text):
        file = self.folder / name
        file.write_text(text)
        file.chmod(0o700)
        return file


class Command(RunTest):
    def test_gives_its_exit_status_or_128_and_the_number_of_the_signal_that_ends_it(self):
        for script, status in (("exit 0", 0), ("exit 42", 42), ("kill -TERM $$", 143),
                               ("kill -KILL $$", 137)):
            self.assertEqual(self.run_command("sh", "-c", script).returncode, status)

    def test_has_input_output_and_error_to_itself(self):
        result = self.run_command("sh", "-c", "cat; echo wrong >&2", input="right\n")
        self.assertEqual((result.stdout, result.stderr), ("right\n", "wrong\n"))

    def test_runs_with_any_of_the_standard_streams_closed(self):
        for closed in ("<&-", ">&-", "2>&-", "<&- >&-", "<&- >&- 2>&-"):
            with self.subTest(closed):
                command = shlex.join(self.arguments((), ("sh", "-c", "test -c /dev/tty_gps")))
                self.check_result(self.run_program("sh", "-c", f"{command} {closed}"), 0, "", "")

    def test_cannot_write_to_an_output_that_is_closed(self):
        command = shlex.join(self.arguments((), ("sh", "-c", "echo lost 2>/dev/null || exit 42")))
        self.assertEqual(self.run_program("sh", "-c", f"{command} >&-").returncode, 42)

    def test_gets_its_arguments_and_name_as_they_are(self):
        for interpreter in ("#!/bin/sh\n", ""):
            script = self.program("name with blanks", interpreter + """printf '[%s]' "$0" "$@"\n""")
            result = self.run_command(script, "--help", "a b", "", "--")
            self.assertEqual(result.stdout, f"[{script}][--help][a b][][--]")

    def test_sees_the_rest_of_the_environment_as_it_is(self):
        self.environment["OTHER"] = "kept"
        self.assertEqual(self.run_shell('echo "$OTHER"; pwd', cwd=self.folder),
                         f"kept\n{self.folder}\n")

    def test_keeps_the_run_whatever_the_programs_that_it_starts_are_told(self):
        for told in ("ORB_SIM_PATHS=", "ORB_SIM_PATHS=junk", "ORB_SIM_I2C=" + 5000 * "a",
                     "DBUS_SYSTEM_BUS_ADDRESS=" + 70000 * "a"):
            with self.subTest(told[:30]):
                self.run_shell(f"env {told} sh -c 'test -c /dev/tty_gps'")

    @unittest.skipIf(os.environ.get("ORB_SANITIZE"), "sanitizers take descriptors of their own")
    def test_is_not_run_where_descriptors_are_few_and_nothing_is_left(self):
        command = shlex.join(self.arguments((), ("true",)))
        for limit in range(4, 8):
            with self.subTest(limit):
                result = self.run_program("sh", "-c", f"ulimit -n {limit}; exec {command}")
                self.assertEqual(result.returncode, 125)
                self.assert_nothing_is_left()

    def test_is_not_run_where_a_file_of_the_device_would_be_cut_off(self):
        command = shlex.join(self.arguments(("--hardware-id", 400 * "7"), ("true",)))
        for limit in range(0, 500, 50):
            with self.subTest(limit):
                result = self.run_program("sh", "-c",
                                          f"trap '' XFSZ; exec prlimit --fsize={limit} {command}")
                self.assertEqual(result.returncode, 125)
                self.assertIn("orb-sim: cannot write ", result.stderr)
                self.assert_nothing_is_left()

    @unittest.skipIf(os.environ.get("ORB_SANITIZE"), "sanitizers start a thread of their own")
    def test_is_not_run_where_processes_are_few_and_nothing_is_left(self):
        # The kernel does not limit root's processes; nobody's are as good as none but this test's.
        as_other = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
        if os.geteuid() != 0 or self.run_program(*as_other, ORB_SIM, "--version").returncode:
            self.skipTest("needs root's right to run orb-sim as another user")
        for folder in (self.folder, self.temporary):
            os.chown(folder, 65534, 65534)
        statuses = []
        for limit in (*range(8), 500):
            with self.subTest(limit):
                result = self.run_program(*as_other, "prlimit", f"--nproc={limit}", "--",
                                          *self.arguments((), ("echo", "done")))
                statuses.append(result.returncode)
                self.assert_nothing_is_left()
                if result.returncode == 0:
                    self.assertEqual(result.stdout, "done\n")
                else:
                    self.assertIn(result.returncode, (125, 126))
                    self.assertIn("Resource temporarily unavailable", result.stderr)
        self.assertEqual((statuses[0], statuses[-1]), (125, 0))

    def test_finds_no_signal_blocked(self):
        self.assertEqual(self.run_shell("grep SigBlk /proc/self/status").split()[1], "0" * 16)

    def test_finds_a_signal_ignored_that_was(self):
        command = shlex.join(self.arguments((), ("sh", "-c", "kill -HUP $$; echo alive")))
        self.assertEqual(self.run_program("sh", "-c", f"trap '' HUP; {command}").stdout, "alive\n")

    def test_gets_the_signals_that_are_sent_to_orb_sim(self):
        for name in ("HUP", "INT", "QUIT", "TERM", "USR1", "USR2", "ALRM"):
            with self.subTest(name):
                script = f"trap 'exit 42' {name}; echo ready; while :; do sleep 0.01; done"
                with self.started(script) as process:
                    process.send_signal(getattr(signal, "SIG" + name))
                    self.assertEqual(process.wait(LIMIT), 42)

    def test_takes_along_what_it_leaves_in_the_background(self):
        output = self.run_shell("sleep 1000 >/dev/null & setsid sleep 1000 >/dev/null & echo done")
        self.assertEqual(output, "done\n")


class Failure(RunTest):
    def check(self, status, message, *command, options=()):
        self.check_result(self.run_command(*command, options=options), status, "", message)

    def test_is_said_where_the_command_is_not_found(self):
        self.check(127, "orb-sim: command not found: no-such-program\n", "no-such-program")
        self.check(127, "orb-sim: ./no/program: No such file or directory\n", "./no/program")

    def test_is_said_where_the_command_cannot_be_executed(self):
        file = self.folder / "plain"
        file.write_text("")
        self.check(126, f"orb-sim: {file} is not executable\n", file)
        self.check(126, f"orb-sim: {self.folder} is a directory\n", self.folder)

    def test_is_said_where_the_interpreter_of_a_script_is_missing(self):
        script = self.program("script", "#!/no/interpreter\n")
        self.check(126, f"orb-sim: {script}: its interpreter /no/interpreter: No such file or "
                   "directory\n", script)

    def test_is_said_where_the_command_is_statically_linked(self):
        self.check(126, f"orb-sim: {STATIC_PROGRAM} is statically linked: it would use the real "
                   "device, so it is not started\n", STATIC_PROGRAM)

    @unittest.skipUnless(os.getuid() != 0 and pathlib.Path("/bin/su").exists(),
                         "a set-uid program changes nothing for root")
    def test_is_said_where_the_command_is_set_uid(self):
        self.check(126, "orb-sim: /bin/su runs with other rights than its caller's: it would use "
                   "the real device, so it is not started\n", "/bin/su")

    def test_is_said_where_the_command_is_missing(self):
        message = "orb-sim: COMMAND is missing; write it after --, as in: orb-sim run -- ./client\n"
        self.check(125, message)
        self.check_failure(message, "run")

    def test_is_said_where_the_line_is_missing_or_no_terminal(self):
        for path, problem in (("/no/line", "does not exist"), ("/etc/passwd", "is no terminal"),
                              ("/dev/null", "is no terminal"), ("/dev/ptmx", "is no terminal")):
            self.check(125, f"orb-sim: --tty: {path} {problem}\n", "true", options=("--tty", path))

    def test_is_said_where_the_installation_is_not_complete(self):
        program = self.folder / "bin" / "orb-sim"
        program.parent.mkdir()
        shutil.copy(ORB_SIM, program)
        result = self.run_program(program, "run", "--", "true")
        self.assertEqual((result.returncode, result.stdout), (125, ""))
        self.assertRegex(result.stderr, "^orb-sim: the installation is not complete: "
                         ".*/liborb-sim-preload.so is missing\n$")

    def test_is_said_where_the_folder_for_files_cannot_be_made(self):
        self.check(125, "orb-sim: cannot make the folder /dev/null/keep: Not a directory\n", "true",
                   options=("--keep", "/dev/null/keep"))


class Device(RunTest):
    def ask_receiver(self, *options):
        result = self.run_command(*ASK_FOR_ACKNOWLEDGEMENT, options=options)
        return bytes.fromhex(self.output_of(result))

    def test_has_a_receiver_that_answers(self):
        self.assertEqual(self.ask_receiver(), ACKNOWLEDGED)

    def test_has_a_receiver_for_a_child_without_environment(self):
        self.assertEqual(self.run_shell(shlex.join(("env", "-i", *ASK_FOR_ACKNOWLEDGEMENT))),
                         ACKNOWLEDGED.hex() + "\n")

    def test_can_have_a_silent_receiver(self):
        self.assertEqual(self.ask_receiver("--silent"), b"")

    def test_can_have_no_receiver(self):
        self.run_shell("test ! -e /dev/tty_gps", options=("--no-receiver",))

    def test_has_the_expected_module(self):
        self.assertEqual(self.run_shell(ask_inventory("GetModuleLocations")).split()[-2:],
                         ["1", "]"])
        self.assertIn(FITTED_MODULE, self.run_shell(ASK_HARDWARE_ID))

    def test_can_have_another_module(self):
        identifier = 'odd "text" \\ = [x]'
        self.assertIn(identifier, self.run_shell(ASK_HARDWARE_ID,
                                                 options=("--hardware-id", identifier)))

    def test_can_have_no_module(self):
        self.assertEqual(self.run_shell(ask_inventory("GetModuleLocations"),
                                        options=("--no-module",)).split(), ["array", "[", "]"])

    def test_reports_the_versions_asked_for(self):
        # The version report follows the acknowledgement; its fields are the last three of each four.
        result = self.run_command(*ASK_FOR_VERSION, options=(
            "--kernel-version", "9.8.7", "--odm-version", "6.5.4", "--revision", "2031.11.29"))
        report = bytes.fromhex(result.stdout)[9:]
        self.assertEqual(report[4], 0x80)
        for field in ((9, 8, 7), (6, 5, 4), (31, 11, 29)):
            self.assertIn(bytes(field), report)


class PrivateFiles(RunTest):
    WRITE = "; ".join(f"echo {{0}} >> {path}" for path in REAL_FILES)

    def test_are_not_the_real_ones(self):
        text = "orb-sim-run-test"
        before = [os.path.exists(path) for path in REAL_FILES]
        self.run_shell(self.WRITE.format(text))
        for path, was_there in zip(REAL_FILES, before):
            if not was_there:
                self.assertFalse(os.path.exists(path), path)
            elif os.access(path, os.R_OK):
                self.assertNotIn(text, pathlib.Path(path).read_text(errors="replace"))

    def test_are_new_in_every_run(self):
        self.run_shell(self.WRITE.format("first"))
        self.run_shell("; ".join(f"test ! -e {path}" for path in REAL_FILES))

    def test_are_left_where_the_user_wants_them(self):
        keep = self.folder / "new" / "keep: a=b"
        self.run_shell(self.WRITE.format("first"), options=("--keep", str(keep)))
        names = sorted(path.name for path in keep.iterdir())
        self.assertEqual(names, ["i2c-registers.txt"] +
                         sorted(os.path.basename(path) for path in KEPT_FILES))
        self.run_shell(self.WRITE.format("second"), options=("--keep", str(keep)))
        for path in KEPT_FILES:
            self.assertEqual((keep / os.path.basename(path)).read_text(), "first\nsecond\n")
        # A relative folder is below the one where orb-sim is started, wherever the command goes.
        self.run_shell("cd /; " + self.WRITE.format("third"), options=("--keep", "new/keep: a=b"),
                       cwd=self.folder)
        self.assertEqual((keep / "orbset.log").read_text(), "first\nsecond\nthird\n")


class Killed(RunTest):
    # Leaves processes of every kind about: in the background, in another session, and stopped.
    BUSY = """
        sleep 1000 >/dev/null 2>&1 &
        setsid sh -c 'sleep 1000 & sleep 1000' >/dev/null 2>&1 &
        sleep 1000 >/dev/null 2>&1 & kill -STOP $!
        echo ready
        wait
        sleep 1000
    """

    BUSY_PROCESSES = 8  # the daemon, the service, two shells and four that sleep

    @contextlib.contextmanager
    def busy(self, prefix=""):
        with self.started(prefix + self.BUSY) as process:
            wait_until(lambda: len(processes_of(self.run_folder())) == self.BUSY_PROCESSES,
                       "not all processes have started")
            yield process

    def run_folder(self):
        return str(self.temporary / "orb-sim")

    def children_of(self, process):
        text = subprocess.run(["ps", "-o", "pid=", "--ppid", str(process)], capture_output=True,
                              text=True, check=False).stdout
        return [int(word) for word in text.split()]

    def assert_all_ends(self):
        wait_until(lambda: not processes_of(self.run_folder()), "processes are left")
        wait_until(lambda: not list(self.temporary.iterdir()), "the folder is left")

    def test_orb_sim_leaves_nothing(self):
        with self.busy() as process:
            process.kill()
            self.assert_all_ends()

    def test_process_with_the_device_leaves_nothing(self):
        with self.busy() as process:
            [device] = self.children_of(process.pid)
            os.kill(device, signal.SIGKILL)
            self.assertEqual(process.wait(LIMIT), 125)
            self.assertEqual(process.stderr.read(),
                             "orb-sim: the process with the simulated device was killed\n")
            self.assertEqual(processes_of(self.run_folder()), [])
            self.assertEqual(list(self.temporary.iterdir()), [])

    def test_command_leaves_nothing(self):
        with self.busy(f"echo $$ > {self.folder}/pid") as process:
            os.kill(int((self.folder / "pid").read_text()), signal.SIGKILL)
            self.assertEqual(process.wait(LIMIT), 137)
            self.assertEqual(processes_of(self.run_folder()), [])
            self.assertEqual(list(self.temporary.iterdir()), [])

    # More of them on request.
    MOMENTS = int(os.environ.get("ORB_SIM_KILLS", "10"))

    def test_any_process_at_any_moment_leaves_nothing(self):
        for number in range(self.MOMENTS):
            chance = random.Random(number)
            with self.subTest(number), subprocess.Popen(
                    self.arguments((), ("sleep", "1000")), env=self.environment,
                    stderr=subprocess.DEVNULL, start_new_session=True) as process:
                time.sleep(chance.uniform(0, 0.3))
                victim = chance.choice([process.pid, *sorted(processes_of(self.run_folder()))])
                with contextlib.suppress(ProcessLookupError):
                    os.kill(victim, signal.SIGKILL)
                # The run goes on without its bus or its inventory, as a device does.
                with contextlib.suppress(subprocess.TimeoutExpired):
                    process.wait(0.5)
                process.terminate()
                self.assert_all_ends()


class SeveralRuns(RunTest):
    def test_do_not_disturb_each_other(self):
        script = """
            echo {0} > /var/log/orbset.log
            readlink /dev/tty_gps; echo "$DBUS_SYSTEM_BUS_ADDRESS"
            : > {1}/{0}; until test -e {1}/one && test -e {1}/two; do sleep 0.01; done
            cat /var/log/orbset.log
        """
        runs = [subprocess.Popen(
            self.arguments(("--hardware-id", name),
                           ("sh", "-c", script.format(name, self.folder) + ASK_HARDWARE_ID)),
            env=self.environment, stdout=subprocess.PIPE, text=True) for name in ("one", "two")]
        outputs = [run.communicate(timeout=LIMIT)[0].splitlines() for run in runs]
        self.assertEqual([run.returncode for run in runs], [0, 0])
        self.assertNotEqual(outputs[0][0], outputs[1][0])
        self.assertNotEqual(outputs[0][1], outputs[1][1])
        self.assertEqual([output[2] for output in outputs], ["one", "two"])
        for output, name in zip(outputs, ("one", "two")):
            self.assertTrue(output[-1].endswith(name), output)

    def test_can_stand_one_within_the_other(self):
        inner = shlex.join(self.arguments(("--hardware-id", "inner"), (
            "sh", "-c", "echo inner > /var/log/orbset.log; " + ASK_HARDWARE_ID)))
        output = self.run_shell(f"echo outer > /var/log/orbset.log; {inner}; "
                                "cat /var/log/orbset.log", options=("--hardware-id", "outer"))
        self.assertRegex(output, r"inner\s*outer\n\Z")


class Terminal(RunTest):
    def converse(self, command, dialogue):
        """Runs a command in a new terminal and types each text of the dialogue once what it waits
        for has been said. Returns the exit status and all that was said."""
        process, terminal = pty.fork()
        if process == 0:
            os.execvpe(command[0], command, self.environment)
        said = ""
        answered = 0  # how much of it has been waited for
        dialogue = list(dialogue)
        with contextlib.suppress(OSError):  # the terminal's end is an error
            while select.select([terminal], [], [], LIMIT)[0]:
                said += os.read(terminal, 1000).decode()
                while dialogue and dialogue[0][0] in said[answered:]:
                    awaited, typed = dialogue.pop(0)
                    answered = said.index(awaited, answered) + len(awaited)
                    os.write(terminal, typed)
        os.close(terminal)
        status = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
        self.assertEqual(dialogue, [], said)
        return status, said

    def test_can_be_read_and_written(self):
        script = "test -t 0 && test -t 1 && echo ready && read -r x </dev/tty && echo $x >/dev/tty"
        status, output = self.converse(self.arguments((), ("sh", "-c", script)),
                                       [("ready", b"words\n")])
        self.assertEqual(status, 0)
        self.assertTrue(output.endswith("words\r\nwords\r\n"), output)

    def test_sends_its_interrupt_once(self):
        script = """
            trap 'echo interrupted; seen=yes' INT
            echo ready
            until test $seen; do sleep 0.01; done
            sleep 0.2
            exit 7
        """
        status, output = self.converse(self.arguments((), ("sh", "-c", script)),
                                       [("ready", b"\x03")])
        self.assertEqual(status, 7)
        self.assertEqual(output.count("interrupted"), 1)

    def test_stops_and_continues_a_command(self):
        script = "trap 'echo again' CONT; echo ready; while :; do sleep 0.01; done"
        self.environment |= {"PS1": "$ ", "TERM": "dumb"}
        status, _ = self.converse(("bash", "--norc", "-i"), [
            ("$ ", (shlex.join(self.arguments((), ("sh", "-c", script))) + "\n").encode()),
            ("ready\r\n", b"\x1a"),
            ("Stopped", b"fg\n"),
            ("again\r\n", b"\x03"),
            ("$ ", b"exit $?\n")])
        self.assertEqual(status, 130)


if __name__ == "__main__":
    unittest.main(verbosity=2)
