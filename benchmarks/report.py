#!/usr/bin/env python3
"""Runs the bench programs, prints one table and writes the figures as JSON.

usage: report.py FOLDER [--list] [--output FILE] [WORK...]
"""

import argparse
import json
import os
import pathlib
import platform
import subprocess
import sys
import typing

COLUMNS = "{:<58} {:>11} {:>11} {:<8} {:>7} {:>15}  {}"


def programs(folder):
    for name in (folder / "programs.txt").read_text().split():
        yield folder / name


class Work(typing.NamedTuple):
    program: pathlib.Path
    name: str
    processes: int


def works_of(program):
    listing = subprocess.run([program, "--list"], check=True, stdout=subprocess.PIPE, text=True)
    for line in listing.stdout.splitlines():
        name, processes = line.split()
        yield Work(program, name, int(processes))


def selects(name, work):
    return work.name == name or work.name.startswith(name + "-")


def rows_of_process(work):
    """The rows, each as soon as the program has printed it."""
    with subprocess.Popen([work.program, work.name], stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            yield json.loads(line)
    if process.returncode != 0:
        sys.exit(f"{work.program.name} could not measure")


def middle(rows):
    """Of the same row from several processes, the one with the median ratio."""
    return sorted(rows, key=lambda row: row["ratio"])[len(rows) // 2]


def rows_of(work):
    if work.processes == 1:
        return rows_of_process(work)
    return map(middle, zip(*[list(rows_of_process(work)) for _ in range(work.processes)]))


def figure(number):
    return "" if number is None else f"{number:.4g}"


def print_row(row):
    bound = "" if row.get("bound") is None else f"{row['sense']} {row['bound']:g}"
    verdict = "" if row.get("bound") is None else "ok" if row["ok"] else "OUTSIDE"
    print(COLUMNS.format(row["title"], figure(row["value"]), figure(row.get("limit")), row["unit"],
                         figure(row.get("ratio")), bound,
                         " ".join(filter(None, [verdict, row.get("note")]))), flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--output", type=pathlib.Path)
    parser.add_argument("works", nargs="*")
    options = parser.parse_intermixed_args()

    works = [work for program in programs(options.folder) for work in works_of(program)]
    for name in options.works:
        if not any(selects(name, work) for work in works):
            sys.exit(f"no work is called {name}; --list names them")
    if options.works:
        works = [work for work in works if any(selects(name, work) for name in options.works)]
    if options.list:
        print("\n".join(work.name for work in works))
        return 0

    rows = []
    print(COLUMNS.format("work", "value", "limit", "unit", "ratio", "bound", ""))
    for work in works:
        for row in rows_of(work):
            print_row(row)
            rows.append(row)
    if options.output:
        machine = {"architecture": platform.machine(), "processors": os.cpu_count()}
        results = {"machine": machine, "rows": rows}
        options.output.write_text(json.dumps(results, indent=1) + "\n")

    outside = [row["title"] for row in rows if not row["ok"]]
    if outside:
        print("\noutside the bound: " + "; ".join(outside))
        return 1
    print("\nevery row is within its bound")
    return 0


if __name__ == "__main__":
    sys.exit(main())
