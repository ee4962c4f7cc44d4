#pragma once

#include <cstdint>
#include <new>
#include <vector>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>

/// Elements of one kind, in the order of the file.
struct element_group {
    kvx::element_type kind = kvx::ET_NODE_MIX;
    kvx::dense2D<unsigned int> connectM;   ///< as many rows as an element has nodes
    kvx::dense1D<unsigned int> properties; ///< one per element; empty where the file has none
};

/// The mesh of a file of any format.
struct mesh {
    kvx::dense2D<double> pos; ///< 3 x nodes
    std::vector<element_group> groups;
};

/// What the command calls a kind of elements, and the kind of its corners.
struct kind_facts {
    const char* name;   ///< for programs
    const char* plural; ///< for people
    kvx::element_type corners;
};
const kind_facts& facts(kvx::element_type kind);

/// Results of library calls that can fail only when memory runs out.
inline void need(int result) {
    if (result < 0) throw std::bad_alloc();
}
inline void need(bool had_memory) {
    if (!had_memory) throw std::bad_alloc();
}

std::uint64_t element_count(const mesh& m);

/// The same elements without their nodes on sides, faces and inside; shares the elements.
element_group corners_of(const element_group& group);

/// Removes the elements that name nodes which the mesh does not have. Returns how many.
std::uint64_t remove_strays(mesh& m);

/// Which nodes an element uses, by node.
std::vector<bool> used_nodes(const mesh& m);

/// Leaves the nodes that are flagged, which must be all that an element uses, and numbers the
/// elements anew.
void keep_nodes(mesh& m, const std::vector<bool>& kept);

/// All elements of a kind in one matrix.
kvx::dense2D<unsigned int> all_of(const mesh& m, kvx::element_type kind);

/// The distinct corner edges of all elements, 2 x edges.
kvx::dense2D<unsigned int> edges_of(const mesh& m);
