#!/usr/bin/python3
"""Draws docs/images/layers.svg, command.svg and survey.svg; orb-sim and orbctl are on the PATH.

usage: make_pictures.py draw FOLDER      draws them, from the sources and from what was recorded
       make_pictures.py record FOLDER    records a command and a survey of the simulated receiver
"""

import contextlib
import csv
import html
import json
import math
import os
import pathlib
import re
import select
import subprocess
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parent.parent

INK, FAINT, BLUE, GREEN = "#222", "#999", "#1f5fa8", "#2a7d3f"

ANTENNA = (48.3712345, 11.5678901)  # of the simulated receiver, degrees
CENTIMETRES_A_DEGREE = 11_119_500

# ---- recording

OPERATION = ("setMinCNo", "20")
LINE = """
[receiver]
output = "none"

[line]
latency = "4ms"
"""
SURVEY_SECONDS = 600
FAST = """
[receiver]
output = "none"

[time]
rate = 100

[receiver.timing]
mode = "survey"
survey-length = "600s"
"""
QUERY_TIMING = bytes.fromhex("A0A1000144440D0A")


@contextlib.contextmanager
def offered(folder, *command):
    """A process of orb-sim that offers a line at the link that its arguments name."""
    link = folder / command[command.index("--link") + 1]
    with subprocess.Popen(["orb-sim", *command], cwd=folder, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True) as process:
        try:
            said = process.stderr.readline()
            if not link.is_symlink():
                raise RuntimeError(said)
            yield link
        finally:
            process.terminate()
            process.stderr.read()


def decode(bytes_or_trace):
    done = subprocess.run(["orb-sim", "decode", "--json"], input=bytes_or_trace, check=True,
                          capture_output=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


def record_command(target):
    """The trace of one operation, without what orbctl sends before it."""
    with tempfile.TemporaryDirectory(dir="/tmp") as name:
        folder = pathlib.Path(name)
        (folder / "line.toml").write_text(LINE)
        with offered(folder, "serve", "--link", "receiver", "--scenario", "./line.toml"), \
                offered(folder, "tap", "receiver", "--link", "line", "--trace", "trace"):
            subprocess.run(["orb-sim", "run", "--tty", folder / "line", "--", "orbctl", "call",
                            *OPERATION], check=True, cwd=folder, stdout=subprocess.DEVNULL)
        header, *records = (folder / "trace").read_text().splitlines()
    records = [json.loads(record) for record in records]
    first = next(number for number, record in enumerate(records)
                 if record["bytes"].startswith("A0A100012F"))
    start = records[first]["time"]
    header = {"orb-sim-trace": json.loads(header)["orb-sim-trace"]}
    lines = [header] + [record | {"time": round(record["time"] - start, 6)}
                        for record in records[first:]]
    target.write_text("".join(json.dumps(line, separators=(",", ":")) + "\n" for line in lines))


def record_survey(target):
    """Rows of seconds surveyed, deviation in centimetres, latitude, longitude."""
    with tempfile.TemporaryDirectory(dir="/tmp") as name:
        folder = pathlib.Path(name)
        (folder / "fast.toml").write_text(FAST)
        with offered(folder, "serve", "--link", "receiver", "--scenario", "./fast.toml") as link:
            tty = os.open(link, os.O_RDWR | os.O_NOCTTY)
            heard = b""
            end = time.monotonic() + SURVEY_SECONDS / 100 + 0.5
            while time.monotonic() < end:
                os.write(tty, QUERY_TIMING)
                time.sleep(0.05)
                while select.select([tty], [], [], 0)[0]:
                    heard += os.read(tty, 4096)
            os.close(tty)
    rows = {}
    for message in decode(heard):
        if message.get("message") == "timing":
            fields = message["fields"]
            rows[fields["surveyed"]] = (fields["surveyed"], fields["standard_deviation"],
                                        fields["latitude"], fields["longitude"])
    with target.open("w", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(("seconds", "deviation_cm", "latitude", "longitude"))
        writer.writerows(rows.values())


# ---- drawing

class Picture:
    def __init__(self, width, height, title):
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
            f'width="{width}" height="{height}" font-family="sans-serif" font-size="12">',
            f"<title>{html.escape(title)}</title>",
            '<defs><marker id="head" viewBox="0 0 8 8" refX="8" refY="4" markerWidth="7" '
            f'markerHeight="7" orient="auto"><path d="M0,0 L8,4 L0,8 z" fill="{INK}"/></marker>'
            "</defs>",
            f'<rect width="{width}" height="{height}" fill="white"/>']

    def text(self, x, y, text, anchor="start", fill=INK, more=""):
        self.parts.append(f'<text x="{x:g}" y="{y:g}" text-anchor="{anchor}" fill="{fill}"{more}>'
                          f"{html.escape(text)}</text>")

    def line(self, x1, y1, x2, y2, stroke=INK, more=""):
        self.parts.append(f'<line x1="{x1:g}" y1="{y1:g}" x2="{x2:g}" y2="{y2:g}" '
                          f'stroke="{stroke}"{more}/>')

    def arrow(self, x1, y1, x2, y2):
        self.line(x1, y1, x2, y2, more=' marker-end="url(#head)"')

    def box(self, x, y, width, height, name, text, fill):
        self.parts.append(f'<rect x="{x}" y="{y}" width="{width}" height="{height}" rx="4" '
                          f'fill="{fill}" stroke="{INK}"/>')
        self.text(x + width / 2, y + 18, name, "middle", more=' font-weight="bold"')
        self.text(x + width / 2, y + 35, text, "middle", more=' font-size="11"')

    def save(self, path):
        path.write_text("\n".join([*self.parts, "</svg>", ""]))


HIGH, STEP = 46, 82
# Folder: row, left edge, width, what it is. The arrows are the includes of its sources.
FOLDERS = {
    "orbctl": (0, 20, 220, "the command line"),
    "supervised": (1, 20, 220, "calls with a deadline"),
    "operation_table": (2, 20, 220, "every operation, as one table"),
    "commands": (2, 260, 210, "one source for each family"),
    "controller": (2, 490, 210, "facade and module driver"),
    "transport": (3, 260, 210, "one exchange over the line"),
    "board": (3, 490, 210, "inventory, antenna supply"),
    "protocol": (4, 260, 210, "bytes into messages"),
    "platform": (4, 490, 210, "inventory service, I2C"),
}
INCLUDE = re.compile(r'#include "([\w-]+)/')


def includes():
    """Pairs of folders, one of which includes the other's headers; none that follow from others."""
    pairs = set()
    for folder in FOLDERS:
        for path in sorted((SOURCE / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                for target in INCLUDE.findall(path.read_text()):
                    target = {"orb-platform": "platform"}.get(target, target)
                    if target in FOLDERS and target != folder:
                        pairs.add((folder, target))
    for above, below in pairs:
        if FOLDERS[above][0] >= FOLDERS[below][0]:
            raise ValueError(f"{above} includes {below}, which is not below it")
    below_of = {folder: {below for above, below in pairs if above == folder} for folder in FOLDERS}

    def reached(folder):
        return below_of[folder].union(*map(reached, below_of[folder]))

    return [(above, below) for above, below in sorted(pairs)
            if not any(below in reached(other) for other in below_of[above])]


def draw_layers(path):
    picture = Picture(720, 5 * STEP + 130, "The layers of orb-gnss, and what includes what")
    top = {name: 66 + STEP * place[0] for name, place in FOLDERS.items()}
    picture.box(260, 10, 440, HIGH, "client program",
                "knows include/orb-gnss/ alone: the controllers", "#f4f4f4")
    picture.arrow(365, 10 + HIGH, 365, top["commands"])
    picture.arrow(595, 10 + HIGH, 595, top["controller"])
    for above, below in includes():
        x = FOLDERS[above][1] + FOLDERS[above][2] / 2
        to = FOLDERS[below][1] + FOLDERS[below][2] / 2
        if x != to:
            x, to = x + (to - x) * 0.2, to - (to - x) * 0.2
        picture.arrow(x, top[above] + HIGH, to, top[below])
    for name, (_, left, width, text) in FOLDERS.items():
        picture.box(left, top[name], width, HIGH, f"{name}/", text,
                    "#e9f1fb" if left > 20 else "#eef7ee")
    bottom = top["protocol"] + STEP
    for left, name, text in ((260, "/dev/tty_gps", "the receiver"),
                             (490, "system bus, /dev/i2c-N", "the board")):
        picture.box(left, bottom, 210, HIGH, name, text, "#f4f4f4")
        picture.line(left + 105, bottom - STEP + HIGH, left + 105, bottom, FAINT,
                     ' stroke-dasharray="4 3"')
    picture.save(path)


def draw_command(trace, path):
    messages = [message for message in decode(trace.read_bytes()) if message["kind"] == "message"]
    client, receiver, row = 190, 470, 26
    picture = Picture(720, 100 + row * (len(messages) + 2), "setMinCNo(20) on the line")
    picture.text(client, 24, "client: setMinCNo(20)", "middle", more=' font-weight="bold"')
    picture.text(receiver, 24, "receiver", "middle", more=' font-weight="bold"')
    y, before = 40, 0
    for message in messages:
        if message["time"] - before > 0.1:
            y += row
            picture.text(client - 14, y + 3, f"waits {1000 * (message['time'] - before):.0f} ms",
                         "end", FAINT)
            y += row / 2
        y += row
        before = message["time"]
        identity = f"{message['id'][2:4]} {message['id'][4:]}".removesuffix(" 00")
        name = message["message"].replace("-", " ")
        values = {"elevation_mask": "{} degrees", "CNR_mask": "{} dB-Hz", "message": "{}"}
        said = ", ".join(text.format(message["fields"][key]) for key, text in values.items()
                         if key in message["fields"])
        from_client = message["from"] == "client"
        start, end = (client, receiver) if from_client else (receiver, client)
        picture.text(client - 14, y + 3, f"{1000 * message['time']:.1f} ms", "end")
        picture.arrow(start, y, end, y)
        picture.text((client + receiver) / 2, y - 5, f"{identity}  {name}", "middle",
                     BLUE if from_client else GREEN)
        picture.text(receiver + 14, y + 3, said)
    y += 2 * row
    for x in (client, receiver):
        picture.line(x, 34, x, y - row / 2, FAINT)
    picture.text(client, y, "returns 0: the mask read back is 20", "middle")
    picture.save(path)


def distance(row):
    """From the antenna, in centimetres."""
    north = row["latitude"] - ANTENNA[0]
    east = (row["longitude"] - ANTENNA[1]) * math.cos(math.radians(ANTENNA[0]))
    return math.hypot(north, east) * CENTIMETRES_A_DEGREE


def draw_survey(table, path):
    with table.open() as file:
        rows = [{key: float(value) for key, value in row.items()} for row in csv.DictReader(file)]
    left, top, width, height, most = 70, 30, 600, 240, 300
    picture = Picture(720, 330, "A survey converges")

    def x(seconds):
        return left + width * seconds / SURVEY_SECONDS

    def y(centimetres):
        return top + height * (1 - min(centimetres, most) / most)

    for level in range(0, most + 1, 50):
        picture.line(left, y(level), left + width, y(level), "#ddd")
        picture.text(left - 8, y(level) + 4, f"{level}", "end")
    for seconds in range(0, SURVEY_SECONDS + 1, 60):
        picture.text(x(seconds), top + height + 18, f"{seconds}", "middle")
    picture.text(left, 18, "cm: standard deviation of the mean position,", fill=BLUE)
    picture.text(left + 275, 18, "and its distance from the antenna", fill=GREEN)
    picture.text(left + width, top + height + 38, "seconds surveyed", "end")
    for colour, value in ((BLUE, lambda row: row["deviation_cm"]), (GREEN, distance)):
        points = " ".join(f"{x(row['seconds']):.1f},{y(value(row)):.1f}" for row in rows)
        picture.parts.append(f'<polyline points="{points}" fill="none" stroke="{colour}" '
                             'stroke-width="2"/>')
    for seconds in (60, 300, 600):
        row = min(rows, key=lambda each: abs(each["seconds"] - seconds))
        picture.parts.append(f'<circle cx="{x(row["seconds"]):.1f}" r="3.5" fill="{BLUE}" '
                             f'cy="{y(row["deviation_cm"]):.1f}"/>')
        picture.text(x(row["seconds"]), y(row["deviation_cm"]) - 10,
                     f"{row['deviation_cm']:.0f} cm after {row['seconds']:.0f} s",
                     "end" if seconds == SURVEY_SECONDS else "start")
    picture.save(path)


def main():
    what, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    if what == "record":
        record_command(folder / "command.trace")
        record_survey(folder / "survey.csv")
    elif what == "draw":
        draw_layers(folder / "layers.svg")
        draw_command(HERE / "command.trace", folder / "command.svg")
        draw_survey(HERE / "survey.csv", folder / "survey.svg")
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
