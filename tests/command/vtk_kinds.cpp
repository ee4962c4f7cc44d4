// Writes one element of every kind that the VTK writer knows, all on the same 27 nodes.
#include <algorithm>
#include <numeric>
#include <vector>

#include <kvx/zelvo/zelvo.h>

int main(int argc, char** argv) {
    using namespace kvx;
    if (argc != 2) return 2;
    dense2D<double> pos(3, 27);
    for (unsigned int j = 0; j < 27; ++j) {
        pos(0, j) = j % 3;
        pos(1, j) = j / 3 % 3;
        pos(2, j) = j / 9;
    }
    std::vector<dense2D<unsigned int>> elements;
    std::vector<int> kinds;
    for (int kind = ET_BAR2; kind <= ET_HEXA27; ++kind) {
        const unsigned int nodes = node_count(element_type{kind});
        if (nodes == 0) continue;
        dense2D<unsigned int>& one = elements.emplace_back(nodes, 1);
        std::iota(one.data(), one.data() + nodes, 0u);
        kinds.push_back(kind);
    }
    // A triangle and a quadrangle in one matrix.
    dense2D<unsigned int>& mixed = elements.emplace_back(4, 2, no_node);
    std::iota(mixed.data(), mixed.data() + 3, 0u);
    std::iota(mixed.data() + 4, mixed.data() + 8, 0u);
    kinds.push_back(ET_FACE_MIX);
    return zelvo::vtk_output(argv[1], pos, elements.data(), elements.data() + elements.size(),
                             dense1D<int>::wrap(kinds.data(), kinds.size()));
}
