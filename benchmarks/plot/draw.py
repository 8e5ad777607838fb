#!/usr/bin/python3
"""Draws the figures of docs/performance.md from the benchmark's results.

usage: draw.py RESULTS FOLDER
"""

import collections
import json
import pathlib
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
from matplotlib.ticker import LogLocator, NullFormatter, StrMethodFormatter

WAIT = "wait-"
DELAYS = ["3 ms", "20 ms", "100 ms", "1 s"]  # of the points of a wait's series, in their order
SHIPPED = "shipped"
PANEL = (3, 2.9)  # inches
WIDE = 20  # from here on, of the highest to the lowest point, a scale is logarithmic

plt.rcParams.update({
    "svg.fonttype": "none",  # text stays text
    "svg.hashsalt": "orb-gnss",  # the same figures give the same file
    "font.family": "sans-serif",
    "font.size": 8,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "axes.grid": True,
    "grid.alpha": 0.3,
})


def panels(titles):
    figure, axes = plt.subplots(1, len(titles), squeeze=False, layout="constrained",
                                figsize=(PANEL[0] * len(titles), PANEL[1]))
    for axis, title in zip(axes[0], titles):
        axis.set_title(title)
    return figure, axes[0]


def use_logarithm(axis):
    """Logarithmic, with plain numbers at the powers of ten."""
    axis.set_major_locator(LogLocator())
    axis.set_major_formatter(StrMethodFormatter("{x:g}"))
    axis.set_minor_formatter(NullFormatter())


def save(figure, path):
    figure.savefig(path, metadata={"Date": None})
    print(path)


def draw_waits(rows, path):
    """Each policy is a point: what it costs against what it adds, one panel a delay."""
    figure, axes = panels([f"answer after {delay}" for delay in DELAYS])
    for row in rows:
        name = row["work"].removeprefix(WAIT)
        shipped = name == SHIPPED
        colour = "tab:red" if shipped else "tab:blue"
        for axis, (processor, added) in zip(axes, row["series"]["points"]):
            axis.plot(processor, added, "o", color=colour, markersize=4)
            axis.annotate("library" if shipped else name, (processor, added),
                          xytext=(-4 if shipped else 4, 0), textcoords="offset points",
                          ha="right" if shipped else "left", va="center", color=colour)
    for axis in axes:
        axis.set(xscale="log", yscale="log", xlabel=rows[0]["series"]["x"])
        axis.margins(x=0.2, y=0.12)
        use_logarithm(axis.xaxis)
        use_logarithm(axis.yaxis)
    axes[0].set_ylabel(rows[0]["series"]["y"])
    save(figure, path)


def draw_growth(rows, path):
    """How cost grows: one panel for what it grows with, one line a row."""
    by_cause = collections.defaultdict(list)
    for row in rows:
        by_cause[row["series"]["x"]].append(row)
    figure, axes = panels([""] * len(by_cause))
    for axis, (cause, group) in zip(axes, by_cause.items()):
        for row in group:
            axis.plot(*zip(*row["series"]["points"]), "o-", markersize=3, label=row["series"]["label"])
        axis.set(xscale="log", xlabel=cause, ylabel=group[0]["series"]["y"])
        use_logarithm(axis.xaxis)
        heights = [height for row in group for _, height in row["series"]["points"]]
        if max(heights) > WIDE * min(heights):
            axis.set_yscale("log")
            use_logarithm(axis.yaxis)
        else:
            axis.set_ylim(bottom=0)
        axis.legend(fontsize=6, loc="lower center", bbox_to_anchor=(0.5, 1))
    save(figure, path)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    results = pathlib.Path(sys.argv[1])
    if not results.exists():
        sys.exit("there are no results yet: run ./bench")
    rows = [row for row in json.loads(results.read_text())["rows"]
            if row.get("series")]
    waits = [row for row in rows if row["work"].startswith(WAIT)]
    growths = [row for row in rows if not row["work"].startswith(WAIT)]
    if not waits or not growths:
        sys.exit("the results are not of a whole run: run ./bench")
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    draw_waits(waits, folder / "waits.svg")
    draw_growth(growths, folder / "growth.svg")


if __name__ == "__main__":
    main()
