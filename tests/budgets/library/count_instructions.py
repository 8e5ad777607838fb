"""Counts the instructions of the library's works with callgrind and compares them with budgets.

usage: count_instructions.py BUDGETS COMPILER PROGRAM LIBRARY OTHER_LIBRARY...

PROGRAM does the works (counted_works.cpp) and loads the libraries, which have the names by which it
does so. Of each work, the instructions within LIBRARY count, and the calls that lead out of it, to
allocate memory included: what other libraries do in these calls is not ours and differs from
machine to machine. BUDGETS is a TOML file, COMPILER selects its column. Where it lists calls under
"exactly", these and no others are made with every compiler, but for those that compilers expand.
"""

import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import tomllib

DEFINITION = re.compile(r"(c?(?:ob|fn))=(.*)")
CALLS = re.compile(r"calls=(\d+)")
COST = re.compile(r"\d+ (\d+)$")
EXPANDED = re.compile(r"_*mem(cpy|move|set)(_|$)")
AFTER_NAME = re.compile(r"[(@].*")  # arguments, or the C library's version
FORTIFIED = re.compile(r"^__(\w+)_2$")  # what clang makes of open(), from glibc 2.40 on
TRIGGER = re.compile(r"desc: Trigger: Client Request: (.*)")


class Profile:
    """What one dump of callgrind says of one library."""

    def __init__(self, dump, library):
        self.work = None
        self.instructions = 0
        self.calls_out = collections.Counter()
        self._read(dump, library)

    def _read(self, dump, library):
        here = {}
        calls = 0
        for line in dump.read_text().splitlines():
            if definition := DEFINITION.match(line):
                here[definition[1]] = definition[2]
                if definition[1] == "ob":
                    here.pop("cob", None)
            elif call := CALLS.match(line):
                calls = int(call[1])
            elif cost := COST.match(line):
                caller = here["ob"]
                if not calls:
                    self.instructions += int(cost[1]) if caller == library else 0
                    continue
                if caller == library and here.get("cob", caller) != library:
                    self.calls_out[here["cfn"]] += calls
                calls = 0
                here.pop("cob", None)
            elif trigger := TRIGGER.match(line):
                self.work = trigger[1]


def copy_without_debug_information(file, folder):
    """Callgrind cannot read what some compilers write, and needs none of it."""
    subprocess.run(["strip", "--strip-debug", "-o", folder / file.name, file], check=True)
    return folder / file.name


def profiles(program, library, others):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        program, library, *_ = [
            copy_without_debug_information(file, folder) for file in (program, library, *others)]
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", "--instr-atstart=no", "--compress-strings=no",
             "--compress-pos=no",
             f"--callgrind-out-file={folder / 'callgrind'}", program],
            env=os.environ | {"LD_LIBRARY_PATH": name},
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if run.returncode != 0:
            sys.exit(run.stdout)
        dumps = [Profile(dump, str(library)) for dump in folder.glob("callgrind.*")]
    return {profile.work: profile for profile in dumps if profile.work}


def calls_of_all_compilers(profile):
    """The calls out by name, without those that one compiler makes and another expands."""
    calls = collections.Counter()
    for name, times in profile.calls_out.items():
        if not EXPANDED.match(name):
            calls[FORTIFIED.sub(r"\1", AFTER_NAME.sub("", name))] += times
    return calls


def failures(profile, budget, exactly):
    """What the work does that its budget does not allow, a line each."""
    calls = sum(profile.calls_out.values())
    if not 0 < profile.instructions <= budget["instructions"]:
        yield f"{profile.instructions} instructions, of {budget['instructions']}"
    if calls > budget["calls"]:
        yield f"{calls} calls, of {budget['calls']}"
    if exactly:
        made = calls_of_all_compilers(profile)
        for name in sorted(made.keys() | exactly.keys()):
            if made[name] != exactly.get(name, 0):
                yield f"{made[name]} x {name}, not {exactly.get(name, 0)}"


def main():
    compiler = sys.argv[2]
    budgets_file, program, library, *others = map(pathlib.Path, sys.argv[1:2] + sys.argv[3:])
    budgets = tomllib.loads(budgets_file.read_text())
    counted = profiles(program, library, others)
    if set(budgets) != set(counted):
        sys.exit(f"works with a budget: {sorted(budgets)}\nworks counted: {sorted(counted)}")

    failed = False
    for work, columns in budgets.items():
        budget, profile = columns[compiler], counted[work]
        print(f"{work:29} {profile.instructions:5} instructions of {budget['instructions']:5}, "
              f"{sum(profile.calls_out.values()):3} calls of {budget['calls']:3}")
        for name, times in sorted(profile.calls_out.items()):
            print(f"{'':31} {times} x {name}")
        for failure in failures(profile, budget, columns.get("exactly")):
            print(f"{work:29} OUTSIDE: {failure}")
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
