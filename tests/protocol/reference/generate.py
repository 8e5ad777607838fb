#!/usr/bin/env python3
"""Writes the assembler's reference files from the model, or checks them.

  generate.py              rewrite explicit_vectors.tsv and block_digests.tsv (some minutes)
  generate.py --check [N]  recompute all explicit vectors and the first N blocks (10); compare
  generate.py --show B     print block B with all its buffers and results
"""

import argparse
import sys
from pathlib import Path

from transcript import digest_line, transcript_lines
from vector_file import edge_case_disagreements, vector_lines

FOLDER = Path(__file__).parent
VECTORS_FILE = FOLDER / "explicit_vectors.tsv"
DIGESTS_FILE = FOLDER / "block_digests.tsv"
BLOCKS = 1024

VECTORS_HEADER = "# group\tname\tbuffers\tposition good errored unknown ack nak\tmessages"
DIGESTS_HEADER = "# block\tbuffers\tresults\tmessages"


def first_difference(expected, found):
    """The first two lines that differ, or None. Compares no further than `expected` goes."""
    for number, line in enumerate(expected):
        if number >= len(found) or found[number] != line:
            return number, line, found[number] if number < len(found) else "(end of file)"
    return None


def report(path, difference):
    number, expected, found = difference
    print(f"{path.name}:{number + 1}: differs from the model", file=sys.stderr)
    print(f"  model: {expected}\n  file:  {found}", file=sys.stderr)


def check(blocks):
    passed = True
    vectors = [VECTORS_HEADER, *vector_lines()]
    digests = [DIGESTS_HEADER, *(digest_line(block) for block in range(blocks))]
    for path, expected, size in (
        (VECTORS_FILE, vectors, len(vectors)),
        (DIGESTS_FILE, digests, BLOCKS + 1),
    ):
        found = path.read_text(encoding="ascii").splitlines()
        if difference := first_difference(expected, found):
            report(path, difference)
            passed = False
        if len(found) != size:
            print(f"{path.name}: {len(found)} lines instead of {size}", file=sys.stderr)
            passed = False
    return passed


def write(path, lines):
    with path.open("w", encoding="ascii", newline="\n") as file:
        for line in lines:
            file.write(line + "\n")


def main():
    parser = argparse.ArgumentParser(description="Reference vectors of the packet assembler")
    action = parser.add_mutually_exclusive_group()
    action.add_argument("--check", metavar="N", nargs="?", type=int, const=10)
    action.add_argument("--show", metavar="BLOCK", type=int)
    arguments = parser.parse_args()

    if disagreements := list(edge_case_disagreements()):
        print("The model disagrees with edge_cases.py:", file=sys.stderr)
        print(*disagreements, sep="\n", file=sys.stderr)
        return 1
    if arguments.show is not None:
        sys.stdout.writelines(line + "\n" for line in transcript_lines(arguments.show))
        return 0
    if arguments.check is not None:
        return 0 if check(arguments.check) else 1
    write(VECTORS_FILE, [VECTORS_HEADER, *vector_lines()])
    write(DIGESTS_FILE, [DIGESTS_HEADER, *(digest_line(block) for block in range(BLOCKS))])
    return 0


if __name__ == "__main__":
    sys.exit(main())
