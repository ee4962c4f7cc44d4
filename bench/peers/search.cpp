// Welding within a tolerance; building a search structure, nearest node, nodes in a box.
#include "contest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <kvx/zelvo/node_detector.h>
#include <kvx/zelvo/node_merging.h>

#include "../generated_meshes.h"

#if PEER_BOOST
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#endif
#if PEER_CGAL
#include <CGAL/Fuzzy_iso_box.h>
#include <CGAL/Fuzzy_sphere.h>
#include <CGAL/Kd_tree.h>
#include <CGAL/Orthogonal_k_neighbor_search.h>
#include <CGAL/Search_traits_3.h>
#include <CGAL/Search_traits_adapter.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/property_map.h>
#endif
#if PEER_NANOFLANN
#include <nanoflann.hpp>
#endif
#if PEER_VTK
#include <vtkStaticPointLocator.h>

#include "vtk_meshes.h"
#endif

namespace kvx::zelvo::bench {

namespace {

using point = std::array<double, 3>;

std::vector<point> columns_of(const dense2D<double>& pos) {
    std::vector<point> points(pos.cols());
    for (std::uint64_t j = 0; j < pos.cols(); ++j)
        points[j] = {pos(0, j), pos(1, j), pos(2, j)};
    return points;
}

double squared_distance(const point& a, const point& b) {
    const double x = a[0] - b[0];
    const double y = a[1] - b[1];
    const double z = a[2] - b[2];
    return x * x + y * y + z * z;
}

// Floors -------------------------------------------------------------------------------------

/// Redirects each point to one before it within the tolerance, by way of hashed cells 64
/// tolerances wide, so that few points lie near the wall of theirs. Returns how many.
double plain_weld(const std::vector<point>& points, double tolerance) {
    const double cells = 1 / (64 * tolerance); // in a unit of length
    const auto cell_of = [&](double x) { return std::int64_t(x * cells + 0x1p40); };
    std::size_t slots = 1024;
    while (slots < points.size())
        slots *= 2;
    std::vector<unsigned int> heads(slots, no_node);
    std::vector<unsigned int> next(points.size(), no_node);
    std::vector<unsigned int> new_ids(points.size());
    const auto slot_of = [&](const std::array<std::int64_t, 3>& cell) {
        std::uint64_t h = std::uint64_t(cell[0]) * 0x9E3779B97F4A7C15u ^
                          std::uint64_t(cell[1]) * 0xC2B2AE3D27D4EB4Fu ^
                          std::uint64_t(cell[2]) * 0x165667B19E3779F9u;
        h = (h ^ h >> 32) * 0x9E3779B97F4A7C15u;
        return std::size_t(h >> 20) & (slots - 1);
    };
    const auto find = [&](std::size_t slot, const point& p) {
        unsigned int i = heads[slot];
        while (i != no_node && squared_distance(points[i], p) > tolerance * tolerance)
            i = next[i];
        return i;
    };
    double absorbed = 0;
    for (std::size_t j = 0; j < points.size(); ++j) {
        const point& p = points[j];
        std::array<std::int64_t, 3> low{}, high{}, own{};
        for (unsigned k = 0; k < 3; ++k) {
            low[k] = cell_of(p[k] - tolerance);
            own[k] = cell_of(p[k]);
            high[k] = cell_of(p[k] + tolerance);
        }
        const std::size_t slot = slot_of(own);
        unsigned int survivor = find(slot, p);
        if (low != high && survivor == no_node) {
            std::array<std::int64_t, 3> cell{};
            for (cell[0] = low[0]; cell[0] <= high[0]; ++cell[0]) {
                for (cell[1] = low[1]; cell[1] <= high[1]; ++cell[1]) {
                    for (cell[2] = low[2]; cell[2] <= high[2] && survivor == no_node; ++cell[2])
                        survivor = find(slot_of(cell), p);
                }
            }
        }
        if (survivor == no_node) {
            new_ids[j] = index(j);
            next[j] = heads[slot];
            heads[slot] = index(j);
        } else {
            new_ids[j] = survivor;
            ++absorbed;
        }
    }
    return absorbed;
}

/// Balanced k-d tree in an array, with copied points: the root of a range is its middle.
class plain_tree {
public:
    explicit plain_tree(const std::vector<point>& points)
        : nodes_(points.size()) {
        for (std::size_t j = 0; j < points.size(); ++j)
            nodes_[j] = {points[j], index(j), 0};
        build(0, nodes_.size());
    }
    double squared_distance_to_closest(const point& p) const {
        double best = std::numeric_limits<double>::infinity();
        closest(0, nodes_.size(), p, best);
        return best;
    }
    void in_box(const point& low, const point& high, std::vector<unsigned int>& found) const {
        box(0, nodes_.size(), low, high, found);
    }

private:
    static constexpr std::size_t leaf = 8;
    struct node {
        point p;
        unsigned int id;
        unsigned int axis;
    };

    void build(std::size_t begin, std::size_t end) {
        if (end - begin <= leaf) return;
        point low = nodes_[begin].p;
        point high = low;
        for (std::size_t i = begin; i < end; ++i) {
            for (unsigned k = 0; k < 3; ++k) {
                low[k] = std::min(low[k], nodes_[i].p[k]);
                high[k] = std::max(high[k], nodes_[i].p[k]);
            }
        }
        unsigned axis = 0;
        for (unsigned k = 1; k < 3; ++k)
            axis = high[k] - low[k] > high[axis] - low[axis] ? k : axis;
        const std::size_t middle = (begin + end) / 2;
        const auto first = nodes_.begin();
        std::nth_element(first + std::ptrdiff_t(begin), first + std::ptrdiff_t(middle),
                         first + std::ptrdiff_t(end),
                         [=](const node& a, const node& b) { return a.p[axis] < b.p[axis]; });
        nodes_[middle].axis = axis;
        build(begin, middle);
        build(middle + 1, end);
    }
    void closest(std::size_t begin, std::size_t end, const point& p, double& best) const {
        if (end - begin <= leaf) {
            for (std::size_t i = begin; i < end; ++i)
                best = std::min(best, squared_distance(nodes_[i].p, p));
            return;
        }
        const std::size_t middle = (begin + end) / 2;
        const node& n = nodes_[middle];
        const double beyond = p[n.axis] - n.p[n.axis];
        if (beyond < 0) {
            closest(begin, middle, p, best);
        } else {
            closest(middle + 1, end, p, best);
        }
        if (beyond * beyond >= best) return;
        best = std::min(best, squared_distance(n.p, p));
        if (beyond < 0) {
            closest(middle + 1, end, p, best);
        } else {
            closest(begin, middle, p, best);
        }
    }
    static bool inside(const point& p, const point& low, const point& high) {
        return p[0] >= low[0] && p[0] <= high[0] && p[1] >= low[1] && p[1] <= high[1] &&
               p[2] >= low[2] && p[2] <= high[2];
    }
    void box(std::size_t begin, std::size_t end, const point& low, const point& high,
             std::vector<unsigned int>& found) const {
        if (end - begin <= leaf) {
            for (std::size_t i = begin; i < end; ++i) {
                if (inside(nodes_[i].p, low, high)) found.push_back(nodes_[i].id);
            }
            return;
        }
        const std::size_t middle = (begin + end) / 2;
        const node& n = nodes_[middle];
        if (low[n.axis] <= n.p[n.axis]) box(begin, middle, low, high, found);
        if (inside(n.p, low, high)) found.push_back(n.id);
        if (high[n.axis] >= n.p[n.axis]) box(middle + 1, end, low, high, found);
    }

    std::vector<node> nodes_;
};

// Peers --------------------------------------------------------------------------------------

#if PEER_BOOST
namespace bgi = boost::geometry::index;
using boost_point = boost::geometry::model::point<double, 3, boost::geometry::cs::cartesian>;
using boost_box = boost::geometry::model::box<boost_point>;
using boost_value = std::pair<boost_point, unsigned int>;
using boost_tree = bgi::rtree<boost_value, bgi::rstar<16>>;

std::unique_ptr<boost_tree> build_boost(const std::vector<point>& points) {
    std::vector<boost_value> values;
    values.reserve(points.size());
    for (const point& p : points)
        values.emplace_back(boost_point(p[0], p[1], p[2]), index(values.size()));
    return std::make_unique<boost_tree>(values); // packs
}
#endif

#if PEER_CGAL
using cgal_kernel = CGAL::Simple_cartesian<double>;
using cgal_value = std::pair<cgal_kernel::Point_3, unsigned int>;
using cgal_traits =
    CGAL::Search_traits_adapter<cgal_value, CGAL::First_of_pair_property_map<cgal_value>,
                                CGAL::Search_traits_3<cgal_kernel>>;
using cgal_search = CGAL::Orthogonal_k_neighbor_search<cgal_traits>; // sliding midpoints
using cgal_tree = cgal_search::Tree;

cgal_kernel::Point_3 cgal_point(const point& p) {
    return {p[0], p[1], p[2]};
}

std::unique_ptr<cgal_tree> build_cgal(const std::vector<point>& points) {
    auto tree = std::make_unique<cgal_tree>();
    tree->reserve(points.size());
    for (std::size_t j = 0; j < points.size(); ++j)
        tree->insert({cgal_point(points[j]), index(j)});
    tree->build();
    return tree;
}
#endif

#if PEER_NANOFLANN
/// What nanoflann asks of a cloud.
struct flann_cloud {
    const std::vector<point>* points;
    std::size_t kdtree_get_point_count() const { return points->size(); }
    double kdtree_get_pt(std::size_t i, std::size_t axis) const { return (*points)[i][axis]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const {
        return false;
    }
};
using flann_index =
    nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, flann_cloud>,
                                        flann_cloud, 3, unsigned int>;
struct flann_tree {
    flann_cloud cloud;
    flann_index tree;
    explicit flann_tree(const std::vector<point>& points)
        : cloud{&points}
        , tree(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10)) {
        tree.buildIndex();
    }
};
#endif

#if PEER_VTK
vtkSmartPointer<vtkStaticPointLocator> build_vtk(const vtkSmartPointer<vtkPolyData>& cloud) {
    auto locator = vtkSmartPointer<vtkStaticPointLocator>::New();
    locator->SetDataSet(cloud);
    locator->BuildLocator();
    return locator;
}

vtkSmartPointer<vtkPolyData> vtk_cloud(const dense2D<double>& pos) {
    auto cloud = vtkSmartPointer<vtkPolyData>::New();
    cloud->SetPoints(vtk_points(pos));
    return cloud;
}
#endif

// Welding ------------------------------------------------------------------------------------

std::vector<double> one_number(double n) {
    return {n};
}

void hold_weld(contest& c, const dense2D<double>& pos, double tolerance, const std::string& input) {
    contest_row row;
    row.job = "weld within a tolerance";
    row.input = input;
    if (!c.wants(row.job, row.input)) return;
    row.item = "point";
    row.items = pos.cols();
    row.answers = {"points absorbed"};
    const auto points = std::make_shared<const std::vector<point>>(columns_of(pos));
    const auto moving = std::make_shared<dense2D<double>>();
    row.ours = entrant(
                   "kvx zelvo",
                   [=] {
                       dense1D<unsigned int> new_ids;
                       return double(merge(*moving, new_ids, tolerance));
                   },
                   one_number)
                   .before([=] { moving->copy(pos); })
                   .but("nearest pairs first; moves the absorbed points");
#if PEER_VTK
    const auto cloud = vtk_cloud(pos);
    row.peers.push_back(
        entrant(
            "VTK static point locator",
            [=] {
                std::vector<vtkIdType> map(points->size());
                build_vtk(cloud)->MergePoints(tolerance, map.data());
                return map;
            },
            [](const std::vector<vtkIdType>& map) -> std::vector<double> {
                double absorbed = 0;
                for (std::size_t j = 0; j < map.size(); ++j)
                    absorbed += map[j] != vtkIdType(j);
                return {absorbed};
            })
            .but("a point takes all unmerged ones in reach, in the order of points or of buckets"));
#else
    row.absent.emplace_back("VTK not installed");
#endif
#if PEER_CGAL
    row.peers.push_back(entrant(
                            "CGAL k-d tree",
                            [=] {
                                const auto tree = build_cgal(*points);
                                std::vector<unsigned int> map(points->size(), no_node);
                                std::vector<cgal_value> found;
                                double absorbed = 0;
                                for (std::size_t j = 0; j < points->size(); ++j) {
                                    if (map[j] != no_node) continue;
                                    found.clear();
                                    tree->search(std::back_inserter(found),
                                                 CGAL::Fuzzy_sphere<cgal_traits>(
                                                     cgal_point((*points)[j]), tolerance));
                                    for (const cgal_value& other : found) {
                                        if (map[other.second] != no_node) continue;
                                        map[other.second] = index(j);
                                        absorbed += other.second != j;
                                    }
                                }
                                return absorbed;
                            },
                            one_number)
                            .but("first come, first served"));
#else
    row.absent.emplace_back("CGAL not installed");
#endif
#if PEER_NANOFLANN
    row.peers.push_back(
        entrant(
            "nanoflann",
            [=] {
                const flann_tree tree(*points);
                std::vector<unsigned int> map(points->size(), no_node);
                std::vector<std::pair<unsigned int, double>> found;
                const nanoflann::SearchParams unsorted(32, 0, false);
                const double reach = std::max(tolerance * tolerance * (1 + 1e-9), 1e-300);
                double absorbed = 0;
                for (std::size_t j = 0; j < points->size(); ++j) {
                    if (map[j] != no_node) continue;
                    tree.tree.radiusSearch((*points)[j].data(), reach, found, unsorted);
                    for (const auto& other : found) {
                        if (map[other.first] != no_node) continue;
                        map[other.first] = index(j);
                        absorbed += other.first != j;
                    }
                }
                return absorbed;
            },
            one_number)
            .but("first come, first served"));
#else
    row.absent.emplace_back("nanoflann not installed");
#endif
    row.absent.emplace_back("libigl has no package");
    row.floor = entrant(
        "hashed cells", [=] { return plain_weld(*points, tolerance); }, one_number);
    c.hold(std::move(row));
}

/// Pairs of points closer to each other than the tolerance, in random order.
dense2D<double> jittered_pairs(std::uint64_t n, double tolerance) {
    const dense2D<double> some = points(at_random, n / 2);
    const dense2D<double> shift = points(at_random, n / 2, seed + 2);
    dense2D<double> pos(3, n / 2 * 2);
    for (std::uint64_t j = 0; j < n / 2; ++j) {
        for (unsigned k = 0; k < 3; ++k) {
            pos(k, 2 * j) = some(k, j);
            pos(k, 2 * j + 1) = some(k, j) + tolerance * (shift(k, j) - 0.5);
        }
    }
    shuffle(pos.cols(), [&](std::uint64_t i, std::uint64_t j) {
        for (unsigned k = 0; k < 3; ++k)
            std::swap(pos(k, i), pos(k, j));
    });
    return pos;
}

// The detector -------------------------------------------------------------------------------

/// A cloud, points to search it for, and half the width of boxes with 6 to 7 hits.
struct search_input {
    std::string name;
    std::shared_ptr<const dense2D<double>> pos;
    std::shared_ptr<const std::vector<point>> points;
    std::shared_ptr<const std::vector<point>> targets;
    double half_width = 0.0;
};

double mean_hits(const node_detector& detector, const std::vector<point>& targets, double h) {
    dense1D<unsigned int> found;
    const std::size_t n = std::min<std::size_t>(targets.size(), 2000);
    for (std::size_t i = 0; i < n; ++i) {
        const point& p = targets[i];
        detector.find_in_box({p[0] - h, p[1] - h, p[2] - h}, {p[0] + h, p[1] + h, p[2] + h}, found);
    }
    return double(found.size()) / double(n);
}

search_input make_input(const std::string& name, const dense2D<double>& pos,
                        const dense2D<double>& targets) {
    search_input in;
    in.name = name;
    in.pos = std::make_shared<const dense2D<double>>(pos);
    in.points = std::make_shared<const std::vector<point>>(columns_of(pos));
    in.targets = std::make_shared<const std::vector<point>>(columns_of(targets));
    const node_detector detector(*in.pos);
    double low = 0.0;
    double high = 0.25;
    while (high - low > 1e-4 * high) {
        const double middle = (low + high) / 2;
        (mean_hits(detector, *in.targets, middle) < 6.5 ? low : high) = middle;
    }
    in.half_width = high;
    return in;
}

void hold_build(contest& c, const search_input& in) {
    contest_row row;
    row.job = "node detector, build";
    row.input = in.name;
    if (!c.wants(row.job, row.input)) return;
    row.item = "node";
    row.items = in.pos->cols();
    row.wanted = goal::level; // coordinates are read live, and ties follow the tree's shape
    const auto none = [](const auto&) { return std::vector<double>(); };
    const auto pos = in.pos;
    const auto points = in.points;
    row.ours = entrant(
        "kvx zelvo", [=] { return std::make_unique<node_detector>(*pos); }, none);
#if PEER_VTK
    const auto cloud = vtk_cloud(*pos);
    row.peers.push_back(entrant(
                            "VTK static point locator", [=] { return build_vtk(cloud); }, none)
                            .but("buckets: a query in a crowded one meets all its points"));
#else
    row.absent.emplace_back("VTK not installed");
#endif
#if PEER_BOOST
    row.peers.push_back(entrant(
                            "Boost R-tree", [=] { return build_boost(*points); }, none)
                            .but("copies the points"));
#else
    row.absent.emplace_back("Boost not installed");
#endif
#if PEER_NANOFLANN
    row.peers.push_back(entrant(
        "nanoflann", [=] { return std::make_unique<flann_tree>(*points); }, none));
#else
    row.absent.emplace_back("nanoflann not installed");
#endif
#if PEER_CGAL
    row.peers.push_back(entrant(
                            "CGAL k-d tree", [=] { return build_cgal(*points); }, none)
                            .but("copies the points"));
#else
    row.absent.emplace_back("CGAL not installed");
#endif
    row.floor = entrant(
        "balanced k-d tree with copied points",
        [=] { return std::make_unique<plain_tree>(*points); }, none);
    c.hold(std::move(row));
}

/// Runs all queries; `query` gives a number for each target, which are added up.
template <class Query>
contestant searcher(std::string name, const search_input& in, Query query) {
    const auto targets = in.targets;
    return entrant(
        std::move(name),
        [=] {
            double sum = 0;
            for (const point& p : *targets)
                sum += query(p);
            return sum;
        },
        one_number);
}

void hold_nearest(contest& c, const search_input& in) {
    contest_row row;
    row.job = "nearest node";
    row.input = in.name;
    if (!c.wants(row.job, row.input)) return;
    row.item = "query";
    row.items = in.targets->size();
    row.wanted = goal::level;
    row.answers = {"sum of squared distances"};
    const auto points = in.points;
    const auto detector = std::make_shared<node_detector>(*in.pos);
    row.ours = searcher("kvx zelvo", in, [=](const point& p) {
        return squared_distance((*points)[detector->find_closest({p[0], p[1], p[2]})], p);
    });
#if PEER_VTK
    const auto locator = build_vtk(vtk_cloud(*in.pos));
    row.peers.push_back(searcher("VTK static point locator", in, [=](const point& p) {
        return squared_distance((*points)[std::size_t(locator->FindClosestPoint(p.data()))], p);
    }));
#else
    row.absent.emplace_back("VTK not installed");
#endif
#if PEER_BOOST
    const std::shared_ptr<boost_tree> boost = build_boost(*points);
    row.peers.push_back(searcher("Boost R-tree", in, [=](const point& p) {
        const auto q = boost->qbegin(bgi::nearest(boost_point(p[0], p[1], p[2]), 1));
        return squared_distance((*points)[q->second], p);
    }));
#else
    row.absent.emplace_back("Boost not installed");
#endif
#if PEER_NANOFLANN
    const auto flann = std::make_shared<flann_tree>(*points);
    row.peers.push_back(searcher("nanoflann", in, [=](const point& p) {
        unsigned int closest = 0;
        double distance = 0;
        flann->tree.knnSearch(p.data(), 1, &closest, &distance);
        return distance;
    }));
#else
    row.absent.emplace_back("nanoflann not installed");
#endif
#if PEER_CGAL
    const std::shared_ptr<cgal_tree> cgal = build_cgal(*points);
    row.peers.push_back(searcher("CGAL k-d tree", in, [=](const point& p) {
        return cgal_search(*cgal, cgal_point(p), 1).begin()->second;
    }));
#else
    row.absent.emplace_back("CGAL not installed");
#endif
    const auto tree = std::make_shared<plain_tree>(*points);
    row.floor = searcher("balanced k-d tree with copied points", in,
                         [=](const point& p) { return tree->squared_distance_to_closest(p); });
    c.hold(std::move(row));
}

void hold_boxes(contest& c, const search_input& in) {
    contest_row row;
    row.job = "box query, 6 to 7 hits";
    row.input = in.name;
    if (!c.wants(row.job, row.input)) return;
    row.item = "query";
    row.items = in.targets->size();
    row.wanted = goal::level;
    row.answers = {"hits"};
    const double h = in.half_width;
    const auto detector = std::make_shared<node_detector>(*in.pos);
    row.ours = searcher("kvx zelvo", in, [=](const point& p) {
        thread_local dense1D<unsigned int> hits;
        hits.clear();
        detector->find_in_box({p[0] - h, p[1] - h, p[2] - h}, {p[0] + h, p[1] + h, p[2] + h}, hits);
        return double(hits.size());
    });
#if PEER_BOOST
    const std::shared_ptr<boost_tree> boost = build_boost(*in.points);
    row.peers.push_back(searcher("Boost R-tree", in, [=](const point& p) {
        thread_local std::vector<boost_value> hits;
        hits.clear();
        boost->query(bgi::intersects(
                         boost_box({p[0] - h, p[1] - h, p[2] - h}, {p[0] + h, p[1] + h, p[2] + h})),
                     std::back_inserter(hits));
        return double(hits.size());
    }));
#else
    row.absent.emplace_back("Boost not installed");
#endif
#if PEER_CGAL
    const std::shared_ptr<cgal_tree> cgal = build_cgal(*in.points);
    row.peers.push_back(searcher("CGAL k-d tree", in, [=](const point& p) {
        thread_local std::vector<cgal_value> hits;
        hits.clear();
        cgal->search(
            std::back_inserter(hits),
            CGAL::Fuzzy_iso_box<cgal_traits>(cgal_kernel::Point_3(p[0] - h, p[1] - h, p[2] - h),
                                             cgal_kernel::Point_3(p[0] + h, p[1] + h, p[2] + h)));
        return double(hits.size());
    }));
#else
    row.absent.emplace_back("CGAL not installed");
#endif
    row.absent.emplace_back("nanoflann and VTK static point locator have no box query");
    const auto tree = std::make_shared<plain_tree>(*in.points);
    row.floor = searcher("balanced k-d tree with copied points", in, [=](const point& p) {
        thread_local std::vector<unsigned int> hits;
        hits.clear();
        tree->in_box({p[0] - h, p[1] - h, p[2] - h}, {p[0] + h, p[1] + h, p[2] + h}, hits);
        return double(hits.size());
    });
    c.hold(std::move(row));
}

} // namespace

void hold_search_rows(contest& c) {
    {
        const double tolerance = 1e-6;
        hold_weld(c, jittered_pairs(c.size(2'000'000), tolerance), tolerance, "jittered pairs");
        const mesh sphere = bumpy_sphere(c.size(2'000'000));
        dense2D<double> soup(3, 3 * sphere.conn.cols());
        for (std::uint64_t j = 0; j < soup.cols(); ++j)
            std::copy_n(&sphere.pos(0, sphere.conn(j % 3, j / 3)), 3, &soup(0, j));
        hold_weld(c, soup, 1e-9, "facet soup, in order");
        hold_weld(c, facet_soup(sphere).pos, 1e-9, "facet soup, shuffled");
    }
    const std::uint64_t n = c.size(1'000'000);
    const std::uint64_t queries = c.size(500'000);
    const dense2D<double> cube = points(at_random, n);
    const mesh sphere = bumpy_sphere(2 * n);
    const dense2D<double> surface = shuffled_nodes(sphere).pos;
    const search_input inputs[] = {
        make_input("random", cube, targets_in(at_random, cube, queries)),
        make_input("on a surface", surface,
                   targets_in(on_surface, facet_soup(sphere).pos, queries))};
    for (const search_input& in : inputs)
        hold_build(c, in);
    for (const search_input& in : inputs)
        hold_nearest(c, in);
    for (const search_input& in : inputs)
        hold_boxes(c, in);
}

} // namespace kvx::zelvo::bench
