// Neighbours, edges, boundaries, and what lies around nodes.
#include "contest.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <stdexcept>
#include <tuple>
#include <type_traits>

#include <kvx/zelvo/boundaries.h>
#include <kvx/zelvo/edges.h>
#include <kvx/zelvo/neighbors.h>
#include <kvx/zelvo/node_graph.h>

#include "../generated_meshes.h"

#if PEER_CGAL
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#endif
#if PEER_METIS
#include <metis.h>
#endif
#if PEER_VTK
#include <vtkDataSetSurfaceFilter.h>
#include <vtkEdgeTable.h>
#include <vtkExtractEdges.h>
#include <vtkGeometryFilter.h>
#include <vtkIdList.h>
#include <vtkUnsignedCharArray.h>

#include "vtk_meshes.h"
#endif

namespace kvx::zelvo::bench {

namespace {

int checked(int code) {
    if (code < 0) throw std::runtime_error("the library refuses the mesh");
    return code;
}

// Floors -------------------------------------------------------------------------------------

/// Local nodes of the sides, or of the edges, of an element.
template <std::size_t Count, std::size_t Nodes>
using local_parts = std::array<std::array<unsigned, Nodes>, Count>;

constexpr local_parts<3, 2> triangle_edges = {{{1, 2}, {2, 0}, {0, 1}}};
constexpr local_parts<4, 3> tetrahedron_sides = {{{1, 2, 3}, {2, 0, 3}, {1, 3, 0}, {2, 1, 0}}};
constexpr local_parts<6, 2> tetrahedron_edges = {{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}}};

unsigned int node_bound(const dense2D<unsigned int>& conn) {
    return *std::max_element(conn.data(), conn.data() + conn.rows() * conn.cols()) + 1;
}

/// The smallest node of a side or edge, and the others in ascending order as one number.
template <std::size_t Nodes>
struct sorted_part {
    using key = std::conditional_t<Nodes == 2, std::uint32_t, std::uint64_t>;
    unsigned int smallest;
    key others;

    sorted_part(const unsigned int* nodes, const std::array<unsigned, Nodes>& part) {
        unsigned int a = nodes[part[0]];
        unsigned int b = nodes[part[1]];
        if (a > b) std::swap(a, b);
        others = b;
        if constexpr (Nodes == 3) {
            unsigned int c = nodes[part[2]];
            if (b > c) std::swap(b, c);
            if (a > b) std::swap(a, b);
            others = b | key(c) << 32;
        }
        smallest = a;
    }
};

/// How equal sides or edges are found. Chains, one for each smallest node, take one pass and suit
/// meshes in order; buckets, counted and filled, suit shuffled ones.
enum class way { chains, buckets };

/// Calls met(earlier part or no_node, part) for every part, Count * element + local number; with
/// `Once` a part that has met another one may be passed over.
template <bool Once, std::size_t Count, std::size_t Nodes, class Met>
void match_in_chains(const dense2D<unsigned int>& conn, const local_parts<Count, Nodes>& local,
                     Met&& met) {
    struct link {
        typename sorted_part<Nodes>::key others;
        unsigned int next;
    };
    std::vector<unsigned int> heads(node_bound(conn), no_node);
    const auto links = std::make_unique_for_overwrite<link[]>(Count * conn.cols());
    for (std::size_t j = 0; j < conn.cols(); ++j) {
        for (std::size_t s = 0; s < Count; ++s) {
            const unsigned int part = index(Count * j + s);
            const sorted_part<Nodes> own(conn.data() + conn.rows() * j, local[s]);
            unsigned int* from = &heads[own.smallest];
            const unsigned int head = *from;
            while (*from != no_node && links[*from].others != own.others)
                from = &links[*from].next;
            const unsigned int before = *from;
            met(before, part);
            if (before == no_node) {
                links[part] = {own.others, head};
                heads[own.smallest] = part;
            } else if (Once) {
                *from = links[before].next;
            }
        }
    }
}

template <std::size_t Count, std::size_t Nodes, class Met>
void match_in_buckets(const dense2D<unsigned int>& conn, const local_parts<Count, Nodes>& local,
                      Met&& met) {
    struct entry {
        typename sorted_part<Nodes>::key others;
        unsigned int part;
    };
    std::vector<unsigned int> ends(node_bound(conn) + 1, 0);
    const auto entries = std::make_unique_for_overwrite<entry[]>(Count * conn.cols());
    for (std::size_t j = 0; j < conn.cols(); ++j) {
        for (const auto& part : local)
            ++ends[sorted_part<Nodes>(conn.data() + conn.rows() * j, part).smallest + 1];
    }
    std::partial_sum(ends.begin(), ends.end(), ends.begin());
    for (std::size_t j = 0; j < conn.cols(); ++j) {
        for (std::size_t s = 0; s < Count; ++s) {
            const sorted_part<Nodes> own(conn.data() + conn.rows() * j, local[s]);
            entries[ends[own.smallest]++] = {own.others, index(Count * j + s)};
        }
    }
    std::size_t begin = 0;
    for (const unsigned int end : ends) {
        for (std::size_t i = begin; i < end; ++i) {
            std::size_t before = begin;
            while (entries[before].others != entries[i].others)
                ++before;
            met(before < i ? entries[before].part : no_node, entries[i].part);
        }
        begin = end;
    }
}

template <bool Once, std::size_t Count, std::size_t Nodes, class Met>
void match(way how, const dense2D<unsigned int>& conn, const local_parts<Count, Nodes>& local,
           Met&& met) {
    if (how == way::chains)
        match_in_chains<Once>(conn, local, met);
    else
        match_in_buckets(conn, local, met);
}

template <std::size_t Count, std::size_t Nodes>
dense2D<unsigned int> plain_neighbors(way how, const dense2D<unsigned int>& conn,
                                      const local_parts<Count, Nodes>& local) {
    dense2D<unsigned int> neighbors(Count, conn.cols(), no_node);
    unsigned int* const other = neighbors.data();
    match<true>(how, conn, local, [&](unsigned int before, unsigned int part) {
        if (before == no_node) return;
        other[before] = part / Count;
        other[part] = before / Count;
    });
    return neighbors;
}

template <std::size_t Count, std::size_t Nodes>
dense2D<unsigned int> plain_edges(way how, const dense2D<unsigned int>& conn,
                                  const local_parts<Count, Nodes>& local) {
    std::vector<bool> first(Count * conn.cols());
    std::uint64_t count = 0;
    match<false>(how, conn, local, [&](unsigned int before, unsigned int part) {
        if (before != no_node) return;
        first[part] = true;
        ++count;
    });
    dense2D<unsigned int> edges(2, count);
    unsigned int* next = edges.data();
    for (std::size_t part = 0; part < first.size(); ++part) {
        if (!first[part]) continue;
        for (const unsigned k : local[part % Count])
            *next++ = conn.data()[conn.rows() * (part / Count) + k];
    }
    return edges;
}

template <std::size_t Count, std::size_t Nodes>
dense2D<unsigned int> plain_boundary(way how, const dense2D<unsigned int>& conn,
                                     const local_parts<Count, Nodes>& local) {
    const dense2D<unsigned int> neighbors = plain_neighbors(how, conn, local);
    const std::size_t parts = Count * conn.cols();
    dense2D<unsigned int> sides(Nodes, static_cast<std::uint64_t>(std::count(
                                           neighbors.data(), neighbors.data() + parts, no_node)));
    unsigned int* next = sides.data();
    for (std::size_t part = 0; part < parts; ++part) {
        if (neighbors.data()[part] != no_node) continue;
        for (const unsigned k : local[part % Count])
            *next++ = conn.data()[conn.rows() * (part / Count) + k];
    }
    return sides;
}

struct lists {
    dense1D<unsigned int> offsets;
    dense1D<unsigned int> items;
};

lists plain_elements(const dense2D<unsigned int>& conn) {
    lists l;
    l.offsets = dense1D<unsigned int>(node_bound(conn) + 2);
    l.items = dense1D<unsigned int>(conn.rows() * conn.cols());
    unsigned int* const offsets = l.offsets.data();
    const std::size_t entries = conn.rows() * conn.cols();
    for (std::size_t i = 0; i < entries; ++i)
        ++offsets[conn.data()[i] + 1];
    std::partial_sum(offsets, offsets + l.offsets.size(), offsets);
    for (std::size_t j = conn.cols(); j-- > 0;) {
        for (std::size_t k = conn.rows(); k-- > 0;)
            l.items[--offsets[conn.data()[conn.rows() * j + k] + 1]] = index(j);
    }
    std::copy(offsets + 1, offsets + l.offsets.size(), offsets); // the ends have become begins
    l.offsets[l.offsets.size() - 1] = index(entries);
    return l;
}

lists plain_graph(const dense2D<unsigned int>& conn) {
    const lists around = plain_elements(conn);
    const std::size_t nodes = around.offsets.size() - 2;
    std::vector<unsigned int> met(nodes, no_node);
    std::vector<unsigned int> found;
    found.reserve(4 * conn.cols());
    lists l;
    l.offsets = dense1D<unsigned int>(nodes + 2);
    for (std::size_t n = 0; n < nodes; ++n) {
        met[n] = index(n);
        for (unsigned int i = around.offsets[n]; i < around.offsets[n + 1]; ++i) {
            const unsigned int* const element =
                conn.data() + conn.rows() * std::size_t(around.items[i]);
            for (std::size_t k = 0; k < conn.rows(); ++k) {
                if (met[element[k]] == n) continue;
                met[element[k]] = index(n);
                found.push_back(element[k]);
            }
        }
        l.offsets[n + 1] = index(found.size());
    }
    l.offsets[nodes + 1] = index(found.size());
    l.items = dense1D<unsigned int>(found.size());
    std::copy(found.begin(), found.end(), l.items.data());
    return l;
}

// Answers ------------------------------------------------------------------------------------

std::vector<double> pairs(const dense2D<unsigned int>& neighbors) {
    double sum = 0; // of the neighbours: which they are, not just how many
    double paired = 0;
    for (std::uint64_t j = 0; j < neighbors.cols(); ++j) {
        for (std::uint64_t k = 0; k < neighbors.rows(); ++k) {
            if (neighbors(k, j) == no_node) continue;
            ++paired;
            sum += double(neighbors(k, j)) * double(k + 1);
        }
    }
    return {paired, sum};
}

std::vector<double> columns(const dense2D<unsigned int>& m) {
    return {double(m.cols())};
}

std::vector<double> list_sums(const lists& l) {
    double sum = 0;
    for (std::uint64_t n = 0; n + 1 < l.offsets.size(); ++n) {
        for (unsigned int i = l.offsets[n]; i < l.offsets[n + 1]; ++i)
            sum += double(l.items[i]) * double(n % 1000);
    }
    return {double(l.items.size()), sum};
}

// Peers --------------------------------------------------------------------------------------

#if PEER_METIS
/// Connectivity as METIS takes it.
struct metis_mesh {
    idx_t elements, nodes;
    std::vector<idx_t> begins, conn;
    explicit metis_mesh(const dense2D<unsigned int>& c)
        : elements(idx_t(c.cols()))
        , nodes(idx_t(node_bound(c)))
        , conn(c.data(), c.data() + c.rows() * c.cols()) {
        for (std::uint64_t j = 0; j <= c.cols(); ++j)
            begins.push_back(idx_t(j * c.rows()));
    }
};

struct metis_graph {
    std::unique_ptr<idx_t, int (*)(void*)> offsets{nullptr, METIS_Free};
    std::unique_ptr<idx_t, int (*)(void*)> items{nullptr, METIS_Free};
};

contestant metis_dual(const dense2D<unsigned int>& conn) {
    const auto m = std::make_shared<metis_mesh>(conn);
    const idx_t shared = idx_t(conn.rows() - 1);
    return entrant(
               "METIS dual graph",
               [=] {
                   idx_t base = 0, common = shared, *offsets = nullptr, *items = nullptr;
                   METIS_MeshToDual(&m->elements, &m->nodes, m->begins.data(), m->conn.data(),
                                    &common, &base, &offsets, &items);
                   metis_graph g;
                   g.offsets.reset(offsets);
                   g.items.reset(items);
                   return g;
               },
               [=](const metis_graph& g) -> std::vector<double> {
                   return {double(g.offsets.get()[m->elements])};
               })
        .but("lists neighbours without telling by which side");
}

contestant metis_nodal(const dense2D<unsigned int>& conn) {
    const auto m = std::make_shared<metis_mesh>(conn);
    return entrant(
               "METIS",
               [=] {
                   idx_t base = 0, *offsets = nullptr, *items = nullptr;
                   METIS_MeshToNodal(&m->elements, &m->nodes, m->begins.data(), m->conn.data(),
                                     &base, &offsets, &items);
                   metis_graph g;
                   g.offsets.reset(offsets);
                   g.items.reset(items);
                   return g;
               },
               [=](const metis_graph& g) -> std::vector<double> {
                   double sum = 0;
                   for (idx_t n = 0; n < m->nodes; ++n) {
                       for (idx_t i = g.offsets.get()[n]; i < g.offsets.get()[n + 1]; ++i)
                           sum += double(g.items.get()[i]) * double(n % 1000);
                   }
                   return {double(g.offsets.get()[m->nodes]), sum};
               })
        .but("offsets and nodes are signed");
}
#endif

#if PEER_CGAL
using cgal_mesh = CGAL::Surface_mesh<CGAL::Simple_cartesian<double>::Point_3>;

/// Half edges know the triangles on both sides.
contestant cgal_surface(const mesh& m) {
    return entrant(
               "CGAL Surface_mesh",
               [=] {
                   cgal_mesh s;
                   s.reserve(unsigned(m.pos.cols()), unsigned(m.conn.cols() * 3 / 2),
                             unsigned(m.conn.cols()));
                   for (std::uint64_t j = 0; j < m.pos.cols(); ++j)
                       s.add_vertex({m.pos(0, j), m.pos(1, j), m.pos(2, j)});
                   using vertex = cgal_mesh::Vertex_index;
                   for (std::uint64_t j = 0; j < m.conn.cols(); ++j)
                       s.add_face(vertex(m.conn(0, j)), vertex(m.conn(1, j)), vertex(m.conn(2, j)));
                   return s;
               },
               [](const cgal_mesh& s) -> std::vector<double> {
                   double paired = 0;
                   for (const auto h : s.halfedges())
                       paired += !s.is_border(h) && !s.is_border(s.opposite(h));
                   return {paired};
               })
        .but("builds half edges with coordinates; manifold surfaces only");
}
#endif

#if PEER_VTK
contestant vtk_edge_neighbors(const mesh& m) {
    const auto surface = vtk_surface(m);
    return entrant(
               "VTK",
               [=] {
                   surface->BuildLinks();
                   dense2D<unsigned int> neighbors(3, m.conn.cols(), no_node);
                   const auto cells = vtkSmartPointer<vtkIdList>::New();
                   for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
                       for (unsigned k = 0; k < 3; ++k) {
                           surface->GetCellEdgeNeighbors(vtkIdType(j), m.conn((k + 1) % 3, j),
                                                         m.conn((k + 2) % 3, j), cells);
                           if (cells->GetNumberOfIds() > 0)
                               neighbors(k, j) = index(std::uint64_t(cells->GetId(0)));
                       }
                   }
                   return neighbors;
               },
               pairs)
        .before([=] {
            surface->DeleteLinks();
            surface->DeleteCells();
            surface->BuildCells();
        });
}

/// The same grid without the links that it has built.
void restart(vtkUnstructuredGrid& grid, vtkUnstructuredGrid& original) {
    grid.Initialize();
    grid.SetPoints(original.GetPoints());
    grid.SetCells(original.GetCellTypesArray(), original.GetCells());
}

contestant vtk_face_neighbors(const mesh& m) {
    const auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    const auto original = vtk_grid(m);
    return entrant(
               "VTK",
               [=] {
                   grid->BuildLinks();
                   dense2D<unsigned int> neighbors(4, m.conn.cols(), no_node);
                   const auto cells = vtkSmartPointer<vtkIdList>::New();
                   for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
                       for (unsigned k = 0; k < 4; ++k) {
                           std::array<vtkIdType, 3> side{};
                           for (unsigned i = 0; i < 3; ++i)
                               side[i] = m.conn(tetrahedron_sides[k][i], j);
                           grid->GetCellNeighbors(vtkIdType(j), 3, side.data(), cells);
                           if (cells->GetNumberOfIds() > 0)
                               neighbors(k, j) = index(std::uint64_t(cells->GetId(0)));
                       }
                   }
                   return neighbors;
               },
               pairs)
        .before([=] { restart(*grid, *original); });
}

contestant vtk_edges(const mesh& m) {
    const auto grid = vtk_grid(m);
    return entrant(
               "VTK edge filter",
               [=] {
                   const auto filter = vtkSmartPointer<vtkExtractEdges>::New();
                   filter->UseAllPointsOn();
                   filter->SetInputData(grid);
                   filter->Update();
                   return vtkSmartPointer<vtkPolyData>(filter->GetOutput());
               },
               [](const vtkSmartPointer<vtkPolyData>& edges) -> std::vector<double> {
                   return {double(edges->GetNumberOfLines())};
               })
        .but("in an order of its own");
}

template <std::size_t Count>
contestant vtk_edge_table(const mesh& m, const local_parts<Count, 2>& local) {
    return entrant(
        "VTK edge table",
        [=] {
            const auto table = vtkSmartPointer<vtkEdgeTable>::New();
            table->InitEdgeInsertion(vtkIdType(m.pos.cols()));
            std::vector<unsigned int> edges;
            for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
                for (const auto& edge : local) {
                    const unsigned int a = m.conn(edge[0], j);
                    const unsigned int b = m.conn(edge[1], j);
                    if (table->IsEdge(a, b) != -1) continue;
                    table->InsertEdge(a, b);
                    edges.insert(edges.end(), {a, b});
                }
            }
            return edges;
        },
        [](const std::vector<unsigned int>& edges) -> std::vector<double> {
            return {double(edges.size()) / 2};
        });
}

template <class Filter>
contestant vtk_boundary(const std::string& name, const mesh& m) {
    const auto grid = vtk_grid(m);
    return entrant(
               name,
               [=] {
                   const auto filter = vtkSmartPointer<Filter>::New();
                   filter->SetInputData(grid);
                   filter->Update();
                   return vtkSmartPointer<vtkPolyData>(filter->GetOutput());
               },
               [](const vtkSmartPointer<vtkPolyData>& surface) -> std::vector<double> {
                   return {double(surface->GetNumberOfPolys())};
               })
        .but("copies the nodes of the boundary too");
}

contestant vtk_links(const mesh& m) {
    const auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    const auto original = vtk_grid(m);
    return entrant(
               "VTK static cell links",
               [=] {
                   grid->BuildLinks();
                   return vtkSmartPointer<vtkUnstructuredGrid>(grid);
               },
               [=](const vtkSmartPointer<vtkUnstructuredGrid>&) -> std::vector<double> {
                   double entries = 0;
                   double sum = 0;
                   for (vtkIdType n = 0; n < grid->GetNumberOfPoints(); ++n) {
                       vtkIdType count = 0;
                       vtkIdType* cells = nullptr;
                       grid->GetPointCells(n, count, cells);
                       entries += double(count);
                       for (vtkIdType i = 0; i < count; ++i)
                           sum += double(cells[i]) * double(n % 1000);
                   }
                   return {entries, sum};
               })
        .before([=] { restart(*grid, *original); })
        .but("indices of 64 bits");
}
#endif

constexpr const char* way_names[] = {"chains by smallest node", "buckets by smallest node"};

// Rows ---------------------------------------------------------------------------------------

template <std::size_t Count, std::size_t Nodes>
void hold_neighbors(contest& c, const mesh& m, const std::string& element, const std::string& order,
                    way how, const local_parts<Count, Nodes>& local) {
    contest_row row;
    row.job = "neighbours";
    row.input = element + ", " + order;
    if (!c.wants(row.job, row.input)) return;
    row.item = "element";
    row.items = m.conn.cols();
    row.answers = {"paired sides", "sum of neighbours"};
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            dense2D<unsigned int> neighbors;
            checked(get_neighbors(m.conn, m.kind, true, neighbors));
            return neighbors;
        },
        pairs);
#if PEER_METIS
    row.peers.push_back(metis_dual(m.conn));
#else
    row.absent.emplace_back("METIS not installed");
#endif
#if PEER_VTK
    row.peers.push_back(m.kind == ET_TRIA3 ? vtk_edge_neighbors(m) : vtk_face_neighbors(m));
#else
    row.absent.emplace_back("VTK not installed");
#endif
#if PEER_CGAL
    if (m.kind == ET_TRIA3) row.peers.push_back(cgal_surface(m));
#else
    if (m.kind == ET_TRIA3) row.absent.emplace_back("CGAL not installed");
#endif
    row.absent.emplace_back("geogram and libigl have no package");
    row.floor = entrant(
        way_names[int(how)], [=] { return plain_neighbors(how, m.conn, local); }, pairs);
    c.hold(std::move(row));
}

template <std::size_t Count>
void hold_edges(contest& c, const mesh& m, const std::string& element, const std::string& order,
                way how, const local_parts<Count, 2>& local) {
    contest_row row;
    row.job = "distinct edges";
    row.input = element + ", " + order;
    if (!c.wants(row.job, row.input)) return;
    row.item = "element";
    row.items = m.conn.cols();
    row.answers = {"edges"};
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            dense2D<unsigned int> edges;
            checked(copy_edges(m.conn, m.kind, edges));
            return edges;
        },
        columns);
#if PEER_VTK
    row.peers.push_back(vtk_edges(m));
    row.peers.push_back(vtk_edge_table(m, local));
#else
    row.absent.emplace_back("VTK not installed");
#endif
    row.absent.emplace_back("geogram and libigl have no package");
    row.floor = entrant(
        way_names[int(how)], [=] { return plain_edges(how, m.conn, local); }, columns);
    c.hold(std::move(row));
}

void hold_boundary(contest& c, const mesh& m, const std::string& order, way how) {
    contest_row row;
    row.job = "boundary, from the connectivity";
    row.input = "tetrahedra, " + order;
    if (!c.wants(row.job, row.input)) return;
    row.item = "element";
    row.items = m.conn.cols();
    row.answers = {"sides"};
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            dense2D<unsigned int> neighbors, sides;
            checked(get_neighbors(m.conn, m.kind, true, neighbors));
            checked(get_mesh_boundaries(m.conn, neighbors, m.kind, sides));
            return sides;
        },
        columns);
#if PEER_VTK
    row.peers.push_back(vtk_boundary<vtkGeometryFilter>("VTK geometry filter", m));
    row.peers.push_back(vtk_boundary<vtkDataSetSurfaceFilter>("VTK surface filter", m));
#else
    row.absent.emplace_back("VTK not installed");
#endif
    row.absent.emplace_back("libigl has no package");
    row.floor = entrant(
        way_names[int(how)], [=] { return plain_boundary(how, m.conn, tetrahedron_sides); },
        columns);
    c.hold(std::move(row));
}

void hold_node_elements(contest& c, const mesh& m, const std::string& order) {
    contest_row row;
    row.job = "node to elements";
    row.input = "triangles, " + order;
    if (!c.wants(row.job, row.input)) return;
    row.item = "element";
    row.items = m.conn.cols();
    row.answers = {"entries", "sum over the lists"};
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            lists l;
            checked(get_connected_elements(m.conn, l.offsets, l.items));
            return l;
        },
        list_sums);
#if PEER_VTK
    row.peers.push_back(vtk_links(m));
#else
    row.absent.emplace_back("VTK not installed");
#endif
    row.absent.emplace_back("libigl has no package");
    row.floor = entrant(
        "counted, filled", [=] { return plain_elements(m.conn); }, list_sums);
    c.hold(std::move(row));
}

void hold_node_graph(contest& c, const mesh& m, const std::string& order) {
    contest_row row;
    row.job = "node graph";
    row.input = "triangles, " + order;
    if (!c.wants(row.job, row.input)) return;
    row.item = "element";
    row.items = m.conn.cols();
    row.answers = {"entries", "sum over the lists"};
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            lists l;
            checked(get_node_graph(m.conn, l.offsets, l.items));
            return l;
        },
        list_sums);
#if PEER_METIS
    row.peers.push_back(metis_nodal(m.conn));
#else
    row.absent.emplace_back("METIS not installed");
#endif
    row.absent.emplace_back("libigl has no package");
    row.floor = entrant(
        "node to elements, then a mark for each node met", [=] { return plain_graph(m.conn); },
        list_sums);
    c.hold(std::move(row));
}

} // namespace

void hold_topology_rows(contest& c) {
    {
        const mesh m = bumpy_sphere(c.size(2'000'000));
        const mesh s = shuffled_elements(shuffled_nodes(m));
        const std::tuple<const mesh&, const char*, way> orders[] = {{m, "in order", way::chains},
                                                                    {s, "shuffled", way::buckets}};
        for (const auto& [t, order, how] : orders)
            hold_neighbors(c, t, "triangles", order, how, triangle_edges);
        for (const auto& [t, order, how] : orders)
            hold_edges(c, t, "triangles", order, how, triangle_edges);
        for (const auto& [t, order, how] : orders)
            hold_node_elements(c, t, order);
        for (const auto& [t, order, how] : orders)
            hold_node_graph(c, t, order);
    }
    const mesh m = tetrahedral_grid(c.size(1'000'000));
    const mesh n = shuffled_nodes(m);
    const mesh s = shuffled_elements(n);
    hold_neighbors(c, n, "tetrahedra", "nodes shuffled", way::chains, tetrahedron_sides);
    hold_neighbors(c, s, "tetrahedra", "shuffled", way::buckets, tetrahedron_sides);
    hold_edges(c, m, "tetrahedra", "in order", way::chains, tetrahedron_edges);
    hold_edges(c, s, "tetrahedra", "shuffled", way::buckets, tetrahedron_edges);
    hold_boundary(c, m, "in order", way::chains);
    hold_boundary(c, s, "shuffled", way::buckets);
}

} // namespace kvx::zelvo::bench
