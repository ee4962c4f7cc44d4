#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/node_indices.h>

#include "foundation/element_columns.h"
#include "foundation/memory_guard.h"
#include "io/large_vector.h"

/// What the formats share that hold elements of several kinds in one connectivity.
namespace kvx::zelvo {

/// Elements of several kinds in one matrix, shorter columns padded with no_node.
struct grouped_elements {
    dense2D<unsigned int> connectM;
    dense1D<unsigned int> offsets; ///< group g is columns offsets[g] to offsets[g + 1] - 1
    dense1D<int> FEs;              ///< kind of each group
    dense1D<unsigned int> props;   ///< property number of each element

    void clear() noexcept {
        connectM.clear_hard();
        offsets.clear_hard();
        FEs.clear_hard();
        props.clear_hard();
    }
};

// ---- writing

/// Whether columns begin to end - 1 are elements of that kind, whatever nodes they name.
inline bool is_group(const dense2D<unsigned int>& connectM, std::uint64_t begin, std::uint64_t end,
                     int kind) {
    if (!is_element_type(kind)) return false;
    constexpr std::uint64_t most_face_rows = 4;
    constexpr std::uint64_t most_solid_rows = 20;
    std::uint64_t rows = node_count(static_cast<element_type>(kind));
    if (kind == ET_FACE_MIX) rows = std::min(connectM.rows(), most_face_rows);
    if (kind == ET_SOLID_MIX) rows = std::min(connectM.rows(), most_solid_rows);
    if (begin < end && rows > connectM.rows()) return false;
    return check_IDs(connectM.sub_matrix(0, begin, rows, end - begin),
                     static_cast<element_type>(kind), no_node);
}

/// Whether groups can be written: 0, or, in this order, -5 number of offsets, offsets that descend
/// or leave the matrix; -6 number of properties; -3 a group that is_group denies.
inline int check_groups(const dense2D<unsigned int>& connectM, const dense1D<unsigned int>& offsets,
                        const dense1D<int>& FEs, const dense1D<unsigned int>& props) {
    if (offsets.size() != FEs.size() + 1) return -5;
    if (!std::is_sorted(offsets.begin(), offsets.end())) return -5;
    if (offsets[FEs.size()] > connectM.cols()) return -5;
    if (props.size() != connectM.cols()) return -6;
    for (std::uint64_t g = 0; g < FEs.size(); ++g) {
        if (!is_group(connectM, offsets[g], offsets[g + 1], FEs[g])) return -3;
    }
    return 0;
}

/// Kind of one element of a checked group: that of the group, unless it is a mixed one.
inline element_type kind_in_group(element_type group_kind, const unsigned int* column,
                                  std::uint64_t rows) {
    return is_mixed(group_kind) ? linear_kind_of(column_shape(group_kind, column, rows))
                                : group_kind;
}

/// Connectivities of one kind each as one group each; those without entries have no elements. One
/// with fewer rows than its kind has nodes, which the rows of another could hide, gets a kind that
/// check_groups refuses. The properties are left to the caller. Throws std::bad_alloc.
inline grouped_elements as_groups(std::span<const dense2D<unsigned int>> matrices,
                                  std::span<const element_type> FEs) {
    constexpr int no_kind = -1;
    grouped_elements all;
    std::uint64_t rows = 0;
    std::uint64_t cols = 0;
    need(all.offsets.resize(matrices.size() + 1) && all.FEs.resize(matrices.size()));
    for (std::uint64_t g = 0; g < matrices.size(); ++g) {
        rows = std::max(rows, matrices[g].rows());
        cols += matrices[g].empty() ? 0 : matrices[g].cols();
        need(cols < no_node);
        all.offsets[g + 1] = static_cast<unsigned int>(cols);
        const bool too_short = !matrices[g].empty() && is_element_type(FEs[g]) &&
                               matrices[g].rows() < node_count(FEs[g]);
        all.FEs[g] = too_short ? no_kind : static_cast<int>(FEs[g]);
    }
    if (matrices.size() == 1) {
        all.connectM = matrices[0];
        return all;
    }
    need(all.connectM.resize(rows, cols, no_node));
    for (std::uint64_t g = 0; g < matrices.size(); ++g) {
        for (std::uint64_t j = 0; j < all.offsets[g + 1] - all.offsets[g]; ++j)
            std::copy_n(&matrices[g](0, j), matrices[g].rows(),
                        &all.connectM(0, all.offsets[g] + j));
    }
    return all;
}

// ---- reading

/// Gathers elements one by one, as compact as they come; a change of kind begins a new group.
/// Members throw std::bad_alloc.
class group_collector {
public:
    /// An element of a kind that is not mixed.
    void add(element_type kind, unsigned int property, const unsigned int* nodes) {
        if (properties_.size() >= no_node - 1) throw std::bad_alloc(); // offsets have 32 bits
        if (kinds_.empty() || kinds_.back() != kind) {
            begins_.push_back(static_cast<unsigned int>(properties_.size()));
            kinds_.push_back(kind);
        }
        nodes_.insert(nodes_.end(), nodes, nodes + node_count(kind));
        properties_.push_back(property);
    }

    /// What was gathered, as many rows as the largest element has nodes. Without elements the
    /// offsets are 0, 0.
    grouped_elements result() const {
        grouped_elements all;
        const std::uint64_t cols = properties_.size();
        const std::uint64_t groups = kinds_.size();
        std::uint64_t rows = 0;
        for (const element_type kind : kinds_)
            rows = std::max<std::uint64_t>(rows, node_count(kind));
        need(all.connectM.resize(rows, cols, no_node) && all.FEs.resize(groups) &&
             all.props.resize(cols) &&
             all.offsets.resize(std::max<std::uint64_t>(groups, 1) + 1,
                                static_cast<unsigned int>(cols)));
        std::copy(properties_.begin(), properties_.end(), all.props.begin());
        std::copy(kinds_.begin(), kinds_.end(), all.FEs.begin());
        all.offsets[0] = 0;
        std::copy(begins_.begin(), begins_.end(), all.offsets.begin());
        const unsigned int* nodes = nodes_.data();
        for (std::uint64_t g = 0; g < groups; ++g) {
            for (std::uint64_t j = all.offsets[g]; j < all.offsets[g + 1]; ++j) {
                std::copy_n(nodes, node_count(kinds_[g]), &all.connectM(0, j));
                nodes += node_count(kinds_[g]);
            }
        }
        return all;
    }

private:
    large_vector<unsigned int> nodes_; ///< of all elements, each as many as its kind has
    large_vector<unsigned int> properties_;
    std::vector<unsigned int> begins_; ///< first element of each group
    std::vector<element_type> kinds_;
};

/// Copies a group into a matrix of its own; without such a group the matrix is emptied and the kind
/// ET_NODE_MIX. Throws std::bad_alloc.
inline void copy_group(const grouped_elements& all, std::uint64_t g,
                       dense2D<unsigned int>& connectM, element_type& FE) {
    connectM.clear();
    FE = ET_NODE_MIX;
    if (g >= all.FEs.size()) return;
    const std::uint64_t begin = all.offsets[g];
    const auto kind = static_cast<element_type>(all.FEs[g]);
    need(connectM.copy(
        all.connectM.sub_matrix(0, begin, node_count(kind), all.offsets[g + 1] - begin)));
    FE = kind;
}

/// The reader of two kinds by way of that of groups, read(grouped_elements&): the first two groups,
/// the others are dropped. Returns its code, or -199, which leaves everything empty.
template <class Read>
int read_two_groups(Read&& read, dense2D<double>& pos, dense2D<unsigned int>& connectM1,
                    dense2D<unsigned int>& connectM2, element_type& FE1,
                    element_type& FE2) noexcept {
    const int code = guarded([&] {
        grouped_elements all;
        const int result = read(all);
        copy_group(all, 0, connectM1, FE1);
        copy_group(all, 1, connectM2, FE2);
        return result;
    });
    if (code == out_of_memory) {
        pos.clear_hard();
        connectM1.clear_hard();
        connectM2.clear_hard();
        FE1 = FE2 = ET_NODE_MIX;
    }
    return code;
}

} // namespace kvx::zelvo
