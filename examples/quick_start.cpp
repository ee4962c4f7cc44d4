// Reads a binary STL file, measures it, moves it and writes it for a viewer.
#include <cstdio>
#include <kvx/zelvo/zelvo.h>

int main(int argc, char** argv) {
    using namespace kvx;
    dense2D<double> pos;                                    // 3 x nodes
    dense2D<unsigned int> triangles, neighbors, open_sides; // one column each
    if (argc != 3 || zelvo::STL_input(argv[1], pos, triangles, false) < 0) return 1;
    zelvo::get_neighbors(triangles, ET_TRIA3, true, neighbors);
    zelvo::get_mesh_boundaries(triangles, neighbors, ET_TRIA3, open_sides);
    misc::histogram qualities(0.0, 1.0, 10);
    zelvo::shape_qualities(pos, triangles, ET_TRIA3, qualities);
    std::printf("%lu triangles, %lu sides without neighbor, mean shape quality %.3f\n",
                triangles.cols(), open_sides.cols(), qualities.mean());
    zelvo::translate(pos, vector_fixed<double, 3>(0.0, 0.0, 100.0));
    return zelvo::vtk_output(argv[2], pos, triangles, ET_TRIA3) == 0 ? 0 : 1;
}
