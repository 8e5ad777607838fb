#!/usr/bin/python3
"""Makes the manual pages of section 3 and 5 from the pages of docs/ and the examples.

usage: make_pages.py SOURCE_FOLDER VERSION OUTPUT_FOLDER
       make_pages.py --list             the names of the pages
"""

import dataclasses
import pathlib
import re
import sys

OPERATIONS = "docs/operations.md"
OF_DRIVER = "The driver's own commands"
# What only explains the results; in the page of each family.
RESULTS = ("The result is 0, or a mask of 1 (an argument was rejected, or a setting read back "
           "differs), 4 (no reply in time), 8 (not sent) and 256 (not supported). What a query, a "
           "setting and an order return, and how what is on the line is written, is told in "
           "liborb-gnss(3). One thread at a time uses a controller. A call on a line that carries "
           "no byte does not return; those of orbSupervisedController do, at their deadline.")


@dataclasses.dataclass
class Page:
    name: str
    section: int
    title: str
    parts: list  # pairs: heading of the manual page, what it shows: headings of the source
    file: str = OPERATIONS
    example: str = ""
    only: str = ""  # of the rows of tables those alone whose first cell matches

    def __str__(self):
        return f"{self.name}.{self.section}"


def family(name, title, operations, commands, example, **more):
    parts = [("OPERATIONS", operations)]
    if commands:
        parts.append(("COMMANDS OF THE DRIVER", commands))
    return Page(f"orb-gnss-{name}", 3, title, parts, example=example, **more)


PAGES = [
    Page("liborb-gnss", 3, "control of a GNSS timing receiver on a serial port", [
        ("DESCRIPTION", ["Reaching the operations"]), ("RETURN VALUES", ["Results"]),
        ("TIME", ["Time"]), ("LOGS AND PRINTS", ["Logs and prints"]),
        ("WHAT IS ON THE LINE", ["The 60 operations"]),
        ("OPERATIONS WITHOUT EFFECT", ["Without effect"]), ("TOOLS", ["Tools"])],
         example="deadline"),
    family("identify", "find the receiver and read its firmware's versions",
           ["Receiver and driver"], ["Receiver, restart, serial port"], "identify"),
    family("defaults", "restart the receiver, apply whole configurations",
           ["Restart and defaults", "setDefaultConfiguration", "setApplicationDefaults",
            "resetFactoryDefaults"], [], "defaults"),
    family("navigation", "read position, satellites and time",
           ["Navigation data"], ["Navigation data and time"], "status"),
    family("output", "choose what the receiver sends, and its power mode",
           ["Output and power"], ["Output, rate, power"], "status"),
    family("constellations", "choose the constellations and augmentation systems",
           ["Constellations and augmentation"], ["Constellations and augmentation"],
           "constellations"),
    family("masks", "masks, navigation model and interference detection",
           ["Masks, navigation model, interference"], ["Masks, navigation model, interference"],
           "defaults"),
    family("survey", "survey the antenna's position, or hold one",
           ["Survey"], ["The timing configuration"], "survey"),
    family("pps", "set up the 1PPS output and the second pulse output",
           ["Timing outputs"], ["Pulse outputs"], "pps"),
    family("antenna", "switch the antenna's supply",
           ["Reaching the operations", "Without effect"], [], "antenna",
           only=r"Antenna[PT]|turnO|isOn"),
    Page("orb-gnss-inventory", 5, "the modules of a device, for orb-inventoryd",
         [("DESCRIPTION", ["Its file"])], file="docs/platform.md"),
]
WHOLE_CELL = 12  # characters of a table's cell that is not broken into lines
PROGRAMS = {1: ("orbctl", "orb-sim"), 8: ("orb-inventoryd",)}


def sections_of(text):
    """Triples of heading, the heading of level 2 above it, and the lines up to the next."""
    sections, above, is_code = [], "", False
    for line in text.splitlines():
        is_code ^= line.lstrip().startswith("```")
        if not is_code and (heading := re.match(r"(##+) (.*)", line)):
            if len(heading[1]) == 2:
                above = heading[2]
            sections.append((heading[2], above, []))
        elif sections:
            sections[-1][2].append(line)
    return sections


def inline(text):
    text = text.replace("\\|", "|").replace("\\*", "*")
    pieces = re.split(r"`([^`]*)`", text)
    made = []
    for number, piece in enumerate(pieces):
        is_code = number % 2 == 1
        if not is_code:
            piece = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", piece)
            piece = re.sub(r"\*{1,2}([^ *]+[^*]*)\*{1,2}", "\x01\\1\x02", piece)
        piece = piece.replace("\\", r"\e")
        made.append(rf"\fB{piece}\fP" if is_code
                    else piece.replace("\x01", r"\fI").replace("\x02", r"\fP"))
    return "".join(made)


def source_lines(text):
    """A sentence a line, none of them a request."""
    return [rf"\&{line}" if line[:1] in (".", "'") else line
            for line in re.sub(r"(\w\w[\w)]?[.:]) (?=[A-Z\\])", r"\1\n", text).split("\n")]


def cells_of(row):
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", row.strip())[1:-1]]


def capital(text):
    return re.sub(r"^(\*\*)?[a-z]", lambda start: start[0].upper(), text.strip())


def list_of(head, rows):
    """A table of members as a list: what each does, what is to be known, its result, its bytes."""
    lines = [".Bl -tag -width Ds"]
    for row in rows:
        cell = dict(zip(head, row))
        signature = re.sub(r"`, `", "\n", row[0]).replace("`", "").split("\n")
        for number, each in enumerate(signature):
            quoted = each.replace('"', r"\(dq")
            lines.append(rf'.It "\fB{quoted}\fP"')
            if number + 1 < len(signature):
                lines.append(r"\&")
        text = [capital(cell[key]) for key in ("what it does", "to know") if cell.get(key)]
        result = cell.get("result", "")
        text += [f"Result: {result}"] if result else []
        text += [f"Instead: {cell['call instead']}"] if cell.get("call instead") else []
        text += [f"On the line: {cell['on the line']}"] if cell.get("on the line") else []
        lines += source_lines(inline("\n".join(f"{each}." for each in text)))
    return lines + [".El"]


def table_of(head, rows):
    first = "lw(20)" if len(head) > 4 else "l"
    lines = [".TS", " ".join("lb" for _ in head),
             " ".join([first] + ["l"] * (len(head) - 2) + ["lx"]) + "."]
    for row in [head, *rows]:
        # What is short stays whole, and widens its column.
        lines.append("\t".join(f"T{{\n{inline(cell)}\nT}}" if len(cell) > WHOLE_CELL
                               else inline(cell) for cell in row))
    return [".Pp", *"\n".join(lines).split("\n"), ".TE"]


def code_of(lines):
    while lines and not lines[-1].strip():
        lines.pop()
    escaped = [line.replace("\\", r"\e") for line in lines]
    return [".Bd -literal -offset indent",
            *(rf"\&{line}" if line[:1] in (".", "'") else line for line in escaped), ".Ed"]


def is_shown(row, only):
    return not only or re.search(only, row[0])


def body_of(lines, only):
    """The blocks of a section; with `only`, nothing but the chosen rows of its lists."""
    made, at = [], 0
    while at < len(lines):
        line = lines[at]
        start = at
        if line.lstrip().startswith("```"):
            at += 1
            while not lines[at].lstrip().startswith("```"):
                at += 1
            block = code_of(lines[start + 1:at])
            at += 1
        elif line.startswith("    "):
            while at < len(lines) and (lines[at].startswith("    ") or not lines[at]):
                at += 1
            block = code_of([each[4:] for each in lines[start:at]])
        elif line.startswith("|"):
            while at < len(lines) and lines[at].startswith("|"):
                at += 1
            head, rows = cells_of(line), [cells_of(each) for each in lines[start + 2:at]]
            rows = [row for row in rows if is_shown(row, only)]
            if head[0] in ("operation", "command", "member"):
                made += list_of(head, rows) if rows else []
                continue
            block = table_of(head, rows)
        elif line.startswith("- "):
            while at < len(lines) and lines[at].strip():
                at += 1
            items = re.split(r"^- ", "\n".join(lines[start:at]), flags=re.MULTILINE)[1:]
            block = [".Bl -bullet"]
            for item in items:
                block += [".It", *source_lines(inline(" ".join(item.split())))]
            block.append(".El")
        else:
            while at < len(lines) and lines[at] and not re.match(r"\||```|- |    ", lines[at]):
                at += 1
            at = max(at, start + 1)
            text = " ".join(each.strip() for each in lines[start:at])
            is_comment = text.startswith("<!--")
            block = [".Pp", *source_lines(inline(text))] if text and not is_comment else []
        if not only:
            made += block
    return made


def without_empty_paragraphs(lines):
    """No paragraph begins after a heading, or before another beginning."""
    kept = []
    for line in lines:
        if line == ".Pp" and kept and re.match(r"\.(Sh|Ss|Pp)\b", kept[-1]):
            continue
        kept.append(line)
    return kept


def see_also(page):
    pages = {(other.name, other.section) for other in PAGES if other is not page}
    pages |= {(name, section) for section, names in PROGRAMS.items() for name in names}
    if page.section == 5:
        pages = {("liborb-gnss", 3), ("orb-inventoryd", 8)}
    ordered = sorted(pages, key=lambda each: (each[1], each[0]))
    return [f".Xr {name} {section}" + (" ," if (name, section) != ordered[-1] else "")
            for name, section in ordered]


def make(page, source, version):
    sections = sections_of((source / page.file).read_text())
    lines = ["'\\\" t", ".Dd $Mdocdate$", f".Dt {page.name.upper()} {page.section}",
             f".Os orb-gnss {version}", ".Sh NAME", f".Nm {page.name}", f".Nd {page.title}"]
    if page.section == 3:
        lines += [".Sh LIBRARY", "liborb-gnss (\\fB-lorb-gnss\\fP, pkg-config orb-gnss);",
                  "the supervised controller: \\fB-lorb-gnss-supervised\\fP,",
                  "pkg-config orb-gnss-supervised",
                  ".Sh SYNOPSIS", ".In orb-gnss/orb-gnss.h"]
    if page.name != "liborb-gnss" and page.section == 3:
        lines += [".Sh DESCRIPTION", "Operations of the controllers that", ".Xr liborb-gnss 3",
                  "describes."]
    for title, headings in page.parts:
        lines.append(f".Sh {title}")
        for heading in headings:
            found = [body for name, above, body in sections if name == heading
                     and (above == OF_DRIVER) == (title in ("COMMANDS OF THE DRIVER", "TOOLS"))]
            assert len(found) == 1, f"{page}: {len(found)} sections {heading}"
            if heading == heading[:1].lower() + heading[1:] and len(headings) > 1:
                lines.append(f".Ss {heading}")
            lines += body_of(found[0], page.only)
    if page.name != "liborb-gnss" and page.section == 3:
        lines += [".Sh RETURN VALUES", *source_lines(RESULTS)]
    if page.example:
        text = (source / f"examples/{page.example}.cpp").read_text()
        lines += [".Sh EXAMPLES", *code_of(text.splitlines())]
    lines += [".Sh SEE ALSO", *see_also(page)]
    return "\n".join(without_empty_paragraphs(lines)) + "\n"


def main():
    if sys.argv[1:] == ["--list"]:
        print(*PAGES, sep="\n")
        return
    source, version, output = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    output.mkdir(parents=True, exist_ok=True)
    for page in PAGES:
        (output / str(page)).write_text(make(page, source, version), encoding="utf-8")


if __name__ == "__main__":
    main()
