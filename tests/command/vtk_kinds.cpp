// Writes one element of every kind that the VTK writer knows, all on the same 27 nodes.
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
        if (kind == ET_FACE_MIX || kind == ET_SOLID_MIX) continue;
        elements.emplace_back(node_count(element_type{kind}), 1);
        std::iota(elements.back().data(), elements.back().data() + elements.back().rows(), 0u);
        kinds.push_back(kind);
    }
    return zelvo::vtk_output(argv[1], pos, elements.data(), elements.data() + elements.size(),
                             dense1D<int>::wrap(kinds.data(), kinds.size()));
}
