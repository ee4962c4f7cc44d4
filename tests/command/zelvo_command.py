"""What the tests of the command share: running it in a folder of its own, and small surfaces."""

import json
import os
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ZELVO = sys.argv[1]
MESHES = os.environ.get("KVX_ZELVO_MESHES")
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


class Command(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.chdir(folder.name)
        self.file(binary(cube()), "cube.stl")

    def file(self, content, name="surface.stl"):
        Path(name).write_bytes(content)
        return name

    def run_zelvo(self, *arguments, **options):
        options.setdefault("stdout", subprocess.PIPE)
        if "preexec_fn" in options:  # under limits a coverage profile would not fit
            options["env"] = {**os.environ, "LLVM_PROFILE_FILE": os.devnull}
        return subprocess.run([ZELVO, *arguments], stderr=subprocess.PIPE, timeout=120, **options)

    def assert_reports(self, expected, *arguments, warnings=(), subcommand="report"):
        """Runs with such lines on stderr and prints a JSON object with these and other values."""
        run = self.run_zelvo(subcommand, "--json", *arguments)
        lines = run.stderr.decode().splitlines()
        self.assertEqual((run.returncode, len(lines)), (0, len(warnings)), lines)
        for line, warning in zip(lines, warnings):
            self.assertRegex(line, r"\Azelvo: .*: warning: .*" + warning)
        report = json.loads(run.stdout, parse_float=lambda digits: round(float(digits), 9))
        self.assertEqual({key: report[key] for key in expected}, expected)
        return report

    def assert_fails(self, code, culprit, *arguments, **options):
        """One line on stderr that names the culprit, and nothing on stdout."""
        run = self.run_zelvo(*arguments, **options)
        message = run.stderr.decode(errors="surrogateescape")
        self.assertEqual((run.returncode, run.stdout or b""), (code, b""), message)
        self.assertRegex(message, r"\Azelvo: [^\n]+\n\Z")
        self.assertIn(culprit, message)
