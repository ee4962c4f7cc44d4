#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include <kvx/zelvo/zelvo.h>

/// What the fuzz targets share: files in memory, the memory a reader may take, and what has to hold
/// of a mesh whatever file it came from. A target is the one source that includes this.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Blocks larger than any that the limit allows are refused, as a system short of memory does.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=32:quarantine_size_mb=16";
}
// Of <sanitizer/allocator_interface.h>, which Debian's g++ comes without; null in other builds.
using malloc_hook = void (*)(const volatile void*, std::size_t);
using free_hook = void (*)(const volatile void*);
extern "C" [[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void*);
extern "C" [[gnu::weak]] int __sanitizer_install_malloc_and_free_hooks(malloc_hook, free_hook);

namespace kvx::zelvo::fuzzing {

inline void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// A file that takes no disk, at a path that can be opened like any other.
class memory_file {
public:
    const char* path() const { return path_.c_str(); }
    const char* fill(const std::uint8_t* data, std::size_t size) {
        demand(ftruncate(descriptor_, 0) == 0 &&
                   pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size),
               "the input is in the file");
        return path();
    }
    std::string text() const {
        std::string bytes(size(), ' ');
        demand(pread(descriptor_, bytes.data(), bytes.size(), 0) ==
                   static_cast<ssize_t>(bytes.size()),
               "the file can be read");
        return bytes;
    }
    std::uint64_t size() const {
        return static_cast<std::uint64_t>(lseek(descriptor_, 0, SEEK_END));
    }

private:
    int descriptor_ = memfd_create("fuzz", MFD_CLOEXEC);
    std::string path_ = "/proc/self/fd/" + std::to_string(descriptor_);
};
inline memory_file input_file;
inline memory_file output_file;

// ---- memory

inline std::atomic<std::int64_t> bytes_in_use{0};
inline std::atomic<std::int64_t> most_bytes_in_use{0};

inline void count_block(const volatile void*, std::size_t bytes) {
    bytes_in_use += static_cast<std::int64_t>(bytes);
    most_bytes_in_use = std::max(most_bytes_in_use.load(), bytes_in_use.load());
}
inline void forget_block(const volatile void* block) {
    if (block) bytes_in_use -= static_cast<std::int64_t>(__sanitizer_get_allocated_size(block));
}
inline const int hooks_installed =
    __sanitizer_install_malloc_and_free_hooks
        ? __sanitizer_install_malloc_and_free_hooks(count_block, forget_block)
        : 0;

constexpr std::uint64_t bytes_per_node = 3 * sizeof(double);
/// What is refused with the address sanitizer; a system that is short of memory may refuse less.
constexpr std::uint64_t largest_block = std::uint64_t{32} << 20;

/// Runs a reader and demands that it took at most 64 bytes for each byte of the file and 16 MiB,
/// besides the nodes whose numbers need not follow each other. Without the address sanitizer nothing
/// is counted.
template <class Read>
int read_within_limit(std::size_t size, Read&& read, std::uint64_t sparse_nodes = 0) {
    const std::int64_t before = most_bytes_in_use = bytes_in_use.load();
    const int code = read();
    const std::uint64_t limit = 64 * size + (16u << 20) + bytes_per_node * sparse_nodes;
    demand(most_bytes_in_use - before <= static_cast<std::int64_t>(limit),
           "memory follows the size of the file");
    return code;
}

// ---- meshes

template <class T>
bool equal(const dense1D<T>& a, const dense1D<T>& b) {
    const auto same = [](T x, T y) { return x == y || (x != x && y != y); };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}
template <class T>
bool equal(const dense2D<T>& a, const dense2D<T>& b) {
    bool same = a.rows() == b.rows() && a.cols() == b.cols();
    for (std::uint64_t j = 0; same && j < a.cols(); ++j)
        same = equal(a.col(j), b.col(j));
    return same;
}

inline unsigned int bound(std::uint64_t count) {
    return static_cast<unsigned int>(std::min<std::uint64_t>(count, no_node));
}

/// Checks a mesh of one kind that is not mixed, walks its sides and rates it. Its nodes may lie
/// beyond pos.
inline void examine(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                    element_type kind) {
    dense2D<unsigned int> neighbors, sides, boundary;
    const int code = get_neighbors(connectM, kind, true, neighbors);
    demand(code == 0 || code == -2, "get_neighbors knows the kind or says so");
    if (code == 0 && !connectM.empty()) {
        demand(neighbors.cols() == connectM.cols() && check_IDs(neighbors, bound(connectM.cols())),
               "neighbors are elements");
        demand(get_element_boundaries(connectM, kind, sides) == 0, "sides are listed");
        demand(get_mesh_boundaries(connectM, neighbors, kind, boundary) == 0, "boundary is listed");
        std::uint64_t open = 0;
        for (std::uint64_t j = 0; j < neighbors.cols(); ++j)
            open += static_cast<std::uint64_t>(
                std::count(&neighbors(0, j), &neighbors(0, j) + neighbors.rows(), no_node));
        demand(boundary.cols() == open, "the boundary is the sides without a neighbor");
        demand(sides.cols() == neighbors.cols() * neighbors.rows(), "every side is listed");
    }
    const bool valid = check_IDs(connectM, kind, bound(pos.cols()));
    dense1D<double> Q;
    const int rated = shape_qualities(pos, connectM, kind, Q);
    demand(rated == (code == -2 ? -3 : valid ? 0 : -2), "valid meshes of linear kinds are rated");
    demand(rated != 0 || Q.size() == connectM.cols(), "every element is rated");
    demand(std::all_of(Q.begin(), Q.end(), [](double q) { return q >= -1.0 && q <= 1.0; }),
           "ratings lie between -1 and 1");
}

/// What the readers of several kinds give.
struct grouped_mesh {
    dense2D<double> pos;
    dense2D<unsigned int> connectM;
    dense1D<unsigned int> offsets;
    dense1D<int> FEs;
    dense1D<unsigned int> props;

    bool has(element_type kind) const {
        return std::find(FEs.begin(), FEs.end(), kind) != FEs.end();
    }
    bool same_elements(const grouped_mesh& other) const {
        return equal(connectM, other.connectM) && equal(offsets, other.offsets) &&
               equal(FEs, other.FEs) && equal(props, other.props);
    }
};

inline void examine(const grouped_mesh& mesh) {
    const std::uint64_t groups = mesh.FEs.size();
    demand(mesh.props.size() == mesh.connectM.cols(), "a property for each element");
    demand(mesh.offsets.size() == std::max<std::uint64_t>(groups, 1) + 1,
           "an offset for each group");
    demand(mesh.offsets[0] == 0 && mesh.offsets[mesh.offsets.size() - 1] == mesh.connectM.cols(),
           "groups are all elements");
    std::uint64_t rows = 0;
    for (std::uint64_t g = 0; g < groups; ++g) {
        const auto kind = static_cast<element_type>(mesh.FEs[g]);
        const unsigned int begin = mesh.offsets[g];
        demand(begin < mesh.offsets[g + 1], "groups hold elements");
        demand(node_count(kind) > 0, "groups are of one kind");
        demand(g == 0 || mesh.FEs[g] != mesh.FEs[g - 1], "a group ends where the kind changes");
        rows = std::max<std::uint64_t>(rows, node_count(kind));
        const auto columns =
            mesh.connectM.sub_matrix(0, begin, mesh.connectM.rows(), mesh.offsets[g + 1] - begin);
        examine(mesh.pos, columns.sub_matrix(0, 0, node_count(kind), columns.cols()), kind);
        demand(max_ID(columns.sub_matrix(node_count(kind), 0, columns.rows(), columns.cols())) ==
                   (columns.rows() > node_count(kind) ? 0 : no_node),
               "shorter elements are padded");
    }
    demand(mesh.connectM.rows() == rows, "as many rows as the largest element has nodes");
}

/// Reads the input by all three forms of a reader, which have to agree, and examines what it gave.
template <class Read>
int read_groups(const std::uint8_t* data, std::size_t size, Read&& read, grouped_mesh& mesh,
                std::uint64_t sparse_nodes = 0) {
    const char* const path = input_file.fill(data, size);
    const auto read_all = [&] {
        return read(path, mesh.pos, mesh.connectM, mesh.offsets, mesh.FEs, mesh.props);
    };
    const int code = read_within_limit(size, read_all, sparse_nodes);
    demand(code == 0 || code == -1 || code == -199, "the code is a documented one");
    demand(code != 0 || (!mesh.pos.empty() && !mesh.connectM.empty()), "0 comes with a mesh");
    demand(mesh.pos.empty() || mesh.pos.rows() == 3, "nodes have three coordinates");
    if (!mesh.offsets.empty()) examine(mesh);

    grouped_mesh one, two;
    dense2D<unsigned int> second;
    element_type kind = ET_NODE_MIX, kinds[2];
    demand(read(path, one.pos, one.connectM, kind) == code, "forms agree");
    // Nodes that a short file numbers up to a huge one are not looked at: they are not in memory.
    demand(mesh.pos.cols() > size ? one.pos.cols() == mesh.pos.cols() : equal(one.pos, mesh.pos),
           "forms read the same nodes");
    demand(equal(one.connectM, mesh.connectM), "forms read the same elements");
    demand(read(path, two.pos, two.connectM, second, kinds[0], kinds[1]) == code, "forms agree");
    demand(mesh.FEs.empty() ? two.connectM.empty() : kinds[0] == mesh.FEs[0], "the first group");
    demand(mesh.FEs.size() < 2 ? second.empty() : kinds[1] == mesh.FEs[1], "the second group");
    return code;
}

} // namespace kvx::zelvo::fuzzing
