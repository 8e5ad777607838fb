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
        for name in "file_calls", "file_calls_fortified":
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

    def test_gives_a_child_with_an_empty_environment_the_settings_alone(self):
        names = {line.split("=")[0] for line in self.run_program("env", "-i", "env").splitlines()}
        self.assertEqual(names, {"LD_PRELOAD", "ORB_SIM_PATHS", "DBUS_SYSTEM_BUS_ADDRESS"})

    def test_leaves_what_was_set_for_the_child(self):
        for name, given, found in (
                ("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/else", "unix:path=/else"),
                ("LD_PRELOAD", "libm.so.6 libdl.so.2", f"{LIBRARY}:libm.so.6:libdl.so.2"),
                # A sanitizer's runtime that stands in front is the parent's.
                ("LD_PRELOAD", f"libdl.so.2:libasan.so.8:{LIBRARY}:libm.so.6",
                 f"{LIBRARY}:libdl.so.2:libm.so.6")):
            self.assertEqual(self.run_program("env", f"{name}={given}", "printenv", name),
                             f"{found}\n")

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

    def test_has_the_mapped_path_for_its_output_where_it_is_spawned(self):
        self.run_program(sys.executable, "-c", f"""
import os
opened = [(os.POSIX_SPAWN_OPEN, 1, {MAPPED!r}, os.O_WRONLY | os.O_CREAT, 0o600)]
child = os.posix_spawn("/bin/echo", ["echo", "one"], {{}}, file_actions=opened)
assert os.waitpid(child, 0)[1] == 0
""")
        self.assert_target("one\n")

    def test_is_named_where_it_cannot_be_held(self):
        go = "is a Go program, which makes system calls without the C library"
        start = ("env", "-C", PROGRAMS, PROGRAMS / "start_program", "execveat_here", "go_note")
        for command, status, named in (
                (("env", PROGRAMS / "static_program"), 2,
                 f"{PROGRAMS / 'static_program'} is statically linked"),
                (("env", PROGRAMS / "go_note"), 0, f"{PROGRAMS / 'go_note'} {go}"),
                (start, 0, f"/proc/self/fd/3/go_note {go}")):
            with self.subTest(command):
                self.run_program(*command, status=status, error=f"orb-sim: {named}: it does not "
                                 "see the simulated device\n")

    def test_is_not_found_as_ever(self):
        self.environment |= {"PATH": "/usr/bin:/bin", "LC_ALL": "C"}
        self.run_program("env", "no-such-program", status=127,
                         error="env: 'no-such-program': No such file or directory\n")


if __name__ == "__main__":
    unittest.main(verbosity=2)
