"""STL files for tests: surfaces as lists of facets, a facet as three points."""

import math
import random
import struct
import sys

CORNERS = [(x, y, z) for z in (0.0, 1.0) for y in (0.0, 1.0) for x in (0.0, 1.0)]
SIDES = [(0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5)]


def cube(shift=0.0):
    """The unit cube, its twelve facets looking outwards."""
    p = [(x + shift, y, z) for x, y, z in CORNERS]
    return [f for a, b, c, d in SIDES for f in ((p[a], p[b], p[c]), (p[a], p[c], p[d]))]


def binary(facets, count=None, header=b""):
    body = b"".join(struct.pack("<12fH", 0, 0, 0, *a, *b, *c, 0) for a, b, c in facets)
    return header.ljust(80, b"\0") + struct.pack("<I", len(facets) if count is None else count) + body


def ascii(facets):
    lines = ["solid test"]
    for facet in facets:
        lines += ["facet normal 0 0 0", "outer loop"]
        lines += ["vertex %r %r %r" % point for point in facet]
        lines += ["endloop", "endfacet"]
    return "\n".join(lines + ["endsolid test", ""]).encode()


def write_bumpy_sphere(path, rings):
    """A sphere with bumps: 2 rings (rings - 1) + 2 points, 4 rings (rings - 1) facets, shuffled."""
    def point(i, j):
        t, p = math.pi * i / rings, math.pi * (j % (2 * rings)) / rings
        s = math.sin(t) if 0 < i < rings else 0.0
        r = 1.0 + 0.05 * s * math.sin(7 * t) * math.cos(5 * p)
        return struct.pack("<3f", r * s * math.cos(p), r * s * math.sin(p), r * math.cos(t))

    facets = []
    for i in range(rings):
        for j in range(2 * rings):
            a, b, c, d = point(i, j), point(i, j + 1), point(i + 1, j), point(i + 1, j + 1)
            facets += [a + c + d] * (i < rings - 1) + [a + d + b] * (i > 0)
    random.Random(1).shuffle(facets)
    with open(path, "wb") as file:
        file.write(bytes(80) + struct.pack("<I", len(facets)))
        file.writelines(bytes(12) + facet + bytes(2) for facet in facets)


if __name__ == "__main__":
    write_bumpy_sphere(sys.argv[1], int(sys.argv[2]))
