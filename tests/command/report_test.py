"""Tests of `zelvo report`. Usage: report_test.py ZELVO MACHINE_PART QUICK_START [unittest arguments]"""

import json
import math
import os
import random
import resource
import stat
import struct
import subprocess
import sys
import unittest
from pathlib import Path

from zelvo_command import MESHES, Command, ascii, binary, cube

MACHINE_PART, QUICK_START = sys.argv[2:4]
NAN = float("nan")


class Report(Command):
    def test_every_number_of_a_cube(self):
        root = math.sqrt(2)
        quality = round(2 * math.sqrt(3) / ((2 + root) * root), 9)
        expected = {
            "facets": 12, "nodes": 8, "elements": 12, "merged_nodes": 28, "removed_elements": 0,
            "tolerance": round(0.05 / root, 9), "subdomains": 1, "free_edges": 0,
            "non_manifold_edges": 0, "degenerate_elements": 0,
            "bounding_box": {"min": [0, 0, 0], "max": [1, 1, 1]},
            "edge_length": {"min": 1, "mean": round((2 + root) / 3, 9), "max": round(root, 9)},
            "shape_quality": {"min": quality, "mean": quality, "max": quality, "bins": [
                {"lower": k / 10, "upper": (k + 1) / 10, "count": 12 * (k == 7)} for k in range(10)]},
            "unread_bytes": 0}
        for form, content in (("stl-ascii", ascii(cube())),
                              ("stl-binary", binary(cube(), header=b"solid cube"))):
            report = self.assert_reports(expected, self.file(content))
            self.assertEqual(report, {"file": "surface.stl", "format": form, **expected})

    def test_defects_are_counted(self):
        a, b, c = cube()[0]
        off = (a[0] + 0.01, a[1], a[2])
        middle = tuple((x + y) / 2 for x, y in zip(b, c))
        for facets, expected, *options in (
                ([(off, b, c)] + cube()[1:], {"nodes": 8, "free_edges": 0}),
                ([(off, b, c)] + cube()[1:], {"nodes": 9, "tolerance": 0}, "--tolerance=0"),
                (cube() + [(b, middle, c)], {"degenerate_elements": 1, "non_manifold_edges": 1}),
                (cube() + cube(shift=3.0), {"subdomains": 2, "nodes": 16})):
            with self.subTest(expected):
                self.assert_reports(expected, self.file(binary(facets)), *options)

    def test_text_shows_counts_and_bars(self):
        run = self.run_zelvo("report", self.file(binary(cube()[1:])))
        self.assertRegex(run.stdout, rb"(?s)nodes +33 -> 8 +\(25 merged\)\n.*free edges +3\n.*11.*##")

    def test_nothing_left_after_welding(self):
        nothing = {"min": None, "mean": None, "max": None}
        self.assert_reports({"elements": 0, "nodes": 0, "subdomains": 0, "edge_length": nothing},
                            "cube.stl", "--tolerance", "9", "--vtk", "out.vtk")
        self.assertIn("CELLS 0 0\n", Path("out.vtk").read_text())

    def test_file_names(self):
        for name in ("-dash.stl", os.fsdecode(b"latin\xe9.stl"), "line\nend.stl"):
            self.file(binary(cube()), name)
            run = self.run_zelvo("report", "--json", "--", name)
            self.assertEqual(json.loads(run.stdout)["file"], name.replace("\udce9", "\ufffd"))
            self.assert_fails(3, "no such", "report", "no such " + name)

    def test_warnings(self):
        self.assert_reports({"facets": 12, "unread_bytes": 3}, self.file(binary(cube(), count=20) + b"cut"),
                            warnings=("announced: 20, found: 12", "not understood: 3"))
        nowhere = ((NAN, NAN, math.inf), *cube()[0][1:])
        self.assert_reports({"elements": 13, "bounding_box": {"min": [0, 0, 0], "max": [1, 1, 1]}},
                            self.file(binary(cube() + [nowhere])), warnings=["no finite numbers: 1"])


class Failures(Command):
    def test_unreadable_input(self):
        os.mkfifo("pipe")
        self.file(b"", "empty")
        self.file(binary([], count=0xFFFFFFFF).ljust(100, b"\0"), "boast")
        self.file(b"solid nothing\nendsolid nothing\n", "hollow")
        self.file(random.Random(1).randbytes(5000), "noise")
        for name, reason in (("pipe", "Not a regular file"), (".", "Is a directory"), ("empty", ""),
                             ("boast", ""), ("hollow", "no facet"), ("noise", "not an STL file"),
                             ("missing", "No such file")):
            with self.subTest(name):
                self.assert_fails(3, "%s: %s" % (name, reason), "report", name, "--vtk", "out.vtk")
                self.assertFalse(os.path.exists("out.vtk"))

    def test_wrong_usage(self):
        for culprit, *arguments in (
                ("subcommand",), ("FILE", "report"), ("--no-such", "report", "cube.stl", "--no-such"),
                ("other.stl", "report", "cube.stl", "other.stl"), ("empty", "report", "cube.stl", "--vtk", ""),
                *(("tolerance", "report", "cube.stl", "--tolerance", t) for t in ("-1", "nan", "inf", "x", ""))):
            with self.subTest(arguments):
                self.assert_fails(2, culprit, *arguments)
        with open("report.txt", "w") as results:
            self.assert_fails(2, "replace the report", "report", "cube.stl", "--vtk", "report.txt", stdout=results)


class Vtk(Command):
    def write(self, target):
        run = self.run_zelvo("report", "cube.stl", "--vtk", target, umask=0o027)
        self.assertEqual((run.returncode, run.stderr), (0, b""))

    def test_new_and_replaced_files(self):
        os.chmod(self.file(b"old", "old.vtk"), 0o604)
        os.symlink("old.vtk", "link.vtk")
        os.symlink("later.vtk", "dangling.vtk")
        for target, file, mode in (("link.vtk", "old.vtk", 0o604), ("dangling.vtk", "later.vtk", 0o640)):
            self.write(target)
            self.assertEqual(os.lstat(file).st_mode, stat.S_IFREG | mode)
            self.assertIn("\nCELLS 12 48\n", Path(file).read_text())
        self.assertEqual(len(os.listdir()), 5)

    def test_pipes_are_written_directly(self):
        os.mkfifo("pipe")
        with subprocess.Popen(["cat", "pipe"], stdout=subprocess.PIPE) as reader:
            self.write("pipe")
            self.assertIn(b"CELL_TYPES 12", reader.stdout.read())


class Surfaces(Command):
    def test_machine_part_has_the_defects_it_names(self):
        file = "part.stl"
        subprocess.run([MACHINE_PART, file], check=True, stdout=subprocess.DEVNULL)
        report = self.assert_reports({"removed_elements": 1, "free_edges": 3, "non_manifold_edges": 3,
                                      "subdomains": 1, "degenerate_elements": 0}, file)
        # A surface of genus 7 (bore and six holes): F = 2 (V - 2 + 2 * 7). One facet is missing, one
        # there twice, so the split vertices are welded when the equation holds as it stands.
        self.assertEqual(report["elements"], 2 * (report["nodes"] + 12))

        # Of the three facets at an edge of the duplicated one, two are each other's neighbours.
        run = subprocess.run([QUICK_START, file, "part.vtk"], check=True, stdout=subprocess.PIPE)
        self.assertEqual(run.stdout.decode(), "%d triangles, 6 sides without neighbor, mean shape quality "
                         "%.3f\n" % (report["elements"], report["shape_quality"]["mean"]))

    @unittest.skipUnless(MESHES, "KVX_ZELVO_MESHES is not set: no real meshes")
    def test_real_meshes(self):
        keys = ("facets", "nodes", "elements", "free_edges", "non_manifold_edges", "unread_bytes")
        for name, expected, *options in REAL_MESHES:
            with self.subTest(name):
                warnings = ["announced: "] * (name == "truncated-binary") + ["not understood"] * (expected[5] > 0)
                self.assert_reports(dict(zip(keys, expected)), *options,
                                    os.path.join(MESHES, name + ".stl"), warnings=warnings)

    @unittest.skipIf("SANITIZED" in os.environ, "sanitizers take memory of their own")
    def test_two_million_facets_in_one_gibibyte(self):
        n = 1000
        with open("terrain.stl", "wb") as file:
            file.write(bytes(80) + struct.pack("<I", 2 * n * n))
            for k in range(n * n):
                i, j = divmod(k * 7919 % (n * n), n)  # the facets are not in the order of their places
                a, b, c, d = (struct.pack("<3f", x, y, x * y % 7) for x in (i, i + 1) for y in (j, j + 1))
                file.write(bytes(12) + a + c + b + bytes(14) + b + c + d + bytes(2))
        self.assert_reports({"facets": 2 * n * n, "nodes": (n + 1) ** 2, "free_edges": 4 * n}, "terrain.stl")
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, 1 << 20)


REAL_MESHES = (
    ("closed-solid-header-binary", (8700, 4350, 8700, 0, 0, 0)),
    ("bunny-holes-binary", (69451, 34834, 69451, 223, 0, 0)),
    ("nonmanifold-binary", (2000, 1042, 2000, 0, 16, 0)),
    ("ribcage-duplicates-binary", (73960, 35386, 73960, 0, 5122, 0), "--tolerance=0"),
    # Ten pairs of points lie closer than the tolerance and become one.
    ("ribcage-duplicates-binary", (73960, 35376, 73960, 0, 5170, 0)),
    ("turbine-blade-199k-binary", (199034, 99519, 199034, 0, 0, 0)),
    ("crlf-leading-blank-ascii", (12, 8, 12, 0, 0, 0)),
    # 56 facets have two equal corners.
    ("spider-degenerate-ascii", (1368, 722, 1312, 72, 0, 0)),
    # The line feed behind the last facet.
    ("solid-header-extra-byte-binary", (288, 144, 288, 0, 0, 1)),
    # The second solid, 20 facets, is not read.
    ("two-solids-crlf-ascii", (12, 8, 12, 0, 0, 5115)),
    # The last of 288 facets is in upper case.
    ("uppercase-ascii", (287, 144, 287, 3, 0, 210)),
    # Cut inside a facet; the binary one also announces more than there are.
    ("truncated-ascii", (11, 11, 11, 9, 0, 95)),
    ("truncated-binary", (58, 40, 58, 20, 0, 16)),
)

if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
