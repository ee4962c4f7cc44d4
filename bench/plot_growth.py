#!/usr/bin/env python3
"""Draws how time per item grows with the number of items, one panel for each benchmark program.

Usage: plot_growth.py FOLDER PLOT.svg TABLE.md

FOLDER holds what the programs wrote with --benchmark_out. The table tells how far the time per
item grows from the smallest to the largest size of each benchmark, and what memory the largest
takes. The same results give the same bytes.
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

LIMIT = 2  # how far time per item may grow, and memory over inputs and outputs
MARGIN = 1.05  # what memory in whole pages, and the least noise, may add


def series_of(file):
    """(function, shape) -> runs by ascending size."""
    series = defaultdict(list)
    for run in json.loads(file.read_text(encoding="utf-8"))["benchmarks"]:
        words = run["name"].split("/")
        if len(words) == 3 and "per_item" in run:
            series[tuple(words[:2])].append((int(words[2]), run))
    return {name: [run for _, run in sorted(runs, key=lambda pair: pair[0])] for name, runs in series.items()}


def size(run):
    return int(run["name"].split("/")[2])


def growth(runs):
    return runs[-1]["per_item"] / runs[0]["per_item"]


def allowed_bytes(run):
    return LIMIT * (run["input_bytes"] + run["output_bytes"])


def draw(programs, plot):
    """What grows further than it should has a colour and a name, the rest is grey."""
    columns = 4
    rows = -(-len(programs) // columns)
    figure, axes = plt.subplots(rows, columns, figsize=(16, 4 * rows), squeeze=False, sharey=True)
    for panel in axes.flat[len(programs):]:
        panel.set_axis_off()
    for panel, (program, series) in zip(axes.flat, programs.items()):
        for (function, shape), runs in series.items():
            style = {"color": "0.7", "linewidth": 0.7}
            if growth(runs) > LIMIT:
                style = {"marker": ".", "linewidth": 1.2, "label": f"{function}, {shape}"}
            panel.loglog([size(run) for run in runs],
                         [run["per_item"] / runs[0]["per_item"] for run in runs], **style)
        panel.axhline(LIMIT, color="red", linewidth=0.7, linestyle="--")
        panel.set_yscale("log", base=2)
        panel.set_ylim(0.25, 32)
        for axis in (panel.xaxis, panel.yaxis):
            axis.set_minor_formatter(NullFormatter())
        panel.yaxis.set_major_formatter(LogFormatter(base=2))
        panel.set_title(program, fontsize=10)
        panel.set_xlabel("size", fontsize=8)
        panel.set_ylabel("time per item, over that of the smallest size", fontsize=8)
        panel.grid(True, which="major", linewidth=0.3)
        panel.tick_params(labelsize=7)
        if panel.get_legend_handles_labels()[0]:
            panel.legend(fontsize=5, loc="upper left")
    figure.tight_layout()
    figure.savefig(plot, metadata={"Date": None})


def listed(entries):
    """One line for each function, its shapes behind it."""
    functions = defaultdict(list)
    for program, function, shape, text in entries:
        functions[f"{program.removesuffix('_bench')}, {function}"].append(f"{shape} {text}")
    return [f"- {name}: {', '.join(shapes)}" for name, shapes in functions.items()] or ["- none"]


def table(programs):
    lines = ["| program | function | shape | ns per item, smallest to largest size | factor | "
             "peak bytes per item beyond the inputs | twice inputs plus outputs |",
             "|---|---|---|---|---|---|---|"]
    slower, larger = [], []
    for program, series in programs.items():
        for (function, shape), runs in series.items():
            first, last = (1e9 * run["per_item"] for run in (runs[0], runs[-1]))
            peak, allowed = runs[-1]["peak_bytes"], allowed_bytes(runs[-1])
            lines.append(f"| {program} | {function} | {shape} | {first:.1f} to {last:.1f} | "
                         f"{last / first:.2f} | {peak:.0f} | {f'{allowed:.0f}' if allowed else '-'} |")
            if growth(runs) > LIMIT:
                slower.append((program, function, shape, f"{growth(runs):.2f}"))
            if allowed and peak > MARGIN * allowed:
                larger.append((program, function, shape, f"{peak:.0f} of {allowed:.0f}"))
    sizes = sorted({size(run) for series in programs.values() for runs in series.values() for run in runs})
    count = len(lines) - 2
    return "\n".join([
        f"Sizes from {sizes[0]} to {sizes[-1]}.", "",
        f"Time per item grows by more than {LIMIT} in {len(slower)} of {count}:", "", *listed(slower), "",
        f"Memory at the peak, beyond the inputs, is above twice inputs plus outputs in {len(larger)} (bytes per item):",
        "", *listed(larger), "", *lines]) + "\n"


def main(folder, plot, markdown):
    programs = {file.stem: series_of(file) for file in sorted(Path(folder).glob("*.json"))}
    draw(programs, plot)
    Path(markdown).write_text(table(programs), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
