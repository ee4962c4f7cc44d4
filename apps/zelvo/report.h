#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include <kvx/dense_array.h>
#include <kvx/misc/histogram.h>

/// A file that cannot be reported on, with the reason.
struct unreadable_file : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Not a number where there is nothing to measure.
struct spread {
    double min = std::numeric_limits<double>::quiet_NaN();
    double mean = std::numeric_limits<double>::quiet_NaN();
    double max = std::numeric_limits<double>::quiet_NaN();
};

/// What the command says of a file. Lengths are in the units of the file.
struct surface_report {
    std::string file;
    bool ascii = false;
    std::uint64_t facets = 0; ///< read
    std::uint64_t announced_facets = 0;
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
    std::uint64_t non_finite_nodes = 0;    ///< with a coordinate that is no finite number

    std::array<spread, 3> box; ///< x, y and z of the nodes
    spread edge_length;
    kvx::misc::histogram shape_quality{0.0, 1.0, 10};
};

/// The mesh that a report is about.
struct surface {
    kvx::dense2D<double> pos;             ///< 3 x nodes
    kvx::dense2D<unsigned int> triangles; ///< 3 x elements
};

/// Reads and measures an STL file. Throws unreadable_file, and std::bad_alloc when memory runs out.
///
/// tolerance   distance up to which nodes are merged; NaN lets the reader choose
/// mesh        replaced: the mesh after cleaning
surface_report report_on(const std::string& file, double tolerance, surface& mesh);
