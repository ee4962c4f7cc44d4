#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Writer and reader of NASTRAN bulk data (MSC Nastran Quick Reference Guide, section "Bulk Data
/// Entries"): elements and grid points. What is written and read, and what is left as it is on
/// purpose, stands in docs/file-formats.md; tetrahedra, pyramids and grid points with a coordinate
/// system do not come back as they went.
///
/// The elements of several kinds lie in one connectivity: group g is columns offsets[g] to
/// offsets[g + 1] - 1, all of kind FEs[g]; element j has property number props[j]. Grid and element
/// numbers in the file are column numbers, counted from 0.

/// Writes a deck: elements in free fields, a material, grid points in large fields with six
/// significant digits. Of a mixed group every element is written as the kind that it is; groups of
/// the kinds 0, 2, 4, 10, 14, 15, 17 and 20 are left out; the kinds 1, 13, 16 and 19 have no card
/// name.
///
/// filename   created or truncated before anything is checked
/// pos        3 rows, one column per node
/// connectM   one column per element, with at least as many rows as every kind has nodes; nodes are
///            not compared with the number of nodes. A group of kind ET_SOLID_MIX needs a matrix of
///            4, 5, 6 or 8 rows
/// offsets    ascending; elements in front of the first one are not written
/// FEs        one kind for each group
/// props      one number for each element
///
/// Returns 0, also when writing fails, or, in the order checked and with the file empty: 0 connectM
/// has no entries, even if the file cannot be opened; -1 the file cannot be opened (or its name is
/// null); -2 rows of pos; -5 number of offsets, offsets that descend or leave connectM; -6 number
/// of props; -3 a group that is no kind, whose kind has more nodes than connectM rows, or that
/// fails check_IDs without a bound. Linear.
KVX_ZELVO_API int NASTRAN_output(const char* filename, const dense2D<double>& pos,
                                 const dense2D<unsigned int>& connectM,
                                 const dense1D<unsigned int>& offsets, const dense1D<int>& FEs,
                                 const dense1D<unsigned int>& props) noexcept;
/// One group with the properties {1}: so -6 unless there is exactly one element. Writing more takes
/// the form above. Also -199, with the file untouched.
KVX_ZELVO_API int NASTRAN_output(const char* filename, const dense2D<double>& pos,
                                 const dense2D<unsigned int>& connectM, element_type FE) noexcept;
/// Two groups, the elements of one matrix after those of the other, with the properties {1, 2}: so
/// -6 unless there are exactly two elements in all. A matrix without entries has no elements. Also
/// -199, with the file untouched.
KVX_ZELVO_API int NASTRAN_output(const char* filename, const dense2D<double>& pos,
                                 const dense2D<unsigned int>& connectM1,
                                 const dense2D<unsigned int>& connectM2, element_type FE1,
                                 element_type FE2) noexcept;

/// Reads bars, triangles, quadrangles, tetrahedra, wedges, hexahedra and grid points; other cards
/// are skipped. The numbers of grid points become columns of pos as they are, those of elements are
/// ignored: elements are numbered as they come.
///
/// filename   file, or a pipe, which may keep the call waiting
/// pos        replaced: 3 rows, columns up to the largest grid number, 0 where there is no grid
///            point
/// connectM   replaced: as many rows as the largest element has nodes, shorter ones end in no_node;
///            nodes may lie beyond pos, and numbers that are none below no_node become no_node: run
///            check_IDs
/// offsets    replaced: a group begins wherever the kind changes; 0, 0 when there is no element
/// FEs        replaced: kind of each group
/// props      replaced: property number of each element
///
/// Returns 0, or: -1 the file cannot be opened, is a device, cannot be read to the end of the deck,
/// or has no line with "BEGIN BULK", all outputs being empty then; -1 there is no element or no grid
/// point, what was read being kept; -199 out of memory, all outputs being empty.
///
/// Linear. Memory follows the size of the file except for pos, which has 24 bytes for every number
/// up to the largest one. That much is asked for at once; -199 when the system refuses it. Columns
/// without a grid point are not written to, so that they take no memory where the system hands it
/// out on first use.
KVX_ZELVO_API int NASTRAN_input(const char* filename, dense2D<double>& pos,
                                dense2D<unsigned int>& connectM, dense1D<unsigned int>& offsets,
                                dense1D<int>& FEs, dense1D<unsigned int>& props) noexcept;
/// The elements alone. FE becomes ET_NODE_MIX, whatever was read, and stays as it is with a code
/// below 0.
KVX_ZELVO_API int NASTRAN_input(const char* filename, dense2D<double>& pos,
                                dense2D<unsigned int>& connectM, element_type& FE) noexcept;
/// The elements of the first two groups, each with the rows of its kind; others are dropped. Where
/// there is no such group, the matrix is empty and the kind ET_NODE_MIX, also with a code below 0.
KVX_ZELVO_API int NASTRAN_input(const char* filename, dense2D<double>& pos,
                                dense2D<unsigned int>& connectM1, dense2D<unsigned int>& connectM2,
                                element_type& FE1, element_type& FE2) noexcept;

} // namespace kvx::zelvo
