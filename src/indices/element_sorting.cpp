#include <kvx/zelvo/element_sorting.h>

#include <algorithm>
#include <vector>

#include <kvx/element_type.h>

#include "foundation/appending.h"
#include "foundation/memory_guard.h"

namespace kvx::zelvo {

namespace {

/// Entries before the first no_node.
std::uint64_t leading_nodes(const dense2D<unsigned int>& conn, std::uint64_t j) {
    const unsigned int* const column = conn.data() + j * conn.ld();
    return static_cast<std::uint64_t>(std::find(column, column + conn.rows(), no_node) - column);
}

/// Moves columns of a matrix along a cycle, holding one aside.
class column_mover {
public:
    explicit column_mover(dense2D<unsigned int>& m)
        : m_(m)
        , rows_(m.empty() ? 0 : m.rows())
        , held_(rows_) {}

    void hold(std::uint64_t j) { std::copy_n(column(j), rows_, held_.begin()); }
    void move(std::uint64_t from, std::uint64_t to) {
        std::copy_n(column(from), rows_, column(to));
    }
    void release(std::uint64_t j) { std::copy_n(held_.begin(), rows_, column(j)); }

private:
    unsigned int* column(std::uint64_t j) { return rows_ == 0 ? nullptr : &m_(0, j); }

    dense2D<unsigned int>& m_;
    std::uint64_t rows_;
    std::vector<unsigned int> held_;
};

/// Gives every place its column, which stands at source[place]; makes source the identity.
void gather_columns(std::vector<unsigned int>& source, column_mover& conn, column_mover& refs) {
    for (unsigned int first = 0; first < source.size(); ++first) {
        if (source[first] == first) continue;
        conn.hold(first);
        refs.hold(first);
        unsigned int place = first;
        while (source[place] != first) {
            const unsigned int next = source[place];
            conn.move(next, place);
            refs.move(next, place);
            source[place] = place;
            place = next;
        }
        conn.release(place);
        refs.release(place);
        source[place] = place;
    }
}

/// Places of the elements when ordered by number of nodes, elements without nodes last.
struct grouping {
    dense1D<unsigned int> nodes;
    dense1D<unsigned int> ends;
    dense1D<unsigned int> new_IDs;
    unsigned int kept = 0;

    explicit grouping(const dense2D<unsigned int>& conn)
        : new_IDs(conn.cols()) {
        // next[k]: first the number of elements of k nodes, then the place of the next such one.
        std::vector<unsigned int> next(conn.empty() ? 1 : conn.rows() + 1);
        for (std::uint64_t j = 0; j < conn.cols(); ++j)
            ++next[leading_nodes(conn, j)];
        appender<unsigned int> group_nodes(nodes);
        appender<unsigned int> group_ends(ends);
        for (std::uint64_t k = 1; k < next.size(); ++k) {
            const unsigned int count = next[k];
            next[k] = kept;
            if (count == 0) continue;
            kept += count;
            group_nodes.push(static_cast<unsigned int>(k));
            group_ends.push(kept);
        }
        next[0] = kept;
        if (kept == 0) {
            group_nodes.push(no_node);
            group_ends.push(0);
        }
        for (std::uint64_t j = 0; j < conn.cols(); ++j)
            new_IDs[j] = next[leading_nodes(conn, j)]++;
    }
};

void renumber(dense2D<unsigned int>& refs, const dense1D<unsigned int>& new_IDs) {
    for (std::uint64_t j = 0; j < refs.cols(); ++j) {
        for (std::uint64_t i = 0; i < refs.rows(); ++i) {
            unsigned int& element = refs(i, j);
            if (element < new_IDs.size()) element = new_IDs[element];
        }
    }
}

} // namespace

int sort_elfes(dense2D<unsigned int>& conn, dense2D<unsigned int>& elem_refs,
               dense1D<unsigned int>& group_nodes, dense1D<unsigned int>& group_ends,
               dense1D<unsigned int>& new_IDs) noexcept {
    const bool has_refs = !elem_refs.empty();
    if (has_refs && elem_refs.cols() != conn.cols()) return -1;
    return guarded([&] {
        need(conn.cols() < no_node); // element numbers are 32-bit
        grouping groups(conn);
        std::vector<unsigned int> source(conn.cols());
        for (unsigned int j = 0; j < source.size(); ++j)
            source[groups.new_IDs[j]] = j;
        column_mover elements(conn);
        column_mover references(elem_refs);
        gather_columns(source, elements, references);

        conn.resize(conn.rows(), groups.kept);
        for (unsigned int& place : groups.new_IDs) {
            if (place >= groups.kept) place = no_node;
        }
        if (has_refs) {
            elem_refs.resize(elem_refs.rows(), groups.kept);
            renumber(elem_refs, groups.new_IDs);
        }
        group_nodes.swap(groups.nodes);
        group_ends.swap(groups.ends);
        new_IDs.swap(groups.new_IDs);
        return 0;
    });
}

int sort_elfes(dense2D<unsigned int>& conn, dense1D<unsigned int>& group_nodes,
               dense1D<unsigned int>& group_ends, dense1D<unsigned int>& new_IDs) noexcept {
    dense2D<unsigned int> no_refs;
    return sort_elfes(conn, no_refs, group_nodes, group_ends, new_IDs);
}

} // namespace kvx::zelvo
