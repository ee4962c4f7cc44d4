#pragma once

#include <cstdint>
#include <string>

#include "commands.h"
#include "measures.h"
#include "messages.h"
#include "node_field.h"

/// What the command says of a size or metric field. Sizes are in the units of the mesh.
struct metric_report {
    std::string file;
    std::string output;
    std::string field; ///< empty: mean edge lengths
    unsigned int dimension = 3;
    bool metrics = false; ///< else sizes
    std::uint64_t nodes = 0;
    std::uint64_t invalid = 0;  ///< nodes without a valid size or metric
    std::uint64_t replaced = 0; ///< of these
    spread size_before, size_after;
    double shock_before = 0.0, shock_after = 0.0; ///< largest ones; not a number without an edge
    bool gradation_reached = true;
};

/// Replaces invalid entries, bounds the field and limits its gradation, as far as asked for.
/// Entries that stay invalid are neither changed nor do they change others. Throws std::bad_alloc.
///
/// field   in and out: one entry per node of m
metric_report limit_field(const mesh& m, const metric_options& asked, node_field& field);
