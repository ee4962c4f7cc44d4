"""Opens with VTK what the library writes. Usage: vtk_opens_test.py VTK_KINDS (the program's path)"""

import collections
import os
import subprocess
import sys
import tempfile

try:
    from vtkmodules.vtkIOLegacy import vtkUnstructuredGridReader
except ImportError:
    print("python3-vtk9 is not installed: nothing opens the VTK file")
    sys.exit(77)

POLY_VERTEX, LINE, TRIANGLE, QUAD, TETRA, HEXA, WEDGE, PYRAMID = 2, 3, 5, 9, 10, 12, 13, 14
# By kinds: two of bars, triangles, tetrahedra, pyramids and wedges, three of quadrangles and
# hexahedra, a mixed pair; what is beyond the corners is a poly-vertex.
EXPECTED = {LINE: 2, TRIANGLE: 3, QUAD: 4, TETRA: 2, HEXA: 3, WEDGE: 2, PYRAMID: 2, POLY_VERTEX: 9}

with tempfile.TemporaryDirectory() as folder:
    file = os.path.join(folder, "kinds.vtk")
    subprocess.run([sys.argv[1], file], check=True)
    reader = vtkUnstructuredGridReader()
    reader.SetFileName(file)
    reader.Update()
    grid = reader.GetOutput()

cells = [grid.GetCell(i) for i in range(grid.GetNumberOfCells())]
types = collections.Counter(cell.GetCellType() for cell in cells)
assert grid.GetNumberOfPoints() == 27, grid.GetNumberOfPoints()
assert grid.GetPoint(14) == (2, 1, 1), grid.GetPoint(14)
assert types == EXPECTED, types
tetra = next(cell for cell in cells if cell.GetCellType() == TETRA)
assert [tetra.GetPointId(i) for i in range(4)] == [0, 1, 3, 2], "order of a tetrahedron's nodes"
