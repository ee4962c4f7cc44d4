// Writes one element of every kind that the VTK writer knows, all on the same 27 nodes.
#include <vector>

#include <kvx/zelvo/zelvo.h>

int main(int, char** argv) {
    using namespace kvx;
    dense2D<double> pos(3, 27);
    dense2D<unsigned int> nodes(27, 1);
    for (unsigned int j = 0; j < 27; ++j)
        pos(0, j) = nodes(j, 0) = j;
    std::vector<dense2D<unsigned int>> elements;
    std::vector<int> kinds;
    for (int kind = ET_BAR2; kind <= ET_HEXA27; ++kind) {
        if (kind == ET_FACE_MIX || kind == ET_SOLID_MIX) continue;
        elements.push_back(nodes.sub_matrix(0, 0, node_count(element_type{kind}), 1));
        kinds.push_back(kind);
    }
    return zelvo::vtk_output(argv[1], pos, elements.data(), elements.data() + elements.size(),
                             dense1D<int>::wrap(kinds.data(), kinds.size()));
}
