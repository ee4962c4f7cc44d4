#include <kvx/zelvo/node_detector.h>

#include <kvx/zelvo/node_indices.h>

#include "foundation/matrix_range.h"
#include "foundation/memory_guard.h"
#include "indices/index_collection.h"
#include "search/node_tree.h"

namespace kvx::zelvo {

namespace {

std::span<const unsigned int> span_of(const dense1D<unsigned int>& nodes) {
    return {nodes.data(), nodes.size()};
}

template <unsigned Dim, unsigned From>
std::array<double, Dim> point_of(const vector_fixed<double, From>& P) {
    std::array<double, Dim> x{};
    std::copy_n(P.data(), std::min(Dim, From), x.begin());
    return x;
}

template <unsigned Dim>
unsigned int insert_into(node_tree<Dim>& tree, const dense1D<unsigned int>& nodes) {
    const std::uint64_t before = tree.size();
    guarded([&] {
        tree.insert(span_of(nodes));
        return 0;
    });
    return static_cast<unsigned int>(tree.size() - before);
}

/// Makes the tree of the dimension of a coordinate matrix and fills it; none is left on failure.
template <class Fill>
int plant(const dense2D<double>& pos, std::unique_ptr<node_tree<2>>& tree2,
          std::unique_ptr<node_tree<3>>& tree3, Fill&& fill) {
    const auto plant_in = [&](auto& tree) {
        const int code = guarded([&] {
            tree = std::make_unique<std::remove_reference_t<decltype(*tree)>>(pos);
            fill(*tree);
            return 0;
        });
        if (code != 0) tree.reset();
        return code;
    };
    return pos.rows() == 2 ? plant_in(tree2) : plant_in(tree3);
}

/// Runs a query on the tree that is there; the answer for an empty detector is given.
template <class Answer, class Query>
Answer ask(const std::unique_ptr<node_tree<2>>& tree2, const std::unique_ptr<node_tree<3>>& tree3,
           Answer nothing, Query&& query) {
    Answer answer = nothing;
    const int code = guarded([&] {
        if (tree2) {
            answer = query(*tree2);
        } else if (tree3) {
            answer = query(*tree3);
        }
        return 0;
    });
    return code == 0 ? answer : nothing;
}

template <unsigned Dim>
unsigned int closest_other(const node_tree<Dim>& tree, unsigned int node) {
    return tree.has_node(node) ? tree.find_closest(tree.at(node), node) : no_node;
}

template <unsigned Dim, unsigned From>
int append_in_box(const node_tree<Dim>& tree, const vector_fixed<double, From>& Pmin,
                  const vector_fixed<double, From>& Pmax, dense1D<unsigned int>& nodes) {
    const std::uint64_t before = nodes.size();
    const int code = guarded([&] {
        tree.find_in_box(point_of<Dim>(Pmin), point_of<Dim>(Pmax), nodes);
        return 0;
    });
    if (code != 0) nodes.resize(before);
    return code;
}

} // namespace

node_detector::node_detector() noexcept = default;

node_detector::node_detector(const dense2D<double>& pos) noexcept {
    reinit(pos);
}

node_detector::node_detector(const dense2D<double>& pos,
                             const dense1D<unsigned int>& nodes) noexcept {
    reinit(pos, nodes);
}

node_detector::node_detector(const dense2D<double>& pos,
                             const dense2D<unsigned int>& connectM) noexcept {
    reinit(pos, connectM);
}

node_detector::node_detector(const dense2D<double>& pos, const dense2D<unsigned int>* connectM1,
                             const dense2D<unsigned int>* connectM2) noexcept {
    reinit(pos, connectM1, connectM2);
}

node_detector::node_detector(const node_detector& other) noexcept {
    *this = other;
}

node_detector& node_detector::operator=(const node_detector& other) noexcept {
    if (this == &other) return *this;
    clear();
    guarded([&] {
        if (other.tree2_) tree2_ = std::make_unique<node_tree<2>>(*other.tree2_);
        if (other.tree3_) tree3_ = std::make_unique<node_tree<3>>(*other.tree3_);
        return 0;
    });
    return *this;
}

node_detector::~node_detector() = default;

int node_detector::reinit(const dense2D<double>& pos) noexcept {
    clear();
    if (pos.rows() != 2 && pos.rows() != 3) return -1;
    return plant(pos, tree2_, tree3_, [](auto& tree) { tree.insert_all(); });
}

int node_detector::reinit(const dense2D<double>& pos, const dense1D<unsigned int>& nodes) noexcept {
    if (pos.rows() != 2 && pos.rows() != 3) return -1;
    if (!check_IDs(nodes, index_bound(pos.cols()))) return -2;
    clear();
    return plant(pos, tree2_, tree3_, [&](auto& tree) { tree.insert(span_of(nodes)); });
}

int node_detector::reinit(const dense2D<double>& pos,
                          const dense2D<unsigned int>& connectM) noexcept {
    return reinit(pos, &connectM, &connectM + 1);
}

int node_detector::reinit(const dense2D<double>& pos, const dense2D<unsigned int>* connectM1,
                          const dense2D<unsigned int>* connectM2) noexcept {
    if (is_reversed(connectM1, connectM2)) return -3;
    dense1D<unsigned int> nodes;
    const int code = guarded([&] {
        append_unique(nodes, connectM1, connectM2);
        return 0;
    });
    if (code != 0) clear();
    return code != 0 ? code : reinit(pos, nodes);
}

unsigned int node_detector::insert(const dense1D<unsigned int>& nodes) noexcept {
    if (tree2_) return insert_into(*tree2_, nodes);
    if (tree3_) return insert_into(*tree3_, nodes);
    return 0;
}

unsigned int node_detector::insert(const dense2D<unsigned int>& connectM) noexcept {
    dense1D<unsigned int> nodes;
    const int code = guarded([&] {
        append_unique(nodes, &connectM, &connectM + 1);
        return 0;
    });
    return code == 0 ? insert(nodes) : 0;
}

unsigned int node_detector::find_closest(const vector_fixed<double, 2>& P) const noexcept {
    return ask(tree2_, tree3_, no_node, [&]<unsigned Dim>(const node_tree<Dim>& tree) {
        return tree.find_closest(point_of<Dim>(P));
    });
}

unsigned int node_detector::find_closest(const vector_fixed<double, 3>& P) const noexcept {
    return ask(tree2_, tree3_, no_node, [&]<unsigned Dim>(const node_tree<Dim>& tree) {
        return tree.find_closest(point_of<Dim>(P));
    });
}

unsigned int node_detector::find_closest(unsigned int node) const noexcept {
    return ask(tree2_, tree3_, no_node,
               [&]<unsigned Dim>(const node_tree<Dim>& tree) { return closest_other(tree, node); });
}

void node_detector::find_in_box(const vector_fixed<double, 2>& Pmin,
                                const vector_fixed<double, 2>& Pmax,
                                dense1D<unsigned int>& nodes) const noexcept {
    ask(tree2_, tree3_, 0, [&]<unsigned Dim>(const node_tree<Dim>& tree) {
        return append_in_box(tree, Pmin, Pmax, nodes);
    });
}

void node_detector::find_in_box(const vector_fixed<double, 3>& Pmin,
                                const vector_fixed<double, 3>& Pmax,
                                dense1D<unsigned int>& nodes) const noexcept {
    ask(tree2_, tree3_, 0, [&]<unsigned Dim>(const node_tree<Dim>& tree) {
        return append_in_box(tree, Pmin, Pmax, nodes);
    });
}

unsigned int node_detector::size() const noexcept {
    return ask(tree2_, tree3_, 0u,
               [](const auto& tree) { return static_cast<unsigned int>(tree.size()); });
}

void node_detector::clear() noexcept {
    tree2_.reset();
    tree3_.reset();
}

} // namespace kvx::zelvo
