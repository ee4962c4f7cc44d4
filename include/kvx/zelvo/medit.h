#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Writer of MEDIT files, ASCII: meshes of version 1 (P. Frey, MEDIT: an interactive mesh
/// visualization software, INRIA technical report 0253, 2001) and fields on their nodes.
/// Numbers are written as printf's "%E", seven significant digits, under every locale.

/// Writes the elements of a half-open range of connectivities to a file of that name, one section
/// for each kind, with the place of their connectivity in the range as reference. Quadratic kinds
/// are written with their corners only, pyramids and wedges as hexahedra with repeated nodes; mixed
/// kinds are split into linear kinds, ordered by number of nodes.
///
/// filename   created or truncated only when nothing is to be rejected
/// pos        1 to 3 rows, one column per node
/// FEs        one kind for each connectivity; elements of kind ET_NODE1 are not written
///
/// Returns 0, also when writing fails, or, in the order checked: -2 rows of pos; -4 connect_end
/// comes before connect_begin; -5 number of connectivities different from that of kinds; -3 a
/// connectivity fails check_IDs with its kind and the number of nodes; -199 out of memory; -1 the
/// file cannot be opened (or its name is null). Linear but for the sorting of mixed kinds.
KVX_ZELVO_API int medit_output(const char* filename, const dense2D<double>& pos,
                               const dense2D<unsigned int>* connect_begin,
                               const dense2D<unsigned int>* connect_end,
                               const dense1D<int>& FEs) noexcept;
/// The range holding connectM alone: every reference is 0.
KVX_ZELVO_API int medit_output(const char* filename, const dense2D<double>& pos,
                               const dense2D<unsigned int>& connectM, element_type FE) noexcept;
/// The range of the two connectivities: references 0 and 1.
KVX_ZELVO_API int medit_output(const char* filename, const dense2D<double>& pos,
                               const dense2D<unsigned int>& connectM1,
                               const dense2D<unsigned int>& connectM2, element_type FE1,
                               element_type FE2) noexcept;

/// Writes the elements of one connectivity with a reference each, in ascending order of references
/// within each section and in their own order within a reference.
///
/// refs   one entry per element; elements with no_node are left out, and not checked
///
/// Returns 0 (for an empty connectM at once, without a file), or, in the order checked: -5 size of
/// refs different from the number of elements; -6 out of memory while the elements are ordered; the
/// codes of the range. O(elements log elements).
KVX_ZELVO_API int medit_output(const char* filename, const dense2D<double>& pos,
                               const dense2D<unsigned int>& connectM, element_type FE,
                               const dense1D<unsigned int>& refs) noexcept;

/// Write a field on nodes: one number, a vector or a symmetric matrix for each node. A line with
/// the dimension, the number of values per node, the number of nodes and 2 (for "at the nodes"),
/// then the values: numbers eight to a line, the others one node to a line.
///
/// filename   created or truncated before anything is checked
/// dim        dimension of the mesh, written as it is
/// values     one entry per node; where their number is a multiple of 8 an empty line follows
/// V          any number of rows, one column per node; without rows the lines are empty, and left
///            out when there are more nodes than 32-bit indices name
/// M          packed upper triangles, one column per node: 3 rows in 2-D, 6 in 3-D
///
/// Return 0, also when writing fails, or -1 the file cannot be opened (or its name is null);
/// medit_tensor -2 rows of M, and then the empty file stays open on purpose, as callers have always
/// found it. Linear.
KVX_ZELVO_API int medit_scalar(const char* filename, unsigned int dim,
                               const dense1D<double>& values) noexcept;
KVX_ZELVO_API int medit_vector(const char* filename, unsigned int dim,
                               const dense2D<double>& V) noexcept;
KVX_ZELVO_API int medit_tensor(const char* filename, const dense2D<double>& M) noexcept;

} // namespace kvx::zelvo
