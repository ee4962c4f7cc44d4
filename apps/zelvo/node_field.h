#pragma once

#include <string>
#include <variant>

#include <kvx/dense_array.h>

#include "measures.h"
#include "mesh.h"

/// What size elements shall have at each node: one size per node, or a metric in 3 (in the plane)
/// or 6 rows, one column per node.
using node_field = std::variant<kvx::dense1D<double>, kvx::dense2D<double>>;

/// A field with the dimension that its file states.
struct solution {
    unsigned int dimension = 3;
    node_field values;
};

/// Reads a MEDIT solution of sizes or metrics at the nodes. Throws unreadable_file.
solution read_solution(const std::string& file);

/// Number of nodes that a field has values for.
std::uint64_t node_count(const node_field& field);

/// The mean length of the edges at each node; for a node that is no corner the mean of what the
/// corners of its elements have; 0 for a node without elements.
kvx::dense1D<double> mean_edge_lengths(const mesh& m);

/// Whether the node has a positive finite size, or a finite positive definite metric.
bool is_valid(const node_field& field, std::uint64_t node);

/// The sizes of all valid nodes, in the directions of the axes of their metrics.
spread sizes_of(const node_field& field);
