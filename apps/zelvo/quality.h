#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <kvx/element_type.h>
#include <kvx/misc/histogram.h>

#include "measures.h"
#include "mesh_reading.h"

/// How the elements of one kind are shaped. Quadratic ones are rated by their corners; points are
/// not rated.
struct kind_quality {
    kvx::element_type kind = kvx::ET_NODE_MIX;
    std::uint64_t elements = 0;
    std::uint64_t inverted = 0; ///< of negative quality
    kvx::misc::histogram shape_quality{0.0, 1.0, 10};
};

/// What the command says of the shape of a mesh. Lengths are in the units of the file.
struct quality_report {
    std::string file;
    format form = format::stl_ascii;
    std::uint64_t nodes = 0;
    std::uint64_t elements = 0;
    std::vector<kind_quality> kinds; ///< those that the mesh has, ascending
    std::uint64_t edges = 0;         ///< distinct ones between corners
    spread edge_length;
    std::array<spread, 3> box;
};

/// Throws std::bad_alloc when memory runs out.
quality_report quality_of(const mesh_file& file);
