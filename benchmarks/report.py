#!/usr/bin/env python3
"""Runs the bench programs, prints one table and writes the figures as JSON.

usage: report.py FOLDER [--list] [--output FILE] [WORK...]

Exits with 1 when a row is outside its bound, with 2 when the command line is wrong, and with 3 when
a program could not measure; the rows of the others are printed and written all the same.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import subprocess
import sys
import typing

COLUMNS = "{:<58} {:>11} {:>11} {:<8} {:>7} {:>15}  {}"
OUTSIDE, WRONG_USE, NOT_MEASURED = 1, 2, 3


class Work(typing.NamedTuple):
    program: pathlib.Path
    name: str
    processes: int


def works_of(program):
    listing = subprocess.run([program, "--list"], check=True, stdout=subprocess.PIPE, text=True)
    for name, processes in map(str.split, listing.stdout.splitlines()):
        yield Work(program, name, int(processes))


def selects(name, work):
    return work.name == name or work.name.startswith(name + "-")


def rows_of_process(work):
    """The rows, each as soon as the program has printed it."""
    with subprocess.Popen([work.program, work.name], stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            yield json.loads(line)
    if process.returncode != 0:
        raise ChildProcessError(f"{work.name} could not be measured")


def middle(rows):
    """Of the same row from several processes, the one with the median ratio; its samples are the
    processes' ratios."""
    rows = sorted(rows, key=lambda row: row["ratio"])
    return rows[len(rows) // 2] | {"samples": [row["ratio"] for row in rows]}


def rows_of(work):
    if work.processes == 1:
        return rows_of_process(work)
    processes = [list(rows_of_process(work)) for _ in range(work.processes)]
    return map(middle, zip(*processes, strict=True))


def figure(number):
    return "" if number is None else f"{number:.4g}"


def print_row(row):
    bound = "" if row.get("bound") is None else f"{row['sense']} {row['bound']:g}"
    verdict = "" if row.get("bound") is None else "ok" if row["ok"] else "OUTSIDE"
    print(COLUMNS.format(row["title"], figure(row["value"]), figure(row.get("limit")), row["unit"],
                         figure(row.get("ratio")), bound,
                         " ".join(filter(None, [verdict, row.get("note")]))), flush=True)


def output_of(*command):
    """What a command prints; nothing where it is missing or fails, outside of a clone for one."""
    try:
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True,
                              stderr=subprocess.DEVNULL).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return ""


def line_of(text, pattern):
    found = re.search(pattern, text, re.MULTILINE)
    return found[1] if found else ""


def circumstances(folder):
    cache = (folder.parent / "CMakeCache.txt").read_text()
    compiler = line_of(cache, "^CMAKE_CXX_COMPILER:[^=]*=(.*)$")
    return {"date": datetime.datetime.now(datetime.timezone.utc).isoformat(timespec="seconds"),
            "commit": output_of("git", "describe", "--always", "--dirty"),
            "compiler": output_of(compiler, "--version").partition("\n")[0],
            "kernel": platform.release(),
            "architecture": platform.machine(),
            "processor": line_of(output_of("lscpu"), "^Model name: *(.*)$"),
            "processors": os.cpu_count()}


def measure(works):
    """The rows, printed as they come, and what could not be measured."""
    rows, failures = [], []
    print(COLUMNS.format("work", "value", "limit", "unit", "ratio", "bound", ""))
    for work in works:
        try:
            for row in rows_of(work):
                print_row(row)
                rows.append(row)
        except ChildProcessError as error:
            failures.append(str(error))
    return rows, failures


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--output", type=pathlib.Path)
    parser.add_argument("works", nargs="*")
    options = parser.parse_intermixed_args()

    programs = (options.folder / "programs.txt").read_text().split()
    works = [work for program in programs for work in works_of(options.folder / program)]
    for name in options.works:
        if not any(selects(name, work) for work in works):
            print(f"no work is called {name}; --list names them", file=sys.stderr)
            return WRONG_USE
    if options.works:
        works = [work for work in works if any(selects(name, work) for name in options.works)]
    if options.list:
        print("\n".join(work.name for work in works))
        return 0

    rows, failures = measure(works)
    if options.output:
        results = {"machine": circumstances(options.folder), "rows": rows}
        options.output.write_text(json.dumps(results, indent=1) + "\n")
    outside = [row["title"] for row in rows if not row["ok"]]
    if outside:
        print("\noutside the bound: " + "; ".join(outside))
    if failures:
        print("\n" + "; ".join(failures))
        return NOT_MEASURED
    if outside:
        return OUTSIDE
    print("\nevery row is within its bound")
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (BrokenPipeError, KeyboardInterrupt):
        os._exit(130)  # without a word: whoever ended it knows
