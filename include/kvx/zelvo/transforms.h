#pragma once

#include <kvx/dense_array.h>
#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

/// Moving nodes in place. What holds for every function here:
///
/// pos    in and out: rows x nodes. With fewer rows than the operation has dimensions it gets them,
///        the new coordinates 0; that moves it to storage of its own where its storage is shared or
///        the caller's. Further rows stay as they are
/// nodes  the nodes to move; a node that is listed twice moves twice, entries that are no column of
///        pos (no_node among them) are skipped
/// conn   a connectivity, each node of which moves once
///
/// A transform that does nothing, told by "no part of it is below or above its neutral value" so
/// that a lone NaN does nothing either, returns 0 and leaves pos as it is, rows included; so does
/// an empty pos. Counts stop at 2147483647. Exhausted memory gives -199 with pos unchanged. Linear,
/// for a connectivity expected linear.
namespace kvx::zelvo {

/// Adds T. Returns the number of nodes moved.
KVX_ZELVO_API int translate(dense2D<double>& pos, const vector_fixed<double, 2>& T) noexcept;
KVX_ZELVO_API int translate(dense2D<double>& pos, const vector_fixed<double, 3>& T) noexcept;
/// Returns the number of entries that moved a node. An empty list leaves the rows of pos, too.
KVX_ZELVO_API int translate(dense2D<double>& pos, const vector_fixed<double, 2>& T,
                            const dense1D<unsigned int>& nodes) noexcept;
KVX_ZELVO_API int translate(dense2D<double>& pos, const vector_fixed<double, 3>& T,
                            const dense1D<unsigned int>& nodes) noexcept;
KVX_ZELVO_API int translate(dense2D<double>& pos, const vector_fixed<double, 2>& T,
                            const dense2D<unsigned int>& conn) noexcept;
KVX_ZELVO_API int translate(dense2D<double>& pos, const vector_fixed<double, 3>& T,
                            const dense2D<unsigned int>& conn) noexcept;

/// Scales by f about C: each coordinate x becomes x + (x - C) (f - 1). Returns the number of nodes
/// moved.
KVX_ZELVO_API int zoom(dense2D<double>& pos, const vector_fixed<double, 2>& C, double f) noexcept;
KVX_ZELVO_API int zoom(dense2D<double>& pos, const vector_fixed<double, 3>& C, double f) noexcept;
/// Returns 0, unlike translate and rotate. An empty list leaves the rows of pos, too.
KVX_ZELVO_API int zoom(dense2D<double>& pos, const vector_fixed<double, 2>& C, double f,
                       const dense1D<unsigned int>& nodes) noexcept;
KVX_ZELVO_API int zoom(dense2D<double>& pos, const vector_fixed<double, 3>& C, double f,
                       const dense1D<unsigned int>& nodes) noexcept;
KVX_ZELVO_API int zoom(dense2D<double>& pos, const vector_fixed<double, 2>& C, double f,
                       const dense2D<unsigned int>& conn) noexcept;
KVX_ZELVO_API int zoom(dense2D<double>& pos, const vector_fixed<double, 3>& C, double f,
                       const dense2D<unsigned int>& conn) noexcept;

/// Turns about C: in 2-D by `angle` radians counter-clockwise; in 3-D about the axis through C in
/// the direction of R, right-handedly by the length of R in radians. Returns the number of nodes
/// moved.
KVX_ZELVO_API int rotate(dense2D<double>& pos, const vector_fixed<double, 2>& C,
                         double angle) noexcept;
KVX_ZELVO_API int rotate(dense2D<double>& pos, const vector_fixed<double, 3>& C,
                         const vector_fixed<double, 3>& R) noexcept;
/// Returns the number of entries that moved a node. Unlike with translate and zoom, pos gets its
/// rows also when the list is empty.
KVX_ZELVO_API int rotate(dense2D<double>& pos, const vector_fixed<double, 2>& C, double angle,
                         const dense1D<unsigned int>& nodes) noexcept;
KVX_ZELVO_API int rotate(dense2D<double>& pos, const vector_fixed<double, 3>& C,
                         const vector_fixed<double, 3>& R,
                         const dense1D<unsigned int>& nodes) noexcept;
KVX_ZELVO_API int rotate(dense2D<double>& pos, const vector_fixed<double, 2>& C, double angle,
                         const dense2D<unsigned int>& conn) noexcept;
KVX_ZELVO_API int rotate(dense2D<double>& pos, const vector_fixed<double, 3>& C,
                         const vector_fixed<double, 3>& R,
                         const dense2D<unsigned int>& conn) noexcept;

} // namespace kvx::zelvo
