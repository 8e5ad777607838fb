#!/usr/bin/env python3
"""Plants small faults in the library, one at a time, and sees whether the tests catch them.

    tests/mutation/mutate.py [--every N] [--files PATTERN]

In a copy of the tree in build/mutation, each constant, comparison, sign, call and pair of arguments
of protocol/, transport/, controller/, commands/ and board/ is changed once, the library is built anew
and its tests are run until one fails. What has been tried is kept in build/mutation/results.jsonl, so
that a run that was broken off goes on; what stands in a changed line is tried anew.

Fails where less than 97 % of the faults that compile and change what the library does are caught, and
where one survives that survivors.txt does not have, with the reason.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import fnmatch
import hashlib
import json
import os
import pathlib
import queue
import re
import shlex
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
TREE = WORK / "tree"
BUILD = WORK / "build"
RESULTS = WORK / "results.jsonl"
SURVIVORS = pathlib.Path(__file__).with_name("survivors.txt")

FOLDERS = ["protocol", "transport", "controller", "commands", "board"]
# The quickest ones that are likely to see a fault first.
PROGRAMS = {
    "protocol": ["protocol_test", "serial_channel_test", "catalogue_test"],
    "transport": ["serial_channel_test", "protocol_test", "serial_line_test"],
    "controller": ["controller_test"],
    "commands": ["commands_test", "controller_test"],
    "board": ["board_test", "controller_test"],
}
ALL_PROGRAMS = ["catalogue_test", "protocol_test", "serial_channel_test", "board_test",
                "controller_test", "serial_line_test", "commands_test", "waiting_test",
                "assembler_reference_test"]
LOWEST_SHARE = 0.97

SWAPS = [("==", "!="), ("!=", "=="), ("<=", "<"), (">=", ">"), (" < ", " <= "), (" > ", " >= "),
         (" + ", " - "), (" - ", " + "), ("&&", "||"), ("||", "&&"), (" |= ", " = "),
         (" | ", " & "), ("++", "--"), ("--", "++"), (" << ", " >> "), (" >> ", " << "),
         ("true", "false"), ("false", "true")]
NUMBER = re.compile(r"(?<![\w.'\"])(0x[0-9A-Fa-f]+|\d+)(?![\w.'\"])")
ARGUMENTS = re.compile(r"(?<=\w\()([\w.:>*&\[\]-]+), ([\w.:>*&\[\]-]+)(?=[,)])")
CALL_OR_ASSIGNMENT = re.compile(
    r"^\s+[\w.\->:\[\]*&]+(\(.*\)|\s*[-+|&^]?=[^=].*|[+]{2}|-{2});$")
DECLARATION = re.compile(r"^\s*(const|auto|return|unsigned|int|std::|bool|double|static|constexpr|"
                         r"break|case|using|struct|class|public|private|virtual)\b")
NO_CODE = re.compile(r"^\s*($|//|#|using |namespace |static_assert|template )")


@dataclasses.dataclass(frozen=True)
class Site:
    """One fault: a line that is changed. Its number, from 0, says only where it stands today."""
    file: str
    number: int
    line: str
    occurrence: int  # of the line, in the file
    changed: str

    def key(self):
        return self.file, self.line, self.occurrence, self.changed

    def __str__(self):
        return f"{self.file}: {self.line.strip()} => {self.changed.strip()}"


def changed_number(text):
    """A number beside this one."""
    value = int(text, 0) if text.startswith("0x") or text == "0" else int(text)
    other = value + 1 if value % 2 == 0 else value - 1
    return hex(other) if text.startswith("0x") else str(other)


def mutants_of(line):
    """All lines that this one can be changed into."""
    if NO_CODE.match(line):
        return
    code = line.split("//")[0]
    bare = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'', lambda m: "_" * len(m.group(0)), code)
    for number in NUMBER.finditer(bare):
        yield code[:number.start()] + changed_number(number.group(1)) + code[number.end():]
    for before, after in SWAPS:
        at = bare.find(before)
        is_word = before.isalpha() and re.search(rf"\b{before}\b", bare) is None
        if at >= 0 and not is_word and "operator" not in bare:
            yield code[:at] + after + code[at + len(before):]
    for pair in ARGUMENTS.finditer(bare):
        one, other = code[pair.start(1):pair.end(1)], code[pair.start(2):pair.end(2)]
        if one != other:
            yield code[:pair.start()] + other + ", " + one + code[pair.end():]
    if CALL_OR_ASSIGNMENT.match(bare) and not DECLARATION.match(bare):
        yield re.match(r"\s*", code).group(0) + ";"


def all_sites(pattern):
    """Each fault that can be planted."""
    for folder in FOLDERS:
        for file in sorted((ROOT / folder).glob("*.[ch]*")):
            name = str(file.relative_to(ROOT))
            if file.suffix not in (".cpp", ".h") or not fnmatch.fnmatch(name, pattern):
                continue
            seen = collections.Counter()
            for number, line in enumerate(file.read_text().split("\n")):
                seen[line] += 1
                for changed in mutants_of(line):
                    yield Site(name, number, line, seen[line], changed)


def run(command, folder=WORK, limit=None):
    return subprocess.run(command, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          timeout=limit, check=False).returncode


class Library:
    """The library's objects and commands, in the copy of the tree that is built as it stands."""

    def __init__(self):
        files = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, stdout=subprocess.PIPE, check=True)
        shutil.rmtree(TREE, ignore_errors=True)
        for name in files.stdout.decode().split("\0")[:-1]:
            (TREE / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, TREE / name)
        subprocess.run(["cmake", "-S", str(TREE), "-B", str(BUILD), "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                        "-DORB_JOIN_SOURCES=OFF"], check=True, stdout=subprocess.DEVNULL)
        if run(["cmake", "--build", str(BUILD), "--target", "orb-gnss", *ALL_PROGRAMS]) != 0:
            sys.exit("the tree does not build")
        self.compile = {}  # by source
        for entry in json.loads((BUILD / "compile_commands.json").read_text()):
            if "orb-gnss.dir/" in entry["command"]:
                source = str(pathlib.Path(entry["file"]).relative_to(TREE))
                self.compile[source] = shlex.split(entry["command"])
        commands = subprocess.run(["ninja", "-t", "commands", "lib/liborb-gnss.so"], cwd=BUILD,
                                  stdout=subprocess.PIPE, text=True, check=True).stdout
        link = next(line for line in commands.splitlines() if " -shared " in line and
                    "soname,liborb-gnss.so" in line)
        self.link = [word for word in shlex.split(link) if word not in (":", "&&")]
        self.unchanged = {}  # hash, by source or ""


class Workplace:
    """Where one fault at a time is planted, and the tests run against what comes of it."""

    def __init__(self, library, folder):
        self.library_ = library
        self.folder_ = folder
        self.output_ = folder / "liborb-gnss.so.0"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)

    def build(self, name, text):
        """The library's hash with a text in place of a file's, or None."""
        # A header changes every source: all of them are compiled as one.
        changed = self.folder_ / "changed" / name
        shutil.rmtree(self.folder_ / "changed", ignore_errors=True)
        changed.parent.mkdir(parents=True)
        changed.write_text(text)
        source = name
        if name.endswith(".h"):
            source = sorted(self.library_.compile)[0]
            changed = self.folder_ / "changed" / "all.cpp"
            changed.write_text("".join(f'#include "{each}"\n' for each in sorted(self.library_.compile)))
        compile_command = list(self.library_.compile[source])
        original_object = compile_command[compile_command.index("-o") + 1]
        new_object = str(self.folder_ / "changed.o")
        compile_command[compile_command.index("-o") + 1] = new_object
        compile_command[compile_command.index("-c") + 1] = str(changed)
        compile_command.insert(1, f"-I{self.folder_ / 'changed'}")
        link = list(self.library_.link)
        link[link.index("-o") + 1] = str(self.output_)
        if name.endswith(".h"):
            link = [word for word in link if not word.endswith(".cpp.o")] + [new_object]
        else:
            link[link.index(original_object)] = new_object
        try:
            if run(compile_command, BUILD, 120) != 0 or run(link, BUILD) != 0:
                return None
        except subprocess.TimeoutExpired:
            return None  # a loop in what the compiler computes
        return hashlib.sha256(self.output_.read_bytes()).hexdigest()

    def failure_of(self, program, limit=None):
        """None, or which program has failed."""
        command = ["env", "GTEST_FAIL_FAST=1", "ORB_TEST_TIMEOUT=40", f"LD_LIBRARY_PATH={self.folder_}",
                   str(BUILD / "tests" / program)]
        try:
            return program if run(command, self.folder_, limit) != 0 else None
        except subprocess.TimeoutExpired:
            return f"{program}, which does not end"

    def limits(self):
        """How long each program may take, from how long it takes without a fault."""
        limits = {}
        for program in ALL_PROGRAMS:
            start = time.monotonic()
            if self.failure_of(program):
                sys.exit(f"{program} fails without a fault")
            limits[program] = 60 + 10 * (time.monotonic() - start)
        return limits

    def outcome(self, site, limits):
        """What becomes of a fault: the program that catches it, or why none does."""
        lines = (TREE / site.file).read_text().split("\n")
        unchanged = self.library_.unchanged
        if site.file not in unchanged:
            unchanged[site.file] = self.build(site.file, "\n".join(lines))
        lines[site.number] = site.changed
        built = self.build(site.file, "\n".join(lines))
        if built is None:
            return "does not compile"
        if built == unchanged[site.file]:
            return "changes nothing"
        first = PROGRAMS[site.file.split("/")[0]]
        for program in first + [other for other in ALL_PROGRAMS if other not in first]:
            failure = self.failure_of(program, limits[program])
            if failure:
                return failure
        return "survives"


def known_results():
    if not RESULTS.exists():
        return {}
    entries = [json.loads(line) for line in RESULTS.read_text().splitlines()]
    return {tuple(entry["fault"]): entry["outcome"] for entry in entries}


def reasons():
    """Of the known survivors, by text: "FILE: LINE => CHANGED LINE", then the reason, indented."""
    lines = [line for line in SURVIVORS.read_text().splitlines() if line and line[0] != "#"]
    return dict(zip(lines[::2], (line.strip() for line in lines[1::2])))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--every", type=int, default=1, metavar="N", help="only each N-th fault")
    parser.add_argument("--files", default="*", metavar="PATTERN", help="such as 'commands/*'")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), metavar="N",
                        help="faults that are tried at once")
    options = parser.parse_args()

    WORK.mkdir(parents=True, exist_ok=True)
    os.environ.pop("GTEST_BRIEF", None)
    sites = list(all_sites(options.files))[::options.every]
    results = known_results()
    missing = [site for site in sites if site.key() not in results]
    if missing:
        library = Library()
        workplaces = queue.SimpleQueue()
        for number in range(options.jobs):
            workplaces.put(Workplace(library, WORK / f"workplace-{number}"))
        first = workplaces.get()
        limits = first.limits()
        workplaces.put(first)

        def outcome(site):
            workplace = workplaces.get()
            try:
                return workplace.outcome(site, limits)
            finally:
                workplaces.put(workplace)

        with RESULTS.open("a") as kept, concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            waiting = {pool.submit(outcome, site): site for site in missing}
            for done, ended in enumerate(concurrent.futures.as_completed(waiting), 1):
                site, result = waiting[ended], ended.result()
                results[site.key()] = result
                kept.write(json.dumps({"fault": site.key(), "outcome": result}) + "\n")
                kept.flush()
                print(f"{done}/{len(missing)} {result}: {site}", flush=True)

    outcomes = [results[site.key()] for site in sites]
    survivors = [site for site, result in zip(sites, outcomes) if result == "survives"]
    known = reasons()
    unseen = [site for site in survivors if known.get(str(site), "").startswith("Changes nothing")]
    unchanging = outcomes.count("changes nothing") + len(unseen)
    uncompiled = outcomes.count("does not compile")
    planted = len(sites) - unchanging - uncompiled
    caught = planted - (len(survivors) - len(unseen))
    print(f"{caught} of {planted} faults caught ({caught / max(planted, 1):.1%}); {uncompiled} did "
          f"not compile, {unchanging} changed nothing")
    unexcused = [str(site) for site in survivors if str(site) not in known]
    for text in unexcused:
        print(f"survives without a reason: {text}")
    return 1 if unexcused or caught < LOWEST_SHARE * planted else 0


if __name__ == "__main__":
    sys.exit(main())
