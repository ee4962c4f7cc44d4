#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Writes a mesh of several kinds of elements as a FEMAP neutral file of version 4.41: blocks 100
/// (header), 402 (one property for each property number in use), 403 (nodes) and 404 (elements).
/// Nodes and elements are numbered from 1, by their columns; coordinates are the shortest text that
/// reads back as the same number; local node order is that of the library.
///
/// filename   created or truncated before anything is checked: a rejected call destroys what the
///            file held
/// pos        2 or 3 rows, one column per node; z is 0 where there are 2 rows
/// connectM   one column per element; rows that an element does not need are not looked at
/// offsets    group g is columns offsets[g] to offsets[g + 1] - 1; one more than there are groups.
///            Elements before the first or behind the last offset are not written
/// FEs        kind of each group. Elements of the mixed kinds are written as what they are. Groups
///            of kinds without a topology code (ET_NODE_MIX, ET_EDGE_MIX, ET_BAR3, ET_QUAD9,
///            ET_PYRAMID14, ET_PENTA18, ET_HEXA27) are left out
/// props      property number of each element
///
/// Node indices are not compared with the number of nodes; readers skip elements that name a node
/// the file does not hold.
///
/// Returns 0, or, in the order checked: 0 for a connectM without entries, with an empty file or
/// none where it cannot be created; -1 the file cannot be opened (or its name is null); -2 rows of
/// pos; -5 offsets are not one more than FEs, descend or leave connectM; -6 props are not one for
/// each element; -3 a group that is no connectivity of its kind (a value that is no kind, too few
/// rows; for mixed kinds check_IDs with at most 4 or 20 rows and any node); -1 a write failed, the
/// last one on closing included; -199 out of memory. Linear, but for sorting the property numbers.
KVX_ZELVO_API int FEMAP_output(const char* filename, const dense2D<double>& pos,
                               const dense2D<unsigned int>& connectM,
                               const dense1D<unsigned int>& offsets, const dense1D<int>& FEs,
                               const dense1D<unsigned int>& props) noexcept;
/// A mesh of one kind; every element has property 1. Here and below -199 also, with the file
/// untouched, where there are more than 4294967294 elements.
KVX_ZELVO_API int FEMAP_output(const char* filename, const dense2D<double>& pos,
                               const dense2D<unsigned int>& connectM, element_type FE) noexcept;
/// A mesh of two kinds; the elements of connectM1, which come first, have property 1, those of
/// connectM2 property 2.
KVX_ZELVO_API int FEMAP_output(const char* filename, const dense2D<double>& pos,
                               const dense2D<unsigned int>& connectM1,
                               const dense2D<unsigned int>& connectM2, element_type FE1,
                               element_type FE2) noexcept;

/// Reads nodes and elements (blocks 403 and 404) of a FEMAP neutral file of any version. Blocks may
/// come in any order and repeat; others are skipped. Values are separated by commas or blanks, an
/// empty one is 0, reals may have D exponents, and what is no number reads as 0.
///
/// Nodes become columns in increasing order of their ids, without gaps. Where an id occurs twice
/// the record that comes later in the file wins. Ids run from 1 to 2^63 - 2; nodes with others are
/// skipped. Coordinate systems are not looked at.
///
/// Elements keep the order of the file; their ids are not looked at, so one that comes twice is
/// read twice. An element is recognised by its first four lines (8 or more whole numbers, the first
/// positive; twice 10 whole numbers; 3 to 9 values); its other three lines, and whatever follows up
/// to the next element, are skipped. Its nodes are the slots that are not 0, in their order. It is
/// skipped when the reader does not know its topology, when the number of its nodes is not that of
/// its kind, or when the file does not hold one of its nodes.
///
/// filename   file, or a pipe, which may keep the call waiting; memory follows what it holds,
///            whatever ids it states. A character device may have no end and counts as one that
///            does not open
/// pos        replaced: 3 rows, one column per node
/// connectM   replaced: one column per element, as many rows as the largest element has nodes,
///            shorter ones padded with no_node
/// offsets    replaced: first column of each group, and the number of columns. A group ends where
///            the kind changes; without elements 0, 0
/// FEs        replaced: kind of each group, never a mixed one
/// props      replaced: property number of each element, at least 0 and at most 4294967295
///
/// Returns 0; -1, with all outputs empty, the file cannot be opened (or its name is null) or not be
/// read to its end; -1, with what was read, there is no element or no node; -199, with all outputs
/// empty, out of memory. Linear, but for sorting nodes that do not come in order and finding nodes
/// whose ids have gaps.
KVX_ZELVO_API int FEMAP_input(const char* filename, dense2D<double>& pos,
                              dense2D<unsigned int>& connectM, dense1D<unsigned int>& offsets,
                              dense1D<int>& FEs, dense1D<unsigned int>& props) noexcept;
/// All elements in one matrix, and the kind of the first group; FE stays as it was with a code
/// below 0.
KVX_ZELVO_API int FEMAP_input(const char* filename, dense2D<double>& pos,
                              dense2D<unsigned int>& connectM, element_type& FE) noexcept;
/// The first two groups, each with as many rows as its kind has nodes; further ones are dropped. Of
/// a group that is not there the matrix is empty and the kind ET_NODE_MIX.
KVX_ZELVO_API int FEMAP_input(const char* filename, dense2D<double>& pos,
                              dense2D<unsigned int>& connectM1, dense2D<unsigned int>& connectM2,
                              element_type& FE1, element_type& FE2) noexcept;

} // namespace kvx::zelvo
