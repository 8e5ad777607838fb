"""Holds programs of many kinds on mapped paths by the preloaded library."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

LIBRARY = pathlib.Path(os.environ["ORB_SIM_PRELOAD"])
PROGRAMS = pathlib.Path(os.environ["ORB_SIM_TEST_PROGRAMS"])
LIMIT = 60  # seconds for one program

# Nothing is there, so that whatever succeeds has been mapped.
MAPPED = "/nonexistent-orb-sim/device.log"
OTHER = "/nonexistent-orb-sim/other.log"

SANITIZED = sorted(
    family for family in ("g++", "clang++") if (PROGRAMS / f"file_calls_asan_{family}").exists()
)


def escaped(path):
    return "".join("\\" + c if c in ":=\\" else c for c in str(path))


class PreloadTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="preload: odd=name.")
        self.addCleanup(self.folder.cleanup)
        self.target = pathlib.Path(self.folder.name) / "target"
        self.other = pathlib.Path(self.folder.name) / "other"
        self.environment = dict(os.environ)
        self.environment["ORB_SIM_PATHS"] = (
            f"{MAPPED}={escaped(self.target)}:{OTHER}={escaped(self.other)}"
        )
        self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nowhere"

    def run_program(self, *command, runtimes="", **options):
        """Runs a program under the library; returns its output. It must succeed and say nothing on
        standard error."""
        libraries = f"{runtimes}:{LIBRARY}" if runtimes else str(LIBRARY)
        result = subprocess.run(
            [str(part) for part in command],
            env=self.environment | {"LD_PRELOAD": libraries},
            capture_output=True, text=True, timeout=LIMIT, **options)
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)
        return result.stdout

    def run_child(self, *command):
        """The same for a program that another program, the shell, starts."""
        return self.run_program("sh", "-c", '"$@"; exit $?', "sh", *command)

    def assert_target(self, text):
        self.assertEqual(self.target.read_text(), text)


class CProgram(PreloadTest):
    def test_finds_every_function_on_the_mapped_path(self):
        self.run_program(PROGRAMS / "file_calls", MAPPED, OTHER)

    def test_finds_every_function_on_the_mapped_path_when_it_is_fortified(self):
        self.run_program(PROGRAMS / "file_calls_fortified", MAPPED, OTHER)

    def test_finds_system_calls_on_the_mapped_path(self):
        self.run_program(PROGRAMS / "syscall_calls", MAPPED, OTHER)

    def test_fails_without_the_library(self):
        result = subprocess.run([PROGRAMS / "file_calls", MAPPED, OTHER], capture_output=True,
                                text=True, timeout=LIMIT)
        self.assertEqual(result.returncode, 1)
        self.assertIn("open: No such file or directory\n", result.stderr)


class SanitizedProgram(PreloadTest):
    def test_exists_for_a_compiler_at_least(self):
        self.assertTrue(SANITIZED)

    def test_finds_every_function_on_the_mapped_path(self):
        for family in SANITIZED:
            with self.subTest(family):
                self.run_child(PROGRAMS / f"file_calls_asan_{family}", MAPPED, OTHER)

    def test_writes_streams_to_the_mapped_path(self):
        for family in SANITIZED:
            with self.subTest(family):
                self.target.unlink(missing_ok=True)
                self.run_child(PROGRAMS / f"file_streams_asan_{family}", MAPPED)
                self.assert_target("stream\n")

    def test_does_not_hand_its_runtime_to_a_child_that_needs_none(self):
        for family in SANITIZED:
            for way in ("system", "execve", "posix_spawn"):
                with self.subTest(family, way=way):
                    program = PROGRAMS / f"start_program_asan_{family}"
                    output = self.run_child(program, way, 'echo "$LD_PRELOAD"')
                    self.assertEqual(output, f"{LIBRARY}\n")

    def test_starts_a_sanitized_program_from_a_script(self):
        script = pathlib.Path(self.folder.name) / "script"
        for family in SANITIZED:
            with self.subTest(family):
                self.target.unlink(missing_ok=True)
                script.write_text(f"#!/bin/sh\n'{PROGRAMS}/file_streams_asan_{family}' {MAPPED}\n")
                script.chmod(0o700)
                self.run_child(script)
                self.assert_target("stream\n")


class CxxProgram(PreloadTest):
    def test_writes_streams_to_the_mapped_path(self):
        self.run_program(PROGRAMS / "file_streams", MAPPED)
        self.run_program(PROGRAMS / "file_streams", MAPPED)
        self.assert_target("stream\nstream\n")


class Shell(PreloadTest):
    def test_redirects_to_the_mapped_path(self):
        self.run_program("sh", "-c", f"echo one > {MAPPED}; echo two >> {MAPPED}")
        self.assert_target("one\ntwo\n")
        self.assertEqual(self.run_program("sh", "-c", f"cat < {MAPPED}; test -f {MAPPED}"),
                         "one\ntwo\n")

    def test_uses_the_usual_tools_on_the_mapped_path(self):
        self.target.write_text("one\n")
        self.assertEqual(self.run_program("cat", MAPPED), "one\n")
        self.assertEqual(self.run_program("stat", "-c", "%s", MAPPED), "4\n")
        self.assertIn(MAPPED, self.run_program("ls", "-l", MAPPED))
        self.run_program("cp", MAPPED, OTHER)
        self.assertEqual(self.other.read_text(), "one\n")
        self.run_program("touch", "-d", "@1000", MAPPED)
        self.assertEqual(self.target.stat().st_mtime, 1000)
        self.run_program("truncate", "-s", "2", MAPPED)
        self.run_program("mv", MAPPED, OTHER)
        self.assertEqual(self.other.read_text(), "on")
        self.run_program("chmod", "400", OTHER)
        self.assertEqual(self.other.stat().st_mode & 0o777, 0o400)
        self.run_program("rm", OTHER)
        self.assertFalse(self.other.exists())

    def test_covers_a_child_with_an_empty_environment(self):
        self.run_program("sh", "-c", f"env -i /bin/sh -c 'echo one > {MAPPED}'")
        self.assert_target("one\n")

    def test_gives_a_child_with_an_empty_environment_the_settings_alone(self):
        names = {line.split("=")[0] for line in self.run_program("env", "-i", "env").splitlines()}
        self.assertEqual(names, {"LD_PRELOAD", "ORB_SIM_PATHS", "DBUS_SYSTEM_BUS_ADDRESS"})

    def test_leaves_a_bus_address_alone_that_was_set_for_the_child(self):
        command = ("env", "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/else", "printenv",
                   "DBUS_SYSTEM_BUS_ADDRESS")
        self.assertEqual(self.run_program(*command), "unix:path=/else\n")

    def test_keeps_other_preloaded_libraries_of_the_child(self):
        command = ("env", "LD_PRELOAD=libm.so.6 libdl.so.2", "printenv", "LD_PRELOAD")
        self.assertEqual(self.run_program(*command), f"{LIBRARY}:libm.so.6:libdl.so.2\n")

    def test_leaves_other_paths_alone(self):
        path = pathlib.Path(self.folder.name) / "device.log"
        self.run_program("sh", "-c", f"echo own > '{path}'")
        self.assertEqual(path.read_text(), "own\n")
        self.assertFalse(self.target.exists())

    def test_does_not_touch_the_real_file_that_is_mapped(self):
        real = pathlib.Path(self.folder.name) / "real"
        real.write_text("real\n")
        self.environment["ORB_SIM_PATHS"] = f"{escaped(real)}={escaped(self.target)}"
        self.run_program("sh", "-c", "echo one > \"$0\"; cat \"$0\"; rm \"$0\"", real)
        self.assertEqual(real.read_text(), "real\n")
        self.assertFalse(self.target.exists())


class StartedProgram(PreloadTest):
    WAYS = ("execve", "execle", "execvpe", "fexecve", "execveat", "execv", "execvp", "execl",
            "execlp", "posix_spawn", "posix_spawnp", "vfork", "system", "popen")

    def check_every_way(self, program):
        for way in self.WAYS:
            with self.subTest(program, way=way):
                self.target.unlink(missing_ok=True)
                self.run_child(PROGRAMS / program, way, f"echo {way} > {MAPPED}")
                self.assert_target(f"{way}\n")

    def test_sees_the_mapped_path_whatever_its_environment(self):
        self.check_every_way("start_program")

    def test_sees_the_mapped_path_when_a_sanitized_program_starts_it(self):
        for family in SANITIZED:
            self.check_every_way(f"start_program_asan_{family}")

    def first_line_of_error(self, *command):
        result = subprocess.run([str(part) for part in command],
                                env=self.environment | {"LD_PRELOAD": str(LIBRARY)},
                                capture_output=True, text=True, timeout=LIMIT)
        return result.stderr.splitlines()[0]

    def test_is_named_where_it_cannot_be_held(self):
        for name, obstacle in (
                ("static_program", "is statically linked"),
                ("go_note", "is a Go program, which makes system calls without the C library")):
            with self.subTest(name):
                program = PROGRAMS / name
                self.assertEqual(
                    self.first_line_of_error("env", program, MAPPED, OTHER),
                    f"orb-sim: {program} {obstacle}: it does not see the simulated device")

    def test_is_not_found_as_ever(self):
        result = subprocess.run(["env", "no-such-program"],
                                env=self.environment | {"LD_PRELOAD": str(LIBRARY),
                                                        "PATH": "/usr/bin:/bin"},
                                capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual(result.returncode, 127)


class Python(PreloadTest):
    def run_python(self, code):
        return self.run_program(sys.executable, "-c", f"path = {MAPPED!r}\n{code}")

    def test_opens_and_examines_the_mapped_path(self):
        self.run_python("""
import os, pathlib
assert not os.path.exists(path)
with open(path, "w") as stream: stream.write("python")
assert os.stat(path).st_size == 6 and os.lstat(path).st_size == 6
assert os.access(path, os.R_OK) and pathlib.Path(path).read_text() == "python"
descriptor = os.open(path, os.O_WRONLY | os.O_APPEND)
os.write(descriptor, b"!")
""")
        self.assert_target("python!")

    def test_covers_a_child_without_environment(self):
        self.run_python("""
import subprocess
subprocess.run(["/bin/sh", "-c", "echo one > " + path], env={}, check=True)
subprocess.run(["/bin/sh", "-c", "echo two >> " + path], env={}, check=True, close_fds=False)
""")
        self.assert_target("one\ntwo\n")

    def test_covers_a_spawned_child_and_its_redirected_output(self):
        self.run_python("""
import os
opened = [(os.POSIX_SPAWN_OPEN, 1, path, os.O_WRONLY | os.O_CREAT, 0o600)]
child = os.posix_spawn("/bin/echo", ["echo", "one"], {}, file_actions=opened)
assert os.waitpid(child, 0)[1] == 0
""")
        self.assert_target("one\n")


if __name__ == "__main__":
    unittest.main(verbosity=2)
