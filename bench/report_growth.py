#!/usr/bin/env python3
"""Runs `zelvo report` on binary STL files of two sizes, a bumpy sphere, and compares the time per
facet and the memory at the peak.

Usage: report_growth.py ZELVO TABLE.md FACETS MORE_FACETS

The files are made in the folder for temporary ones, 50 bytes a facet, and removed.
"""
import math
import os
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

import numpy

FACET = numpy.dtype([("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("attributes", "<u2")])
TIME_LIMIT, MEMORY_LIMIT = 2.5, 24  # ratio, GiB
ROUNDS = 3


def ring(latitude, around):
    theta = math.pi * latitude
    phi = 2 * math.pi * numpy.arange(around + 1) / around
    phi[-1] = 0
    radius = 1 + 0.1 * math.sin(theta) * math.sin(7 * theta) * numpy.cos(5 * phi)
    return numpy.stack([radius * math.sin(theta) * numpy.cos(phi),
                        radius * math.sin(theta) * numpy.sin(phi), radius * math.cos(theta)], axis=1)


def write_sphere(path, facets):
    """About as many facets as asked for, ring by ring; how many there are."""
    rings = math.ceil((1 + math.sqrt(1 + facets)) / 2)
    around = 2 * rings
    written = 2 * around * (rings - 1)
    with open(path, "wb") as file:
        file.write(bytes(80) + written.to_bytes(4, "little"))
        for r in range(rings):
            above, below = ring(r / rings, around), ring((r + 1) / rings, around)
            left = numpy.stack([above[:-1], below[:-1], above[1:]], axis=1)
            right = numpy.stack([above[1:], below[:-1], below[1:]], axis=1)
            kinds = ([left] if r > 0 else []) + ([right] if r + 1 < rings else [])
            records = numpy.zeros(len(kinds) * around, FACET)
            records["corners"] = numpy.concatenate(kinds)
            records.tofile(file)
    return written


def run(command):
    """Seconds of its own time and bytes at the peak."""
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode:
        sys.exit(f"report_growth.py: {' '.join(command)} ended with {child.returncode}")
    return usage.ru_utime + usage.ru_stime, 1024 * usage.ru_maxrss


def main(zelvo, markdown, *sizes):
    rows, times, memory = [], [], []
    for wanted in map(int, sizes):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "sphere.stl")
            facets = write_sphere(path, wanted)
            runs = [run([zelvo, "report", path]) for _ in range(ROUNDS)]
            times.append(1e9 * statistics.median(seconds for seconds, _ in runs) / facets)
            memory.append(max(peak for _, peak in runs))
            rows.append(f"| {facets} | {os.path.getsize(path) / 1e6:.0f} | {times[-1]:.0f} | "
                        f"{memory[-1] / 2**30:.2f} | {memory[-1] / facets:.0f} |")
    ratio = times[-1] / times[0]
    met = ratio <= TIME_LIMIT and memory[-1] <= MEMORY_LIMIT * 2**30
    Path(markdown).write_text("\n".join([
        "| facets | MB of file | ns of CPU time per facet | GiB at the peak | bytes per facet |",
        "|---|---|---|---|---|", *rows, "",
        f"Time per facet: {ratio:.2f} times that of the smaller file; at most {TIME_LIMIT} times, within "
        f"{MEMORY_LIMIT} GiB: {'met' if met else 'missed'}."]) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
