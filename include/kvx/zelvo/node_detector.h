#pragma once

#include <memory>

#include <kvx/dense_array.h>
#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

template <unsigned Dim>
class node_tree;

/// Finds the node closest to a point, and the nodes inside a box, among the nodes of a coordinate
/// matrix: a 2-d or 3-d tree over node indices (Bentley, Multidimensional binary search trees used
/// for associative searching, 1975), made by inserting the nodes in a shuffled order that depends
/// on nothing but their number.
///
/// The detector refers to the caller's matrix object and reads it at every query: the caller keeps
/// it alive and in place. If its values change, queries see the new values while the tree keeps its
/// shape; if it no longer has the rows and columns that the tree refers to, queries find nothing.
/// Distances are compared squared, so they must not overflow: coordinates up to about 1e153.
/// One detector must not be used from several threads at once; distinct ones are independent.
class KVX_ZELVO_API node_detector {
public:
    /// An empty detector: finds nothing.
    node_detector() noexcept;
    /// As reinit with the same arguments, whose result is lost: call reinit where it matters.
    explicit node_detector(const dense2D<double>& pos) noexcept;
    node_detector(const dense2D<double>& pos, const dense1D<unsigned int>& nodes) noexcept;
    node_detector(const dense2D<double>& pos, const dense2D<unsigned int>& connectM) noexcept;
    node_detector(const dense2D<double>& pos, const dense2D<unsigned int>* connectM1,
                  const dense2D<unsigned int>* connectM2) noexcept;
    template <class... Nodes>
    explicit node_detector(const dense2D<double>&& pos, const Nodes&... nodes) = delete;
    /// A copy with the same tree over the same coordinate matrix; empty when memory runs out.
    node_detector(const node_detector& other) noexcept;
    node_detector& operator=(const node_detector& other) noexcept;
    ~node_detector();

    /// Takes all nodes of pos. The detector is empty from the start, whatever follows.
    /// Returns 0, -1 when pos has neither 2 nor 3 rows, -199 when memory runs out or pos has more
    /// than 4294967295 columns. Expected O(n log n), also for coincident nodes.
    int reinit(const dense2D<double>& pos) noexcept;
    /// Takes the listed nodes; no_node is skipped, a node listed twice is found twice. Returns 0,
    /// or, in this order: -1 pos has neither 2 nor 3 rows, -2 an entry is neither no_node nor a
    /// column of pos (for both the detector stays as it was); -199 memory runs out (it is empty).
    int reinit(const dense2D<double>& pos, const dense1D<unsigned int>& nodes) noexcept;
    /// Takes the nodes that a connectivity uses, each once; codes as for a list.
    int reinit(const dense2D<double>& pos, const dense2D<unsigned int>& connectM) noexcept;
    /// Takes the nodes that the half-open range [connectM1, connectM2) of connectivities uses.
    /// Before the codes of a list: -3 when the range is reversed, with the detector as it was.
    int reinit(const dense2D<double>& pos, const dense2D<unsigned int>* connectM1,
               const dense2D<unsigned int>* connectM2) noexcept;
    /// A temporary matrix would be gone before the first query.
    template <class... Nodes>
    int reinit(const dense2D<double>&& pos, const Nodes&... nodes) = delete;

    /// Adds the listed nodes. Returns how many were added: entries beyond the columns of the
    /// coordinate matrix are skipped, an empty detector takes none, and one that holds 4294967295
    /// records or finds no memory takes no more. O(depth) a node.
    unsigned int insert(const dense1D<unsigned int>& nodes) noexcept;
    /// Adds the nodes that a connectivity uses, each once.
    unsigned int insert(const dense2D<unsigned int>& connectM) noexcept;

    /// The node closest to P, or no_node. Over 3-D nodes a 2-D point lies at z = 0; over 2-D nodes
    /// the z of a 3-D point is ignored. Of several nodes at one distance the one met first wins:
    /// the tree's shape decides, not the index. Expected O(log n).
    unsigned int find_closest(const vector_fixed<double, 2>& P) const noexcept;
    unsigned int find_closest(const vector_fixed<double, 3>& P) const noexcept;
    /// The other node closest to a node of the coordinate matrix, which need not be in the
    /// detector; no_node when there is none.
    unsigned int find_closest(unsigned int node) const noexcept;

    /// Appends the nodes inside the closed box Pmin .. Pmax to `nodes`, in the order of the tree:
    /// neither sorted nor made unique. Over 2-D nodes the z bounds are ignored; over 3-D nodes a
    /// 2-D box is the plane piece at z = 0. When memory runs out the list stays as it was.
    void find_in_box(const vector_fixed<double, 2>& Pmin, const vector_fixed<double, 2>& Pmax,
                     dense1D<unsigned int>& nodes) const noexcept;
    void find_in_box(const vector_fixed<double, 3>& Pmin, const vector_fixed<double, 3>& Pmax,
                     dense1D<unsigned int>& nodes) const noexcept;

    /// Number of records: nodes taken, repeated ones counted each time.
    unsigned int size() const noexcept;
    /// Empties the detector.
    void clear() noexcept;

private:
    std::unique_ptr<node_tree<2>> tree2_;
    std::unique_ptr<node_tree<3>> tree3_;
};

} // namespace kvx::zelvo
