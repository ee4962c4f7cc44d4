#pragma once

#include <atomic>
#include <cstdlib>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <variant>

#include "io/files.h"
#include "meshes.h"

/// Calls of every function that the headers export, with memory that ends where a test says so.
namespace kvx::zelvo::tests {

constexpr std::int64_t unlimited = -1;
/// Allocations of this thread that still succeed; after that all fail, or just one.
inline thread_local std::int64_t allocations_left = unlimited;
inline thread_local bool fails_once = false;
/// Whether one has failed.
inline thread_local bool refused = false;
/// Blocks of the program that have not been freed.
inline std::atomic<std::int64_t> live_blocks = 0;

using misc::histogram;

/// One name for arguments of several types; a call takes the one that its declaration asks for.
template <class... Types>
struct argument : Types... {
    /// Fills all of them.
    void operator=(double v) { (static_cast<void>(static_cast<Types&>(*this) = v), ...); }
};
using both = argument<vector_fixed<double, 2>, vector_fixed<double, 3>>;
inline const both one{vector_fixed<double, 2>(1.0), vector_fixed<double, 3>(1.0)};
using both_symmetric = argument<symmetric_fixed<double, 2>, symmetric_fixed<double, 3>>;

using actions = std::map<std::string, std::function<void()>>;
template <class... Conditions>
actions list_of(const Conditions&... conditions) {
    return {conditions...};
}

/// What a call takes by reference. Other values than arrays and objects go by their bytes.
struct parameter {
    bool constant;
    std::variant<dense1D<double>*, dense1D<unsigned int>*, dense1D<int>*, dense2D<double>*,
                 dense2D<unsigned int>*, histogram*, node_detector*, std::span<const std::byte>>
        object;
};
using parameter_list = std::vector<parameter>;
template <class T>
parameter as_parameter(T& x) {
    using object = std::remove_const_t<T>*;
    if constexpr (std::is_constructible_v<decltype(parameter::object), object>)
        return {std::is_const_v<T>, const_cast<object>(&x)};
    else
        return {std::is_const_v<T>, std::as_bytes(std::span(&x, 1))};
}
template <class... T>
parameter_list parameters_of(T&... x) {
    return {as_parameter(x)...};
}

#define CONDITION(words, ...) actions::value_type(words, [&] { __VA_ARGS__; })
/// Every reader passes over what belongs to the other formats.
inline const char* const mesh_file = KVX_ZELVO_SOURCE "/tests/data/mesh_in_every_format.txt";
inline const scratch_file no_mesh("BEGIN BULK\n"), no_text;

/// Legal arguments by the names that the headers give them; conditions spoil them, each apart from
/// the others, so that one call can meet several.
struct arguments {
    dense2D<double> pos = points(
        {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {2, 2, 2}, {3, 3, 3}});
    dense2D<unsigned int> range[2] = {columns({{0, 1, 2}, {1, 3, 2}, {4, 4, 5}}),
                                      columns({{0, 1, 5}, {2, 1, 4}})};
    dense2D<unsigned int>*first = range, *last = range + 2;
    dense2D<unsigned int>&conn = range[0], &connectM = conn, &conn1 = conn, &m = conn, &E1 = conn,
                     &connectM1 = conn, &triangles = conn, &conn2 = range[1], &connectM2 = conn2,
                     &E2 = conn2;
    dense2D<unsigned int> neighbors{3, 3, none}, elem_refs{3, 3, none}, edges, boundaries,
        copy_conn, kept_conn, quads;
    element_type kind = ET_TRIA3, FE2 = ET_TRIA3, &FE_type = kind, &FE = kind, &FE1 = kind,
                 &t = kind;
    dense1D<int> types{2, ET_TRIA3}, &FE_types = types, &FEs = types;
    dense1D<unsigned int> nodes = vec({0, 1, 2, 3}), &nodes1 = nodes, &v = nodes, &A = nodes,
                          nodes2 = vec({3, 2, 4}), &excluded = nodes2, &B = nodes2;
    dense1D<unsigned int> new_IDs, out, group_nodes, group_ends, ancestors, elements, cells,
        cell_types, &E2_in_E1 = out, &E1_in_E2 = new_IDs, &B_in_A = out, &A_in_B = new_IDs;
    dense1D<unsigned int> offsets = vec({0, 1, 3}), refs = vec({0, 1, 1}), props = vec({1, 1, 2});
    dense1D<double> Q, shocks, sizes{8, 1.0}, fallback_sizes{8, 1.0};
    dense2D<double> metrics = matrix(std::vector<std::vector<double>>(8, {1, 0, 1, 0, 0, 1}));
    dense2D<double> metrics3d = metrics, bases = metrics, V = metrics, metrics2d, lengths, normals,
                    texcoords;
    argument<dense1D<double>, dense2D<double>> fallback{sizes, metrics};
    both_symmetric M1{{1.0, 0.0, 1.0}, {1.0, 0.0, 1.0, 0.0, 0.0, 1.0}}, M2 = M1;
    argument<both_symmetric, dense2D<double>> M{M1, metrics};
    argument<dense1D<double>, vector_fixed<double, 2>, vector_fixed<double, 3>> values{
        sizes, {}, {}};
    argument<matrix_fixed<double, 2, 2>, matrix_fixed<double, 3, 3>> vectors;
    dense1D<unsigned int> map = vec({3, 2, 1, 0, 4, 5, 6, 7}), perm = vec({1, 0, 2, 3});
    symmetric_fixed<double, 3> M3{1.0, 0.0, 1.0, 0.0, 0.0, 1.0};
    matrix_fixed<double, 3, 2> basis{1.0};
    both lo, hi, Pmin, Pmax{one}, C, P{one}, T{one}, R{one}, N{one};
    double tol = 0.5, f = 2, angle = 1, tolerance = 0.5, gradation = 1, hmin = 1, hmax = 2, h = 2,
           value = 0.3;
    unsigned int n = 8, n_kept = 0, flags = 2, ncells = 0, node = 2, n_copies = 1, dim = 3;
    int s = 1;
    bool flag = true, strict = true, exact_order = true, ascii = true;
    const char* filename = "/dev/null";
    std::FILE* stream = stdin; // takes nothing
    STL_report report;
    histogram statistics{0, 1, 4}, other{0, 1, 4};
    node_detector detector;
    std::int64_t memory = unlimited;

    actions conditions = list_of(
        CONDITION("always"), CONDITION("otherwise"), CONDITION("out of memory", memory = 0),
        CONDITION("out of memory later", memory = 8),
        CONDITION("there is no memory for more rows of pos", pos = dense2D<double>(1, 8),
                  memory = 0),
        CONDITION("there is no memory for a copy of an overlapping fallback",
                  fallback_sizes = metrics.as_vector(), memory = 0),
        CONDITION("there are no entries", nodes.resize(0), conn.resize(conn.rows(), 0),
                  conn2.resize(3, 0)),
        CONDITION("every entry is `no_node`", nodes = none, conn = none, conn2 = none),
        CONDITION("a list is empty", nodes.resize(0), nodes2.resize(0)),
        CONDITION("an entry is stray", nodes = vec({99}), conn(0, 0) = 99),
        CONDITION("an entry of nodes is stray", nodes = vec({99})),
        CONDITION("an entry of nodes2 is stray", nodes2 = vec({99})),
        CONDITION("an entry of neighbors is neither an element nor `no_node`", neighbors(0, 0) = 3),
        CONDITION("pos has no columns", pos.resize(pos.rows(), 0)),
        CONDITION("pos has no entries", pos.resize(0, pos.cols())),
        CONDITION("the rows of pos do not fit", pos.resize(4, pos.cols())),
        CONDITION("the matrix is a misfit", conn(0, 0) = 99),
        CONDITION("the kind is mixed and the matrix a misfit", types[0] = kind = ET_SOLID_MIX,
                  conn(0, 0) = none),
        CONDITION("the rows of the matrix do not fit", conn.resize(2, conn.cols()),
                  conn2.resize(2, conn2.cols())),
        CONDITION("the other matrix does not fit", neighbors.resize(2, 2), elem_refs.resize(3, 2),
                  conn2.resize(4, 2)),
        CONDITION("the rows of what is appended to do not fit",
                  edges = kept_conn = columns({{0, 1, 2, 3}})),
        CONDITION("the rows of the metrics do not fit", metrics.resize(5, 8),
                  metrics3d.resize(5, 8), M.resize(5, 8)),
        CONDITION("triangles has entries and fewer than 3 rows", conn.resize(2, 3)),
        CONDITION("quads has entries and fewer than 4 rows", quads.resize(3, 1)),
        CONDITION("normals has entries and is not 3 x nodes", normals.resize(3, 7)),
        CONDITION("texcoords has entries and is not 2 x nodes", texcoords.resize(2, 7)),
        CONDITION("bases has not 6 rows and a column for each size or metric", bases.resize(6, 7)),
        CONDITION("fallback is a matrix with other rows than metrics",
                  static_cast<dense2D<double>&>(fallback).resize(3, 8)),
        CONDITION("n is `no_node` and the kind is not mixed", n = none),
        CONDITION("n_kept is not below the number of nodes", n_kept = 8),
        CONDITION("n_copies is 0", n_copies = 0), CONDITION("flags is above 2", flags = 3),
        CONDITION("the tolerance is negative", tol = tolerance = -1),
        CONDITION("gradation is not above 0", gradation = 0),
        CONDITION("neither bound is 0 or more", hmin = hmax = -1),
        CONDITION("N is too short", N = 0),
        CONDITION("the transform does nothing", f = 1, angle = 0, R = 0, T = 0),
        CONDITION("the range is empty", last = first),
        CONDITION("the range is reversed", last = range, first = range + 1),
        CONDITION("the counts differ", types.resize(1), refs.resize(2)),
        CONDITION("there are not as many properties as elements", props.resize(2)),
        CONDITION("there are not as many elements as matrices",
                  conn = columns({{0, 1, 2}, {0, 1, 2}})),
        CONDITION("the offsets do not fit", offsets[1] = 4),
        CONDITION("the kind is not handled", types[0] = kind = ET_TRIA6),
        CONDITION("the kind has no cell", types[0] = kind = ET_NODE1, conn.resize(1, 3)),
        CONDITION("the kind is none", types[0] = kind = static_cast<element_type>(21)),
        CONDITION("a size or metric is invalid", sizes[0] = 0, metrics = 0, M = 0),
        CONDITION("in the plane a metric is invalid or there is not exactly one for each node",
                  pos.resize(2, 8)),
        CONDITION("there are no more sizes than pos has rows", sizes.resize(3)),
        CONDITION("a node has no value", sizes.resize(1), metrics.resize(metrics.rows(), 1)),
        CONDITION("metrics has no entries", metrics.resize(0, 8)),
        CONDITION("nodes is empty and metrics has no entries", nodes.resize(0),
                  metrics.resize(0, 8)),
        CONDITION("an eigenvalue of M is not finite", M = 1e308 * 1e10),
        CONDITION("M1 is not positive definite", M1 = 0),
        CONDITION("M2 is not finite", M2 = 1e308 * 1e10),
        CONDITION("the limits differ", other = histogram(0, 1, 5)),
        CONDITION("the detector is empty", detector.clear()),
        CONDITION("its matrix lost rows or columns since", pos.resize(pos.rows(), 1)),
        CONDITION("stream is null", stream = nullptr),
        CONDITION("the file cannot be opened", filename = "/nonexistent/file"),
        CONDITION("the file has no beginning", filename = no_text),
        CONDITION("there is no element or no node", filename = no_mesh),
        CONDITION("reading fails", filename = "/"),
        CONDITION("writing fails", filename = "/dev/full"));

    /// An output that calls take another object for: an input of the same type.
    const void* output = nullptr;
    void* instead = nullptr;
    template <class T>
    T pass(auto& name) {
        if constexpr (!requires { static_cast<T>(name); }) {
            return sizes; // where v is not a list of nodes
        } else {
            if constexpr (std::is_reference_v<T>) {
                if (&static_cast<T>(name) == output)
                    return *static_cast<std::remove_reference_t<T>*>(instead);
            }
            return static_cast<T>(name);
        }
    }

#define CALL(number, form, dimension, ...)                                                         \
    std::int64_t call_##number() {                                                                 \
        return static_cast<std::int64_t>(__VA_ARGS__);                                             \
    }
#define NO_RESULT(number, form, dimension, ...)                                                    \
    std::int64_t call_##number() {                                                                 \
        __VA_ARGS__;                                                                               \
        return 0;                                                                                  \
    }
#define PARAMETERS(number, ...)                                                                    \
    parameter_list parameters_##number() {                                                         \
        return parameters_of(__VA_ARGS__);                                                         \
    }
#define ARGUMENT(name, ...) pass<__VA_ARGS__>(name)
#include "exported_calls.inc"
#undef CALL
#undef NO_RESULT
#undef PARAMETERS

    arguments() = default;
    arguments(const arguments&) = delete;
};

/// A function by its form.
struct call {
    std::string form;
    unsigned dimension;
    bool has_result;
    std::int64_t (arguments::*make)();
    parameter_list (arguments::*parameters)();
};
#define CALL(number, form, dimension, ...)                                                         \
    {form, dimension, true, &arguments::call_##number, &arguments::parameters_##number},
#define NO_RESULT(number, form, dimension, ...)                                                    \
    {form, dimension, false, &arguments::call_##number, &arguments::parameters_##number},
#define PARAMETERS(...)
inline const call calls[] = {
#include "exported_calls.inc"
};

/// Changes the arguments into a success case of the call.
inline void prepare(arguments& a, const call& c) {
    a.pos.resize(c.dimension, a.pos.cols());
    a.detector.reinit(a.pos);
    if (c.form.find("_input") != std::string::npos) a.filename = mesh_file;
    // What some forms want otherwise.
    if (c.form.starts_with("H_shock") || c.form.starts_with("edge_lengths"))
        a.conn.resize(2, a.conn.cols());
    if (c.form.starts_with("NASTRAN_output") && c.form.find("offsets") == std::string::npos)
        a.conn.resize(3, 1), a.conn2.resize(3, 1);
}

} // namespace kvx::zelvo::tests
