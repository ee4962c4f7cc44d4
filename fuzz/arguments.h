#pragma once

#include <string>

#include "byte_source.h"
#include "fuzzing.h"

namespace kvx::zelvo::fuzzing {

using misc::histogram;

/// One name for arguments of several types; a call takes the one that its declaration asks for.
template <class... Types>
struct argument : Types... {
    argument() = default;
    explicit argument(const Types&... values)
        : Types(values)... {}
};
using both_lists = argument<dense1D<unsigned int>, dense1D<double>>;
using both_fields = argument<dense1D<double>, dense2D<double>>;

/// Arguments by the names that the headers give them, as many as a function of this form needs.
/// They are mostly sound and fit each other.
class arguments {
public:
    arguments(byte_source source, const std::string& form)
        : bytes_(std::move(source))
        , form_(form) {
        make_mesh();
        make_lists();
        make_fields();
        make_numbers();
    }
    arguments(const arguments&) = delete;

    dense2D<double> pos;
    dense2D<unsigned int> range[3];
    dense2D<unsigned int>*first = range, *last = range + 2, *&connect_begin = first,
                     *&connect_end = last;
    dense2D<unsigned int>&conn = range[0], &connectM = conn, &conn1 = conn, &m = conn, &E1 = conn,
                     &connectM1 = conn, &triangles = conn, &conn2 = range[1], &connectM2 = conn2,
                     &E2 = conn2, &quads = conn2;
    dense2D<unsigned int> neighbors, elem_refs, edges, boundaries, copy_conn, kept_conn;
    element_type kind = ET_TRIA3, &FE = kind, &FE1 = kind, &FE_type = kind, &t = kind, FE2 = kind;
    dense1D<int> types, &FEs = types, &FE_types = types;

    both_lists v;
    dense1D<unsigned int> nodes,
        &nodes1 = nodes, &A = nodes, nodes2, &excluded = nodes2, &B = nodes2, new_IDs, out,
        &map = nodes2, &perm = nodes2, group_nodes, group_ends, ancestors, elements, cells,
        cell_types, &E2_in_E1 = out, &E1_in_E2 = new_IDs, &B_in_A = out, &A_in_B = new_IDs, offsets,
        refs, props;

    dense1D<double> sizes, Q, shocks, fallback_sizes;
    dense2D<double> metrics, metrics3d, metrics2d, bases, V, lengths, normals, texcoords;
    both_fields fallback;
    argument<symmetric_fixed<double, 2>, symmetric_fixed<double, 3>, dense2D<double>> M, M1, M2, M3;
    argument<vector_fixed<double, 2>, vector_fixed<double, 3>> lo, hi, C, P, T, R, N, Pmin, Pmax;
    argument<dense1D<double>, vector_fixed<double, 2>, vector_fixed<double, 3>> values;
    argument<matrix_fixed<double, 2, 2>, matrix_fixed<double, 3, 3>> vectors;
    matrix_fixed<double, 3, 2> basis;
    double tol = 0, f = 0, angle = 0, tolerance = 0, gradation = 0, hmin = 0, hmax = 0, h = 0,
           value = 0;
    unsigned int n = 0, n_kept = 0, flags = 0, ncells = 0, node = 0, n_copies = 0, dim = 0;
    int s = 0;
    bool flag = false, strict = false, exact_order = false, ascii = false;
    const char* filename = output_file.path();
    std::FILE* stream = nullptr;
    STL_report report;
    histogram statistics{-1, 1, 4}, other{-1, 1, 4};
    node_detector detector;

    bool takes(const char* name) const { return form_.find(name) != std::string::npos; }
    const std::string& form() const { return form_; }
    bool frames_are_whole() const { return bytes_.frames_are_whole(); }

    /// All arrays of one type.
    template <class Array>
    std::vector<Array*> arrays() {
        std::vector<Array*> found;
        const auto add = [&](auto&... array) {
            const auto add_one = [&](auto& one) {
                if constexpr (std::is_same_v<decltype(one), Array&>) found.push_back(&one);
            };
            (add_one(array), ...);
        };
        add(pos, range[0], range[1], range[2], neighbors, elem_refs, edges, boundaries, copy_conn,
            kept_conn, types, list_of_nodes(), nodes, nodes2, new_IDs, out, group_nodes, group_ends,
            ancestors, elements, cells, cell_types, offsets, refs, props, list_of_numbers(), sizes,
            Q, shocks, fallback_sizes, metrics, metrics3d, metrics2d, bases, V, lengths, normals,
            texcoords, static_cast<dense1D<double>&>(fallback),
            static_cast<dense2D<double>&>(fallback), static_cast<dense2D<double>&>(M),
            static_cast<dense1D<double>&>(values));
        return found;
    }
    dense1D<unsigned int>& list_of_nodes() { return v; }
    dense1D<double>& list_of_numbers() { return v; }
    const dense1D<unsigned int>& list_of_nodes() const { return v; }

    // ---- what a call was given

    /// Lets arguments share storage with others, or be the same object as another one.
    void alias() {
        same_object_ = bytes_.byte() % 2 == 0;
        if (same_object_) return;
        for (int i = 0; i < 4; ++i) {
            alias_one(arrays<dense1D<unsigned int>>());
            alias_one(arrays<dense2D<unsigned int>>());
            alias_one(arrays<dense1D<double>>());
            alias_one(arrays<dense2D<double>>());
        }
    }

    template <class Type, class Argument>
    Type pass(Argument& given) {
        if constexpr (std::is_lvalue_reference_v<Type>) {
            using object = std::remove_cvref_t<Type>;
            object* address = &static_cast<object&>(given);
            if constexpr (requires { address->shares_storage(*address); }) {
                object*& earlier = std::get<object*>(passed_);
                if (same_object_ && earlier) address = earlier;
                earlier = address;
            }
            if constexpr (!std::is_const_v<std::remove_reference_t<Type>>)
                changeable_.push_back(address);
            return *address;
        } else {
            if constexpr (std::is_same_v<Type, dense2D<unsigned int>*>)
                for (auto& matrix : range)
                    changeable_.push_back(&matrix);
            return static_cast<Type>(given);
        }
    }
    /// Whether a call may have changed it.
    bool changeable(const void* array) const {
        return std::find(changeable_.begin(), changeable_.end(), array) != changeable_.end();
    }

private:
    double number() { return bytes_.number(); }
    /// Mostly above 0.
    double size() { return bytes_.one_in(16) ? number() : 0.25 + 0.25 * bytes_.below(16); }
    unsigned int index() { return bytes_.index(pos.cols()); }
    dense1D<unsigned int> list_of_indices(std::uint64_t count) {
        const bool sound = !pos.empty() && bytes_.byte() % 2 == 0;
        return bytes_.list(count, [&] { return sound ? bytes_.below(pos.cols()) : index(); });
    }
    /// Packed symmetric matrices, mostly positive definite.
    dense2D<double> metrics_for(std::uint64_t dimension, std::uint64_t count) {
        const std::uint64_t rows =
            bytes_.one_in(16) ? bytes_.below(8) : dimension * (dimension + 1) / 2;
        unsigned int k = 0;
        return bytes_.matrix(rows, count, [&, rows]() -> double {
            const auto i = k++ % std::max<std::uint64_t>(rows, 1);
            if (bytes_.one_in(64)) return number();
            const bool diagonal = i == 0 || i == 2 || i == 5;
            return diagonal ? 0.5 + bytes_.below(16) : 0.125 * bytes_.below(4);
        });
    }
    template <class Array>
    static Array part_of(const Array& a, unsigned int start) {
        if constexpr (requires { a.cols(); })
            return a.sub_matrix(0, start, a.rows(), a.cols());
        else
            return a.sub_vector(start, a.size());
    }
    template <class Array>
    void alias_one(const std::vector<Array*>& all) {
        Array& target = *all[bytes_.below(all.size())];
        target = part_of(*all[bytes_.below(all.size())], bytes_.below(4));
    }

    void make_mesh() {
        kind = bytes_.kind();
        pos = bytes_.nodes();
        if (form_.find("offsets, FEs") != std::string::npos) return make_groups();
        if (takes("triangles") || form_.starts_with("STL")) kind = ET_TRIA3;
        if (takes("H_shock") || takes("edge_lengths")) kind = ET_BAR2;
        range[0] = bytes_.elements(kind, pos.cols());
        if (takes("types") || takes("FEs") || takes("2") || takes("first") || takes("quads")) {
            FE2 = takes("quads") ? ET_QUAD4 : takes("E2") ? kind : bytes_.kind();
            range[1] = bytes_.elements(FE2, pos.cols());
            const element_type third = bytes_.kind();
            range[2] = bytes_.elements(third, pos.cols());
            const unsigned int b = bytes_.byte();
            first = range + (b >= 224 ? b % 4 : 0);
            last = range + (b >= 224 ? b / 4 % 4 : b % 3 + 1);
            const int kinds[] = {kind, FE2, third};
            const auto skipped = first - range;
            const auto count =
                static_cast<std::uint64_t>(std::max<std::ptrdiff_t>(last - first, 0));
            std::ptrdiff_t k = 0;
            types = bytes_.list(bytes_.one_in(32) ? bytes_.below(5) : count,
                                [&]() -> int { return kinds[(skipped + k++) % 3]; });
        }
        if (takes("neighbors") && !form_.starts_with("get_neighbors")) {
            if (bytes_.byte() % 4 != 0)
                get_neighbors(conn, kind, true, neighbors);
            else
                neighbors = bytes_.elements(kind, conn.cols());
        }
        if (takes("elem_refs"))
            elem_refs = bytes_.matrix(bytes_.below(4), bytes_.about(conn.cols()),
                                      [&] { return bytes_.index(conn.cols()); });
    }
    /// Elements of several kinds in one matrix.
    void make_groups() {
        types = bytes_.list(bytes_.below(4), [&]() -> int { return bytes_.kind(); });
        std::uint64_t rows = 1;
        for (const int type : types)
            rows = std::max<std::uint64_t>(rows, node_count(static_cast<element_type>(type)));
        if (bytes_.one_in(16)) rows = bytes_.below(28);
        const bool sound = !pos.empty() && bytes_.byte() % 2 == 0;
        range[0] = bytes_.matrix(rows, bytes_.below(9),
                                 [&] { return sound ? bytes_.below(pos.cols()) : index(); });
        unsigned int end = 0;
        offsets = bytes_.list(bytes_.one_in(32) ? bytes_.below(5) : types.size() + 1, [&] {
            return std::exchange(end, bytes_.one_in(32)
                                          ? bytes_.byte()
                                          : std::min(end + bytes_.below(4), bound(conn.cols())));
        });
        props = bytes_.list(bytes_.about(conn.cols()), [&] { return bytes_.index(4); });
    }
    void make_lists() {
        if (takes("v") || takes("perm")) {
            static_cast<dense1D<unsigned int>&>(v) = list_of_indices(bytes_.below(25));
            static_cast<dense1D<double>&>(v) =
                bytes_.list(bytes_.below(25), [&] { return number(); });
        }
        nodes = list_of_indices(bytes_.below(25));
        nodes2 = list_of_indices(bytes_.below(25));
        for (dense1D<unsigned int>* const list :
             {&new_IDs, &out, &group_nodes, &group_ends, &ancestors, &elements})
            *list = list_of_indices(bytes_.one_in(2) ? bytes_.below(25) : 0);
        if (takes("cells")) {
            cells = list_of_indices(bytes_.below(25));
            cell_types = list_of_indices(bytes_.below(25));
        }
        if (!takes("offsets, FEs"))
            offsets = list_of_indices(bytes_.one_in(2) ? bytes_.below(5) : 0);
        if (takes("refs"))
            refs = bytes_.list(bytes_.about(conn.cols()), [&] { return bytes_.index(4); });
        for (dense2D<unsigned int>* const matrix : {&edges, &boundaries, &copy_conn, &kept_conn})
            if (bytes_.one_in(2))
                *matrix = bytes_.matrix(matrix == &edges ? 2 : bytes_.about(conn.rows()),
                                        bytes_.below(9), [&] { return index(); });
    }
    void make_fields() {
        const std::uint64_t dimension = pos.rows() == 2 ? 2 : 3;
        if (takes("sizes")) sizes = bytes_.list(bytes_.about(pos.cols()), [&] { return size(); });
        if (takes("Q") || takes("shocks"))
            for (dense1D<double>* const list : {&Q, &shocks})
                *list = bytes_.list(bytes_.about(conn.cols()), [&] { return number(); });
        if (takes("metrics")) metrics = metrics_for(dimension, bytes_.about(pos.cols()));
        if (takes("metrics3d")) metrics3d = metrics_for(3, bytes_.about(pos.cols()));
        if (takes("metrics3d")) metrics2d = metrics_for(2, bytes_.about(pos.cols()));
        if (takes("bases"))
            bases = bytes_.matrix(bytes_.one_in(16) ? bytes_.below(8) : 6, bytes_.about(pos.cols()),
                                  [&] { return number(); });
        if (takes("fallback")) {
            fallback_sizes = bytes_.list(bytes_.about(pos.cols()), [&] { return size(); });
            fallback = both_fields(bytes_.list(bytes_.about(pos.cols()), [&] { return size(); }),
                                   metrics_for(dimension, bytes_.about(pos.cols())));
        }
        if (takes("lengths")) lengths = metrics_for(2, bytes_.below(9));
        if (takes(" V") || takes("medit"))
            V = bytes_.matrix(bytes_.below(8), bytes_.below(25), [&] { return number(); });
        if (takes("normals")) {
            normals = bytes_.matrix(3, bytes_.about(pos.cols()), [&] { return number(); });
            texcoords = bytes_.matrix(2, bytes_.about(pos.cols()), [&] { return number(); });
            if (bytes_.one_in(4)) normals.clear();
            if (bytes_.one_in(4)) texcoords.clear();
        }
        if (takes("values"))
            static_cast<dense1D<double>&>(values) =
                bytes_.list(bytes_.below(25), [&] { return number(); });
        for (auto* const matrix : {&M, &M1, &M2, &M3}) {
            if (!takes("M")) break;
            const dense2D<double> two = metrics_for(2, 1), three = metrics_for(3, 1);
            std::copy_n(two.data(), std::min<std::uint64_t>(two.rows(), 3),
                        static_cast<symmetric_fixed<double, 2>&>(*matrix).data());
            std::copy_n(three.data(), std::min<std::uint64_t>(three.rows(), 6),
                        static_cast<symmetric_fixed<double, 3>&>(*matrix).data());
        }
        static_cast<dense2D<double>&>(M) = metrics_for(dimension, bytes_.below(25));
    }
    void make_numbers() {
        for (auto* const vector : {&lo, &hi, &C, &P, &T, &R, &N, &Pmin, &Pmax})
            for (unsigned int i = 0; i < 3; ++i) {
                const double x = number();
                static_cast<vector_fixed<double, 3>&>(*vector)[i] = x;
                if (i < 2) static_cast<vector_fixed<double, 2>&>(*vector)[i] = x;
            }
        for (double* const x : {&tol, &tolerance, &gradation, &hmin, &hmax, &h})
            *x = bytes_.one_in(8) ? number() : size();
        f = number(), angle = number(), value = number();
        for (unsigned int i = 0; i < 6; ++i)
            basis(i % 3, i / 3) = number();
        n = bytes_.one_in(8) ? bytes_.one_of({0u, no_node, 0x80000000u}) : bytes_.below(25);
        n_kept = bytes_.below(25), flags = bytes_.below(4), ncells = bytes_.below(25);
        node = index(), n_copies = bytes_.one_in(16) ? no_node : bytes_.below(5);
        dim = bytes_.one_in(16) ? no_node : bytes_.below(5);
        s = bytes_.one_in(16) ? bytes_.take<int>() : static_cast<int>(bytes_.below(32)) - 16;
        flag = strict = exact_order = ascii = bytes_.byte() % 2 == 0;
        if (bytes_.one_in(64)) filename = bytes_.one_in(2) ? nullptr : "/nonexistent/file";
        if (takes("histogram")) statistics.process(number()), other.process(number());
        if (bytes_.one_in(16)) other = histogram(0, 1, 3);
        if (takes("node_detector") && !bytes_.one_in(16)) {
            bytes_.one_in(2) ? detector.reinit(pos, nodes) : detector.reinit(pos);
            if (bytes_.one_in(16)) pos.resize(pos.rows(), pos.cols() / 2);
        }
    }

    byte_source bytes_;
    std::string form_;
    bool same_object_ = false;
    std::tuple<dense1D<unsigned int>*, dense2D<unsigned int>*, dense1D<double>*, dense2D<double>*,
               dense1D<int>*>
        passed_{};
    std::vector<const void*> changeable_;
};

} // namespace kvx::zelvo::fuzzing
