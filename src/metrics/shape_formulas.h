#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "foundation/reference_topology.h"

/// The shape measures, one function per shape on the coordinates of one element. Each takes corners
/// that bring_into_range accepted and returns a number in [-1, 1]; docs/shape-qualities.md derives
/// the formulas. Triangles, plane quadrangles and tetrahedra relate an area (volume) to lengths
/// (longest edge times surface); the other shapes carry the tetrahedron's measure over corner by
/// corner. Formulas choose between values rather than branch, and unroll their longer loops, so that
/// the compiler can put elements side by side in a register.
namespace kvx::zelvo::shape_formulas {

/// Coordinates of the corners of one element, axis by axis.
template <std::size_t Dim, std::size_t N>
using corners = std::array<std::array<double, N>, Dim>;

/// f(0), f(1), ... f(N - 1), the numbers as constants.
template <std::size_t N, class F>
constexpr void unrolled(F&& f) {
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        (f(std::integral_constant<std::size_t, I>()), ...);
    }
    (std::make_index_sequence<N>());
}

// ---- Vectors -----------------------------------------------------------------------------------

struct vec3 {
    double x, y, z;
};
inline vec3 operator+(const vec3& a, const vec3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline vec3 operator-(const vec3& a, const vec3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline double dot(const vec3& a, const vec3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline vec3 cross(const vec3& a, const vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double norm(const vec3& a) {
    return std::sqrt(dot(a, a));
}

template <std::size_t N>
vec3 at(const corners<3, N>& p, unsigned i) {
    return {p[0][i], p[1][i], p[2][i]};
}
template <std::size_t N>
vec3 between(const corners<3, N>& p, unsigned from, unsigned to) {
    return at(p, to) - at(p, from);
}

/// Third component of (P_b - P_a) x (P_d - P_c).
template <std::size_t N>
double plane_cross(const corners<2, N>& p, unsigned a, unsigned b, unsigned c, unsigned d) {
    return (p[0][b] - p[0][a]) * (p[1][d] - p[1][c]) - (p[1][b] - p[1][a]) * (p[0][d] - p[0][c]);
}

template <std::size_t Dim, std::size_t N>
double squared_distance(const corners<Dim, N>& p, unsigned i, unsigned j) {
    double sum = 0;
    for (unsigned axis = 0; axis < Dim; ++axis) {
        const double d = p[axis][j] - p[axis][i];
        sum += d * d;
    }
    return sum;
}

template <std::size_t Dim, std::size_t N>
double distance(const corners<Dim, N>& p, unsigned i, unsigned j) {
    return std::sqrt(squared_distance(p, i, j));
}

template <shape S, std::size_t N>
double longest_edge(const corners<3, N>& p) {
    constexpr reference_shape topology = topology_of(S);
    double longest = 0;
    unrolled<topology.edge_count>([&](auto e) {
        longest =
            std::max(longest, squared_distance(p, topology.edges[e].from, topology.edges[e].to));
    });
    return std::sqrt(longest);
}

// ---- Range -------------------------------------------------------------------------------------

/// Scales an element about its first corner by the power of two that makes its largest difference
/// lie in [1, 2). False when there is none: all corners coincide or a difference is not finite.
template <std::size_t Dim, std::size_t N>
bool scale_to_unit_size(corners<Dim, N>& p) {
    double largest = 0;
    for (auto& axis : p) {
        const double origin = axis[0];
        for (double& x : axis) {
            x -= origin;
            if (!std::isfinite(x)) return false;
            largest = std::max(largest, std::abs(x));
        }
    }
    if (!(largest > 0)) return false;
    const int exponent = std::ilogb(largest);
    for (auto& axis : p) {
        for (double& x : axis)
            x = std::ldexp(x, -exponent);
    }
    return true;
}

/// Whether fourth powers of lengths stay within the range of a double, which is so unless an element
/// is larger or smaller than the world.
template <std::size_t Dim, std::size_t N>
bool is_in_range(const corners<Dim, N>& p) {
    constexpr double smallest = 1e-60;
    constexpr double largest = 1e60;
    std::array<double, N> offsets{};
    for (const auto& axis : p) {
        for (unsigned i = 0; i < N; ++i)
            offsets[i] += std::abs(axis[i] - axis[0]);
    }
    // A sum and not the maximum: it carries along what is not a number.
    double extent = 0;
    for (const double offset : offsets)
        extent += offset;
    return (extent >= smallest) & (extent <= largest);
}

/// Makes sure of that; false when the element can only rate 0.
template <std::size_t Dim, std::size_t N>
bool bring_into_range(corners<Dim, N>& p) {
    return is_in_range(p) || scale_to_unit_size(p);
}

// ---- Triangle, plane quadrangle, tetrahedron ---------------------------------------------------

inline double in_bounds(double q) {
    return std::min(std::max(q, -1.0), 1.0);
}

/// 2 sqrt(3) twice_area / (perimeter * longest side).
template <std::size_t Dim>
double triangle_rating(const corners<Dim, 3>& p, double twice_area) {
    constexpr double two_sqrt_3 = 3.4641016151377544;
    const double l01 = distance(p, 0, 1);
    const double l02 = distance(p, 0, 2);
    const double l12 = distance(p, 1, 2);
    const double longest = std::max({l01, l02, l12});
    if (!(longest > 0)) return 0;
    return in_bounds(two_sqrt_3 * twice_area / ((l01 + l02 + l12) * longest));
}
/// Negative for clockwise corners.
inline double triangle_rating(const corners<2, 3>& p) {
    return triangle_rating(p, plane_cross(p, 0, 1, 0, 2));
}
/// Never negative: in space a triangle has no wrong side.
inline double triangle_rating(const corners<3, 3>& p) {
    return triangle_rating(p, norm(cross(between(p, 0, 1), between(p, 0, 2))));
}

constexpr double four_sqrt_2 = 5.6568542494923802;

/// The smallest corner product relative to longest length and perimeter, lowered by unequal
/// diagonals.
inline double quadrangle_rating(const corners<2, 4>& p) {
    double smallest_corner = std::numeric_limits<double>::max();
    double perimeter = 0;
    double longest_side = 0;
    unrolled<4>([&](auto i) {
        const unsigned next = (i + 1) % 4;
        smallest_corner = std::min(smallest_corner, plane_cross(p, (i + 3) % 4, i, i, next));
        const double side = distance(p, i, next);
        perimeter += side;
        longest_side = std::max(longest_side, side);
    });
    const auto [shorter, longer] = std::minmax({distance(p, 0, 2), distance(p, 1, 3)});
    if (!(longer > 0)) return 0;
    return in_bounds(std::sqrt(shorter / longer) * (four_sqrt_2 * smallest_corner) /
                     (std::max(longer, longest_side) * perimeter));
}

constexpr double sqrt_6 = 2.449489742783178;

/// Rating of a tetrahedron that is flat but for rounding: the surface from cross products, the
/// volume seen from each corner in turn. What the four do not agree on is rounding: opposite signs
/// mean 0, else the value closest to 0 stands.
inline double near_flat_rating(const corners<3, 4>& p, double longest) {
    constexpr unsigned orders[4][4] = {{0, 1, 2, 3}, {1, 2, 0, 3}, {2, 0, 1, 3}, {3, 0, 2, 1}};
    const vec3 a = between(p, 3, 0);
    const vec3 b = between(p, 3, 1);
    const vec3 c = between(p, 3, 2);
    const double surface = 0.5 * (norm(cross(a, b)) + norm(cross(a, c)) + norm(cross(b, c)) +
                                  norm(cross(a - b, a - c)));
    const double denominator = longest * surface;
    if (!(denominator > 0)) return 0;
    double q = 0;
    for (const auto& order : orders) {
        const vec3 u = between(p, order[3], order[0]);
        const vec3 v = between(p, order[3], order[1]);
        const vec3 w = between(p, order[3], order[2]);
        const double seen = in_bounds(sqrt_6 * dot(u, cross(v, w)) / denominator);
        if (&order == &orders[0]) q = seen;
        if (seen == 0 || (seen > 0) != (q > 0)) return 0;
        if (std::abs(seen) < std::abs(q)) q = seen;
    }
    return q;
}

/// Gram determinant: the squared area of the parallelogram on a and b.
inline double gram(const vec3& a, const vec3& b) {
    const double product = dot(a, b);
    return dot(a, a) * dot(b, b) - product * product;
}

struct tetrahedron_estimate {
    double rating, longest;

    /// Whether rounding is beyond doubt much smaller than the rating.
    bool is_certain() const {
        constexpr double flat = 1e-6;
        return std::abs(rating) >= flat;
    }

    /// Whether the corners are surely in range, if the rating is certain: it is not where one of
    /// them is not a number.
    bool is_in_range() const {
        constexpr double smallest = 1e-59;
        constexpr double largest = 1e59;
        return (longest >= smallest) & (longest <= largest);
    }
};

/// sqrt(6) * 6 volumes / (longest edge * surface), positive for det(P0 - P3, P1 - P3, P2 - P3) > 0.
inline tetrahedron_estimate estimated_tetrahedron(const corners<3, 4>& p) {
    const vec3 a = between(p, 3, 0);
    const vec3 b = between(p, 3, 1);
    const vec3 c = between(p, 3, 2);
    const vec3 ab = a - b;
    const vec3 ac = a - c;
    const vec3 bc = b - c;
    const double faces[] = {gram(a, b), gram(a, c), gram(b, c), gram(ab, ac)};
    const double sum_of_roots =
        std::sqrt(faces[0]) + std::sqrt(faces[1]) + std::sqrt(faces[2]) + std::sqrt(faces[3]);
    const bool sound = std::min({faces[0], faces[1], faces[2], faces[3]}) > 0;
    const double twice_surface = sound ? sum_of_roots : 0;
    const double longest = std::sqrt(
        std::max({dot(a, a), dot(b, b), dot(c, c), dot(ab, ab), dot(ac, ac), dot(bc, bc)}));
    const double denominator = longest * twice_surface * 0.5;
    const double q = in_bounds(sqrt_6 * dot(a, cross(b, c)) / denominator);
    return {denominator > 0 ? q : 0, longest};
}

inline double tetrahedron_rating(const corners<3, 4>& p) {
    const tetrahedron_estimate e = estimated_tetrahedron(p);
    return e.is_certain() ? e.rating : near_flat_rating(p, e.longest);
}

/// In place of a rating that a quick formula leaves to the plain one.
constexpr double undecided = -2;

inline double quick_tetrahedron_rating(const corners<3, 4>& p) {
    const tetrahedron_estimate e = estimated_tetrahedron(p);
    return e.is_certain() ? e.rating : undecided;
}

// ---- Common pieces of the corner measures ------------------------------------------------------

/// a / b for b > 0, else 0; a is finite.
inline double quotient(double a, double b) {
    return a / (b > 0 ? b : std::numeric_limits<double>::infinity());
}

/// The worst of several signed terms: the smallest of positive ones, the mirror image's worst when
/// all are negative, otherwise the one which keeps an element and its mirror image equally bad.
template <std::size_t K>
double worst(const std::array<double, K>& terms) {
    double smallest = terms[0];
    double largest = terms[0];
    for (const double t : terms) {
        smallest = std::min(smallest, t);
        largest = std::max(largest, t);
    }
    if (smallest > 0) return smallest;
    if (largest < 0) return largest;
    return std::max(smallest, -largest);
}

/// Below this a rating is the rounding of a flat element, whose sign means nothing.
constexpr double noise = 1e-12;

inline double finish(double q) {
    return std::abs(q) >= noise ? in_bounds(q) : 0;
}

/// Coordinates relative to the first corner, so that centroids lose nothing far from the origin.
template <std::size_t N>
corners<3, N> from_first_corner(const corners<3, N>& p) {
    corners<3, N> relative;
    for (unsigned axis = 0; axis < 3; ++axis) {
        for (unsigned i = 0; i < N; ++i)
            relative[axis][i] = p[axis][i] - p[axis][0];
    }
    return relative;
}

/// For each corner its three neighbours, right-handed in a sound element.
template <std::size_t Count>
using neighbour_table = std::array<std::array<std::uint8_t, 3>, Count>;

constexpr neighbour_table<4> pyramid_neighbours = {{{1, 3, 4}, {2, 0, 4}, {3, 1, 4}, {0, 2, 4}}};
constexpr neighbour_table<6> wedge_neighbours = {
    {{1, 2, 3}, {2, 0, 4}, {0, 1, 5}, {5, 4, 0}, {3, 5, 1}, {4, 3, 2}}};
constexpr neighbour_table<8> hexahedron_neighbours = {
    {{1, 3, 4}, {2, 0, 5}, {3, 1, 6}, {0, 2, 7}, {7, 5, 0}, {4, 6, 1}, {5, 7, 2}, {6, 4, 3}}};

/// Whether every corner of a table is joined to its neighbours by edges of the shape.
template <std::size_t Count>
consteval bool along_edges(shape s, const neighbour_table<Count>& table) {
    const reference_shape& topology = topology_of(s);
    unsigned found = 0;
    for (unsigned i = 0; i < Count; ++i) {
        for (const unsigned j : table[i]) {
            for (unsigned e = 0; e < topology.edge_count; ++e) {
                const unsigned from = topology.edges[e].from;
                const unsigned to = topology.edges[e].to;
                found += (from == i && to == j) || (from == j && to == i);
            }
        }
    }
    return found == 3 * Count;
}
static_assert(along_edges(shape::pyramid, pyramid_neighbours) &&
              along_edges(shape::wedge, wedge_neighbours) &&
              along_edges(shape::hexahedron, hexahedron_neighbours));

/// The affine copy of the ideal element which each corner spans with its own edges.
template <std::size_t Count>
struct corner_copies {
    std::array<double, Count> surfaces;
    std::array<double, Count> terms; ///< spanned volume / surface
};

/// surface(n1, n2, n3) is that of the copy, from the cross products e2 x e3, e3 x e1, e1 x e2.
template <std::size_t Count, std::size_t N, class Surface>
corner_copies<Count> span_corners(const corners<3, N>& p, const neighbour_table<Count>& neighbours,
                                  Surface surface) {
    corner_copies<Count> copies;
    unrolled<Count>([&](auto i) {
        const vec3 e1 = between(p, i, neighbours[i][0]);
        const vec3 e2 = between(p, i, neighbours[i][1]);
        const vec3 e3 = between(p, i, neighbours[i][2]);
        const vec3 n1 = cross(e2, e3);
        copies.surfaces[i] = surface(n1, cross(e3, e1), cross(e1, e2));
        copies.terms[i] = quotient(dot(e1, n1), copies.surfaces[i]);
    });
    return copies;
}

/// Volume of the pyramid that a side forms with the centroid, on the scale of the corner terms: the
/// side's weighted volume over the mean surface of its corners' copies.
template <std::size_t N>
double side_term(const corners<3, N>& p, const reference_side& side, const vec3& centroid,
                 const std::array<double, N>& surfaces, double weight) {
    vec3 sum{0, 0, 0};
    double surface = 0;
    for (unsigned k = 0; k < side.node_count; ++k) {
        sum = sum + at(p, side.nodes[k]);
        surface += surfaces[side.nodes[k]];
    }
    const double n = side.node_count;
    const vec3 height = {centroid.x - sum.x / n, centroid.y - sum.y / n, centroid.z - sum.z / n};
    const unsigned b = side.node_count == 3 ? 0 : 1; // a triangle's edges, a quadrangle's diagonals
    const vec3 normal = cross(between(p, side.nodes[0], side.nodes[b + 1]),
                              between(p, side.nodes[b], side.nodes[b + 2]));
    return quotient(weight * dot(normal, height), surface / n);
}

/// The measure of wedges and hexahedra: the worst of their corners and sides over the longest edge.
template <shape S, std::size_t N, class Surface>
double prism_rating(const corners<3, N>& p, const neighbour_table<N>& neighbours, Surface surface,
                    double quadrangle_weight, double scale) {
    constexpr double triangle_weight = 2;
    constexpr reference_shape topology = topology_of(S);
    const corner_copies<N> copies = span_corners(p, neighbours, surface);
    std::array<double, N + topology.side_count> terms;
    std::copy(copies.terms.begin(), copies.terms.end(), terms.begin());

    vec3 sum{0, 0, 0};
    unrolled<N>([&](auto i) { sum = sum + at(p, i); });
    const vec3 centroid = {sum.x / N, sum.y / N, sum.z / N};
    unrolled<topology.side_count>([&](auto f) {
        constexpr reference_side side = topology.sides[f];
        terms[N + f] = side_term(p, side, centroid, copies.surfaces,
                                 side.node_count == 3 ? triangle_weight : quadrangle_weight);
    });
    return finish(scale * worst(terms) / longest_edge<S>(p));
}

// ---- Quadrangle in space, pyramid, wedge, hexahedron -------------------------------------------

/// The plane measure with the corner products taken along the mean normal. Where a crossed
/// quadrangle's lobes cancel and leave that normal without direction, the rating goes to 0.
inline double quadrangle_rating(const corners<3, 4>& given) {
    constexpr double least_normal = 0.25; // relative to the largest corner product
    const corners<3, 4> p = from_first_corner(given);
    const vec3 normal = cross(between(p, 0, 2), between(p, 1, 3));
    double smallest_corner = std::numeric_limits<double>::max();
    double largest_squared_corner = 0;
    double perimeter = 0;
    double longest = 0;
    unrolled<4>([&](auto i) {
        const vec3 incoming = between(p, (i + 3) % 4, i);
        const vec3 outgoing = between(p, i, (i + 1) % 4);
        const vec3 corner = cross(incoming, outgoing);
        smallest_corner = std::min(smallest_corner, dot(corner, normal));
        largest_squared_corner = std::max(largest_squared_corner, dot(corner, corner));
        perimeter += norm(outgoing);
        longest = std::max(longest, dot(outgoing, outgoing));
    });
    const auto [shorter, longer] =
        std::minmax({squared_distance(p, 0, 2), squared_distance(p, 1, 3)});
    const double height = std::sqrt(
        std::max(dot(normal, normal), least_normal * least_normal * largest_squared_corner));
    const double q = finish(std::sqrt(std::sqrt(shorter / longer)) * four_sqrt_2 *
                            quotient(smallest_corner, height) /
                            (std::sqrt(std::max(longest, longer)) * perimeter));
    return longer > 0 ? q : 0;
}

/// The worst of the base corners, each with the lateral faces of its copy. A pyramid that looks
/// sound but has a flat or inverted corner tetrahedron is rated by that one, as by the function.
template <class TetrahedronRating>
double pyramid_rating(const corners<3, 5>& given, TetrahedronRating rating_of) {
    constexpr double sqrt_24 = 4.8989794855663562;
    const corners<3, 5> p = from_first_corner(given);
    const auto lateral_faces = [](const vec3& n1, const vec3& n2, const vec3& n3) {
        return norm(n1) + norm(n2) + norm(n1 + n3) + norm(n2 + n3);
    };
    const auto copies = span_corners(p, pyramid_neighbours, lateral_faces);
    const double whole = sqrt_24 * worst(copies.terms) / longest_edge<shape::pyramid>(p);
    double worst_corner = 1;
    unrolled<4>([&](auto i) {
        corners<3, 4> tetrahedron;
        for (unsigned axis = 0; axis < 3; ++axis) {
            tetrahedron[axis] = {given[axis][i], given[axis][(i + 2) % 4], given[axis][(i + 1) % 4],
                                 given[axis][4]};
        }
        worst_corner = std::min(worst_corner, rating_of(tetrahedron));
    });
    const double of_corners = worst_corner >= noise ? 1 : worst_corner;
    return std::min(finish(whole), whole > noise ? of_corners : 1);
}

inline double wedge_rating(const corners<3, 6>& given) {
    constexpr double one_and_two_sqrt_3 = 4.4641016151377546; // makes the ideal wedge rate 1
    return prism_rating<shape::wedge>(
        from_first_corner(given), wedge_neighbours,
        [](const vec3& n1, const vec3& n2, const vec3& n3) {
            return norm(n1) + norm(n2) + norm(n3) + norm(n1 + n2);
        },
        1.5, one_and_two_sqrt_3);
}

inline double hexahedron_rating(const corners<3, 8>& given) {
    return prism_rating<shape::hexahedron>(
        from_first_corner(given), hexahedron_neighbours,
        [](const vec3& n1, const vec3& n2, const vec3& n3) {
            return 2 * (norm(n1) + norm(n2) + norm(n3));
        },
        1, 6);
}

// ---- Any shape ---------------------------------------------------------------------------------

/// Rating of an element in range.
template <shape S, std::size_t Dim, std::size_t N, class TetrahedronRating>
double rating_in_range(const corners<Dim, N>& p, TetrahedronRating tetrahedron) {
    if constexpr (S == shape::triangle) {
        return triangle_rating(p);
    } else if constexpr (S == shape::quadrangle) {
        return quadrangle_rating(p);
    } else if constexpr (S == shape::tetrahedron) {
        return tetrahedron(p);
    } else if constexpr (S == shape::pyramid) {
        return pyramid_rating(p, tetrahedron);
    } else if constexpr (S == shape::wedge) {
        return wedge_rating(p);
    } else {
        return hexahedron_rating(p);
    }
}

/// The plain procedure: of any element.
template <shape S, std::size_t Dim, std::size_t N>
double rating(corners<Dim, N> p) {
    return bring_into_range(p)
               ? rating_in_range<S>(p, [](const auto& t) { return tetrahedron_rating(t); })
               : 0;
}

/// The same without branches, or undecided.
template <shape S, std::size_t Dim, std::size_t N>
double quick_rating(const corners<Dim, N>& p) {
    if constexpr (S == shape::tetrahedron) {
        const tetrahedron_estimate e = estimated_tetrahedron(p);
        return e.is_certain() && e.is_in_range() ? e.rating : undecided;
    } else {
        const double q =
            rating_in_range<S>(p, [](const auto& t) { return quick_tetrahedron_rating(t); });
        return is_in_range(p) ? q : undecided;
    }
}

} // namespace kvx::zelvo::shape_formulas
