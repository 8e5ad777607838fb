"""The commands of docs/client.md: those of each block, and its two terminals."""

import contextlib
import os
import pathlib
import subprocess
import tempfile
import threading
import unittest

from pages import blocks_of

SOURCE = pathlib.Path(os.environ["ORB_SOURCE"])
BUILD = pathlib.Path(os.environ["ORB_BUILD"])
LIMIT = 60  # seconds for a block
LINK = "/tmp/gps"


class ClientPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # A socket's path is short.
        folder = tempfile.TemporaryDirectory(prefix="client.", dir="/tmp")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        prefix = cls.folder / "prefix"
        subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix], check=True,
                       stdout=subprocess.DEVNULL)
        packages = next(prefix.glob("lib/**/pkgconfig"))
        # As if it were installed where all look.
        cls.environment = os.environ | {
            "PATH": f"{prefix}/bin:{os.environ['PATH']}", "PKG_CONFIG_PATH": str(packages),
            "LD_LIBRARY_PATH": str(packages.parent), "CMAKE_PREFIX_PATH": str(prefix)}
        page = blocks_of("docs/client.md", (SOURCE / "docs/client.md").read_text())
        cls.blocks = [block.text.replace(LINK, str(cls.folder / "gps")) for block in page
                      if block.comment("run by")]

    def block(self, start):
        """The one that contains this."""
        found = [block for block in self.blocks if start in block]
        self.assertEqual(len(found), 1, start)
        self.blocks.remove(found[0])
        return found[0]

    def run_block(self, start):
        """The status of each of its commands, and what all of them print."""
        commands = self.block(start).splitlines()
        script = "".join(f"{{ {command}\n}}; echo $? >&3\n" for command in commands)
        with open(self.folder / "exit-statuses", "w+") as statuses:
            done = subprocess.run(["bash", "-c", f"exec 3>&{statuses.fileno()}\n{script}"],
                                  cwd=self.folder, env=self.environment, timeout=LIMIT, text=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                  pass_fds=[statuses.fileno()])
            statuses.seek(0)
            return [int(line) for line in statuses], done.stdout

    @contextlib.contextmanager
    def terminal(self, command, pipe):
        with subprocess.Popen(["bash", "-c", f"exec {command}"], cwd=self.folder, text=True,
                              env=self.environment, stdin=subprocess.PIPE,
                              **{pipe: subprocess.PIPE}) as process:
            timer = threading.Timer(LIMIT, process.kill)
            timer.start()
            try:
                yield process
            finally:
                timer.cancel()
                process.terminate()
                getattr(process, pipe).read()

    def test_does_what_it_says(self):
        statuses, printed = self.run_block("identify.cpp")
        self.assertEqual(statuses, [0, 0, 0], printed)
        self.assertIn("receiver: KernelVersion 1.0.12", printed)
        statuses, printed = self.run_block("wrong-module")
        self.assertEqual(statuses, [1], printed)
        self.assertIn("no receiver\n", printed)
        statuses, printed = self.run_block("status.cpp")
        self.assertEqual(statuses, [0], printed)
        self.check_two_terminals()
        statuses, printed = self.run_block("client_test")
        self.assertEqual(statuses, [0, 0, 0], printed)
        self.assertIn("[  PASSED  ] 3 tests.", printed)
        self.assertEqual(self.blocks, [])

    def check_that_it_finds_a_late_receiver(self, serve, prompt, no_receiver, has_fix):
        waiting = prompt.removeprefix("$ ").replace("./status", "sh -c 'echo; read go; exec ./status'")
        with contextlib.ExitStack() as stack:
            with self.terminal(serve, "stderr") as line:
                line.stderr.readline()  # it is there
                client = stack.enter_context(self.terminal(waiting, "stdout"))
                client.stdout.readline()
            client.stdin.write("go\n")
            client.stdin.close()
            self.assertEqual(client.stdout.readline(), no_receiver + "\n")
            with self.terminal(serve, "stderr"):
                for said in client.stdout:
                    if said == has_fix + "\n":
                        return
                self.fail("it does not find a receiver that comes late")

    def check_two_terminals(self):
        serve = self.block("orb-sim serve").strip()
        prompt, has_fix, no_answer, no_receiver, fix_again = self.block("./status").splitlines()
        self.check_that_it_finds_a_late_receiver(serve, prompt, no_receiver, has_fix)
        self.assertEqual(has_fix, fix_again)
        with contextlib.ExitStack() as stack:
            with self.terminal(serve, "stderr") as line:
                line.stderr.readline()  # it is there
                client = stack.enter_context(self.terminal(prompt.removeprefix("$ "), "stdout"))
                self.assertEqual(client.stdout.readline(), has_fix + "\n")
            # Which operation meets it, and how, depends on the moment.
            self.assertEqual(client.stdout.readline().split(": ")[0], no_answer.split(": ")[0])
            with self.terminal(serve, "stderr"):
                for said in client.stdout:
                    if said == has_fix + "\n":
                        break
                    self.assertIn(said.split(": ")[0].strip(), ("no answer", no_receiver))
                else:
                    self.fail("it does not find the receiver again")
                client.terminate()
                self.assertEqual(client.wait(), 0)


if __name__ == "__main__":
    unittest.main()
