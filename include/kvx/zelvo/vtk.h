#pragma once

#include <cstdio>

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Writer of legacy VTK files, version 2.0, ASCII, data set UNSTRUCTURED_GRID, without cell or
/// point data. Cell codes are those of the VTK file formats (The VTK User's Guide, "Simple Legacy
/// Formats").

/// Turns elements of one kind into VTK cells and appends them to what was gathered before. Every
/// element becomes the cell of its corners; the nodes that a quadratic element has besides follow
/// as a cell of their own, a poly-vertex. Tetrahedra are turned around: their nodes are written in
/// the order 0, 1, 3, 2, since VTK orients them the other way.
///
/// connectM     node indices, one column per element; rows beyond those of a linear kind are
///              written as poly-vertices too
/// FE           ET_BAR2 to ET_HEXA27 but not a mixed kind
/// ncells       increased by the number of cells
/// cells        appended to: number of nodes and node indices of each cell
/// cell_types   appended to: code of each cell
///
/// cells and cell_types may share storage with connectM but not with each other. Returns 0, or, in
/// the order checked and with nothing appended: -1 connectM fails check_IDs without a bound; -2 the
/// kind cannot be written; -1 connectM has fewer rows than the kind has corners (a matrix without
/// rows included); -199 out of memory, or ncells would exceed 4294967295. Linear.
KVX_ZELVO_API int vtk_convert(const dense2D<unsigned int>& connectM, element_type FE,
                              unsigned int& ncells, dense1D<unsigned int>& cells,
                              dense1D<unsigned int>& cell_types) noexcept;

/// Writes points and gathered cells to an open file, which is neither flushed nor closed.
/// Coordinates are written as printf's "%f", six decimals whatever their size, under every locale.
///
/// pos      2 or 3 rows, one column per node; z is 0 where there are 2 rows
/// ncells   number of cells written; fewer where `cells` ends before
///
/// Returns 0, also when the file does not take what is written, or, with nothing written: -1 stream
/// is null; -2 rows of pos. Linear.
KVX_ZELVO_API int vtk_output(std::FILE* stream, const dense2D<double>& pos, unsigned int ncells,
                             const dense1D<unsigned int>& cells,
                             const dense1D<unsigned int>& cell_types) noexcept;

/// Writes the elements of a half-open range of connectivities to a file of that name. Mixed kinds
/// are split into linear kinds, ordered by number of nodes.
///
/// filename   created or truncated before anything is checked: a rejected call destroys what the
///            file held
/// pos        2 or 3 rows, one column per node
/// FEs        one kind for each connectivity
///
/// Returns 0, also when writing fails, or, in the order checked: -1 the file cannot be opened (or
/// its name is null); -2 rows of pos; -4 connect_end comes before connect_begin; -5 number of
/// connectivities different from that of kinds; -3 a connectivity fails check_IDs with its kind and
/// the number of nodes; the code of vtk_convert, so -2 for elements of kind ET_NODE1; -199 out of
/// memory. Empty connectivities are left out, whatever their kind. With every code but -1 and -199
/// the empty file stays open on purpose, as callers have always found it (on Windows it also stays
/// locked). Linear but for the sorting of mixed kinds.
KVX_ZELVO_API int vtk_output(const char* filename, const dense2D<double>& pos,
                             const dense2D<unsigned int>* connect_begin,
                             const dense2D<unsigned int>* connect_end,
                             const dense1D<int>& FEs) noexcept;
/// The range holding connectM alone.
KVX_ZELVO_API int vtk_output(const char* filename, const dense2D<double>& pos,
                             const dense2D<unsigned int>& connectM, element_type FE) noexcept;
/// The range of the two connectivities.
KVX_ZELVO_API int vtk_output(const char* filename, const dense2D<double>& pos,
                             const dense2D<unsigned int>& connectM1,
                             const dense2D<unsigned int>& connectM2, element_type FE1,
                             element_type FE2) noexcept;

} // namespace kvx::zelvo
