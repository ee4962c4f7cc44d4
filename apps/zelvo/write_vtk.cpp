#include "output.h"

#include <cerrno>

#include <kvx/zelvo/vtk.h>

#include "atomic_file.h"

int write_vtk(const std::string& file, const surface& mesh) {
    using namespace kvx;
    dense1D<unsigned int> cells, cell_types;
    unsigned int cell_count = 0;
    if (zelvo::vtk_convert(mesh.triangles, ET_TRIA3, cell_count, cells, cell_types) != 0)
        return ENOMEM; // a triangle mesh that was read fails for nothing else

    atomic_file target(file);
    if (!target.stream()) return target.error();
    errno = 0;
    if (zelvo::vtk_output(target.stream(), mesh.pos, cell_count, cells, cell_types) != 0)
        return ENOMEM;
    return target.commit() ? 0 : target.error();
}
