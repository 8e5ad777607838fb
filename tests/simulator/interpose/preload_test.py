"""Holds programs of many kinds on mapped paths by the preloaded library."""

import sys
import unittest

from held_program import HeldProgramTest, LIBRARY, PROGRAMS, SANITIZED, escaped

# Nothing is there, so that whatever succeeds has been mapped.
MAPPED = "/nonexistent-orb-sim/device.log"
OTHER = "/nonexistent-orb-sim/other.log"


class PreloadTest(HeldProgramTest):
    def setUp(self):
        super().setUp()
        self.target = self.folder / "target"
        self.other = self.folder / "other"
        self.environment |= {
            "ORB_SIM_PATHS": f"{MAPPED}={escaped(self.target)}:{OTHER}={escaped(self.other)}",
            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nowhere"}

    def assert_target(self, text):
        """What the target holds; it is removed."""
        self.assertEqual(self.target.read_text(), text)
        self.target.unlink()


class PlainProgram(PreloadTest):
    def test_finds_every_call_on_the_mapped_path(self):
        for name in "file_calls", "file_calls_fortified", "syscall_calls":
            with self.subTest(name):
                self.run_program(PROGRAMS / name, MAPPED, OTHER)

    def test_writes_streams_to_the_mapped_path(self):
        for _ in range(2):
            self.run_program(PROGRAMS / "file_streams", MAPPED)
        self.assert_target("stream\nstream\n")

    def test_fails_without_the_library(self):
        self.check_fails_without_the_library(PROGRAMS / "file_calls", MAPPED, OTHER)


class SanitizedProgram(PreloadTest):
    def test_exists_for_a_compiler_at_least(self):
        self.assertTrue(SANITIZED)

    def test_finds_every_call_on_the_mapped_path(self):
        for kind in SANITIZED:
            with self.subTest(kind):
                self.run_child(f"{PROGRAMS}/file_calls{kind}", MAPPED, OTHER)

    def test_writes_streams_to_the_mapped_path_also_from_a_script(self):
        script = self.folder / "script"
        for kind in SANITIZED:
            with self.subTest(kind):
                self.run_child(f"{PROGRAMS}/file_streams{kind}", MAPPED)
                self.assert_target("stream\n")
                script.write_text(f"#!/bin/sh\n'{PROGRAMS}/file_streams{kind}' {MAPPED}\n")
                script.chmod(0o700)
                self.run_child(script)
                self.assert_target("stream\n")

    def test_does_not_hand_its_runtime_to_a_child_that_needs_none(self):
        for kind in SANITIZED:
            for way in "system", "execve", "posix_spawn":
                with self.subTest(kind, way=way):
                    program = f"{PROGRAMS}/start_program{kind}"
                    output = self.run_child(program, way, 'echo "$LD_PRELOAD"')
                    self.assertEqual(output, f"{LIBRARY}\n")


class Shell(PreloadTest):
    def test_redirects_to_the_mapped_path(self):
        script = f"echo one > {MAPPED}; echo two >> {MAPPED}; cat < {MAPPED}; test -f {MAPPED}"
        self.assertEqual(self.run_program("sh", "-c", script), "one\ntwo\n")
        self.assert_target("one\ntwo\n")

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
        path = self.folder / "device.log"
        self.run_program("sh", "-c", f"echo own > '{path}'")
        self.assertEqual(path.read_text(), "own\n")
        self.assertFalse(self.target.exists())

    def test_does_not_touch_the_real_file_that_is_mapped(self):
        real = self.folder / "real"
        real.write_text("real\n")
        self.environment["ORB_SIM_PATHS"] = f"{escaped(real)}={escaped(self.target)}"
        self.run_program("sh", "-c", "echo one > \"$0\"; cat \"$0\"; rm \"$0\"", real)
        self.assertEqual(real.read_text(), "real\n")
        self.assertFalse(self.target.exists())


class StartedProgram(PreloadTest):
    WAYS = ("execve", "execle", "execvpe", "fexecve", "execveat", "execv", "execvp", "execl",
            "execlp", "posix_spawn", "posix_spawnp", "vfork", "system", "popen")

    def test_sees_the_mapped_path_whatever_its_environment(self):
        for kind in "", *SANITIZED:
            for way in self.WAYS:
                with self.subTest(kind, way=way):
                    self.run_child(f"{PROGRAMS}/start_program{kind}", way, f"echo {way} > {MAPPED}")
                    self.assert_target(f"{way}\n")

    def test_is_named_where_it_cannot_be_held(self):
        for name, status, obstacle in (
                ("static_program", 2, "is statically linked"),
                ("go_note", 0, "is a Go program, which makes system calls without the C library")):
            with self.subTest(name):
                message = f"{obstacle}: it does not see the simulated device\n"
                self.run_program("env", PROGRAMS / name, status=status,
                                 error=f"orb-sim: {PROGRAMS / name} {message}")

    def test_is_not_found_as_ever(self):
        self.environment |= {"PATH": "/usr/bin:/bin", "LC_ALL": "C"}
        self.run_program("env", "no-such-program", status=127,
                         error="env: 'no-such-program': No such file or directory\n")


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
