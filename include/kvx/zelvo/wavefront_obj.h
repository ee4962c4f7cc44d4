#pragma once

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Writes a surface of triangles and quadrangles as a Wavefront OBJ file, numbers as printf's
/// "%.8e". A corner has one number for its node, its texture coordinates and its normal.
///
/// The corners of a face follow each other without a blank (" f 1//2//3// "), as files of this
/// writer always had them. No reader takes that for a face, WavefrontOBJ_input included: nodes,
/// texture coordinates and normals can be read back, faces cannot.
///
/// filename    created or truncated before anything is checked: a rejected call destroys what the
///             file held
/// pos         2 or 3 rows, one column per node; z is 0 where there are 2 rows
/// normals     empty, or 3 rows and one column per node
/// texcoords   empty, or 2 rows and one column per node
/// triangles   ET_TRIA3 connectivity; rows behind the third are not looked at
/// quads       ET_QUAD4 connectivity; rows behind the fourth are not looked at
///
/// Nodes are numbered from 1 in the file. Node indices are not compared with the number of nodes.
///
/// Returns 0, or, in the order checked: -1 the file cannot be opened (or its name is null); -2 rows
/// of pos; -3 shape of normals; -4 shape of texcoords; -5 triangles have fewer than 3 rows; -6
/// quads have fewer than 4 rows; -1 a write failed, the last one on closing included. Linear.
KVX_ZELVO_API int WavefrontOBJ_output(const char* filename, const dense2D<double>& pos,
                                      const dense2D<double>& normals,
                                      const dense2D<double>& texcoords,
                                      const dense2D<unsigned int>& triangles,
                                      const dense2D<unsigned int>& quads) noexcept;

/// Reads nodes, texture coordinates, normals, triangles and quadrangles of a Wavefront OBJ file.
///
/// The first word of a line tells what it is; other lines, and lines that do not fit, are ignored:
/// - "v" and at least three numbers, the first three of which are a node;
/// - "vt" and one to three numbers, the first two of which are texture coordinates (the second is 0
///   where it is missing);
/// - "vn" and exactly three numbers, a normal;
/// - "f" and three or four corners n, n/t, n//m or n/t/m, a face of the nodes n. Numbers are whole,
///   without a sign, at most 4294967295, and count from 1; a 0 gives node 0. A face with anything
///   else in its line (a negative number, a comment, a backslash) or with more corners is ignored.
///
/// The numbers of a line end at the first thing that is no finite decimal number. A node that is
/// ignored moves those behind it to a lower index, which faces do not follow. Texture coordinates
/// and normals come in the order of the file: the numbers t and m that would assign them to
/// corners are dropped, so they belong to the nodes only where a file numbers all three alike.
///
/// Node indices are NOT compared with the number of nodes: run check_IDs before they are used.
///
/// filename    file, or a pipe, which may keep the call waiting; memory follows what it holds. A
///             character device may have no end and counts as one that does not open
/// pos         replaced: 3 rows, one column per node, also when there is none; the others are 0 x 0
///             when nothing goes into them
/// normals     replaced: 3 rows, one column per "vn" line
/// texcoords   replaced: 2 rows, one column per "vt" line
/// triangles   replaced: 3 rows, one column per triangle
/// quads       replaced: 4 rows, one column per quadrangle
///
/// The five are different matrices: of two that are one, the columns come in no certain order.
///
/// Returns 0, or, with all outputs empty: -1 the file cannot be opened (or its name is null) or not
/// be read to its end; -199 out of memory. Linear.
KVX_ZELVO_API int WavefrontOBJ_input(const char* filename, dense2D<double>& pos,
                                     dense2D<double>& normals, dense2D<double>& texcoords,
                                     dense2D<unsigned int>& triangles,
                                     dense2D<unsigned int>& quads) noexcept;

} // namespace kvx::zelvo
