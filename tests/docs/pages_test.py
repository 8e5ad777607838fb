"""README.md and docs/*.md: their examples run, and their links lead somewhere."""

import concurrent.futures
import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

from pages import anchors_of, blocks_of, links_of, signatures_of

SOURCE = pathlib.Path(os.environ["ORB_SOURCE"])
BUILD = pathlib.Path(os.environ["ORB_BUILD"])
LIMIT = float(os.environ.get("ORB_TEST_LIMIT", 100))  # seconds for a page
GRACE = 2  # seconds to end on request

PAGES = {str(path.relative_to(SOURCE)): path.read_text()
         for path in [SOURCE / "README.md", *sorted(SOURCE.glob("docs/*.md"))]}

# What stands for files that a page speaks of without showing them.
FILES = {
    "docs/platform.md": {"inventory.toml":
                         '[[module]]\nlocation = -1\ni2cbus = "i2c-3"\n'},
    "docs/traces.md": {"capture.bin": "any bytes"},
    "docs/scenarios.md": {"my.toml": '[[fault]]\nkind = "no-reply"\nchance = 1.5\n\n'
                                     '[line]\nbaud = 9600\nbauds = 1\n'},
}

# Statements of a page stand in a function of their own, behind this.
WRAPPING = """
#include <gtest/gtest.h>
#include <orb-gnss/orb-gnss.h>
#include <orb-sim/scenario.h>
#include <string>
#include <vector>
extern const std::string folder;
extern orb::sim::ScenarioDevice device;
extern orbController controller;
"""

# A build is there already; a subcommand of orb-sim that offers a line goes on until another takes
# its link, or the page ends.
SHELL = r"""
cmake() {
  case $1 in
    --preset | --build) ;;
    *) command cmake --install "$BUILD" "${@:3}" > install.log ;;
  esac
}
orb-sim() {
  local link
  link=$(sed -n 's/.* --link \([^ ]*\).*/\1/p' <<< " $*")
  if [ -z "$link" ] || [ "$1" = run ]; then
    command orb-sim "$@"
    return
  fi
  [ ! -f "$link.process" ] || kill "$(cat "$link.process")"
  while [ -L "$link" ]; do sleep 0.05; done
  command orb-sim "$@" > "$link.output" 2>&1 &
  echo $! > "$link.process"
  until [ -L "$link" ]; do
    kill -0 $! 2> /dev/null || { cat "$link.output" >&2; return 1; }
    sleep 0.05
  done
}
"""


def without_what_varies(text):
    text = re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}", "<time>", text)
    return [line.rstrip() for line in text.strip("\n").splitlines()]


def is_whole_program(text):
    """Whether it has definitions of functions; else it is statements."""
    return re.search(r"^\S.*\) (\{|= default;)$", text, re.MULTILINE) is not None


def compile_all(text, environment):
    flags = subprocess.run(["pkg-config", "--cflags", "orb-gnss"], env=environment, check=True,
                           capture_output=True, text=True).stdout.split()
    return subprocess.run(["g++", "-std=c++17", "-fsyntax-only", *flags, "-x", "c++", "-"],
                          input=text, env=environment, capture_output=True, text=True)


class Pages(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="docs.", dir="/tmp")  # a socket's path is short
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.prefix = cls.folder / "prefix"
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix], check=True,
                       stdout=subprocess.DEVNULL)
        packages = next(cls.prefix.glob("lib/**/pkgconfig"))
        cls.environment = os.environ | {
            "BUILD": str(BUILD), "TMPDIR": folder.name, "PKG_CONFIG_PATH": str(packages),
            "PATH": f"{cls.prefix}/bin:{os.environ['PATH']}"}
        cls.blocks = {name: blocks_of(name, text) for name, text in PAGES.items()}
        cls.program = next(block.text for block in cls.blocks["README.md"]
                           if block.comment("file") == "client.cpp")
        cls.client = cls.folder / "client"
        cls.build(cls.program, cls.client)

    @classmethod
    def build(cls, program, target):
        """Builds a program as README.md tells."""
        target.with_suffix(".cpp").write_text(program)
        subprocess.run(
            ["bash", "-c", f"g++ -std=c++17 {target}.cpp -o {target} $(pkg-config --cflags --libs "
             'orb-gnss) -Wl,-rpath,"$(pkg-config --variable=libdir orb-gnss)"'],
            env=cls.environment, check=True)

    def script_of(self, page, folder):
        """The page as a script; what each command is to print; how many blocks it runs."""
        lines = [SHELL]
        if "/dev/ttyS1" in PAGES[page]:  # a receiver's port
            lines.append("orb-sim serve --link /dev/ttyS1")
        shown, ran = {}, 0
        for block in self.blocks[page]:
            if block.comment("file"):
                (folder / block.comment("file")).write_text(block.text)
            if block.comment("not run") or block.comment("run by"):
                continue
            if block.comment("shows"):
                commands = [[block.comment("shows"), block.text.splitlines()]]
            elif block.kind == "sh":
                commands = block.commands()
            elif block.kind == "toml":
                file = folder / f"line-{block.line}.toml"
                file.write_text(block.text)
                check = ("orb-inventoryd --check" if "[[module]]" in block.text
                         else "orb-sim run --scenario")
                commands = [[f"{check} {file}" + (" -- true" if "run" in check else ""), None]]
            else:
                continue
            ran += 1
            for number, (command, output) in enumerate(commands):
                name = f"{block.line}.{number}"
                # What goes to the background does so already.
                command = command.removesuffix(" &")
                lines.append(f"{{ {command}\n}} < /dev/null > out.{name} 2>&1\n"
                             f"echo $? > status.{name}")
                shown[name] = (f"{block}: {command}", output)
        text = "\n".join(lines).replace("/tmp/gps", f"{folder}/gps")
        return text.replace("/dev/ttyS1", f"{folder}/ttyS1") + "\n", shown, ran

    def run_page(self, page):
        """Runs its commands; returns what is wrong with them, and how many blocks ran."""
        folder = self.folder / page.removesuffix(".md").replace("/", "-")
        folder.mkdir()
        shutil.copy(self.client, folder / "client")
        for name, text in FILES.get(page, {}).items():
            (folder / name).write_text(text)
        script, shown, ran = self.script_of(page, folder)
        own = folder / "client.cpp"
        if own.exists() and own.read_text() != self.program:
            self.build(own.read_text(), folder / "client")
        with subprocess.Popen(["bash", "-c", script], cwd=folder, start_new_session=True,
                              env=self.environment | {"HOME": str(folder)}) as process:
            try:
                with contextlib.suppress(subprocess.TimeoutExpired):
                    process.wait(LIMIT)
            finally:
                hangs = process.returncode is None
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(process.pid, signal.SIGTERM)
                    if hangs:
                        time.sleep(GRACE)
                        os.killpg(process.pid, signal.SIGKILL)
        problems = []
        for name, (what, output) in shown.items():
            if not (folder / f"status.{name}").exists():
                problems.append(f"{what}\ndoes not end")
                break
            status = int((folder / f"status.{name}").read_text())
            printed = (folder / f"out.{name}").read_text(errors="replace")
            printed = printed.replace(f"{folder}/gps", "/tmp/gps")
            if output is None and status != 0:
                problems.append(f"{what}\nends with {status}:\n{printed}")
            elif output is not None and (without_what_varies(printed)
                                         != without_what_varies("\n".join(output))):
                problems.append(f"{what}\nprints:\n{printed}")
        return problems, ran

    def test_every_block_is_known(self):
        """A block runs, or a comment says why it does not."""
        for block in sum(self.blocks.values(), []):
            with self.subTest(str(block)):
                test = block.comment("run by")
                self.assertTrue(not test or (SOURCE / test).is_file(), f"there is no {test}")
                self.assertTrue(test or block.comment("not run") or block.comment("shows")
                                or block.kind in ("cmake", "cpp", "json", "sh", "toml"),
                                "neither known nor marked")

    def test_commands_do_what_the_pages_show(self):
        with concurrent.futures.ThreadPoolExecutor(3) as pool:
            results = pool.map(self.run_page, PAGES)
            total = 0
            for page, (problems, ran) in zip(PAGES, results):
                for problem in problems:
                    with self.subTest(page):
                        self.fail(problem)
                total += ran
        print(f"{total} blocks of commands and files ran")
        self.assertGreater(total, 15)

    def test_code_is_understood(self):
        text, statements, programs, packages = WRAPPING, "", [], ""
        for block in self.each("cpp", "json", "cmake"):
            if block.kind == "json":
                for line in block.text.splitlines():
                    json.loads(line)
            elif block.kind == "cmake":
                packages += block.text
            elif is_whole_program(block.text):
                programs.append(f'#line {block.line} "{block.page}"\n{block.text}')
            else:
                lines = [line for line in block.text.splitlines() if line.strip() != "..."]
                text += "".join(line + "\n" for line in lines if line.startswith("#include"))
                statements += f"void at{block.line}_{len(statements)}() {{\n" + "".join(
                    line + "\n" for line in lines if not line.startswith("#include")) + "}\n"
        self.assertGreater(len(statements), 500)
        for program in [text + statements, *programs]:
            result = compile_all(program, self.environment)
            self.assertEqual(result.returncode, 0, result.stderr)
        self.check_cmake(packages)

    def each(self, *kinds):
        """The blocks of these kinds that are not marked."""
        return [block for block in sum(self.blocks.values(), []) if block.kind in kinds
                and not block.comment("not run") and not block.comment("run by")]

    def check_cmake(self, text):
        """Configures a project with these lines."""
        project = self.folder / "cmake"
        project.mkdir()
        (project / "my.cpp").write_text("int main() {}\n")
        (project / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.22)\nproject(example LANGUAGES CXX)\n"
            "find_package(GTest REQUIRED)\nadd_executable(my_test my.cpp)\n" + text)
        self.assertIn("target_link_libraries(my_test", text)
        result = subprocess.run(["cmake", "-S", project, "-B", project / "build", "-G", "Ninja",
                                 f"-DCMAKE_PREFIX_PATH={self.prefix}"],
                                env=self.environment, capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_members_are_declared_as_the_page_shows(self):
        found = signatures_of(PAGES["docs/operations.md"])
        self.assertEqual(len({pointer + name for owner, name, pointer in found
                              if owner == "ORBControlInterface"}), 60)
        for header in ("controller", "module_driver"):
            declared = re.findall(r"^  (?:virtual )?(?:const )?[\w:]+(?: int|&)? (\w+)\(",
                                  (SOURCE / f"include/orb-gnss/{header}.h").read_text(), re.M)
            self.assertGreater(len(declared), 60)
            shown = {name for _, name, _ in found} | {"orbController"}  # itself: to construct
            self.assertEqual(set(declared) - shown, set())
        text = "#include <orb-gnss/orb-gnss.h>\n" + "".join(
            f"auto member{number} = static_cast<{pointer}>(&{owner}::{name});\n"
            for number, (owner, name, pointer) in enumerate(found))
        result = compile_all(text, self.environment)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_links_lead_somewhere(self):
        count = 0
        for page, text in PAGES.items():
            for link in links_of(text):
                target, _, anchor = link.partition("#")
                if "://" in link:
                    continue
                count += 1
                path = (SOURCE / page).parent / target if target else SOURCE / page
                with self.subTest(page, link=link):
                    self.assertTrue(path.exists(), "leads nowhere")
                    if anchor:
                        self.assertIn(anchor, anchors_of(path.read_text()))
        self.assertGreater(count, 40)

    def test_help_names_files_that_are_installed(self):
        """Once installed, there is no folder docs."""
        named = set()
        for program in ("orb-sim", "orbctl", "orb-inventoryd"):
            words = [[]]
            for word in words:
                text = subprocess.run([self.prefix / "bin" / program, *word, "--help"], check=True,
                                      capture_output=True, text=True).stdout
                named |= set(re.findall(r"\S*/\S*\.md|\S*share/\S*|\bdocs/\S*", text))
                if not word:
                    words += [[name] for name in re.findall(r"^  ([a-z][\w-]*)  +\S", text, re.M)]
            self.assertTrue(program == "orb-inventoryd" or len(words) > 5, words)
        self.assertGreaterEqual(len(named), 2)
        for name in named:
            self.assertTrue(pathlib.Path(name).is_file() and self.prefix in
                            pathlib.Path(name).parents, name)


def tearDownModule():
    blocks = sum(Pages.blocks.values(), [])
    not_run = [block for block in blocks if block.comment("not run")]
    by_others = [block for block in blocks if block.comment("run by")]
    parts = sum(what == "not run" and about is not None
                for block in blocks for what, about, _ in block.comments)
    print(f"{len(blocks)} blocks: {len(blocks) - len(not_run) - len(by_others)} run here, "
          f"{len(by_others)} by other tests, {len(not_run)} cannot be run, "
          f"nor can {parts} commands of others")


if __name__ == "__main__":
    unittest.main()
