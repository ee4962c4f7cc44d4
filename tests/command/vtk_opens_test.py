"""Opens with VTK what the library writes. Usage: vtk_opens_test.py VTK_KINDS (the program's path)"""

import collections
import subprocess
import sys
import tempfile

try:
    from vtkmodules.vtkIOLegacy import vtkUnstructuredGridReader
except ImportError:
    print("python3-vtk9 is not installed: nothing opens the VTK file")
    sys.exit(77)

with tempfile.NamedTemporaryFile(suffix=".vtk") as file:
    subprocess.run([sys.argv[1], file.name], check=True)
    reader = vtkUnstructuredGridReader()
    reader.SetFileName(file.name)
    reader.Update()
    grid = reader.GetOutput()

# By codes of cells: two kinds of bars, triangles, tetrahedra, pyramids and wedges, three of
# quadrangles and hexahedra; what is beyond the corners is a poly-vertex (2).
types = collections.Counter(grid.GetCellType(i) for i in range(grid.GetNumberOfCells()))
assert types == {3: 2, 5: 2, 9: 3, 10: 2, 12: 3, 13: 2, 14: 2, 2: 9}, types
assert grid.GetNumberOfPoints() == 27, grid.GetNumberOfPoints()
assert grid.GetPoint(14) == (14, 0, 0), grid.GetPoint(14)
