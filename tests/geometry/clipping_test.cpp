#include <cmath>

#include "meshes.h"

namespace kvx::zelvo::tests {

using vec3 = vector_fixed<double, 3>;

// Nodes 0 to 4 are at the heights 0, 1, 2, 0.5 and -1 above a slanted plane and above a line.
TEST(clip, appends_the_elements_wholly_above_the_plane) {
    const auto space = points({{9, 2, 3}, {1, 5, 2}, {0, 2, 5}, {1, 2, 4}, {1, 1, 3}});
    const auto plane = points({{5, 7}, {6, 0}, {7, 9}, {5.5, 7}, {4, 0}});
    const std::vector<std::vector<unsigned int>> elements = {
        {1, 2, 3, none}, {1, 2, 0, none}, {4, 1, 2, 3}, {none, 4, 4, 4}, {1, 2, 3, 4}};
    for (const auto& pos : {strided(space, 9.0), plane}) {
        auto kept = strided(columns(elements), 4u);
        const auto N = pos.rows() == 2 ? vec3(1.0, 0.0, HUGE_VAL) : vec3(0.0, 3.0, 4.0);
        EXPECT_EQ(clip(pos, kept, {5.0, 2.0, 3.0}, N, kept), 0) << "appended to what is clipped";
        auto all = elements;
        all.insert(all.end(), {elements[0], elements[3]});
        EXPECT_EQ(list(kept), all);
    }
}

TEST(clip, changes_nothing_when_it_refuses) {
    const auto pos = points({{1, 1, 1}, {2, 2, 2}});
    const auto conn = columns({{0, 1, none, 0}});
    auto kept = columns({{7, 7, 7}});
    EXPECT_EQ(clip(pos, conn, vec3(0.0), vec3(0.0, 0.0, std::nan("")), kept), -4);
    EXPECT_EQ(clip(pos, conn, vec3(0.0), vec3(0.0, 0.0, 1.0), kept), -5);
    EXPECT_EQ(list(kept), list(columns({{7, 7, 7}})));
}

} // namespace kvx::zelvo::tests
