#include <array>
#include <numeric>
#include <string>

#include <kvx/zelvo/zelvo.h>

/// Writes a small mesh of every kind with each writer whose format is read: fuzz_seeds fuzz/corpus
int main(int, char** argv) {
    using namespace kvx;
    using namespace kvx::zelvo;
    const std::string corpus = std::string(argv[1]) + "/";
    constexpr std::array kinds = {ET_NODE1,    ET_BAR2,   ET_TRIA3,  ET_QUAD4,
                                  ET_TRIA6,    ET_QUAD8,  ET_TETRA4, ET_TETRA10,
                                  ET_PYRAMID5, ET_PENTA6, ET_HEXA8,  ET_HEXA20};
    constexpr unsigned int nodes = 20;

    dense2D<double> pos(3, nodes);
    for (unsigned int j = 0; j < nodes; ++j)
        for (unsigned int i = 0; i < 3; ++i)
            pos(i, j) = ((j >> i & 1) != 0 ? 1.0 : -0.5) * (1.0 + j / 8u);
    dense2D<unsigned int> connectM(nodes, kinds.size(), no_node);
    dense1D<unsigned int> offsets(kinds.size() + 1), props(kinds.size());
    dense1D<int> FEs(kinds.size());
    for (unsigned int g = 0; g < kinds.size(); ++g) {
        std::iota(&connectM(0, g), &connectM(0, g) + node_count(kinds[g]), 0u);
        FEs[g] = kinds[g];
        offsets[g + 1] = g + 1;
        props[g] = g % 3;
    }
    dense2D<unsigned int> surface;
    int failed = get_element_boundaries(connectM.sub_matrix(0, 6, 4, 1), ET_TETRA4, surface);
    const auto name = [&](const char* file) { return corpus + file; };
    failed |= STL_output(name("stl_ascii/written").c_str(), pos, surface, true);
    failed |= STL_output(name("stl_binary/written").c_str(), pos, surface, false);
    failed |= NASTRAN_output(name("nastran/written").c_str(), pos, connectM, offsets, FEs, props);
    failed |= FEMAP_output(name("femap/written").c_str(), pos, connectM, offsets, FEs, props);
    failed |= WavefrontOBJ_output(name("wavefront_obj/written").c_str(), pos, pos,
                                  dense2D<double>(2, nodes, 0.5), surface, {});
    return failed != 0;
}
