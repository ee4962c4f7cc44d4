#pragma once

#include <optional>
#include <string>

#include <kvx/zelvo/stl.h>

#include "file_formats.h"
#include "mesh.h"
#include "messages.h"

/// What happens to nodes that no element uses.
enum class node_choice {
    numbered, ///< kept, but for the numbers that no grid of a NASTRAN deck uses
    all,      ///< kept
    used      ///< removed
};

/// A mesh and where it comes from.
struct mesh_file {
    std::string name;
    format form = format::stl_ascii;
    mesh content;
    warnings notes;   ///< what was not read, or is odd
    warnings omitted; ///< what goes beyond nodes and elements
};

/// Reads a file of any format that can be read. All elements of the result name nodes that it has,
/// and there is at least one. Throws unreadable_file, and std::bad_alloc when memory runs out.
///
/// form   the format of the file; none lets the file tell
mesh_file read_mesh(const std::string& name, std::optional<format> form, node_choice nodes);

/// An STL surface with what its reader did.
struct stl_surface {
    kvx::dense2D<double> pos;             ///< 3 x nodes
    kvx::dense2D<unsigned int> triangles; ///< 3 x elements
    kvx::zelvo::STL_report account;
};

/// Reads an STL file. Throws as read_mesh does.
///
/// tolerance   distance up to which nodes are merged; NaN lets the reader choose
stl_surface read_stl(const std::string& name, bool ascii, double tolerance);

/// What is odd about an STL file.
void warn(const stl_surface& surface, warnings& notes);
/// What is odd about nodes of any file.
void warn_of_nodes(const kvx::dense2D<double>& pos, warnings& notes);
