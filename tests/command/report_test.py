"""Tests of `zelvo report`. Usage: report_test.py ZELVO MACHINE_PART QUICK_START [unittest arguments]"""

import errno
import json
import math
import os
import random
import resource
import stat
import subprocess
import sys
import tempfile
import unittest

import stl_files
from stl_files import ascii, binary, cube

ZELVO, MACHINE_PART, QUICK_START = sys.argv[1:4]
MESHES = os.environ.get("KVX_ZELVO_MESHES")
NAN = float("nan")


class Command(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def file(self, content, name="surface.stl"):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return self.path(name)

    def text(self, name):
        with open(self.path(name)) as file:
            return file.read()

    def run_zelvo(self, *arguments, **options):
        options.setdefault("stdout", subprocess.PIPE)
        return subprocess.run([ZELVO, *arguments], stderr=subprocess.PIPE, timeout=120, **options)

    def assert_reports(self, expected, *arguments, warnings=()):
        """Runs with such lines on stderr and prints a JSON object with these and other values."""
        run = self.run_zelvo("report", "--json", *arguments)
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
        for form, content in (("stl-ascii", ascii(cube())), ("stl-binary", binary(cube())),
                              ("stl-binary", binary(cube(), header=b"solid cube"))):
            file = self.file(content)
            report = self.assert_reports(expected, file)
            self.assertEqual(report, {"file": file, "format": form, **expected})

    def test_defects_are_counted(self):
        a, b, c = cube()[0]
        off, far = (a[0] + 0.01, a[1], a[2]), (a[0] - 0.2, a[1], a[2])
        middle = tuple((x + y) / 2 for x, y in zip(b, c))
        for facets, expected, *options in (
                (cube()[1:], {"free_edges": 3, "nodes": 8}),
                (cube() + [(a, b, c)], {"non_manifold_edges": 3, "free_edges": 0, "facets": 13}),
                (cube() + [(a, b, b)], {"removed_elements": 1, "facets": 13, "elements": 12}),
                ([(off, b, c)] + cube()[1:], {"nodes": 8, "free_edges": 0}),
                ([(far, b, c)] + cube()[1:], {"nodes": 9, "tolerance": 0}, "--tolerance=0"),
                ([(far, b, c)] + cube()[1:], {"nodes": 8, "tolerance": 0.25}, "--tolerance=0.25"),
                (cube() + [(b, middle, c)], {"degenerate_elements": 1, "non_manifold_edges": 1}),
                (cube() + cube(shift=3.0), {"subdomains": 2, "nodes": 16})):
            with self.subTest(expected):
                self.assert_reports(expected, self.file(binary(facets)), *options)

    def test_text_shows_counts_and_bars(self):
        run = self.run_zelvo("report", self.file(binary(cube()[1:])))
        self.assertRegex(run.stdout, rb"(?s)nodes +33 -> 8 +\(25 merged\)\n.*free edges +3\n"
                                     rb".*0\.7 .*0\.8 .*11.*##")
        self.assertEqual(run.stderr, b"")

    def test_nothing_left_after_welding(self):
        nothing, vtk = {"min": None, "mean": None, "max": None}, self.path("out.vtk")
        report = self.assert_reports({"elements": 0, "nodes": 0, "subdomains": 0, "edge_length": nothing,
                                      "bounding_box": {"min": [None] * 3, "max": [None] * 3}},
                                     self.file(binary(cube())), "--tolerance", "9", "--vtk", vtk)
        self.assertLessEqual(nothing.items(), report["shape_quality"].items())
        self.assertIn("CELLS 0 0\n", self.text("out.vtk"))

    def test_file_names(self):
        for name in ("-dash.stl", "two words.stl", os.fsdecode(b"latin\xe9.stl"), "line\nend.stl"):
            with self.subTest(name):
                self.file(binary(cube()), name)
                run = self.run_zelvo("report", "--json", "--", name, cwd=self.folder)
                self.assertEqual(json.loads(run.stdout)["file"], name.replace("\udce9", "\ufffd"))
                self.assert_fails(3, "no such", "report", "no such " + name, cwd=self.folder)

    def test_warnings(self):
        upper = ascii(cube()[:7]) + ascii(cube()[7:]).upper()
        nowhere = ((NAN, NAN, math.inf), *cube()[0][1:])
        for content, expected, *warnings in (
                (binary(cube(), count=20) + b"cut", {"facets": 12, "unread_bytes": 3},
                 "announced: 20, found: 12", "not understood: 3"),
                (binary(cube()) + b"\n", {"facets": 12, "unread_bytes": 1}, "not understood: 1"),
                (upper, {"facets": 7, "unread_bytes": len(ascii(cube()[7:]))}, "not understood: "),
                (binary(cube() + [nowhere]), {"elements": 13, "bounding_box": {
                    "min": [0, 0, 0], "max": [1, 1, 1]}}, "no finite numbers: 1")):
            with self.subTest(expected):
                self.assert_reports(expected, self.file(content), warnings=warnings)


class Failures(Command):
    def test_unreadable_input(self):
        os.mkfifo(self.path("pipe"))
        os.mkdir(self.path("folder"))
        self.file(random.Random(1).randbytes(5000), "random")
        for name, content in (("empty", b""), ("boast", binary([], count=0xFFFFFFFF).ljust(100, b"\0")),
                              ("hollow", b"solid nothing\nendsolid nothing\n")):
            self.file(content, name)
        for name, reason in (("pipe", "Not a regular file"), ("folder", "Is a directory"),
                             ("empty", ""), ("random", ""), ("boast", ""), ("hollow", "no facet"),
                             ("missing", "No such file"), ("empty/x", "Not a directory")):
            with self.subTest(name):
                self.assert_fails(3, "%s: %s" % (self.path(name), reason),
                                  "report", self.path(name), "--vtk", self.path("out.vtk"))
                self.assertFalse(os.path.exists(self.path("out.vtk")))

    def test_wrong_usage(self):
        file = self.file(binary(cube()))
        for culprit, *arguments in (
                ("subcommand",), ("FILE", "report"), ("--no-such", "report", file, "--no-such"),
                ("other.stl", "report", file, "other.stl"), ("--vtk", "report", file, "--vtk"),
                ("empty", "report", ""), ("empty", "report", file, "--vtk", ""),
                *(("tolerance", "report", file, "--tolerance", t)
                  for t in ("-1", "nan", "inf", "1e999", "x", "")),
                ("replace the STL file", "report", file, "--vtk", file)):
            with self.subTest(arguments):
                self.assert_fails(2, culprit, *arguments)
        with open(self.path("report.txt"), "w") as results:
            self.assert_fails(2, "replace the report", "report", file, "--vtk", results.name, stdout=results)

    def test_stdout_that_fails(self):
        file = self.file(binary(cube()))
        for arguments in (["report", file], ["report", "--json", file], ["--help"]):
            with self.subTest(arguments), open("/dev/full", "wb") as full:
                self.assert_fails(4, "standard output: No space left", *arguments, stdout=full)
        reader, writer = os.pipe()
        os.close(reader)
        self.assert_fails(4, "standard output: Broken pipe", "report", file, stdout=writer)
        os.close(writer)

    def test_vtk_file_that_cannot_be_written_leaves_the_old_one(self):
        file, old = self.file(binary(cube())), self.file(b"old", "old.vtk")
        os.mkdir(self.path("folder"))
        small = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
        before = sorted(os.listdir(self.folder))
        for target, reason, options in (
                (old, errno.EFBIG, {"preexec_fn": small}),
                (self.path("no/such.vtk"), errno.ENOENT, {}),
                (self.path("folder"), errno.EISDIR, {}), ("/dev/full", errno.ENOSPC, {})):
            with self.subTest(target):
                run = self.run_zelvo("report", file, "--vtk", target, **options)
                self.assertEqual((run.returncode, run.stderr.decode().strip()),
                                 (4, "zelvo: %s: %s" % (target, os.strerror(reason))))
                self.assertIn(b"subdomains", run.stdout)
                self.assertEqual(sorted(os.listdir(self.folder)), before)
                self.assertEqual(self.text("old.vtk"), "old")


class Vtk(Command):
    def write(self, target):
        run = self.run_zelvo("report", self.file(binary(cube())), "--vtk", target, umask=0o027)
        self.assertEqual((run.returncode, run.stderr), (0, b""))

    def test_new_and_replaced_files(self):
        os.chmod(self.file(b"old", "old.vtk"), 0o604)
        os.symlink("old.vtk", self.path("link.vtk"))
        os.symlink("later.vtk", self.path("dangling.vtk"))
        for target, file, mode in (("new.vtk", "new.vtk", 0o640), ("link.vtk", "old.vtk", 0o604),
                                   ("dangling.vtk", "later.vtk", 0o640)):
            self.write(self.path(target))
            self.assertEqual(os.lstat(self.path(file)).st_mode, stat.S_IFREG | mode)
            self.assertLessEqual({"POINTS 8 double", "CELLS 12 48", "CELL_TYPES 12"},
                                 set(self.text(file).split("\n")))
        self.assertEqual(len(os.listdir(self.folder)), 6)

    def test_devices_and_pipes_are_written_directly(self):
        self.write("/dev/null")
        self.assertFalse(os.path.isfile("/dev/null"))
        pipe = self.path("pipe")
        os.mkfifo(pipe)
        with subprocess.Popen(["cat", pipe], stdout=subprocess.PIPE) as reader:
            self.write(pipe)
            self.assertIn(b"CELL_TYPES 12", reader.stdout.read())


class Surfaces(Command):
    def test_machine_part_has_the_defects_it_names(self):
        file = self.path("part.stl")
        subprocess.run([MACHINE_PART, file], check=True, stdout=subprocess.DEVNULL)
        report = self.assert_reports({"removed_elements": 1, "free_edges": 3, "non_manifold_edges": 3,
                                      "subdomains": 1, "degenerate_elements": 0}, file)
        # A surface of genus 7 (bore and six holes): F = 2 (V - 2 + 2 * 7). One facet is missing, one
        # there twice, so the split vertices are welded when the equation holds as it stands.
        self.assertEqual(report["elements"], 2 * (report["nodes"] + 12))

        # Of the three facets at an edge of the duplicated one, two are each other's neighbours.
        run = subprocess.run([QUICK_START, file, self.path("part.vtk")], check=True, stdout=subprocess.PIPE)
        self.assertEqual(run.stdout.decode(), "%d triangles, 6 sides without neighbor, mean shape quality "
                         "%.3f\n" % (report["elements"], report["shape_quality"]["mean"]))

    @unittest.skipUnless(MESHES, "KVX_ZELVO_MESHES is not set: no real meshes")
    def test_real_meshes(self):
        keys = ("facets", "nodes", "elements", "free_edges", "non_manifold_edges", "unread_bytes")
        for name, expected, *options in REAL_MESHES:
            with self.subTest(name):
                warnings = ["announced: "] * (name == "truncated-binary") + ["not understood"] * (expected[5] > 0)
                report = self.assert_reports(dict(zip(keys, expected)), *options,
                                             os.path.join(MESHES, name + ".stl"), warnings=warnings)
                self.assertEqual(report["format"], "stl-" + name.rsplit("-")[-1])

    @unittest.skipIf("SANITIZED" in os.environ, "sanitizers take memory of their own")
    def test_two_million_facets_in_one_gibibyte(self):
        rings, file = 708, self.path("sphere.stl")
        # Made by a process of its own: what a parent holds counts towards the peak of its children.
        subprocess.run([sys.executable, stl_files.__file__, file, str(rings)], check=True)
        self.assert_reports({"facets": 4 * rings * (rings - 1), "elements": 4 * rings * (rings - 1),
                             "nodes": 2 * rings * (rings - 1) + 2, "subdomains": 1,
                             "free_edges": 0}, file)
        kibibytes = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
        self.assertLess(kibibytes, 1 << 20)


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
