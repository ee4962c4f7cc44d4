// Writes a spur gear with hub, keyway and lightening holes as a binary STL file, with the defects
// that such files have in practice. Lengths are millimetres.
//
// Usage: machine_part OUT.stl
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

#include <kvx/zelvo/zelvo.h>

namespace {

using point = std::array<double, 3>;
using facet = std::array<point, 3>;
using loop = std::vector<point>; // closed, counter-clockwise seen from above

constexpr int teeth = 24, points_per_tooth = 8, holes = 6;
constexpr int points_per_turn = teeth * points_per_tooth;
constexpr int points_per_sector = points_per_turn / holes;
constexpr int points_per_spoke = 10;

constexpr double bore_radius = 10.0, keyway_width = 6.0, keyway_depth = 2.8;
constexpr double hub_radius = 17.0, hub_height = 12.0;
constexpr double rim_radius = 41.0, web_height = 6.0;
constexpr double hole_radius = 8.0;
constexpr double root_radius = 45.5, tip_radius = 50.0;

/// Points of one turn are numbered, so that neighbouring patches get equal coordinates.
point on_circle(double radius, double number, double z) {
    const double angle = 2.0 * std::numbers::pi * number / points_per_turn;
    return {radius * std::cos(angle), radius * std::sin(angle), z};
}

loop circle(double radius, double z) {
    loop points;
    for (int i = 0; i < points_per_turn; ++i)
        points.push_back(on_circle(radius, i, z));
    return points;
}

/// The bore; its points that lie in the keyway are moved out to the keyway's floor, and the last
/// one on each side to the foot of the wall.
loop bore(double z) {
    loop points = circle(bore_radius, z);
    for (point& p : points) {
        if (p[0] > 0.0 && std::abs(p[1]) < keyway_width / 2) p[0] = bore_radius + keyway_depth;
    }
    return points;
}

/// Teeth with straight flanks: two points on the root, two on the tip, two along each flank.
loop tooth_contour(double z) {
    constexpr std::array<double, points_per_tooth> rise = {0, 0, 0.35, 0.75, 1, 1, 0.75, 0.35};
    loop points;
    for (int i = 0; i < points_per_turn; ++i) {
        const double height = rise[static_cast<std::size_t>(i % points_per_tooth)];
        points.push_back(on_circle(root_radius + height * (tip_radius - root_radius), i, z));
    }
    return points;
}

/// The edge of one sector of the web, between hub and rim.
loop sector_contour(int sector, double z) {
    const int first = sector * points_per_sector;
    const int last = (first + points_per_sector) % points_per_turn;
    const auto spoke_radius = [](int i) {
        return hub_radius + (rim_radius - hub_radius) * i / points_per_spoke;
    };
    loop points;
    for (int i = 0; i < points_per_sector; ++i)
        points.push_back(on_circle(rim_radius, first + i, z));
    for (int i = points_per_spoke; i > 0; --i)
        points.push_back(on_circle(spoke_radius(i), last, z));
    for (int i = points_per_sector; i > 0; --i)
        points.push_back(on_circle(hub_radius, (first + i) % points_per_turn, z));
    for (int i = 0; i < points_per_spoke; ++i)
        points.push_back(on_circle(spoke_radius(i), first, z));
    return points;
}

/// The hole in a sector, one point towards each point of the sector's edge.
loop hole(int sector, double z) {
    const point centre =
        on_circle((hub_radius + rim_radius) / 2, (sector + 0.5) * points_per_sector, z);
    loop points = sector_contour(sector, z);
    for (point& p : points) {
        const double x = p[0] - centre[0], y = p[1] - centre[1];
        const double scale = hole_radius / std::hypot(x, y);
        p = {centre[0] + scale * x, centre[1] + scale * y, z};
    }
    return points;
}

/// Joins two loops of equally many points by `layers` rings of facets. They look outwards when
/// `to` is above `from`, upwards when it is inside.
void join(std::vector<facet>& facets, const loop& from, const loop& to, int layers) {
    const auto at = [&](std::size_t i, int layer) {
        const double t = static_cast<double>(layer) / layers;
        const point &a = from[i % from.size()], &b = to[i % to.size()];
        return point{(1 - t) * a[0] + t * b[0], (1 - t) * a[1] + t * b[1],
                     (1 - t) * a[2] + t * b[2]};
    };
    for (int layer = 0; layer < layers; ++layer) {
        for (std::size_t i = 0; i < from.size(); ++i) {
            const point a = at(i, layer), b = at(i + 1, layer);
            const point c = at(i + 1, layer + 1), d = at(i, layer + 1);
            facets.push_back({a, b, c});
            facets.push_back({a, c, d});
        }
    }
}

/// The flawless part: a closed surface in one piece.
std::vector<facet> gear() {
    std::vector<facet> facets;
    join(facets, bore(hub_height), bore(-hub_height), 12);
    join(facets, tooth_contour(-web_height), tooth_contour(web_height), 6);
    for (const double side : {1.0, -1.0}) {
        const double hub = side * hub_height, web = side * web_height;
        // What looks up on the upper side is joined the other way round on the lower one.
        const auto face = [&](const loop& outer, const loop& inner, int layers) {
            side > 0 ? join(facets, outer, inner, layers) : join(facets, inner, outer, layers);
        };
        face(circle(hub_radius, hub), bore(hub), 4);
        face(circle(hub_radius, web), circle(hub_radius, hub), 4);
        face(tooth_contour(web), circle(rim_radius, web), 4);
        for (int i = 0; i < holes; ++i)
            face(sector_contour(i, web), hole(i, web), 4);
    }
    for (int i = 0; i < holes; ++i)
        join(facets, hole(i, web_height), hole(i, -web_height), 6);
    return facets;
}

/// What goes wrong between a modeller and a mesh, once each.
void add_defects(std::vector<facet>& facets) {
    const std::size_t n = facets.size();
    // Split vertices: in every fiftieth facet one corner lies a micrometre off its neighbours'.
    for (std::size_t i = 0; i < n; i += 50)
        facets[i][0][2] += 0.001;
    // A sliver: a facet of no area, two of its corners are one point.
    const facet& flattened = facets[n / 4];
    facets.push_back({flattened[0], flattened[1], flattened[1]});
    // A duplicated facet: three edges with three facets each.
    const facet repeated = facets[n / 2];
    facets.push_back(repeated);
    // A missing facet: a hole with three free edges.
    facets.erase(facets.begin() + static_cast<std::ptrdiff_t>(3 * n / 4));
}

/// Facets as the arrays that the library works on; every facet has nodes of its own.
void to_mesh(const std::vector<facet>& facets, kvx::dense2D<double>& pos,
             kvx::dense2D<unsigned int>& triangles) {
    pos = kvx::dense2D<double>(3, 3 * facets.size());
    triangles = kvx::dense2D<unsigned int>(3, facets.size());
    unsigned int node = 0;
    for (std::size_t j = 0; j < facets.size(); ++j) {
        for (unsigned corner = 0; corner < 3; ++corner, ++node) {
            triangles(corner, j) = node;
            for (unsigned i = 0; i < 3; ++i)
                pos(i, node) = facets[j][corner][i];
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: machine_part OUT.stl\n");
        return 2;
    }
    std::vector<facet> facets = gear();
    add_defects(facets);

    kvx::dense2D<double> pos;
    kvx::dense2D<unsigned int> triangles;
    to_mesh(facets, pos, triangles);
    if (kvx::zelvo::STL_output(argv[1], pos, triangles, false) != 0) {
        std::fprintf(stderr, "machine_part: %s cannot be written\n", argv[1]);
        return 4;
    }
    std::printf("%zu facets written to %s\n", facets.size(), argv[1]);
}
