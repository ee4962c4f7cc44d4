#pragma once

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/misc/histogram.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Rates the shape of every element with one number in [-1, 1]: 1 for the ideal element
/// (equilateral triangle, square, regular tetrahedron and pyramid, right wedge with equal edges,
/// cube), near 0 for flat and needle-like ones, negative for inverted ones; docs/shape-qualities.md
/// holds the formulas. The ratings do not depend on size, position or direction in space.
///
/// pos        2 or 3 rows, one column per node
/// connectM   node indices, one column per element
/// kind       a linear kind: ET_BAR2 (every bar rates 1), ET_TRIA3, ET_QUAD4, ET_FACE_MIX,
///            ET_TETRA4, ET_PYRAMID5, ET_PENTA6, ET_HEXA8, ET_SOLID_MIX (each column by its shape)
/// Q          replaced: one value per element. A view whose size fits is written in place; Q may
///            share storage with pos.
///
/// Triangles and quadrangles in the plane are positive when listed counter-clockwise; in space
/// triangles are never negative, and quadrangles are negative only where a corner is re-entrant. A
/// tetrahedron is positive for det(P0 - P3, P1 - P3, P2 - P3) > 0; pyramids, wedges and hexahedra
/// when the face of their first nodes is counter-clockwise as seen from the nodes behind it. What
/// cannot be rated rates 0: coincident corners, coordinates that are not finite or whose
/// differences are not, surfaces in a pos of other than 2 or 3 rows, solids in one of other than 3
/// rows, columns of a matrix without rows.
///
/// Returns 0, or, in the order checked and with Q emptied:
///   -3    a kind that is not rated: points, mixed edges, quadratic elements, no kind
///   -2    connectM does not fit the kind or names a node that pos does not have
///   -199  out of memory
/// Linear.
KVX_ZELVO_API int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                                  element_type kind, dense1D<double>& Q) noexcept;

/// The same for a half-open range of connectivities, matrix k of kind types[k]; their values follow
/// one another in Q. Matrices without entries are skipped, whatever their kind, and take no room.
///
/// Returns 0, or, in the order checked:
///   -3          last comes before first; Q stays as it was
///   -4          the number of matrices is not the size of types; Q stays as it was
///   -3, -2      as above, for the first matrix that fails; Q is emptied
///   -199        out of memory; Q is emptied
KVX_ZELVO_API int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                                  const dense2D<unsigned int>* last, const dense1D<int>& types,
                                  dense1D<double>& Q) noexcept;

/// The same, with the values handed to a histogram in one call of `process`, which is made only
/// when the result is 0. The form with one matrix is that with a range of one.
KVX_ZELVO_API int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>* first,
                                  const dense2D<unsigned int>* last, const dense1D<int>& types,
                                  kvx::misc::histogram& statistics) noexcept;
KVX_ZELVO_API int shape_qualities(const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                                  element_type kind, kvx::misc::histogram& statistics) noexcept;

} // namespace kvx::zelvo
