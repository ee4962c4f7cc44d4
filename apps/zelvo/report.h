#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <kvx/misc/histogram.h>

#include "measures.h"
#include "mesh_reading.h"

/// What the command says of a file. Lengths are in the units of the file.
struct surface_report {
    std::string file;
    format form = format::stl_ascii;
    std::uint64_t facets = 0; ///< read
    std::uint64_t unread_bytes = 0;

    double tolerance = 0.0; ///< nodes up to this distance were merged; 0: none were
    std::uint64_t merged_nodes = 0;
    std::uint64_t removed_elements = 0;
    std::uint64_t nodes = 0;    ///< after cleaning
    std::uint64_t elements = 0; ///< after cleaning
    std::uint64_t subdomains = 0;
    std::uint64_t free_edges = 0;          ///< with one element
    std::uint64_t non_manifold_edges = 0;  ///< with more than two elements
    std::uint64_t degenerate_elements = 0; ///< without area, to the precision of the file

    std::array<spread, 3> box; ///< x, y and z of the nodes
    spread edge_length;
    kvx::misc::histogram shape_quality{0.0, 1.0, 10};
};

/// Measures the surface that was read from an STL file. Throws std::bad_alloc when memory runs out.
surface_report report_on(const std::string& file, format form, const stl_surface& surface);
