#!/usr/bin/env python3
"""Draws time per item against the number of items, one panel for each benchmark program.

Usage: plot_growth.py FOLDER PLOT.svg TABLE.md

FOLDER holds what the programs wrote with --benchmark_out. The table tells how far the time per
item grows from the smallest to the largest size of each benchmark. The same results give the same
bytes.
"""
import json
import sys
from collections import defaultdict
from pathlib import Path

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams["svg.hashsalt"] = "kvx zelvo"
matplotlib.rcParams["svg.fonttype"] = "none"
import matplotlib.pyplot as plt  # noqa: E402
from matplotlib.ticker import LogFormatter, NullFormatter  # noqa: E402


def series_of(file):
    """Benchmark -> [(items, nanoseconds per item)], ascending."""
    series = defaultdict(list)
    for run in json.loads(file.read_text(encoding="utf-8"))["benchmarks"]:
        if run["run_type"] != "iteration" or "per_item" not in run:
            continue
        words = run["name"].split("/")
        size = next(i for i, word in enumerate(words) if word.isdigit())
        name = " ".join(words[:size] + ([run["label"]] if run.get("label") else words[size + 1:]))
        series[name].append((int(words[size]), 1e9 * run["per_item"]))
    return {name: sorted(points) for name, points in series.items()}


def draw(programs, plot):
    columns = 3
    rows = -(-len(programs) // columns)
    figure, axes = plt.subplots(rows, columns, figsize=(15, 4 * rows), squeeze=False)
    for panel in axes.flat[len(programs):]:
        panel.set_axis_off()
    for panel, (program, series) in zip(axes.flat, programs.items()):
        for i, (name, points) in enumerate(series.items()):
            panel.loglog(*zip(*points), marker=".", linewidth=1,
                         linestyle=("-", "--")[i // 10 % 2], label=name)
        times = [time for points in series.values() for _, time in points]
        panel.set_ylim(min(times) / 4, max(times) * 4)  # what stays the same looks so
        panel.yaxis.set_minor_formatter(NullFormatter())
        panel.xaxis.set_minor_formatter(NullFormatter())
        panel.yaxis.set_major_formatter(LogFormatter())
        panel.set_title(program, fontsize=10)
        panel.set_xlabel("size", fontsize=8)
        panel.set_ylabel("ns per item", fontsize=8)
        panel.grid(True, which="major", linewidth=0.3)
        panel.tick_params(labelsize=7)
        panel.legend(fontsize=6)
    figure.tight_layout()
    figure.savefig(plot, metadata={"Date": None})


def table(programs):
    lines = ["| program | benchmark | sizes | ns per item, smallest to largest size | factor |",
             "|---|---|---|---|---|"]
    for program, series in programs.items():
        for name, points in series.items():
            (small, first), (large, last) = points[0], points[-1]
            lines.append(f"| {program} | {name} | {small} to {large} | {first:.1f} to {last:.1f} | "
                         f"{last / first:.2f} |")
    return "\n".join(lines) + "\n"


def main(folder, plot, markdown):
    programs = {file.stem: series_of(file) for file in sorted(Path(folder).glob("*.json"))}
    draw(programs, plot)
    Path(markdown).write_text(table(programs), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
