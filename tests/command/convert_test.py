"""Tests of `zelvo convert`, `quality` and `metric`. Usage: convert_test.py ZELVO [unittest arguments]"""

import collections
import ctypes
import json
import math
import os
import resource
import signal
import subprocess
import sys
import unittest
from pathlib import Path

from zelvo_command import CORNERS, MESHES, ZELVO, Command, binary, cube

try:
    import meshio
    from vtkmodules.vtkIOGeometry import vtkSTLReader
    from vtkmodules.vtkIOLegacy import vtkUnstructuredGridReader
except ImportError:
    meshio = None


# A FEMAP file. elements: topology, node numbers from 1; the third has property 2
def neutral(nodes, elements):
    text = "   -1\n   403\n%s   -1\n   -1\n   404\n" % "".join(
        "%d,0,0,1,46,0,0,0,0,0,0,%r,%r,%r,\n" % (i + 1, *node) for i, node in enumerate(nodes))
    for k, (topology, numbers) in enumerate(elements):
        slots = "%d," * 10 + "\n" + "%d," * 10 + "\n"
        text += "%d,124,%d,17,%d,1,0,0,\n" % (k + 1, 1 + (k == 2), topology)
        text += slots % (*numbers, *[0] * (20 - len(numbers))) + "0.,0.,0.,\n" * 3 + "0,0,0,0,\n"
    return (text + "   -1\n").encode()


# Kinds as they are named, and read by independent readers; topologies and numbers of nodes of a neutral file.
KINDS = [("point", "points", 9, 1), ("bar2", "bars", 0, 2), ("triangle3", "triangles", 2, 3),
         ("quadrangle4", "quadrangles", 4, 4), ("triangle6", "triangles of 6 nodes", 3, 6),
         ("quadrangle8", "quadrangles of 8 nodes", 5, 8), ("tetrahedron4", "tetrahedra", 6, 4),
         ("tetrahedron10", "tetrahedra of 10 nodes", 10, 10), ("pyramid5", "pyramids", 18, 5), ("wedge6", "wedges", 7, 6),
         ("hexahedron8", "hexahedra", 8, 8), ("hexahedron20", "hexahedra of 20 nodes", 12, 20)]
EVERY_KIND = neutral([(1 / 3, 0, 0)] + [(k % 3, k // 3 % 3, k * k % 7) for k in range(1, 20)],
                     [(topology, range(1, count + 1)) for _, _, topology, count in KINDS])
LINE = neutral([(0, 0, 0), (1, 0, 0), (3, 0, 0)], [(0, [1, 2]), (0, [2, 3])])
READ_AS = {2: "rest", 3: "bar2", 5: "triangle3", 9: "quadrangle4", 10: "tetrahedron4", 12: "hexahedron8", 13: "wedge6",
           14: "pyramid5", "line": "bar2", "triangle": "triangle3", "quad": "quadrangle4", "tetra": "tetrahedron4",
           "hexahedron": "hexahedron8", 6: "triangle3", 8: "quadrangle4"}
FATES = {"o": "that the format cannot hold, left out", "c": "written with their corners only",
         "s": "split into two triangles along the shorter diagonal", "b": "written as hexahedra with repeated nodes",
         "t": "written twice, in two orders of their nodes", "p": "written as two cells, corners and a poly-vertex",
         "4": "whose card holds 0 for the fourth node", "j": "written run together (1//2//3//), which is not read back"}
# What becomes of each kind, in the order above ("w": nothing), and how much 1/3 changes.
FORMATS = {"stl-ascii": ("oowsccoooooo", "3.3e-08"), "stl-binary": ("oowsccoooooo", "9.9e-09"),
           "vtk": ("owwwppwpwwwp", "3.3e-07"), "medit": ("owwwccwcbbwc", "3.3e-08"),
           "nastran": ("owwwww4coowc", "3.3e-07"), "obj": ("oojjccoooooo", "3.3e-10"),
           "ensight": ("owwwtwwwowww", "3.3e-07"), "femap": ("wwwwwwwwwwww", None)}


# Counts of kinds by what becomes of them, and as they are read back.
def converted(form, kinds):
    fates, back, corners = collections.defaultdict(collections.Counter), collections.Counter(), {4: 2, 5: 3, 7: 6, 11: 10}
    for k, count in kinds.items():
        while (fate := FORMATS[form][0][k]) == "c":
            fates[fate][KINDS[k][1]] += count
            k = corners[k]
        fates[fate][KINDS[k][1]] += count
        place = {"s": 2, "b": 10}.get(fate, corners[k] if fate == "p" else k)
        back[KINDS[place][0]] += 0 if fate == "o" else 2 * count if fate == "s" else count
        back["rest"] += count * (fate == "p")
    return fates, +back


# Number of points (none in STL) and types of cells, by a reader that is not ours.
def cells(form, name):
    if form == "medit":
        mesh = meshio.medit.read(name)
        return len(mesh.points), [block.type for block in mesh.cells for _ in block.data]
    reader = vtkUnstructuredGridReader() if form == "vtk" else vtkSTLReader()
    reader.SetFileName(name)
    getattr(reader, "MergingOff", int)()  # else facets whose corners coincide are left out
    reader.Update()
    grid = reader.GetOutput()
    return grid.GetNumberOfPoints() if form == "vtk" else None, list(map(grid.GetCellType, range(grid.GetNumberOfCells())))


class Commands(Command):
    def assert_holds(self, form, nodes, kinds):
        if form == "obj":
            points, types = None, [line.count("/") for line in Path("out").read_text().split("\n") if line[:2] == " f"]
        elif form in ("nastran", "femap"):
            report = json.loads(self.run_zelvo("quality", "--json", "out").stdout)
            points = report["nodes"] if form == "femap" else None
            types = [kind["kind"] for kind in report["kinds"] for _ in range(kind["elements"])]
        elif meshio and form != "ensight":
            points, types = cells(form, "out")
        else:
            return
        types = collections.Counter(READ_AS.get(type, type) for type in types)
        self.assertEqual((nodes if points is None else points, types), (nodes, kinds))

    def test_every_kind_in_every_format(self):
        self.file(EVERY_KIND, "all.neu")
        for form, (_, change) in FORMATS.items():
            with self.subTest(form):
                fates, back = converted(form, dict.fromkeys(range(len(KINDS)), 1))
                said = ["%s %s: %d" % (kind, FATES[fate], n) for fate in FATES for kind, n in fates[fate].items()]
                said += ["nodes that no triangle uses, left out: 16"] * (form[0] == "s")
                said += ["elements whose property number is not written: 1"] * (form not in ("nastran", "femap"))
                said += ["grid points without a coordinate system, for which other programs take x: 20"] * (form == "nastran")
                said += ["nodes whose coordinates the format rounds (by up to %s): 1" % change] * bool(change)
                run = self.run_zelvo("convert", "all.neu", "out", "--to", form)
                found = [line[len("zelvo: out: warning: "):] for line in run.stderr.decode().splitlines()]
                self.assertEqual((run.returncode, run.stdout, sorted(found)), (0, b"", sorted(said)))
                self.assert_holds(form, 20, back)

    @unittest.skipUnless(MESHES, "KVX_ZELVO_MESHES is not set: no real meshes")
    def test_real_meshes(self):
        for name, form in ((name, form) for name in sorted(os.listdir(MESHES)) if name != "README.md" for form in FORMATS):
            with self.subTest(name, form=form):
                nodes, kinds, *odd = REAL_MESHES.get(name, (None, {2: 1}))
                back = converted(form, kinds)[1]
                run = self.run_zelvo("convert", os.path.join(MESHES, name), "out", "--to", form)
                self.assertEqual(run.returncode, 0 if back else 3, run.stderr)
                for what in odd:
                    self.assertRegex(run.stderr.decode(), r"%s: .*%s" % (name, what))
                if nodes and back:
                    self.assert_holds(form, nodes, back)

    def test_decks_with_gaps_and_faults(self):
        self.file(b"BEGIN BULK\nGRID 2 0. 1. 0.\nGRID 3 1. 1. 0.\nGRID 5 2. 2. 0.\nGRID,9,0,2.,3.,6.\n"
                  b"CTRIA3,1,1,2,3,5\nCTRIA3,2,1,2,3,77\nCTRIA3,3,1,2\nENDDATA\n", "a.bdf")
        for nodes, said, *options in (
                (4, r"misread .*: 1\n.* missing.*: 1\n.* does not have.*: 1\n\Z"), (3, "zelvo", "--nodes", "used"),
                (10, "zelvo", "--nodes", "all"), (4, r"take x: 4\n", "--to", "nastran")):
            self.assertRegex(self.run_zelvo("convert", "a.bdf", "out.neu", *options).stderr.decode(), said)
            self.assert_reports({"nodes": nodes, "elements": 1}, "out.neu", subcommand="quality")

    def test_failures(self):
        self.file(b"old", "old.vtk")
        for code, culprit, *arguments in (
                (2, "tells no format", "convert", "cube.stl", "out.xyz"),
                (2, "--from: one of", "convert", "--from", "vtk", "cube.stl", "o.vtk"), (3, "not a mesh", "quality", "old.vtk"),
                (3, "no mesh", "quality", "--from", "nastran", "cube.stl"),
                (2, "--min: larger", "metric", "cube.stl", "o", "--min", "3", "--max", "2")):
            self.assert_fails(code, culprit, *arguments)

    def test_quality_of_inverted_and_quadratic_elements(self):
        brick = [1, 2, 4, 3, 5, 6, 8, 7]
        self.file(neutral(CORNERS, [(8, brick), (8, brick[4:] + brick[:4]), (5, brick)]), "a.neu")
        report = self.assert_reports({"format": "femap", "nodes": 8, "elements": 3, "edges": 12,
                                      "edge_length": {"min": 1, "mean": 1, "max": 1}}, "a.neu", subcommand="quality")
        found = [(kind["kind"], kind["elements"], kind["inverted"], kind["shape_quality"]["min"],
                  kind["shape_quality"]["bins"][9]["count"]) for kind in report["kinds"]]
        self.assertEqual(found, [("quadrangle8", 1, 0, 1, 1), ("hexahedron8", 2, 1, -1, 1)])

    def test_fields(self):
        self.file(LINE, "line.neu")
        e = repr(math.e - 1)  # sizes grow by 1 per unit of length
        sizes, metrics = lambda h: [h], lambda h: [h ** -2, 0, h ** -2, 0, 0, h ** -2]
        for start, limits, expected, said, report in (
                (None, [], (1, 1.5, 2), [], {"field": None, "shock_before": round(math.exp(0.5) - 1, 9)}),
                ((1, 10, 10), ["--gradation", e], (1, 2, 4), [], {"shock_after": round(math.e - 1, 9)}),
                ((1, 10, 0.25), ["--min", "0.5", "--max", "4"], (1, 4, 0.5), [], {"size_after": {
                    "min": 0.5, "mean": round(5.5 / 3, 9), "max": 4}}),
                ((1, math.inf, 9), ["--gradation", e], (), ["valid .*: 1"], {"invalid": 1, "replaced": 0}),
                ((1, math.inf, 9), ["--gradation", e, "--fallback", "8"], (1, 2, 4), [], {"invalid": 1, "replaced": 1})):
            for dimension, count, entry in ((3, 1, sizes), (2, 3, metrics), (3, 6, metrics))[:3 if start else 1]:
                with self.subTest(start=start, count=count, limits=limits):
                    numbers = [dimension, count, 3, 2] + sum((entry(h)[:count] for h in start or ()), [])
                    self.file(" ".join(map(repr, numbers)).encode(), "in.sol")
                    field = ["--field", "in.sol"] if start else []
                    self.assert_reports(report, "line.neu", "out.sol", *field, *limits, warnings=said, subcommand="metric")
                    found = [round(float(word), 6) for word in Path("out.sol").read_text().split()]
                    wanted = [dimension, count, 3, 2] + sum((entry(h)[:count] for h in expected), [])
                    self.assertEqual(found[:len(wanted)], [round(x, 6) for x in wanted])

        for content, reason in (("3 1 3", "no solution"), ("3 1 3 1 1 1 1", "at the nodes"), ("3 1 2 2 1 1", "has 2 nodes"),
                                ("3 1 99999999999999 2 1", "announces"), ("3 1 3 2 1 1 x", "no number"),
                                ("3 3 3 2" + 9 * " 1", "neither sizes")):
            self.assert_fails(3, reason, "metric", "line.neu", "out.sol", "--field", self.file(content.encode(), "in.sol"))


# Commands that write to the file that None stands for.
WRITERS = [["convert", "cube.stl", None, "--to", form] for form in FORMATS]
WRITERS += [["report", "cube.stl", "--vtk", None], ["metric", "cube.stl", None]]


def limit(what, most):
    return lambda: resource.setrlimit(what, (most, most))


def without_privilege():  # root then needs permissions too
    ctypes.CDLL(None).prctl(24, 1, 0, 0, 0)  # PR_CAPBSET_DROP, CAP_DAC_OVERRIDE


class WriteFaults(Command):
    def test_a_file_that_cannot_be_written_stays_as_it_was(self):
        self.file(b"good", "good")
        os.chmod(".", 0o555)
        self.addCleanup(os.chmod, os.getcwd(), 0o755)
        for fault, reason, target in (
                (limit(resource.RLIMIT_FSIZE, 100), "File too large", "good"), (None, "No space left", "/dev/full"),
                (limit(resource.RLIMIT_NOFILE, 4), "Too many open files", "good"), (None, "No such file", "no/file"),
                (None, "Not a directory", "cube.stl/x"), (None, "Is a directory", "."),
                (without_privilege, "Permission denied", "new"), (without_privilege, "Permission denied", "good"),
                (None, "would replace", "cube.stl")):
            if reason == "Too many open files" and "SANITIZED" in os.environ:
                continue  # sanitizers open files of their own
            for writer in WRITERS:
                with self.subTest(reason, writer=writer):
                    run = self.run_zelvo(*(target if word is None else word for word in writer), preexec_fn=fault)
                    self.assertRegex(run.stderr.decode(), r"\Azelvo: %s: .*%s[^\n]*\n\Z" % (target, reason))
                    self.assertEqual(run.returncode, 2 if target == "cube.stl" else 4)
                    self.assertEqual(b"nodes" in run.stdout, run.returncode == 4 and writer[0] != "convert")
                    self.assertEqual(sorted(os.listdir()), ["cube.stl", "good"])
                    self.assertEqual((Path("good").read_bytes(), Path("cube.stl").read_bytes()), (b"good", binary(cube())))

    def test_results_that_cannot_be_printed(self):
        reader, broken = os.pipe()
        os.close(reader)
        full = os.open("/dev/full", os.O_WRONLY)
        for fault, reason, stdout in ((None, "No space left", full), (None, "Broken pipe", broken),
                                      (lambda: os.close(1), "Bad file descriptor", None)):
            for arguments in (["report", "cube.stl"], ["quality", "cube.stl", "--json"], ["metric", "cube.stl", "o"],
                              ["report", "cube.stl", "--vtk", "o"], ["--help"], ["--version"]):
                self.assert_fails(4, "standard output: " + reason, *arguments, stdout=stdout, preexec_fn=fault)

    def test_signals_leave_a_whole_file_and_nothing_beside_it(self):
        self.file(binary([f for k in range(3000) for f in cube(3.0 * k)]), "long.stl")
        self.assertEqual(self.run_zelvo("convert", "long.stl", "o", "--to", "femap").returncode, 0)
        whole = Path("o").read_bytes()
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            self.file(b"old", "o")
            with subprocess.Popen([ZELVO, "convert", "long.stl", "o", "--to", "femap"]) as run:
                while len(os.listdir()) == 3 and run.poll() is None:
                    pass
                run.send_signal(number)
            self.assertIn((run.returncode, Path("o").read_bytes()),
                          ((0, whole), (-number, whole), (-number, b"old")))  # 0 where it came too late
            self.assertEqual(sorted(os.listdir()), ["cube.stl", "long.stl", "o"])


# Nodes; triangles, quadrangles, bars, tetrahedra and hexahedra; what is said of the file. Others have triangles only.
# The numbers of grid points with a lost or misread coordinate are those of a reader by columns.
REAL_MESHES = {name: (nodes, {k: n for k, n in zip((2, 3, 1, 6, 10), counts) if n}, *odd) for name, nodes, counts, *odd in (
    ("quads-crlf.obj", 1440, (0, 1440), "normals, left out: 1440", "texture coordinates, left out: 3"),
    ("polygons-groups.obj", 644, (176, 496), "3 or 4 corners, .*: 6"),
    ("continuation-polygons-crlf.obj", 0, (), "left out: 13"), ("negative-indices.obj", 0, (), "left out: 6"),
    ("large-field-grid.bdf", 169, (0, 144), "lost or misread .*: 169"),
    ("bars-wedges.bdf", 22, (0, 0, 4), "CPENTA.*: 6", "lost or misread .*: 16"),
    ("tetra-quad-contact.bdf", 789, (0, 414, 0, 1137), "lost or misread .*: 1"),
    ("penta-hexa-tria-quad.bdf", 60, (2, 3, 0, 0, 12), "lost or misread .*: 34"),
    ("exponent-without-e.bdf", 3655, (6, 3534), "stand: 3655", "lost or misread .*: 3196"),
    ("quads-v7.neu", 1394, (0, 1016)), ("results-only-v82.neu", 0, (), "holds no mesh"))}

unittest.main(argv=sys.argv[:1] + sys.argv[2:])
