#include <kvx/zelvo/node_indices.h>

#include <algorithm>
#include <cstddef>

#include "foundation/appending.h"
#include "foundation/element_columns.h"
#include "foundation/entry_runs.h"
#include "foundation/matrix_range.h"
#include "foundation/memory_overlap.h"
#include "indices/index_collection.h"

namespace kvx::zelvo {

namespace {

/// Calls visit(entry) for every entry of an array, column by column, up to the end of the block in
/// which it first answers false; whether it never did. Without a way out at every entry several are
/// compared at once.
template <class Array, class Visit>
bool every_entry(const Array& a, Visit&& visit) {
    return every_run(a, [&visit](const unsigned int* begin, const unsigned int* last) {
        constexpr std::ptrdiff_t block = 256;
        while (begin != last) {
            const unsigned int* const end = begin + std::min(last - begin, block);
            unsigned int refused = 0;
            for (; begin != end; ++begin)
                refused |= visit(*begin) ? 0u : 1u;
            if (refused != 0) return false;
        }
        return true;
    });
}

/// The same with entries that may be written.
template <class Visit>
void change_every_entry(dense1D<unsigned int>& v, Visit&& visit) {
    for (unsigned int& entry : v)
        visit(entry);
}
template <class Visit>
void change_every_entry(dense2D<unsigned int>& m, Visit&& visit) {
    if (m.rows() == 0) return;
    for (std::uint64_t j = 0; j < m.cols(); ++j) {
        unsigned int* const column = &m(0, j);
        for (std::uint64_t i = 0; i < m.rows(); ++i)
            visit(column[i]);
    }
}

template <class Array>
unsigned int largest_index(const Array& a) {
    const unsigned int length = largest_shifted(a, 1); // where no_node is 0
    return length == 0 ? 0 : length - 1;
}

template <class Array>
bool all_below(const Array& a, unsigned int n) {
    return n == no_node || every_entry(a, [n](unsigned int e) { return e < n || e == no_node; });
}

/// Whether a column holds indices below n, then perhaps no_node to its end, the first of them in a
/// row from first_open to last_open.
bool valid_mixed_column(const unsigned int* column, std::uint64_t rows, std::uint64_t first_open,
                        std::uint64_t last_open, unsigned int n) {
    std::uint64_t i = 0;
    while (i < rows && column[i] != no_node) {
        if (column[i++] >= n) return false;
    }
    if (i < rows && (i < first_open || i > last_open)) return false;
    return std::all_of(column + i, column + rows, [](unsigned int e) { return e == no_node; });
}

bool valid_mixed(const dense2D<unsigned int>& conn, std::uint64_t first_open,
                 std::uint64_t last_open, unsigned int n) {
    for (std::uint64_t j = 0; j < conn.cols(); ++j) {
        if (!valid_mixed_column(&conn(0, j), conn.rows(), first_open, last_open, n)) return false;
    }
    return true;
}

template <class Array>
void renumber(Array& a, const dense1D<unsigned int>& map) {
    dense1D<unsigned int> on_entry(map);
    if (overlap(memory_run(a), memory_run(map)) && !on_entry.copy(map)) return;
    const unsigned int* const target = on_entry.data();
    const std::uint64_t size = on_entry.size();
    change_every_entry(a, [=](unsigned int& e) {
        if (e < size) e = target[e];
    });
}

template <class T>
void scatter(dense1D<T>& v, const dense1D<unsigned int>& perm) {
    dense1D<T> moved;
    if (!moved.copy(v)) return;
    const std::uint64_t n = v.size();
    for (std::uint64_t k = 0; k < std::min(n, perm.size()); ++k) {
        const unsigned int p = perm[k];
        if (p < n && p != k) moved[p] = v[k];
    }
    std::copy(moved.begin(), moved.end(), v.begin());
}

unsigned int largest_index(const dense2D<unsigned int>* first, const dense2D<unsigned int>* last) {
    unsigned int largest = 0;
    for (; first != last; ++first)
        largest = std::max(largest, largest_index(*first));
    return largest;
}

/// The public forms stop where memory ends and keep what they have.
template <class Append>
void append_silently(Append&& append) {
    guarded([&] {
        append();
        return 0;
    });
}

} // namespace

void append_unique(dense1D<unsigned int>& out, const dense2D<unsigned int>* first,
                   const dense2D<unsigned int>* last) {
    index_set seen(largest_index(first, last), entry_count(first, last));
    std::uint64_t columns = 0;
    for (auto m = first; m != last; ++m)
        columns += m->empty() ? 0 : m->cols();
    appender<unsigned int> list(out);
    list.make_room(columns);
    for (; first != last; ++first) {
        every_entry(*first, [&](unsigned int e) {
            if (e != no_node && seen.insert(e)) list.push(e);
            return true;
        });
    }
}

void append_unique(dense1D<unsigned int>& out, const dense1D<unsigned int>& v,
                   const dense1D<unsigned int>& excluded) {
    if (v.empty()) return;
    const dense1D<unsigned int> source(v);
    const unsigned int largest = largest_index(source);
    index_set seen(largest, source.size() + excluded.size());
    for (const unsigned int e : excluded) {
        if (e <= largest) seen.insert(e);
    }
    appender<unsigned int> list(out);
    list.make_room(source.size());
    for (const unsigned int e : source) {
        if (e != no_node && seen.insert(e)) list.push(e);
    }
}

const char* version() noexcept {
    return KVX_ZELVO_VERSION;
}

unsigned int max_ID(const dense1D<unsigned int>& v) noexcept {
    return v.empty() ? no_node : largest_index(v);
}

unsigned int max_ID(const dense2D<unsigned int>& m) noexcept {
    return m.empty() ? no_node : largest_index(m);
}

bool check_IDs(const dense1D<unsigned int>& v, unsigned int n) noexcept {
    return all_below(v, n);
}

bool check_IDs(const dense2D<unsigned int>& m, unsigned int n) noexcept {
    return all_below(m, n);
}

bool check_IDs(const dense2D<unsigned int>& conn, element_type t, unsigned int n) noexcept {
    if (conn.empty()) return true;
    const std::uint64_t rows = conn.rows();
    if (t == ET_FACE_MIX) return (rows == 3 || rows == 4) && valid_mixed(conn, 3, 3, n);
    if (t == ET_SOLID_MIX)
        return (rows == 4 || rows == 5 || rows == 6 || rows == 8) && valid_mixed(conn, 4, 6, n);
    if (n == no_node) return true;
    return is_element_type(t) && rows == node_count(t) &&
           every_entry(conn, [n](unsigned int e) { return e < n; });
}

int shift_indices(dense1D<unsigned int>& v, int s) noexcept {
    const auto shift = static_cast<unsigned int>(s);
    change_every_entry(v, [shift](unsigned int& e) {
        if (e != no_node) e += shift;
    });
    return 0;
}

int shift_indices(dense2D<unsigned int>& conn, int s, element_type t) noexcept {
    const auto shift = static_cast<unsigned int>(s);
    const bool keep_padding = is_mixed(t);
    change_every_entry(conn, [=](unsigned int& e) {
        if (!keep_padding || e != no_node) e += shift;
    });
    return 0;
}

void change_indices(dense1D<unsigned int>& v, const dense1D<unsigned int>& map) noexcept {
    renumber(v, map);
}

void change_indices(dense2D<unsigned int>& m, const dense1D<unsigned int>& map) noexcept {
    renumber(m, map);
}

void permutation(dense1D<unsigned int>& v, const dense1D<unsigned int>& perm) noexcept {
    scatter(v, perm);
}

void permutation(dense1D<double>& v, const dense1D<unsigned int>& perm) noexcept {
    scatter(v, perm);
}

int unique_indices(dense1D<unsigned int>& out, const dense2D<unsigned int>* first,
                   const dense2D<unsigned int>* last) noexcept {
    if (first == last) return 0;
    if (is_reversed(first, last)) return -3;
    append_silently([&] { append_unique(out, first, last); });
    return 0;
}

int unique_indices(dense1D<unsigned int>& out, const dense2D<unsigned int>& conn) noexcept {
    return unique_indices(out, &conn, &conn + 1);
}

int unique_indices(dense1D<unsigned int>& out, const dense1D<unsigned int>& v,
                   const dense1D<unsigned int>& excluded) noexcept {
    append_silently([&] { append_unique(out, v, excluded); });
    return 0;
}

int unique_indices(dense1D<unsigned int>& out, const dense1D<unsigned int>& v) noexcept {
    return unique_indices(out, v, dense1D<unsigned int>());
}

int count_unique_indices(const dense2D<unsigned int>* first,
                         const dense2D<unsigned int>* last) noexcept {
    if (first == last) return 0;
    if (is_reversed(first, last)) return -2;
    return guarded([&] {
        index_set seen(largest_index(first, last), entry_count(first, last));
        std::uint64_t count = 0;
        for (; first != last; ++first) {
            every_entry(*first, [&](unsigned int e) {
                if (e != no_node) count += seen.insert(e);
                return true;
            });
        }
        return count_result(count);
    });
}

int count_unique_indices(const dense2D<unsigned int>& conn) noexcept {
    return count_unique_indices(&conn, &conn + 1);
}

} // namespace kvx::zelvo
