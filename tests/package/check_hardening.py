"""Reads from the ELF files of an installation how they are hardened.

usage: check_hardening.py BUILD_DIRECTORY PREFIX READELF OBJDUMP
"""

import pathlib
import re
import shutil
import subprocess
import sys

# A function's first instruction that an indirect branch may lead to, or that signs its return.
BRANCH_TARGET = {"X86-64": "endbr64", "AArch64": "paciasp|bti"}


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def lacking(file, readelf, objdump):
    """What the file lacks, a line each, and whether it is a program."""
    header, dynamic, symbols = (
        output(readelf, "--wide", *options, file)
        for options in (("-hl",), ("-d",), ("--dyn-syms",)))
    machine = re.search(r"Machine:.*(X86-64|AArch64)", header)[1]
    target = BRANCH_TARGET[machine]
    code = output(objdump, "-d", "--no-show-raw-insn", file)
    is_program = "INTERP" in header
    marks = {
        "a position-independent program or a library": re.search(r"Type:\s+DYN", header),
        "a table that is read-only after start": "GNU_RELRO" in header,
        "immediate binding": re.search(r"BIND_NOW|FLAGS_1.*NOW", dynamic),
        "a stack without execution": re.search(r"GNU_STACK.* RW ", header),
        "a stack protector": "__stack_chk_fail" in symbols,
        "control-flow protection": len(re.findall(rf"\t({target})\b", code)) > 20,
        # Where calls are fortified, those that format are, whatever their arguments.
        "fortified calls": re.search(r"__\w+_chk(@|$)", symbols, re.M)
                           or not re.search(r" (|d|f|s|sn)printf(@|$)", symbols, re.M),
    }
    return [f"{file}: without {mark}" for mark, found in marks.items() if not found], is_program


def main():
    build, prefix, readelf, objdump = sys.argv[1:]
    shutil.rmtree(prefix, ignore_errors=True)
    subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True,
                   stdout=subprocess.DEVNULL)
    files = [file for file in sorted(pathlib.Path(prefix).rglob("*"))
             if file.is_file() and not file.is_symlink() and file.suffix not in (".a", ".o")
             and file.read_bytes()[:4] == b"\x7fELF"]
    results = [lacking(file, readelf, objdump) for file in files]
    programs = sum(is_program for _, is_program in results)
    print(f"{programs} programs, {len(results) - programs} libraries")
    problems = [line for lines, _ in results for line in lines]
    print("\n".join(problems))
    return 1 if problems or programs < 4 or len(results) - programs < 4 else 0


if __name__ == "__main__":
    sys.exit(main())
